#include "apps/viewer/ViewerSettings.h"

#include "apps/viewer/Texts.h"

#include <QFileInfo>

using namespace Zemtar;

ViewerSettings::ViewerSettings()
    : QSettings(BrandingText(CZemtarBranding::OrganizationName),
                BrandingText(CZemtarBranding::ApplicationName))
{
    beginGroup(QStringLiteral("Viewer"));
}

enumLengthUnit ViewerSettings::ExportUnit() const
{
    return static_cast<enumLengthUnit>(value("Export/Unit", eLengthUnitMillimetre).toInt());
}

void ViewerSettings::AddRecentFile(const QString& file)
{
    const QString path = QFileInfo(file).absoluteFilePath();
    QStringList files = RecentFiles();
    files.removeAll(path);
    files.prepend(path);
    setValue("RecentFiles", QStringList(files.mid(0, MaximumRecentFiles)));
}

void ViewerSettings::RemoveRecentFile(const QString& file)
{
    QStringList files = RecentFiles();
    files.removeAll(file);
    setValue("RecentFiles", files);
}

void ViewerSettings::SetFolderOf(const QString& purpose, const QString& file)
{
    setValue("Folders/" + purpose, QFileInfo(file).absolutePath());
}
