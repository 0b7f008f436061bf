#pragma once

#include "apps/shared/ExchangeWatch.h"
#include "apps/shared/FormatTable.h"
#include "host/enumLengthUnit.h"

#include <memory>

namespace Zemtar {
class CZemtarDocument;
}

/// What the user chose for an import, whatever the program.
struct ImportSettings
{
    int tessellation = Zemtar::CZemtarCADExchangeReader::DefaultTessellationFactor; ///< 20 fine .. 95 coarse
    bool parallel = Zemtar::CZemtarCADExchangeReader::DefaultParallelProcessing;
    bool polylines = false;
    /// Where the model's textures are written; made when missing. Empty: nowhere named.
    QString textureFolder;
    ExchangeWatch* watch = nullptr; ///< may be null
};

/// Runs the library's import, on the main thread, as it asks. Null on failure; the reason is then on standard
/// error. Exceptions of the engine pass through. A cancelled import gives null too; texture files that it
/// made are removed, and the texture folder when it made that.
std::unique_ptr<Zemtar::CZemtarDocument> ImportDocument(const QString& file, const FormatEntry& format,
                                                        const ImportSettings& settings);

/// What the user chose for an export, whatever the program.
struct ExportSettings
{
    /// Leaves the splitting of JT files to the engine.
    static constexpr int JTSplitNotSet = 100;

    const FormatEntry* format = nullptr;
    Zemtar::enumLengthUnit unit = Zemtar::eLengthUnitMillimetre;
    int jtSplit = JTSplitNotSet; ///< 0 one file, 1 a file a part
    GlbPacking packing = GlbPacking::None;
    ExchangeWatch* watch = nullptr; ///< may be null
};

/// Runs the library's export or, for a format of `SceneFormats`, the programs' own, whose failures are a
/// std::runtime_error and whose notes stand among the engine's reports. True when the file was written, which
/// is told by the file, never by the library's result; the reason of a failure is on standard error.
/// Exceptions of the engine pass through.
bool ExportDocument(Zemtar::CZemtarDocument& document, const QString& file, const ExportSettings& settings);
