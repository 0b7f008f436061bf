#pragma once

#include "apps/viewer/Importer.h"
#include "apps/viewer/MeasureTool.h"
#include "apps/viewer/NodeList.h"
#include "apps/viewer/NodeTree.h"
#include "apps/viewer/SectionPlane.h"

#include <QPointer>
#include <QSet>
#include <QTemporaryDir>
#include <QWidget>

class QStackedLayout;
class SceneView;

/// One open document: its 3D view, which it shows, and its node tree, which the window puts into its dock.
/// Keeps selection, hidden nodes and isolation the same in both.
class DocumentPage : public QWidget
{
    Q_OBJECT

public:
    explicit DocumentPage(std::shared_ptr<ImportedFile> imported, QWidget* parent = nullptr);
    ~DocumentPage() override;

    const ImportedFile& Source() const { return *m_imported; }
    Zemtar::CZemtarDocument& Document() { return *m_imported->document; }
    const NodeList& Nodes() const { return m_nodes; }
    /// Null where OpenGL is missing; a message then stands in its place.
    SceneView* View() { return m_view; }
    NodeTree* Tree() { return m_tree; }

    const Zemtar::CZemtarSceneNode* Selected() const { return m_selected; }
    void Select(const Zemtar::CZemtarSceneNode* node);
    void ToggleHidden(const Zemtar::CZemtarSceneNode* node);
    /// Shows this node alone; the isolated one itself, or null, shows everything else again.
    void Isolate(const Zemtar::CZemtarSceneNode* node);
    void ShowAll();
    const Zemtar::CZemtarSceneNode* Isolated() const { return m_isolated; }
    const QSet<const Zemtar::CZemtarSceneNode*>& Hidden() const { return m_hidden; }

    void SetSection(const SectionPlane& section);
    const SectionPlane& Section() const { return m_section; }
    /// How far the parts stand apart; see `ExplodedWays`.
    void SetExplosion(double amount);
    double Explosion() const { return m_explosion; }
    /// Begins to measure with each click, or ends.
    void Measure(std::optional<MeasureKind> kind);
    std::optional<MeasureKind> Measuring() const { return m_measuring; }
    void ClearMeasurements();
    const std::vector<Measurement>& Measurements() const { return m_measurements; }

signals:
    /// Selection, hidden nodes or isolation changed.
    void Changed();
    void MenuRequested(const QPoint& globalPosition);

private:
    void MakeView();
    void MakeTree();
    void ShowVisibility();
    void MeasureAt(const QPoint& place);
    void ShowMeasurements();
    QString MeasureHint() const;
    QString ExportForDrag();
    void ShowViewProblem(const QString& message);
    void AddHint(const QString& text);

    std::shared_ptr<ImportedFile> m_imported;
    const NodeList m_nodes;
    QStackedLayout* m_layout;
    SceneView* m_view = nullptr;
    QPointer<NodeTree> m_tree;
    const Zemtar::CZemtarSceneNode* m_selected = nullptr;
    const Zemtar::CZemtarSceneNode* m_isolated = nullptr;
    QSet<const Zemtar::CZemtarSceneNode*> m_hidden;
    SectionPlane m_section;
    double m_explosion = 0.0;
    std::optional<MeasureKind> m_measuring;
    std::unique_ptr<MeasureTool> m_measureTool;
    std::vector<Measurement> m_measurements;
    QTemporaryDir m_drags; ///< files that were dragged out, which their targets may still read
};
