#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

class NodeList;

/// The parts of a document, each kind once with its number: parts of one name, of the same meshes and
/// materials are one kind. Knows no window.
///
///     file.write(BillOfMaterials(page.Nodes()).ToCsv());
class BillOfMaterials
{
public:
    struct Line
    {
        qint64 count = 0;
        QString name;
        QString material;             ///< names, joined by commas
        std::optional<double> volume; ///< of one, in cubic metres, where the importer knows it
        qint64 triangles = 0;         ///< of one
        QStringList metaData;         ///< in the order of `MetaDataNames`
        int position = -1;            ///< of the first in the list of nodes
    };

    explicit BillOfMaterials(const NodeList& nodes);

    /// In the order in which the document has them.
    const std::vector<Line>& Lines() const { return m_lines; }
    /// Names of metadata that any part has: "Category/Name".
    const QStringList& MetaDataNames() const { return m_metaDataNames; }
    /// The sum over all parts of what is known, in cubic metres.
    double TotalVolume() const;
    qint64 PartCount() const;

    /// The titles of the columns, and a line's values in their order; numbers as programs read them.
    QStringList Titles() const;
    QStringList Values(const Line& line) const;
    /// UTF-8 with its mark, as spreadsheets want it; RFC 4180. A text that a spreadsheet would take for a
    /// formula begins with an apostrophe.
    QByteArray ToCsv() const;

private:
    std::vector<Line> m_lines;
    QStringList m_metaDataNames;
};
