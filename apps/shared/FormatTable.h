#pragma once

#include "apps/export/SceneExport.h"

#include "cadexchange/CZemtarCADExchangeReader.h"
#include "cadexchange/CZemtarCADExchangeWriter.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <string_view>

/// One CAD format as the program knows it: its name, the file extensions that stand for it, and its numbers
/// in the library.
struct FormatEntry
{
    std::string_view name;       ///< as the user writes it with --format, and as it is printed
    std::string_view extensions; ///< lower case, separated by blanks; the first is the usual one
    Zemtar::CZemtarCADExchangeReader::eReaderType reader;
    Zemtar::CZemtarCADExchangeWriter::eWriterType writer;
    SceneFormat scene =
        SceneFormat::None;      ///< else the format is the programs' own, and the numbers mean nothing
    bool isUnconfirmed = false; ///< files that are written were read back by the open engine alone

    QString Name() const { return QString::fromLatin1(name.data(), static_cast<int>(name.size())); }
    QStringList Extensions() const;
    /// Tells whether the engine in this build opens (saves) files of the format.
    bool CanRead() const;
    bool CanWrite() const;
    /// Tells whether the library exports the format at all, whatever the engine.
    bool HasWriter() const;
};

/// All formats of the library, in the order of their numbers.
const std::vector<FormatEntry>& AllFormats();

/// The formats that the programs write without the library.
const std::vector<FormatEntry>& SceneFormats();

/// The names of the library's formats, in the same order.
QStringList FormatNames();
/// The names of all formats that can be exported to, whatever the engine.
QStringList ExportFormatNames();

/// Finds a format by its name, in any letter case; null when there is none.
const FormatEntry* FormatByName(const QString& name);

/// Finds a format by a file name's extension, in any letter case; null when no format has it. A ".prt" file
/// is taken for NX.
const FormatEntry* FormatByFileName(const QString& fileName);
/// As above, among the formats of the library and the programs' own: what an export may be written as.
const FormatEntry* ExportFormatByName(const QString& name);
const FormatEntry* ExportFormatByFileName(const QString& fileName);
/// Finds all formats that the extension may stand for, the likelier first: two for ".prt". The version number
/// that Creo puts behind it ("wheel.prt.3") is passed over.
QList<const FormatEntry*> FormatsByFileName(const QString& fileName);
