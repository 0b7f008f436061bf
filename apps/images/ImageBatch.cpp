#include "apps/images/ImageBatch.h"

#include "apps/images/ImageFile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QImageReader>

namespace {

QString Tr(const char* text)
{
    return QCoreApplication::translate("ImageBatch", text);
}

QStringList ReadablePatterns()
{
    QStringList patterns{QStringLiteral("*.hdr"), QStringLiteral("*.exr")}; // which Qt does not know
    for (const QByteArray& format : QImageReader::supportedImageFormats()) {
        patterns << QStringLiteral("*.") + QString::fromLatin1(format);
    }
    return patterns;
}

} // namespace

QStringList ImageBatch::Files() const
{
    return QDir(from).entryList(ReadablePatterns(), QDir::Files, QDir::Name);
}

ImageBatch::Result ImageBatch::Run(const std::function<bool(int done, const QString& file)>& goesOn) const
{
    Result result;
    if (QFileInfo(from).canonicalFilePath() == QFileInfo(to).canonicalFilePath() && QFileInfo::exists(from)) {
        result.failures << Tr("The pictures go to another folder than they come from.");
        return result;
    }
    if (!QDir().mkpath(to)) {
        result.failures << Tr("The folder %1 cannot be made.").arg(to);
        return result;
    }
    int done = 0;
    const auto work = [&](const QString& name) -> QString {
        const QString target = QDir(to).filePath(QFileInfo(name).completeBaseName() + '.' + suffix);
        if (QFileInfo::exists(target)) {
            return Tr("%1 is there already").arg(QFileInfo(target).fileName());
        }
        const ImageFile picture = ReadImageFile(QDir(from).filePath(name));
        if (picture.image.isNull()) {
            return picture.failure;
        }
        const ImageOutcome outcome =
            operation->Run({picture.image, picture.highRange, second},
                           values.empty() ? operation->Defaults(picture.image.size()) : values);
        return outcome.image.isNull() ? outcome.failure : WriteImageFile(outcome.image, target);
    };
    for (const QString& name : Files()) {
        if (!goesOn(done, name)) {
            result.isCancelled = true;
            break;
        }
        const QString failure = work(name);
        failure.isEmpty() ? void(++result.written) : void(result.failures << name + ": " + failure);
        ++done;
    }
    return result;
}
