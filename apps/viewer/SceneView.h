#pragma once

#include "apps/render/Renderer.h"

#include <QOpenGLWidget>
#include <QSet>

#include <memory>
#include <optional>

class Annotations;
class SceneModel;
struct Ray;

namespace Zemtar {
class CZemtarDocument;
class CZemtarSceneNode;
} // namespace Zemtar

/// The 3D view of a document: orbit (left drag), pan (middle drag, or Shift and left), zoom (wheel, towards
/// the cursor), picking (click), fit (double click or F).
///
///     auto* view = new SceneView(this);
///     view->SetDocument(document.get());
///     connect(view, &SceneView::NodePicked, tree, &NodeTree::Select);
///
/// Nodes are those of the document; the view owns none of them.
class SceneView : public QOpenGLWidget
{
    Q_OBJECT

public:
    explicit SceneView(QWidget* parent = nullptr);
    ~SceneView() override;

    /// Shows a document, which must outlive the view or the next call; null shows an empty space. Nothing is
    /// selected, hidden or isolated then, and the whole is fitted into view.
    void SetDocument(const Zemtar::CZemtarDocument* document);

    /// Highlights a node with all that is below it; null: nothing.
    void SetSelection(const Zemtar::CZemtarSceneNode* node);
    /// Leaves out these nodes with all that is below them.
    void SetHidden(const QSet<const Zemtar::CZemtarSceneNode*>& nodes);
    /// Draws this node and what is below it alone; null: everything.
    void SetIsolated(const Zemtar::CZemtarSceneNode* node);

    void SetEdges(bool on);
    void SetPerspective(bool on);
    bool HasEdges() const;
    bool IsPerspective() const;
    void SetStandardView(StandardView view);
    /// Brings all that is drawn into view or, with a node, that node.
    void Fit(const Zemtar::CZemtarSceneNode* node = nullptr);

    /// Cuts the model.
    void SetSection(const std::optional<SectionCut>& section);
    /// Moves instances; see `SceneModel::Displace`.
    void Displace(const std::vector<Vec3>& ways);
    const SceneModel& Model() const;
    const Camera& ViewCamera() const;
    /// Looks from there, without fitting.
    void SetCamera(const Camera& camera);

    /// While measuring, clicks tell of places instead of picking nodes.
    void SetMeasuring(bool on);
    /// Lines and texts over the model.
    Annotations& Notes();
    /// The number of the instance drawn at a point of the widget; none where there is nothing.
    std::optional<std::uint32_t> InstanceAt(const QPoint& point);
    /// The look through a point of the widget.
    Ray RayAt(const QPointF& point) const;
    /// Metres that a pixel covers at a point of the world.
    double PixelSize(const Vec3& point) const;
    /// What the view shows, with lines and texts over it, without the cube.
    QImage Picture();

    /// Gives the mesh node drawn at a point of the widget, in its own coordinates; null: none.
    const Zemtar::CZemtarSceneNode* NodeAt(const QPoint& point);

signals:
    /// The user clicked a mesh node, or empty space (null).
    void NodePicked(const Zemtar::CZemtarSceneNode* node);
    /// The user clicked while measuring.
    void PlaceClicked(const QPoint& point);
    /// The user asked for the context menu of what is below the cursor (null: empty space).
    void MenuRequested(const Zemtar::CZemtarSceneNode* node, const QPoint& globalPosition);
    /// OpenGL is missing or too old; the view stays empty. The text says so to the user.
    void Failed(const QString& message);

protected:
    void initializeGL() override;
    void paintGL() override;
    void resizeGL(int width, int height) override;
    bool event(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    class State;

    void MakeOverlays();
    void UpdateOverlays();
    std::optional<QPointF> Projected(const Vec3& point) const;
    double Aspect() const;
    /// Gives the point of the model below a place or, where there is none, in the target's plane.
    Vec3 PointBelow(const QPointF& place);
    void ZoomAt(const QPointF& place, double factor);
    void FitNow();
    /// Draws anew: at once and perhaps coarsely while the camera moves, else in full.
    void Redraw(bool moving);
    void DrawFull();
    void UpdateShown();
    void ReleaseGraphics();
    void Fail(const QString& message);

    std::unique_ptr<State> m_state;
};
