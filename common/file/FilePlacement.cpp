#include "common/file/FilePlacement.h"

#include <QFile>
#include <QFileInfo>
#include <QUuid>

#include <filesystem>
#include <system_error>

namespace Zemtar::FilePlacement {
namespace {

std::filesystem::path toPath(const QString& file)
{
    return QFile::encodeName(file).toStdString();
}

} // namespace

QString nameBeside(const QString& file)
{
    const QFileInfo info(file);
    return info.path() + QLatin1String("/.") + QUuid::createUuid().toString(QUuid::Id128) + QLatin1Char('.') +
           info.suffix();
}

bool moveOver(const QString& finished, const QString& target)
{
    std::error_code error;
    std::filesystem::rename(toPath(finished), toPath(target), error);
    return !error;
}

} // namespace Zemtar::FilePlacement
