#include "apps/shared/FormatTable.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

#if __has_include(<cadex/internal/Formats.hxx>)
#include <cadex/internal/Formats.hxx>
#define ZEMTAR_OPEN_ENGINE 1
#endif

using Zemtar::CZemtarCADExchangeReader;
using Zemtar::CZemtarCADExchangeWriter;

const std::vector<FormatEntry>& AllFormats()
{
    using R = CZemtarCADExchangeReader;
    using W = CZemtarCADExchangeWriter;
    // NOTE: ".prt" belongs to two formats; it means NX here, and `FormatsByFileName` knows the other.
    static const std::vector<FormatEntry> formats = {
        {"ACIS", "sat sab asat asab", R::eReaderACIS, W::eWriterACIS},
        {"Creo", "asm xas xpr", R::eReaderCreo, W::eWriterCreo},
        {"IFC", "ifc", R::eReaderIFC, W::eWriterIFC},
        {"IGES", "igs iges", R::eReaderIGES, W::eWriterIGES},
        {"JT", "jt", R::eReaderJT, W::eWriterJT, SceneFormat::None, true},
        {"NX", "prt", R::eReaderNX, W::eWriterNX},
        {"Parasolid", "x_t x_b xmt_txt xmt_bin", R::eReaderParasolid, W::eWriterParasolid, SceneFormat::None,
         true},
        {"Rhino", "3dm", R::eReaderRhino, W::eWriterRhino},
        {"SolidWorks", "sldprt sldasm", R::eReaderSolidWorks, W::eWriterSolidWorks},
        {"STEP", "step stp p21", R::eReaderSTEP, W::eWriterSTEP},
    };
    return formats;
}

const std::vector<FormatEntry>& SceneFormats()
{
    constexpr auto NoReader = CZemtarCADExchangeReader::eReaderACIS;
    constexpr auto NoWriter = CZemtarCADExchangeWriter::eWriterACIS;
    static const std::vector<FormatEntry> formats = {
        {"GLB", "glb", NoReader, NoWriter, SceneFormat::GLB},
        {"OBJ", "obj", NoReader, NoWriter, SceneFormat::OBJ},
        {"PLY", "ply", NoReader, NoWriter, SceneFormat::PLY},
        {"STL", "stl", NoReader, NoWriter, SceneFormat::STL},
    };
    return formats;
}

QStringList FormatEntry::Extensions() const
{
    return QString::fromLatin1(extensions.data(), static_cast<int>(extensions.size())).split(' ');
}

#ifdef ZEMTAR_OPEN_ENGINE
bool FormatEntry::CanRead() const
{
    return scene == SceneFormat::None &&
           cadex::internal::CanRead(static_cast<cadex::internal::Format>(reader));
}

bool FormatEntry::CanWrite() const
{
    return scene != SceneFormat::None ||
           cadex::internal::CanWrite(static_cast<cadex::internal::Format>(writer));
}
#else
bool FormatEntry::CanRead() const
{
    return scene == SceneFormat::None;
}

bool FormatEntry::CanWrite() const
{
    return HasWriter();
}
#endif

bool FormatEntry::HasWriter() const
{
    using W = CZemtarCADExchangeWriter;
    return writer != W::eWriterCreo && writer != W::eWriterNX && writer != W::eWriterSolidWorks;
}

namespace {

const FormatEntry* EntryByName(const std::vector<FormatEntry>& formats, const QString& name)
{
    const auto found = std::find_if(formats.begin(), formats.end(), [&](const FormatEntry& format) {
        return format.Name().compare(name, Qt::CaseInsensitive) == 0;
    });
    return found == formats.end() ? nullptr : &*found;
}

const FormatEntry* EntryByFileName(const std::vector<FormatEntry>& formats, const QString& fileName)
{
    const QString extension = QFileInfo(fileName).suffix().toLower();
    const auto found = std::find_if(formats.begin(), formats.end(), [&](const FormatEntry& format) {
        return format.Extensions().contains(extension);
    });
    return found == formats.end() ? nullptr : &*found;
}

} // namespace

QStringList FormatNames()
{
    QStringList names;
    for (const FormatEntry& format : AllFormats()) {
        names << format.Name();
    }
    return names;
}

QStringList ExportFormatNames()
{
    QStringList names;
    for (const auto* formats : {&AllFormats(), &SceneFormats()}) {
        for (const FormatEntry& format : *formats) {
            if (format.HasWriter()) {
                names << format.Name();
            }
        }
    }
    return names;
}

const FormatEntry* FormatByName(const QString& name)
{
    return EntryByName(AllFormats(), name);
}

const FormatEntry* FormatByFileName(const QString& fileName)
{
    return EntryByFileName(AllFormats(), fileName);
}

const FormatEntry* ExportFormatByName(const QString& name)
{
    const FormatEntry* format = FormatByName(name);
    return format ? format : EntryByName(SceneFormats(), name);
}

const FormatEntry* ExportFormatByFileName(const QString& fileName)
{
    const FormatEntry* format = FormatByFileName(fileName);
    return format ? format : EntryByFileName(SceneFormats(), fileName);
}

QList<const FormatEntry*> FormatsByFileName(const QString& fileName)
{
    using R = CZemtarCADExchangeReader;
    static const QRegularExpression version(QStringLiteral("\\.[0-9]+$"));
    const QString name = QFileInfo(fileName).fileName();
    const QString plainName = QString(name).remove(version);
    QList<const FormatEntry*> formats;
    if (const FormatEntry* format = FormatByFileName(plainName)) {
        formats << format;
    }
    if (QFileInfo(plainName).suffix().compare(QLatin1String("prt"), Qt::CaseInsensitive) == 0) {
        const auto& all = AllFormats();
        const FormatEntry* creo = &*std::find_if(all.begin(), all.end(), [](const FormatEntry& format) {
            return format.reader == R::eReaderCreo;
        });
        formats.insert(plainName == name ? formats.size() : 0, creo);
    }
    return formats;
}
