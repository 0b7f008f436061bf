// Texture path resolution of ZemtarImage.

#include "common/encoding/CZemtarConvert.h"
#include "common/image/ZemtarImage.h"
#include "host/CZemtarTexture.h"

#include <QFile>

namespace Zemtar {
namespace {

bool exists(const CZemtarString& file)
{
    return QFile::exists(CZemtarConvert::CZemtarStringToQString(file));
}

bool isSeparator(QChar character)
{
    return character == QLatin1Char('/') || character == QLatin1Char('\\');
}

CZemtarString withSystemSeparators(CZemtarString path)
{
    path.ReplaceSlashWithSystemSlash();
    return path;
}

/// Tries `name` as it stands, in the texture's folder, and without its own folder part there.
bool findWhereStored(CZemtarTexture& texture, const CZemtarString& name)
{
    if (exists(name)) {
        texture.SetFilename(name, true);
        texture.SetPath(CZemtarString());
        return true;
    }
    const CZemtarString folder = withSystemSeparators(texture.Path());
    if (exists(texture.FullFilename(false))) {
        texture.SetFilename(name, true);
        texture.SetPath(folder);
        return true;
    }
    CZemtarString bareName = name;
    bareName.RemovePath();
    bareName.SetPath(folder, L'/');
    if (exists(bareName)) {
        texture.SetFilename(bareName, true); // The folder stays as it is: the name is whole now.
        return true;
    }
    return false;
}

/// Tries `name`, with its folder part, below each registered folder.
void findInRegisteredFolders(CZemtarTexture& texture, QString name)
{
    for (const QString& entry : ZemtarImage::texturePaths) {
        if (entry.isEmpty()) {
            continue;
        }
        const QString folder = isSeparator(entry.back()) ? entry : entry + QLatin1Char('/');
        // Wanted: of several leading separators, one more is dropped with each folder that is tried.
        if (!name.isEmpty() && isSeparator(name.front())) {
            name.remove(0, 1);
        }
        if (QFile::exists(folder + name)) {
            texture.SetRunTimeFilename(CZemtarString());
            texture.SetFilename(withSystemSeparators(texture.Filename()), true);
            texture.SetPath(withSystemSeparators(CZemtarConvert::QStringToCZemtarString(folder)));
            return;
        }
    }
}

} // namespace

QStringList ZemtarImage::texturePaths;

void ZemtarImage::RegisterTexturePaths(QList<QString>& paths)
{
    texturePaths = paths;
}

void ZemtarImage::RegisterTexturePath(QString& path)
{
    if (!texturePaths.contains(path, Qt::CaseInsensitive)) {
        texturePaths.append(path);
    }
}

void ZemtarImage::FixTexturePath(CZemtarTexture& texture)
{
    if (texture.Filename().IsEmpty()) {
        return;
    }
    const CZemtarString name = withSystemSeparators(texture.Filename());
    if (!findWhereStored(texture, name)) {
        findInRegisteredFolders(texture, CZemtarConvert::CZemtarStringToQString(name));
    }
}

} // namespace Zemtar
