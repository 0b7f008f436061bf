#include "apps/viewer/SceneView.h"

using Zemtar::CZemtarDocument;
using Zemtar::CZemtarSceneNode;

SceneView::SceneView(QWidget* parent) : QOpenGLWidget(parent) {}
SceneView::~SceneView() = default;
void SceneView::SetDocument(const CZemtarDocument* /*document*/) {}
void SceneView::SetSelection(const CZemtarSceneNode* /*node*/) {}
void SceneView::SetHidden(const QSet<const CZemtarSceneNode*>& /*nodes*/) {}
void SceneView::SetIsolated(const CZemtarSceneNode* /*node*/) {}
void SceneView::SetEdges(bool /*on*/) {}
void SceneView::SetPerspective(bool /*on*/) {}
bool SceneView::HasEdges() const
{
    return false;
}
bool SceneView::IsPerspective() const
{
    return true;
}
void SceneView::SetStandardView(StandardView /*view*/) {}
void SceneView::Fit(const CZemtarSceneNode* /*node*/) {}
const CZemtarSceneNode* SceneView::NodeAt(const QPoint& /*point*/)
{
    return nullptr;
}
