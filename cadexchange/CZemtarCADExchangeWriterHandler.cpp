// The walk: nodes to assemblies, parts and instances, and the writing of the file.

#include "cadexchange/CZemtarCADExchangeWriterHandler.h"

#include "host/CZemtar3DObject.h"
#include "host/CZemtarDocument.h"
#include "host/CZemtarGeometry.h"
#include "host/CZemtarSceneNode.h"

#include <cadex/Base_Writer.hxx>
#include <cadex/ModelData_IndexedTriangleSet.hxx>
#include <cadex/ModelData_Model.hxx>
#include <cadex/ModelData_PolyLineSet.hxx>
#include <cadex/ModelData_PolyRepresentation.hxx>

#include <iostream>

namespace Zemtar {

namespace {

/// Host documents are in metres, the SDK's models in millimetres.
constexpr double MillimetresPerMetre = 1000.0;

cadex::Base_UTF16String NameOf(const CZemtarSceneNode& node)
{
    return cadex::Base_UTF16String(node.Name().toStdString().c_str());
}

cadex::Base_UTF16String WideText(const CZemtarString& text)
{
    return cadex::Base_UTF16String(text.toStdWString().c_str());
}

cadex::ModelData_Transformation TransformationOf(const CZemtarMatrix& m)
{
    cadex::ModelData_Transformation transformation;
    transformation.SetRotationPart(m.M(0, 0), m.M(0, 1), m.M(0, 2), m.M(1, 0), m.M(1, 1), m.M(1, 2),
                                   m.M(2, 0), m.M(2, 1), m.M(2, 2));
    transformation.SetTranslationPart(m.M(0, 3), m.M(1, 3), m.M(2, 3));
    return transformation;
}

} // namespace

CZemtarCADExchangeWriterHandler* CZemtarCADExchangeWriterHandler::m_instance = nullptr;

CZemtarCADExchangeWriterHandler* CZemtarCADExchangeWriterHandler::getInstance()
{
    if (!m_instance) {
        m_instance = new CZemtarCADExchangeWriterHandler;
    }
    return m_instance;
}

void CZemtarCADExchangeWriterHandler::Release()
{
    m_root.Nullify();
    m_instances.clear();
    m_partsByGeometry.clear();
    m_assemblies.clear();
    m_appearances.clear();
}

void CZemtarCADExchangeWriterHandler::reset()
{
    Release();
    m_root = cadex::ModelData_Assembly(cadex::initialized());
}

bool CZemtarCADExchangeWriterHandler::Export(CZemtarDocument* document, CZemtarString fileName,
                                             CZemtarMatrix matrix, cadex::Base_Writer* writer)
{
    if (!writer) {
        std::cerr << "Writer is NULL!" << std::endl;
        return false;
    }
    reset();
    struct ReleaseAtEnd
    {
        CZemtarCADExchangeWriterHandler& handler;
        ~ReleaseAtEnd() { handler.Release(); }
    } const releaseAtEnd{*this};

    TraverseDocument(document, matrix, nullptr);

    CZemtarString rootName = fileName;
    rootName.RemoveExt();
    rootName.RemovePath();
    m_root.SetName(WideText(rootName));

    cadex::ModelData_Model model;
    model.AddRoot(m_root);
    if (!writer->Transfer(model)) {
        std::cerr << "Failed to transfer model data to specified format" << std::endl;
        return false;
    }
    if (!writer->WriteFile(WideText(fileName))) {
        std::cerr << "Failed to write the file " << fileName.toStdString() << std::endl;
    }
    return false; // wanted, also after success: callers look for the file
}

bool CZemtarCADExchangeWriterHandler::Apply(CZemtarSceneNode* node, CZemtarMatrix& /*matrix*/,
                                            CZemtarSceneNode* parent)
{
    if (node->IsDeleted()) {
        return false;
    }
    if (auto* object = dynamic_cast<CZemtar3DObject*>(node)) {
        Create3DObject(object, parent);
    } else if (node->IsAssembly() || node->IsPart()) {
        CreateAssembly(node, parent);
    }
    return true;
}

void CZemtarCADExchangeWriterHandler::CreateAssembly(CZemtarSceneNode* node, CZemtarSceneNode* parent)
{
    cadex::ModelData_Assembly assembly(NameOf(*node));
    m_assemblies[node] = assembly;
    ProcessMetaData(node, &assembly);
    CreateBasicNode(node, parent, nullptr);
}

void CZemtarCADExchangeWriterHandler::Create3DObject(CZemtar3DObject* object, CZemtarSceneNode* parent)
{
    const CZemtarString id = object->GeometyDefinitionID();
    if (const auto known = m_partsByGeometry.find(id); known != m_partsByGeometry.end()) {
        CreateBasicNode(object, parent, &known->second);
        return;
    }
    cadex::ModelData_Part part(NameOf(*object));
    ProcessMetaData(object, &part);
    const CZemtarGeometry* geometry = object->Geometry();
    if (!geometry) {
        return;
    }
    cadex::ModelData_PolyRepresentation representation{cadex::initialized()};
    const CZemtarPolygonsTable* polygons = geometry->PolygonsTable();
    if (polygons && polygons->Count() > 0) {
        if (const auto triangles = CreateITS(object)) {
            representation.Add(*triangles);
        }
    } else if (geometry->PolyLinesTable()) {
        if (const auto lines = CreatePolyLineSet(object)) {
            representation.Add(*lines);
        }
    }
    part.AddRepresentation(representation);
    if (const cadex::ModelData_Appearance* appearance = CreateMaterial(object->Material())) {
        part.SetAppearance(*appearance);
    }
    CreateBasicNode(object, parent, &part);
    m_partsByGeometry.emplace(id, part);
}

cadex::ModelData_Instance* CZemtarCADExchangeWriterHandler::CreateBasicNode(CZemtarSceneNode* node,
                                                                            CZemtarSceneNode* parent,
                                                                            cadex::ModelData_Part* part)
{
    cadex::ModelData_Transformation transformation;
    cadex::ModelData_Instance instance;
    if (part) {
        instance = cadex::ModelData_Instance(*part, NameOf(*node));
        transformation = TransformationOf(node->LocalToWorldMatrix(true));
    } else {
        const auto own = m_assemblies.find(node);
        if (own == m_assemblies.end()) {
            return nullptr;
        }
        instance = cadex::ModelData_Instance(own->second, NameOf(*node));
    }
    if (!parent) {
        transformation.SetScaleFactor(MillimetresPerMetre);
    }
    instance.SetTransformation(transformation);
    m_instances.push_back(instance);

    if (!parent) {
        m_root.AddInstance(instance);
    } else if (const auto above = m_assemblies.find(parent); above != m_assemblies.end()) {
        above->second.AddInstance(instance);
    }
    return &m_instances.back();
}

} // namespace Zemtar
