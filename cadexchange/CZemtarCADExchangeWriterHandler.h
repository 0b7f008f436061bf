#pragma once

#include "common/ZemtarExport.h"
#include "host/CZemtarNodeVisitor.h"
#include "host/CZemtarString.h"

#include <cadex/ModelData_Appearance.hxx>
#include <cadex/ModelData_Assembly.hxx>
#include <cadex/ModelData_Instance.hxx>
#include <cadex/ModelData_Part.hxx>

#include <deque>
#include <map>
#include <memory>

namespace cadex {
class Base_Writer;
class ModelData_IndexedTriangleSet;
class ModelData_PolyLineSet;
} // namespace cadex

namespace Zemtar {

class CZemtar3DObject;
class CZemtarDocument;
class CZemtarMaterial;
class CZemtarSceneNode;

/// The export walk: turns a host document into a CAD model and has an SDK writer write it. One per process;
/// the exporter plug-in is its caller.
///
/// Assembly and part nodes become assemblies, mesh nodes become parts, each placed by an instance; plain
/// groups are transparent. Mesh nodes that share their geometry become instances of one part. A part's
/// instance carries its whole world placement and an assembly's the identity, so the tree only groups; what
/// stands at the top is scaled by 1000, from the host's metres to the SDK's millimetres.
class ZEMTAR_EXPORT CZemtarCADExchangeWriterHandler : public CZemtarNodeVisitor
{
public:
    /// Gives the one handler, made on first use and never destroyed.
    static CZemtarCADExchangeWriterHandler* getInstance();

    /// Begins an export: a new root assembly and empty caches.
    void reset();

    /// Writes the document to `fileName`. `matrix` is where the traversal begins; placements are the nodes'
    /// own, so that it does not show in the file. Failures are one line each on standard error. The result is
    /// false on every path, also when the file was written; the exporter's callers rely on it. All SDK
    /// objects are released before it returns. Exceptions: std::bad_alloc, and what the host or SDK throw.
    bool Export(CZemtarDocument* document, CZemtarString fileName, CZemtarMatrix matrix,
                cadex::Base_Writer* writer);

    /// Visits one node; `parent` is the nearest assembly or part above it, or null. False when the node is
    /// deleted.
    bool Apply(CZemtarSceneNode* node, CZemtarMatrix& matrix, CZemtarSceneNode* parent) override;

    /// Makes the assembly of an assembly or part node and places it.
    void CreateAssembly(CZemtarSceneNode* node, CZemtarSceneNode* parent);

    /// Makes the part of a mesh node, or finds the one of its geometry, and places it. A node without
    /// geometry adds nothing to the file. A shared part keeps name, appearance and properties of the first
    /// node that showed it.
    void Create3DObject(CZemtar3DObject* object, CZemtarSceneNode* parent);

    /// Makes the instance that places `part`, or the node's own assembly when `part` is null, and adds it to
    /// the parent's assembly, or to the root without a parent. Null when there is nothing to place; an
    /// instance whose parent is no exported node is made and attached nowhere. Valid until the end of the
    /// export.
    cadex::ModelData_Instance* CreateBasicNode(CZemtarSceneNode* node, CZemtarSceneNode* parent,
                                               cadex::ModelData_Part* part);

    /// Gives the mesh of an object in its own coordinates, or null when there is nothing to write. Only the
    /// first three corners of a polygon are taken. Indices are not checked here: the SDK leaves out a
    /// triangle that it cannot build.
    std::unique_ptr<cadex::ModelData_IndexedTriangleSet> CreateITS(CZemtar3DObject* object);

    /// Gives the line segments of an object, each a polyline of two points, or null when there is nothing to
    /// write. A segment that names a missing vertex is left out.
    std::unique_ptr<cadex::ModelData_PolyLineSet> CreatePolyLineSet(CZemtar3DObject* object);

    /// Gives the appearance of a material, one per material and export; null for no material or one that is
    /// not a common basic material. Textures, opacity and name are not exported. Valid until the end of the
    /// export.
    cadex::ModelData_Appearance* CreateMaterial(CZemtarMaterial* material);

    /// Adds the node's metadata to the element as one flat table, category after category in ascending order;
    /// a table is added also when it is empty.
    void ProcessMetaData(CZemtarSceneNode* node, cadex::ModelData_SceneGraphElement* element);

private:
    CZemtarCADExchangeWriterHandler() = default;
    void Release();

    static CZemtarCADExchangeWriterHandler* m_instance;

    std::map<CZemtarString, cadex::ModelData_Part> m_partsByGeometry;
    std::map<CZemtarSceneNode*, cadex::ModelData_Assembly> m_assemblies;
    std::map<CZemtarMaterial*, cadex::ModelData_Appearance> m_appearances;
    std::deque<cadex::ModelData_Instance> m_instances; ///< what CreateBasicNode gave out
    cadex::ModelData_Assembly m_root;
};

} // namespace Zemtar
