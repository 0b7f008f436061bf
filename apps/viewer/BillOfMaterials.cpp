#include "apps/viewer/BillOfMaterials.h"

#include "apps/viewer/NodeList.h"
#include "apps/viewer/Texts.h"
#include "host/CZemtar3DObject.h"
#include "host/CZemtarMaterial.h"
#include "host/CZemtarMetaData.h"
#include "host/CZemtarSolidHint.h"

#include <QCoreApplication>

#include <map>

using namespace Zemtar;

namespace {

constexpr double CubicCentimetresPerCubicMetre = 1e6;

QString Tr(const char* text)
{
    return QCoreApplication::translate("BillOfMaterials", text);
}

/// What makes two parts one kind.
struct Identity
{
    QString name;
    QStringList geometries;
    QStringList materials;

    auto operator<=>(const Identity& other) const
    {
        return std::tie(name, geometries, materials) <=>
               std::tie(other.name, other.geometries, other.materials);
    }
};

Identity IdentityOf(const NodeList& nodes, int position)
{
    Identity identity{nodes.DisplayName(position), {}, {}};
    for (int at = position; at < nodes.End(position); ++at) {
        if (const auto* object = dynamic_cast<const CZemtar3DObject*>(&nodes.Node(at))) {
            identity.geometries << Text(object->GeometyDefinitionID());
            const QString material = object->Material() ? Text(object->Material()->Name()) : QString();
            if (!material.isEmpty() && !identity.materials.contains(material)) {
                identity.materials << material;
            }
        }
    }
    return identity;
}

std::map<QString, QString> MetaDataOf(const CZemtarSceneNode& node)
{
    std::map<CZemtarString, CZemtarMetaData::NamedValues> categories;
    node.MetaData()->ListNamedValues(categories);
    std::map<QString, QString> found;
    for (const auto& [category, values] : categories) {
        for (const auto& [name, value] : values) {
            found[Text(category) + '/' + Text(name)] = Text(value);
        }
    }
    return found;
}

QByteArray CsvLine(const QStringList& values)
{
    QStringList fields;
    for (QString value : values) {
        bool isNumber = false;
        static_cast<void>(value.toDouble(&isNumber));
        if (!isNumber && !value.isEmpty() && QStringLiteral("=+-@\t\r").contains(value.front())) {
            value.prepend('\'');
        }
        if (value.contains(',') || value.contains('"') || value.contains('\n') || value.contains('\r')) {
            value = '"' + value.replace('"', QStringLiteral("\"\"")) + '"';
        }
        fields << value;
    }
    return fields.join(',').toUtf8() + "\r\n";
}

} // namespace

BillOfMaterials::BillOfMaterials(const NodeList& nodes)
{
    std::map<Identity, std::size_t> known;
    std::vector<std::map<QString, QString>> metaData;
    for (int position = 0; position < nodes.Count(); ++position) {
        const CZemtarSceneNode& node = nodes.Node(position);
        if (KindOf(node) != NodeKind::Part) {
            continue;
        }
        const Identity identity = IdentityOf(nodes, position);
        const auto [entry, isNew] = known.try_emplace(identity, m_lines.size());
        if (isNew) {
            Line line;
            line.name = identity.name;
            line.material = identity.materials.join(QStringLiteral(", "));
            line.triangles = nodes.Subtree(position).triangles;
            line.position = position;
            if (const CZemtarSolidHint* hint = node.SolidHint()) {
                line.volume = hint->Attributes().Volume();
            }
            m_lines.push_back(line);
            metaData.push_back(MetaDataOf(node));
            for (const auto& [name, value] : metaData.back()) {
                if (!m_metaDataNames.contains(name)) {
                    m_metaDataNames << name;
                }
            }
        }
        ++m_lines[entry->second].count;
    }
    m_metaDataNames.sort();
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        for (const QString& name : std::as_const(m_metaDataNames)) {
            const auto value = metaData[i].find(name);
            m_lines[i].metaData << (value == metaData[i].end() ? QString() : value->second);
        }
    }
}

double BillOfMaterials::TotalVolume() const
{
    double sum = 0.0;
    for (const Line& line : m_lines) {
        sum += static_cast<double>(line.count) * line.volume.value_or(0.0);
    }
    return sum;
}

qint64 BillOfMaterials::PartCount() const
{
    qint64 count = 0;
    for (const Line& line : m_lines) {
        count += line.count;
    }
    return count;
}

QStringList BillOfMaterials::Titles() const
{
    return QStringList{Tr("Quantity"), Tr("Name"), Tr("Material"), Tr("Volume of one (cm³)"),
                       Tr("Triangles of one")} +
           m_metaDataNames;
}

QStringList BillOfMaterials::Values(const Line& line) const
{
    return QStringList{QString::number(line.count), line.name, line.material,
                       line.volume ? QString::number(*line.volume * CubicCentimetresPerCubicMetre, 'g', 8)
                                   : QString(),
                       QString::number(line.triangles)} +
           line.metaData;
}

QByteArray BillOfMaterials::ToCsv() const
{
    QByteArray csv = "\xEF\xBB\xBF" + CsvLine(Titles());
    for (const Line& line : m_lines) {
        csv += CsvLine(Values(line));
    }
    return csv;
}
