#include "apps/shared/FileProbe.h"

#include "apps/shared/FormatTable.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

namespace {

constexpr qint64 Head = 16 * 1024;

/// Bytes that content of one kind begins with.
struct Signature
{
    const char* bytes;
    int length;
    const char* format; ///< as in the table of formats; null for what is no CAD file that is read here
    const char* name;
};

// NOTE: an OLE compound file may be of any program; its name decides, so it is not in the list.
constexpr Signature Signatures[] = {
    {"ISO-10303-21", 12, "STEP", "STEP"},
    {"3D Geometry File Format ", 24, "Rhino", "Rhino"},
    {"ACIS BinaryFile", 15, "ACIS", "ACIS"},
    {"ASM BinaryFile", 14, "ACIS", "ACIS"},
    {"**ABCDEFGHIJKLMNOPQRSTUVWXYZ", 28, "Parasolid", "Parasolid"},
    {"PS\0\0", 4, "Parasolid", "Parasolid"},
    {"#UGC:", 5, "Creo", "Creo"},
    {"PK\x03\x04", 4, nullptr, QT_TRANSLATE_NOOP("FileProbe", "a ZIP archive")},
    {"\x1f\x8b", 2, nullptr, QT_TRANSLATE_NOOP("FileProbe", "gzip-compressed")},
    {"%PDF-", 5, nullptr, QT_TRANSLATE_NOOP("FileProbe", "a PDF document")},
    {"\x89PNG", 4, nullptr, QT_TRANSLATE_NOOP("FileProbe", "a PNG picture")},
    {"\xff\xd8\xff", 3, nullptr, QT_TRANSLATE_NOOP("FileProbe", "a JPEG picture")},
    {"<?xml", 5, nullptr, QT_TRANSLATE_NOOP("FileProbe", "an XML document")},
    {"<!DOCTYPE html", 14, nullptr, QT_TRANSLATE_NOOP("FileProbe", "a web page")},
    {"<html", 5, nullptr, QT_TRANSLATE_NOOP("FileProbe", "a web page")},
    {"glTF", 4, nullptr, QT_TRANSLATE_NOOP("FileProbe", "a glTF model")},
    {"solid ", 6, nullptr, QT_TRANSLATE_NOOP("FileProbe", "an STL mesh")},
};

QString Tr(const char* text)
{
    return QCoreApplication::translate("FileProbe", text);
}

FileContent Content(const char* format, const char* name)
{
    return {format ? FormatByName(QString::fromLatin1(format)) : nullptr, Tr(name), {}};
}

/// Text before the first signature: byte order marks and white space that editors leave.
QByteArray WithoutLead(const QByteArray& head)
{
    qsizetype at = head.startsWith("\xef\xbb\xbf") ? 3 : 0;
    while (at < head.size() &&
           (head[at] == ' ' || head[at] == '\t' || head[at] == '\r' || head[at] == '\n')) {
        ++at;
    }
    return head.mid(at);
}

/// IGES: 80 columns a line, of which the 73rd says the section and the last seven the number.
bool IsIges(const QByteArray& head)
{
    return head.size() >= 80 && (head[72] == 'S' || head[72] == 'C') &&
           head.mid(73, 7).trimmed().toInt() == 1;
}

/// JT: "Version 9.5 JT".
bool IsJt(const QByteArray& head)
{
    return head.startsWith("Version ") && head.left(80).contains("JT");
}

/// The archives of SolidWorks: a number of the file, 4, headers of blocks.
bool IsSolidWorks(const QByteArray& head)
{
    return head.mid(4, 4) == QByteArray("\0\0\0\4", 4) && head.contains(QByteArray("\x14\0\6\0\x08\0", 6));
}

/// ACIS text: a line of four numbers, the first the version times 100.
bool IsAcisText(const QByteArray& head)
{
    static const QRegularExpression line(QStringLiteral("^[0-9]{3,5} [0-9]+ [0-9]+ [0-9]+\\s*[\\r\\n]"));
    return line.match(QString::fromLatin1(head.left(80))).hasMatch();
}

QString SchemaOf(const QByteArray& head)
{
    static const QRegularExpression schema(QStringLiteral("FILE_SCHEMA\\s*\\(\\s*\\(\\s*'([A-Za-z0-9_]+)"));
    return schema.match(QString::fromLatin1(head)).captured(1).toUpper();
}

/// What the schema's own text says that no engine here reads; empty for schemas that are read.
QString WhyNotSchema(const FileContent& content)
{
    if (content.schema.startsWith("IFC") && content.schema != "IFC2X3" &&
        !content.schema.startsWith("IFC4")) {
        return Tr("its schema is %1; IFC2X3 and IFC4 are read").arg(content.schema);
    }
    return {};
}

} // namespace

FileContent ProbeContent(const QByteArray& head)
{
    const QByteArray text = WithoutLead(head);
    for (const Signature& signature : Signatures) {
        if (!text.startsWith(QByteArray(signature.bytes, signature.length))) {
            continue;
        }
        FileContent content = Content(signature.format, signature.name);
        if (content.format && content.format->name == "STEP") {
            content.schema = SchemaOf(head);
            if (content.schema.startsWith("IFC")) {
                content.format = FormatByName(QStringLiteral("IFC"));
                content.name = content.format->Name();
            }
        }
        return content;
    }
    return IsIges(head)         ? Content("IGES", "IGES")
           : IsJt(text)         ? Content("JT", "JT")
           : IsAcisText(text)   ? Content("ACIS", "ACIS")
           : IsSolidWorks(head) ? Content("SolidWorks", "SolidWorks")
                                : FileContent();
}

QString WhyNotReadable(const QString& file, const FormatEntry& format)
{
    const QFileInfo info(file);
    if (!info.exists()) {
        return info.isSymLink() ? Tr("it is a link to a file that does not exist")
                                : Tr("there is no such file");
    }
    if (info.isDir()) {
        return Tr("it is a folder");
    }
    QFile source(file);
    if (!source.open(QIODevice::ReadOnly)) {
        return Tr("it cannot be opened: %1").arg(source.errorString());
    }
    const QByteArray head = source.read(Head);
    if (head.isEmpty()) {
        return Tr("it is empty");
    }
    const FileContent content = ProbeContent(head);
    if (!content.name.isEmpty() && content.format != &format) {
        return content.format
                   ? Tr("its content is %1, not %2; --format %1 reads it so").arg(content.name, format.Name())
                   : Tr("its content is %1, not %2").arg(content.name, format.Name());
    }
    if (!format.CanRead()) {
        return Tr("this build has no engine that reads %1 files").arg(format.Name());
    }
    return WhyNotSchema(content);
}

QString WhyNotWritable(const QString& file, const FormatEntry& format)
{
    if (!format.CanWrite()) {
        return Tr("this build has no engine that writes %1 files").arg(format.Name());
    }
    const QFileInfo info(file);
    const QFileInfo folder(info.absolutePath());
    if (info.isDir()) {
        return Tr("it is a folder");
    }
    if (!folder.isDir()) {
        return Tr("there is no folder %1").arg(info.path());
    }
    return folder.isWritable() ? QString() : Tr("the folder %1 takes no files").arg(info.path());
}
