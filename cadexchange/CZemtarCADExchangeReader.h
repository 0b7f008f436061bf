#pragma once

#include "common/ZemtarExport.h"
#include "host/CZemtarReader.h"
#include "host/CZemtarString.h"

namespace cadex {
class Base_Reader;
}

namespace Zemtar {

class CZemtarDocument;

/// Imports one CAD file after the other into host documents. The host makes one when the user imports a file.
///
///     CZemtarCADExchangeReader importer;
///     importer.SetCADReaderType(CZemtarCADExchangeReader::eReaderSTEP);
///     importer.setTessellationFactor(dialog.GetTesselationValue());
///     importer.setUseParallelProcessing(dialog.GetIsParallelProcessing());
///     importer.setImportPolyLines(true);
///     importer.setTextureOutputDirectory("/out/textures/");
///     CZemtarDocument* document = importer.Import("/models/pump.step");
///
/// The last two settings belong to the process: they stay, for all importers, until changed. Imports and
/// exports run on the host's main thread, one at a time.
class ZEMTAR_EXPORT CZemtarCADExchangeReader : public CZemtarReader
{
public:
    /// The CAD format. Which file extensions stand for it is the host's business.
    enum eReaderType : int
    {
        eReaderNone = 0, ///< Import gives null at once.
        eReaderACIS = 1,
        eReaderCreo = 2,
        eReaderIFC = 3,
        eReaderIGES = 4,
        eReaderJT = 5,
        eReaderNX = 6,
        eReaderParasolid = 7,
        eReaderRhino = 8,
        eReaderSolidWorks = 9,
        eReaderSTEP = 10,
    };

    /// Used until the host sets another one; the import dialog starts with them too.
    static constexpr int DefaultTessellationFactor = 50;
    static constexpr bool DefaultParallelProcessing = false;

    CZemtarCADExchangeReader();

    void SetCADReaderType(eReaderType type);

    /// Fineness of the mesh: the dialog's slider value, 20 (finest) to 95 (coarsest); any value is defined.
    void setTessellationFactor(int value);

    /// Whether the SDK may use several threads while importing.
    void setUseParallelProcessing(bool on);

    /// Whether polylines become objects of the document.
    void setImportPolyLines(bool on);

    /// The folder for texture images; give it with a separator at the end.
    void setTextureOutputDirectory(CZemtarString dir);

    /// Makes the SDK's reader of the format; the caller deletes it. Null when the type is none of the
    /// formats.
    cadex::Base_Reader* GetCADReader();

    /// Imports a file into a new document in metres, which the caller owns.
    ///
    /// Null on failure, with one line on standard error that says why (none for eReaderNone). Exceptions of
    /// the SDK or the host pass through, leaving no document behind. Afterwards the SDK's parallelism is on
    /// again. May be called on any thread; imports and exports of several threads wait for one another.
    CZemtarDocument* Import(CZemtarString fileName) override;

private:
    eReaderType m_readerType;
    int m_tessellationFactor = DefaultTessellationFactor;
    bool m_useParallelProcessing = DefaultParallelProcessing;
};

} // namespace Zemtar
