#pragma once

#include <QTreeWidget>

class NodeList;

namespace Zemtar {
class CZemtar3DObject;
class CZemtarMaterial;
class CZemtarMatrix;
class CZemtarSceneNode;
} // namespace Zemtar

/// All that is known of one node, in sections: what it is, what it holds, where it stands, its solid, its
/// material and its metadata. Lengths are shown in millimetres, since CAD is. Values can be copied.
class PropertiesPanel : public QTreeWidget
{
    Q_OBJECT

public:
    explicit PropertiesPanel(QWidget* parent = nullptr);

    /// Shows a node of the list (null: none), which is read now and not kept.
    void Show(const Zemtar::CZemtarSceneNode* node, const NodeList* nodes);

signals:
    /// The user asked to see a picture file of a material.
    void PictureActivated(const QString& file);

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QTreeWidgetItem* Section(const QString& title);
    QTreeWidgetItem* Row(QTreeWidgetItem* section, const QString& name, const QString& value,
                         const QString& toolTip = {});
    void AddMatrix(QTreeWidgetItem* section, const QString& name, const Zemtar::CZemtarMatrix& matrix,
                   int size);
    void AddNode(const Zemtar::CZemtarSceneNode& node, const NodeList& nodes, int position);
    void AddContents(const NodeList& nodes, int position);
    void AddPlacement(const NodeList& nodes, int position);
    void AddOwnSizes(const NodeList& nodes, int position);
    void AddBounds(const NodeList& nodes, int position);
    void AddSolid(const Zemtar::CZemtarSceneNode& node);
    void AddGeometry(const Zemtar::CZemtar3DObject& object);
    void AddMaterials(const NodeList& nodes, int position);
    void AddMaterial(const Zemtar::CZemtarMaterial* material);
    void AddMetaData(const Zemtar::CZemtarSceneNode& node);
    void CopyValue();

    QSet<QString> m_closedSections;
};
