#pragma once

#include "host/enumLengthUnit.h"

#include <QSettings>
#include <QStringList>

/// What the viewer remembers between runs, in the host's settings store, where the import dialog keeps its
/// values too. Made where it is needed; each value's default stands here alone.
class ViewerSettings : public QSettings
{
    Q_OBJECT

public:
    static constexpr int MaximumRecentFiles = 10;
    enum class Appearance
    {
        System,
        Light,
        Dark
    };

    ViewerSettings();

    bool PolyLines() const { return value("Import/PolyLines", false).toBool(); }
    void SetPolyLines(bool on) { setValue("Import/PolyLines", on); }
    /// Where textures of imported models are kept; empty: as long as the document is open.
    QString TextureFolder() const { return value("Import/TextureFolder").toString(); }
    void SetTextureFolder(const QString& folder) { setValue("Import/TextureFolder", folder); }

    QString ExportFormat() const { return value("Export/Format", "STEP").toString(); }
    void SetExportFormat(const QString& name) { setValue("Export/Format", name); }
    Zemtar::enumLengthUnit ExportUnit() const;
    void SetExportUnit(Zemtar::enumLengthUnit unit) { setValue("Export/Unit", static_cast<int>(unit)); }

    /// A number of `GlbPacking`.
    int GlbPackingChoice() const { return value("Export/GlbPacking", 0).toInt(); }
    void SetGlbPackingChoice(int packing) { setValue("Export/GlbPacking", packing); }

    /// The files last imported, the latest first.
    QStringList RecentFiles() const { return value("RecentFiles").toStringList(); }
    void AddRecentFile(const QString& file);
    void RemoveRecentFile(const QString& file);
    /// The folder that file dialogs start in, of that purpose ("Import", "Export").
    QString Folder(const QString& purpose) const { return value("Folders/" + purpose).toString(); }
    void SetFolderOf(const QString& purpose, const QString& file);

    bool Edges() const { return value("View/Edges", true).toBool(); }
    void SetEdges(bool on) { setValue("View/Edges", on); }
    bool Perspective() const { return value("View/Perspective", true).toBool(); }
    void SetPerspective(bool on) { setValue("View/Perspective", on); }
    Appearance Look() const { return static_cast<Appearance>(value("View/Appearance", 0).toInt()); }
    void SetLook(Appearance look) { setValue("View/Appearance", static_cast<int>(look)); }
};
