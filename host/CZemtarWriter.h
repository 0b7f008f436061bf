#pragma once

#include "host/CZemtarString.h"
#include "host/CZemtarUnit.h"
#include "host/ZemtarCoreExport.h"

#include <vector>

namespace Zemtar {

class CZemtarCamera;
class CZemtarDocument;
class CZemtarSceneNode;
class CZemtarSceneState;
class CZemtarSectionPlane;
class CZemtarTransform;

/// Base of exporter plug-ins.
class ZEMTAR_CORE_EXPORT CZemtarWriter
{
public:
    CZemtarWriter();
    virtual ~CZemtarWriter();

    /// Writes a document into a file in `unit`. `transform` (null: the identity) is where the traversal of
    /// the document starts; whether it places the file's content is the plug-in's. Cameras, scene states and
    /// section plane may be null. What the result means is the plug-in's: some report success by the file
    /// alone.
    virtual bool Export(CZemtarDocument* document, CZemtarString fileName, CZemtarTransform* transform,
                        std::vector<CZemtarCamera*>* cameras, std::vector<CZemtarSceneState*>* sceneStates,
                        CZemtarSectionPlane* sectionPlane, CZemtarUnit unit) = 0;
    /// Writes one node and its subtree, as a document of their own in the original unit of the node's
    /// document, through `Export`, and gives its result. With `worldPlacement` the node keeps its place in
    /// the world, otherwise in its parent. False without a node.
    virtual bool ExportSceneNode(CZemtarSceneNode* node, CZemtarString fileName, bool worldPlacement);

protected:
    CZemtarWriter(const CZemtarWriter&) = default;
    CZemtarWriter& operator=(const CZemtarWriter&) = default;
};

} // namespace Zemtar
