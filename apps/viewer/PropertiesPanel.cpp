#include "apps/viewer/PropertiesPanel.h"

#include "apps/geometry/OrientedBox.h"
#include "apps/viewer/NodeBounds.h"
#include "apps/viewer/NodeList.h"
#include "apps/viewer/Texts.h"
#include "host/CZemtar3DObject.h"
#include "host/CZemtarCommonBasicMaterial.h"
#include "host/CZemtarMaterial.h"
#include "host/CZemtarMetaData.h"
#include "host/CZemtarSolidHint.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QHeaderView>
#include <QImageReader>
#include <QMenu>
#include <QPainter>

#include <cmath>
#include <map>
#include <set>

using namespace Zemtar;

namespace {

constexpr double MillimetresPerMetre = 1000.0;
constexpr double CubicCentimetresPerCubicMetre = 1e6;

QString Number(double value)
{
    // No "-0" and no traces of rounding where the value is nothing.
    return QLocale().toString(std::abs(value) < 1e-12 ? 0.0 : value, 'g', 6);
}

QString Number(qint64 value)
{
    return QLocale().toString(value);
}

QString Triple(double x, double y, double z, double scale)
{
    return QStringLiteral("%1,  %2,  %3").arg(Number(x * scale), Number(y * scale), Number(z * scale));
}

QString Triple(const Vec3& point, double scale)
{
    return Triple(point.x, point.y, point.z, scale);
}

QColor ColorOf(const CZemtarColor& color)
{
    const auto channel = [](double value) { return static_cast<float>(std::clamp(value, 0.0, 1.0)); };
    return QColor::fromRgbF(channel(color.R()), channel(color.G()), channel(color.B()));
}

QIcon Swatch(const QColor& color, const QPalette& palette, int side, double pixelRatio)
{
    QPixmap pixmap(QSize(side, side) * pixelRatio);
    pixmap.setDevicePixelRatio(pixelRatio);
    pixmap.fill(color);
    QPainter painter(&pixmap);
    painter.setPen(palette.color(QPalette::Mid));
    painter.drawRect(0, 0, side - 1, side - 1);
    return pixmap;
}

/// The file's picture, no larger than a thumbnail; null when it cannot be read.
QPixmap Thumbnail(const QString& file, int side)
{
    QImageReader reader(file);
    if (const QSize size = reader.size(); size.isValid()) {
        reader.setScaledSize(size.scaled(side, side, Qt::KeepAspectRatio));
    }
    return QPixmap::fromImageReader(&reader);
}

struct TextureSlot
{
    enumTextureType type;
    const char* name;
};

constexpr TextureSlot TextureSlots[] = {
    {eTextureDiffuse, QT_TRANSLATE_NOOP("PropertiesPanel", "Diffuse texture")},
    {eTextureAmbient, QT_TRANSLATE_NOOP("PropertiesPanel", "Ambient texture")},
    {eTextureSpecular, QT_TRANSLATE_NOOP("PropertiesPanel", "Specular texture")},
    {eTextureEmissive, QT_TRANSLATE_NOOP("PropertiesPanel", "Emissive texture")},
    {eTextureOpacity, QT_TRANSLATE_NOOP("PropertiesPanel", "Opacity texture")},
    {eTextureBump, QT_TRANSLATE_NOOP("PropertiesPanel", "Bump texture")},
    {eTextureNormal, QT_TRANSLATE_NOOP("PropertiesPanel", "Normal texture")},
    {eTextureReflection, QT_TRANSLATE_NOOP("PropertiesPanel", "Reflection texture")},
};

} // namespace

PropertiesPanel::PropertiesPanel(QWidget* parent) : QTreeWidget(parent)
{
    setObjectName(QStringLiteral("properties"));
    setColumnCount(2);
    setHeaderHidden(true);
    setRootIsDecorated(true);
    setIndentation(indentation() * 2 / 3);
    setAlternatingRowColors(true);
    setTextElideMode(Qt::ElideRight);
    header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    connect(this, &QTreeWidget::itemDoubleClicked, this, [this](const QTreeWidgetItem* item) {
        if (const QString file = item->data(1, Qt::UserRole).toString(); !file.isEmpty()) {
            emit PictureActivated(file);
        }
    });
    connect(this, &QTreeWidget::itemCollapsed, this,
            [this](const QTreeWidgetItem* item) { m_closedSections.insert(item->text(0)); });
    connect(this, &QTreeWidget::itemExpanded, this,
            [this](const QTreeWidgetItem* item) { m_closedSections.remove(item->text(0)); });
}

void PropertiesPanel::Show(const CZemtarSceneNode* node, const NodeList* nodes)
{
    clear();
    const int position = nodes ? nodes->Position(node) : -1;
    if (position < 0) {
        return;
    }
    AddNode(*node, *nodes, position);
    AddContents(*nodes, position);
    AddMaterials(*nodes, position);
    if (const auto* object = dynamic_cast<const CZemtar3DObject*>(node)) {
        AddGeometry(*object);
    }
    AddSolid(*node);
    AddOwnSizes(*nodes, position);
    AddBounds(*nodes, position);
    AddPlacement(*nodes, position);
    AddMetaData(*node);
}

QTreeWidgetItem* PropertiesPanel::Section(const QString& title)
{
    auto* section = new QTreeWidgetItem(this, {title});
    QFont bold = font();
    bold.setBold(true);
    section->setFont(0, bold);
    section->setFirstColumnSpanned(true);
    section->setFlags(Qt::ItemIsEnabled);
    section->setExpanded(!m_closedSections.contains(title));
    return section;
}

QTreeWidgetItem* PropertiesPanel::Row(QTreeWidgetItem* section, const QString& name, const QString& value,
                                      const QString& toolTip)
{
    auto* row = new QTreeWidgetItem(section, {name, value});
    row->setToolTip(0, name);
    row->setToolTip(1, toolTip.isEmpty() ? value : toolTip);
    return row;
}

void PropertiesPanel::AddMatrix(QTreeWidgetItem* section, const QString& name, const CZemtarMatrix& matrix,
                                int size)
{
    for (int line = 0; line < size; ++line) {
        QString text;
        for (int column = 0; column < size; ++column) {
            const double value = matrix.M(line, column);
            text += QLocale().toString(std::abs(value) < 1e-12 ? 0.0 : value, 'g', 5).rightJustified(12);
        }
        Row(section, line == 0 ? name : QString(), text)
            ->setFont(1, QFontDatabase::systemFont(QFontDatabase::FixedFont));
    }
}

void PropertiesPanel::AddNode(const CZemtarSceneNode& node, const NodeList& nodes, int position)
{
    QTreeWidgetItem* section = Section(tr("Node"));
    Row(section, tr("Name"), nodes.DisplayName(position));
    Row(section, tr("Kind"), KindName(KindOf(node)));
    Row(section, tr("Id"), QString::number(node.ID().Value()));
    QStringList path;
    for (int at = nodes.Parent(position); at >= 0; at = nodes.Parent(at)) {
        path.prepend(nodes.DisplayName(at));
    }
    if (!path.isEmpty()) {
        Row(section, tr("Within"), path.join(QStringLiteral(" / ")), path.join('\n'));
    }
}

void PropertiesPanel::AddContents(const NodeList& nodes, int position)
{
    const NodeCounts own = NodeCounts::Of(nodes.Node(position));
    const NodeCounts all = nodes.Subtree(position);
    QTreeWidgetItem* section = Section(tr("Contents"));
    const auto add = [&](const QString& name, qint64 ownCount, qint64 allCount) {
        if (allCount != 0) {
            Row(section, name,
                ownCount == allCount ? Number(allCount)
                : ownCount == 0      ? tr("%1 below").arg(Number(allCount))
                                     : tr("%1 own, %2 in all").arg(Number(ownCount), Number(allCount)));
        }
    };
    add(tr("Triangles"), own.triangles, all.triangles);
    add(tr("Vertices"), own.vertices, all.vertices);
    add(tr("Segments"), own.segments, all.segments);
    add(tr("Assemblies"), 0, all.assemblies - own.assemblies);
    add(tr("Parts"), 0, all.parts - own.parts);
    add(tr("Meshes"), 0, all.meshes - own.meshes);
    add(tr("Polylines"), 0, all.polylines - own.polylines);
    if (section->childCount() == 0) {
        Row(section, tr("Triangles"), tr("none"));
    }
}

void PropertiesPanel::AddPlacement(const NodeList& nodes, int position)
{
    QTreeWidgetItem* section = Section(tr("Local placement"));
    // One row may stand for a group with its part: then both place it.
    CZemtarMatrix matrix = nodes.Node(position).LocalMatrix();
    for (int at = position; at != nodes.RowTop(position);) {
        at = nodes.Parent(at);
        matrix = nodes.Node(at).LocalMatrix() * matrix;
    }
    if (matrix.IsIdentity()) {
        Row(section, tr("Matrix"), tr("identity"));
        return;
    }
    const double x = matrix.M(0, 3), y = matrix.M(1, 3), z = matrix.M(2, 3);
    Row(section, tr("Translation (mm)"), Triple(x, y, z, MillimetresPerMetre));
    Row(section, tr("Translation (m)"), Triple(x, y, z, 1.0));
    std::array<double, 3> scale{};
    for (int column = 0; column < 3; ++column) {
        scale[static_cast<std::size_t>(column)] =
            std::hypot(matrix.M(0, column), matrix.M(1, column), matrix.M(2, column));
    }
    const double turn = matrix.M(0, 0) * (matrix.M(1, 1) * matrix.M(2, 2) - matrix.M(1, 2) * matrix.M(2, 1)) -
                        matrix.M(0, 1) * (matrix.M(1, 0) * matrix.M(2, 2) - matrix.M(1, 2) * matrix.M(2, 0)) +
                        matrix.M(0, 2) * (matrix.M(1, 0) * matrix.M(2, 1) - matrix.M(1, 1) * matrix.M(2, 0));
    Row(section, tr("Scale"),
        Triple(scale[0], scale[1], scale[2], 1.0) + (turn < 0 ? tr("  (mirrored)") : QString()));
    AddMatrix(section, tr("Matrix (m)"), matrix, 4);
}

void PropertiesPanel::AddBounds(const NodeList& nodes, int position)
{
    const std::optional<NodeBounds> bounds = NodeBounds::Of(nodes, position);
    if (!bounds) {
        return;
    }
    QTreeWidgetItem* section = Section(bounds->isExact ? tr("Bounds in the world, from the mesh")
                                                       : tr("Bounds in the world, from the mesh (at most)"));
    Row(section, tr("Size (mm)"), Triple(bounds->box.Size(), MillimetresPerMetre));
    Row(section, tr("Minimum (mm)"), Triple(bounds->box.min, MillimetresPerMetre));
    Row(section, tr("Maximum (mm)"), Triple(bounds->box.max, MillimetresPerMetre));
}

/// A part's length, width and height, however it lies.
void PropertiesPanel::AddOwnSizes(const NodeList& nodes, int position)
{
    const NodeKind kind = KindOf(nodes.Node(position));
    const std::vector<Vec3> points =
        kind == NodeKind::Part || kind == NodeKind::Mesh ? OwnPoints(nodes, position) : std::vector<Vec3>();
    if (points.empty()) {
        return;
    }
    const OrientedBox box = OrientedBox::Around(points);
    QTreeWidgetItem* section = Section(tr("Sizes along its own axes, from the mesh"));
    Row(section, tr("Sizes (mm)"), Triple(box.size[0], box.size[1], box.size[2], MillimetresPerMetre),
        tr("The smallest box that was found around the mesh, whatever its direction"));
    Row(section, tr("Longest axis"), Triple(box.axes[0], 1.0));
}

void PropertiesPanel::AddSolid(const CZemtarSceneNode& node)
{
    const CZemtarSolidHint* hint = node.SolidHint();
    if (!hint) {
        return;
    }
    QTreeWidgetItem* section = Section(tr("Solid"));
    const CZemtarSolidAttributes& attributes = hint->Attributes();
    Row(section, tr("Volume (cm³)"), Number(attributes.Volume() * CubicCentimetresPerCubicMetre),
        tr("%1 m³").arg(Number(attributes.Volume())));
    const CZemtar3DVertex& centre = attributes.CenterOfMass();
    Row(section, tr("Centroid (mm)"), Triple(centre.X(), centre.Y(), centre.Z(), MillimetresPerMetre),
        tr("Local to the node; %1 m").arg(Triple(centre.X(), centre.Y(), centre.Z(), 1.0)));
    // The importer that knows the inertia clears the bottom-right corner.
    if (hint->InertiaMatrix().M(3, 3) == 0.0) {
        AddMatrix(section, tr("Inertia (m⁵)"), hint->InertiaMatrix(), 3);
    }
}

void PropertiesPanel::AddGeometry(const CZemtar3DObject& object)
{
    const CZemtarGeometry* geometry = object.Geometry();
    if (!geometry) {
        return;
    }
    QTreeWidgetItem* section = Section(tr("Geometry"));
    Row(section, tr("Definition"), Text(object.GeometyDefinitionID()));
    Row(section, tr("Nodes that use it"), Number(static_cast<qint64>(geometry->UserCount())));
    const auto yesOrNo = [](const auto* table) {
        return table && table->Count() != 0 ? tr("yes") : tr("no");
    };
    Row(section, tr("Normals"), yesOrNo(geometry->VerticiesNormalsTable()));
    Row(section, tr("Texture coordinates"), yesOrNo(object.TextureCoordinatesTable()));
}

/// The material of a mesh, and of a part where all its meshes have one.
void PropertiesPanel::AddMaterials(const NodeList& nodes, int position)
{
    constexpr int Most = 10000; // nodes that are looked at
    std::set<const CZemtarMaterial*> materials;
    for (int at = position; at < std::min(nodes.End(position), position + Most); ++at) {
        if (const auto* object = dynamic_cast<const CZemtar3DObject*>(&nodes.Node(at))) {
            materials.insert(object->Material());
        }
    }
    if (materials.size() == 1) {
        AddMaterial(*materials.begin());
    } else if (materials.size() > 1 && KindOf(nodes.Node(position)) == NodeKind::Part) {
        QTreeWidgetItem* section = Section(tr("Material"));
        for (const CZemtarMaterial* material : materials) {
            Row(section, tr("Name"), material ? Text(material->Name()) : tr("none"));
        }
    }
}

void PropertiesPanel::AddMaterial(const CZemtarMaterial* material)
{
    QTreeWidgetItem* section = Section(tr("Material"));
    if (!material) {
        Row(section, tr("Name"), tr("none"));
        return;
    }
    Row(section, tr("Name"), Text(material->Name()));
    const int side = fontMetrics().height();
    const auto addColor = [&](const QString& name, const CZemtarColor& hostColor) {
        const QColor color = ColorOf(hostColor);
        Row(section, name, color.name(), Triple(hostColor.R(), hostColor.G(), hostColor.B(), 1.0))
            ->setIcon(1, Swatch(color, palette(), side, devicePixelRatio()));
    };
    const CZemtarCommonBasicMaterial* general = material->BasicMaterialAsGeneralMaterial();
    if (!general) {
        if (const CZemtarBasicMaterial* basic = material->BasicMaterial()) {
            addColor(tr("Colour"), basic->DisplayColor());
        }
        return;
    }
    addColor(tr("Diffuse"), general->DiffuseColor());
    addColor(tr("Ambient"), general->AmbientColor());
    addColor(tr("Specular"), general->SpecularColor());
    addColor(tr("Emissive"), general->EmissiveColor());
    Row(section, tr("Opacity"), tr("%1 %").arg(Number(100.0 * general->Opacity())));
    for (const TextureSlot& slot : TextureSlots) {
        if (const CZemtarTexture* texture = general->Texture(slot.type)) {
            const QString file = Text(texture->FullFilename(true));
            const QPixmap picture = Thumbnail(file, 3 * side);
            QTreeWidgetItem* row =
                Row(section, tr(slot.name), picture.isNull() ? tr("%1 (cannot be read)").arg(file) : file);
            row->setIcon(1, picture);
            row->setData(1, Qt::UserRole, file);
            row->setToolTip(1, tr("%1\nDouble-click opens it in the image window").arg(file));
        }
    }
}

void PropertiesPanel::AddMetaData(const CZemtarSceneNode& node)
{
    std::map<CZemtarString, CZemtarMetaData::NamedValues> categories;
    node.MetaData()->ListNamedValues(categories);
    for (const auto& [category, pairs] : categories) {
        QTreeWidgetItem* section = Section(tr("Metadata: %1").arg(Text(category)));
        for (const auto& [name, value] : pairs) {
            const QString unit = Text(node.MetaData()->Unit(name, category));
            Row(section, Text(name),
                unit.isEmpty() ? Text(value) : QStringLiteral("%1 %2").arg(Text(value), unit));
        }
    }
}

void PropertiesPanel::CopyValue()
{
    if (const QTreeWidgetItem* item = currentItem(); item && item->parent()) {
        QGuiApplication::clipboard()->setText(item->text(1));
    }
}

void PropertiesPanel::contextMenuEvent(QContextMenuEvent* event)
{
    if (currentItem() && currentItem()->parent()) {
        QMenu menu(this);
        if (const QString file = currentItem()->data(1, Qt::UserRole).toString(); !file.isEmpty()) {
            menu.addAction(tr("Open in the image window"), this,
                           [this, file] { emit PictureActivated(file); });
        }
        menu.addAction(tr("Copy value"), this, &PropertiesPanel::CopyValue);
        menu.exec(event->globalPos());
    }
}

void PropertiesPanel::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Copy)) {
        CopyValue();
        return;
    }
    QTreeWidget::keyPressEvent(event);
}

void PropertiesPanel::paintEvent(QPaintEvent* event)
{
    QTreeWidget::paintEvent(event);
    if (topLevelItemCount() == 0) {
        QPainter painter(viewport());
        painter.setPen(palette().color(QPalette::PlaceholderText));
        const int margin = fontMetrics().height();
        painter.drawText(viewport()->rect().adjusted(margin, margin, -margin, -margin),
                         Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap,
                         tr("Select a node in the tree or in the view."));
    }
}
