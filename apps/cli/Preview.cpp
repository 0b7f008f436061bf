#include "apps/cli/Preview.h"

#include "apps/render/PictureModule.h"

#include <QCoreApplication>
#include <QDir>
#include <QLibrary>

namespace {

/// Where the renderer lies beside the program: in the build tree and when installed.
PictureWriter* LoadedWriter(QString& problem)
{
    const QDir program(QCoreApplication::applicationDirPath());
    for (const char* folder : {ZEMTAR_MODULE_FOLDER, "../lib"}) {
        QLibrary library(program.filePath(QString::fromLatin1(folder) + "/zemtar-pictures"));
        if (auto* writer = reinterpret_cast<PictureWriter*>(library.resolve(PictureWriterName))) {
            return writer;
        }
        problem = library.errorString();
    }
    return nullptr;
}

} // namespace

QString WritePreview(const Zemtar::CZemtarDocument& document, const QString& file, int frames)
{
    QString problem;
    if (PictureWriter* writer = LoadedWriter(problem)) {
        writer(document, file, frames, problem);
    }
    return problem;
}
