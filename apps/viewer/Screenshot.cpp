#include "apps/viewer/Screenshot.h"

#include "apps/viewer/Importer.h"
#include "apps/viewer/StandardErrorLog.h"
#include "host/CZemtarDocument.h"

#include <QImageWriter>

#include <iostream>

namespace {

int Fail(const QString& reason)
{
    std::cerr << "zemtar-viewer: " << reason.toStdString() << std::endl;
    return 1;
}

} // namespace

int RunScreenshot(const QString& file, const QString& pictureFile, const PictureOptions& options)
{
    const QList<const FormatEntry*> formats = FormatsByFileName(file);
    if (formats.isEmpty()) {
        return Fail(QStringLiteral("the extension of %1 stands for no format").arg(file));
    }
    ImportedFile imported;
    imported.file = file;
    imported.format = formats.first();
    {
        const StandardErrorLog log;
        if (!RunImport(imported, StoredImportSettings(*imported.format), log).isEmpty()) {
            return 1; // the reason has been written already
        }
    }
    const Picture picture = RenderPicture(*imported.document, options);
    if (picture.image.isNull()) {
        return Fail(picture.problem);
    }
    QImageWriter writer(pictureFile);
    if (!writer.write(picture.image)) {
        return Fail(QStringLiteral("cannot write %1: %2").arg(pictureFile, writer.errorString()));
    }
    return 0;
}
