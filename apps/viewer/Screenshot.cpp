#include "apps/viewer/Screenshot.h"

#include "apps/viewer/Importer.h"
#include "apps/viewer/StandardErrorLog.h"
#include "host/CZemtarDocument.h"

#include <iostream>

namespace {

int Fail(const QString& reason)
{
    std::cerr << "zemtar-viewer: " << reason.toStdString() << std::endl;
    return 1;
}

} // namespace

int RunScreenshot(const QString& file, const QString& pictureFile, const PictureOptions& options, int frames)
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
    const QString problem = frames > 0 ? WriteTurntable(*imported.document, options, frames, pictureFile)
                                       : WritePicture(*imported.document, options, pictureFile);
    return problem.isEmpty() ? 0 : Fail(problem);
}
