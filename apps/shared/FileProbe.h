#pragma once

#include <QByteArray>
#include <QString>

struct FormatEntry;

/// What the first bytes of a file say of it, whatever its name.
struct FileContent
{
    const FormatEntry* format = nullptr; ///< null for content that no importer reads
    QString name;                        ///< "IGES", "a ZIP archive"; empty when nothing is known
    QString schema;                      ///< of STEP and IFC: "AUTOMOTIVE_DESIGN", "IFC4"; else empty
};

/// Tells content by its signature. `head` is the beginning of the file, 16 kB for the schema to be found.
FileContent ProbeContent(const QByteArray& head);

/// Why a file that was to be read as `format` could not be: it is missing, a folder, not readable, empty, of
/// another format than it was taken for, or without an engine here. Empty when the file itself gives no
/// reason. Looks at the file's beginning alone.
QString WhyNotReadable(const QString& file, const FormatEntry& format);

/// Why nothing can be written under a name: its format has no engine here, its folder is missing or takes no
/// file, or a folder has the name. Empty when nothing speaks against it.
QString WhyNotWritable(const QString& file, const FormatEntry& format);
