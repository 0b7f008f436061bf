#pragma once

#include "cadexchange/CZemtarMetaDataVisitor.h"
#include "cadexchange/CZemtarTextureVisitor.h"
#include "common/ZemtarExport.h"
#include "host/CZemtarString.h"

#include <cadex/ModelData_Appearance.hxx>
#include <cadex/ModelData_Assembly.hxx>
#include <cadex/ModelData_IndexedTriangleSet.hxx>
#include <cadex/ModelData_Instance.hxx>
#include <cadex/ModelData_Model.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/ModelData_PolyLineSet.hxx>
#include <cadex/ModelData_PolyRepresentation.hxx>
#include <cadex/ModelData_SceneGraphElement.hxx>

#include <deque>
#include <unordered_map>

namespace cadex {
class Base_Reader;
}

namespace Zemtar {

class CZemtar3DObject;
class CZemtarDocument;
class CZemtarMaterial;
class CZemtarSceneNode;

/// Turns one CAD file after the other into host documents: reads, transfers and meshes it with the SDK, then
/// walks the SDK's model and builds the document. One for the process; CZemtarCADExchangeReader calls it.
///
///     auto* handler = CZemtarCADExchangeReaderHandler::getInstance();
///     CZemtarDocument* document = handler->Import(fileName, &reader, 50);
///
/// Assemblies, parts and instances become transform nodes, instances above what they refer to. A part or
/// assembly that is referred to again is copied with its subtree, and the copy stands for the instance. The
/// members below Import are steps of the walk; they need its document and, where they add nodes, the stack.
/// Not for use by several threads.
class ZEMTAR_EXPORT CZemtarCADExchangeReaderHandler : public cadex::ModelData_Model::VoidElementVisitor
{
public:
    /// Creates the one handler on the first call; it lives until the process ends.
    static CZemtarCADExchangeReaderHandler* getInstance();

    /// The folder for texture images, with a separator at the end; stays for later imports.
    void setTextureOutputDirectory(CZemtarString dir);

    /// Whether polyline sets become host objects; stays for later imports. Off at first.
    void setImportPolylines(bool on);

    /// Empties the caches of the last import; every walk begins with it.
    void reset();

    /// Imports a file with a reader, which stays the caller's, into a new document in the SDK's millimetres,
    /// which the caller owns. `tessellationFactor` is the dialog's slider value, 20 (finest) to 95.
    ///
    /// Null on failure, with one line on standard error. Exceptions of the SDK or the host pass through after
    /// the unfinished document has been deleted; the next import works.
    CZemtarDocument* Import(CZemtarString fileName, cadex::Base_Reader* reader, int tessellationFactor);

    /// The seconds that the last import spent on reading (repair of the encoding included), transferring and
    /// meshing; 0 before any.
    double ReadAndMeshSeconds() const { return m_readAndMeshSeconds; }

    /// The mesher's tolerances for a level: 0 (finest) to 100, interpolated between 5 and 60 whole degrees
    /// and chords of 0.0025 and 0.08. Negative levels extend the second band; above 100 it is 30 and 0.01.
    void ProcessTessellation(int level, double& angularDeflectionDegrees, double& chordalDeflection);

    void operator()(const cadex::ModelData_Part& part) override;
    bool VisitEnter(const cadex::ModelData_Assembly& assembly) override;
    void VisitLeave(const cadex::ModelData_Assembly& assembly) override;
    bool VisitEnter(const cadex::ModelData_Instance& instance) override;
    void VisitLeave(const cadex::ModelData_Instance& instance) override;

    void ProcessAssembly(cadex::ModelData_Assembly assembly);
    /// False when the referenced element was copied, so that the SDK need not visit it.
    bool ProcessInstance(cadex::ModelData_Instance instance);
    void ProcessPart(cadex::ModelData_Part part);

    /// Makes mesh objects below the current node, one for each triangle set and, if on, polyline set.
    void Process3DObject(cadex::ModelData_PolyRepresentation representation);
    void ProcessTriangleSet(const cadex::ModelData_IndexedTriangleSet& triangles);
    void ProcessPolyLineSet(const cadex::ModelData_PolyLineSet& polylines);

    /// The one material of an appearance; null when it has neither colours nor a texture.
    CZemtarMaterial* ProcessMaterial(cadex::ModelData_Appearance appearance);

    /// Stores the element's properties as texts in the node's category "Properties".
    void ProcessMetaData(CZemtarSceneNode* node, cadex::ModelData_SceneGraphElement& element);

    /// Gives the node the volume, centre of mass and inertia of the element's exact shape, if it has one.
    void ProcessSolidHints(CZemtarSceneNode* node, cadex::ModelData_SceneGraphElement& element);

private:
    /// Handles are equal when they refer to one object. On appearances == would compare the content.
    struct SameObject
    {
        bool operator()(const cadex::ModelData_BaseObject& a, const cadex::ModelData_BaseObject& b) const
        {
            return a == b;
        }
    };
    template <class Handle, class Value>
    using ObjectMap = std::unordered_map<Handle, Value, cadex::ModelData_BaseObjectHash, SameObject>;

    CZemtarCADExchangeReaderHandler() = default;

    CZemtarDocument* Walk(const cadex::ModelData_Model& model);
    CZemtarSceneNode* NewNode(const cadex::ModelData_SceneGraphElement& element);
    void Push(CZemtarSceneNode* node);
    void Pop();
    void UseAppearance(const cadex::ModelData_Appearance& appearance);
    void Place(CZemtar3DObject* object, const cadex::ModelData_PolyVertexSet& set);
    CZemtarMaterial* NewMaterial(const cadex::ModelData_Appearance& appearance);

    CZemtarTextureVisitor m_textureVisitor;
    CZemtarMetaDataVisitor m_metaDataVisitor;
    bool m_importPolylines = false;
    std::deque<CZemtarSceneNode*> m_nodeStack; ///< from the outermost open element to the current parent
    ObjectMap<cadex::ModelData_SceneGraphElement, CZemtarSceneNode*> m_elementNodes;
    ObjectMap<cadex::ModelData_Appearance, CZemtarMaterial*> m_appearanceMaterials;
    CZemtarMaterial* m_currentMaterial = nullptr; ///< the last one made or met; never restored
    CZemtarDocument* m_document = nullptr;
    double m_readAndMeshSeconds = 0.0;

    static CZemtarCADExchangeReaderHandler* m_instance;
};

} // namespace Zemtar
