// Base classes of plug-ins: reader, writer, node visitor.

#include "host/CZemtarDocument.h"
#include "host/CZemtarNodeVisitor.h"
#include "host/CZemtarReader.h"
#include "host/CZemtarSceneNode.h"
#include "host/CZemtarWriter.h"

#include <memory>
#include <vector>

namespace Zemtar {

CZemtarReader::CZemtarReader() = default;

CZemtarWriter::CZemtarWriter() = default;
CZemtarWriter::~CZemtarWriter() = default;

bool CZemtarWriter::ExportSceneNode(CZemtarSceneNode* node, CZemtarString fileName, bool worldPlacement)
{
    if (node == nullptr) {
        return false;
    }
    const enumLengthUnit unit = node->Document()->OriginalLengthUnit();
    std::unique_ptr<CZemtarDocument> document(CZemtarDocument::Create(true));
    document->SetOriginalLengthUnit(unit);
    CZemtarSceneNode* copy = node->CreateTreeCopy(document.get(), nullptr, true);
    if (worldPlacement) {
        copy->SetLocalMatrix(node->LocalToWorldMatrix(true));
    }
    return Export(document.get(), fileName, nullptr, nullptr, nullptr, nullptr, CZemtarUnit(unit));
}

void CZemtarNodeVisitor::TraverseDocument(CZemtarDocument* document, CZemtarMatrix& matrix,
                                          CZemtarSceneNode* parent)
{
    if (document == nullptr) {
        return;
    }
    std::vector<CZemtarSceneNode*> roots; // gathered first: the visitor may add nodes
    for (CZemtarSceneNode* node : document->Nodes()) {
        if (node->Parent() == nullptr) {
            roots.push_back(node);
        }
    }
    for (CZemtarSceneNode* root : roots) {
        Traverse(root, matrix, parent);
    }
}

void CZemtarNodeVisitor::Traverse(CZemtarSceneNode* node, CZemtarMatrix matrix, CZemtarSceneNode* parent)
{
    struct Open
    {
        CZemtarSceneNode* node;
        CZemtarMatrix matrix;
        CZemtarSceneNode* parentOfChildren;
        std::size_t nextChild;
    };
    std::vector<Open> path;
    const auto enter = [&](CZemtarSceneNode* entered, const CZemtarMatrix& outer, CZemtarSceneNode* told) {
        CZemtarMatrix world = outer * entered->LocalMatrix();
        if (Apply(entered, world, told)) {
            const bool structural = entered->IsAssembly() || entered->IsPart();
            path.push_back({entered, world, structural ? entered : told, 0});
        }
    };
    if (node != nullptr) {
        enter(node, matrix, parent);
    }
    while (!path.empty()) {
        Open& open = path.back();
        if (open.nextChild >= open.node->ChildNodes().size()) {
            path.pop_back();
            continue;
        }
        CZemtarSceneNode* child = open.node->ChildNodes()[open.nextChild++];
        // Copies, since entering the child moves what `open` refers to.
        const CZemtarMatrix outer = open.matrix;
        enter(child, outer, open.parentOfChildren);
    }
}

} // namespace Zemtar
