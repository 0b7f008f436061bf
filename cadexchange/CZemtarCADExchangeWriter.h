#pragma once

#include "common/ZemtarExport.h"
#include "host/CZemtarWriter.h"

namespace cadex {
class Base_Writer;
}

namespace Zemtar {

/// Exporter plug-in: writes a document to a CAD file through the CAD SDK.
///
///     CZemtarCADExchangeWriter writer;
///     writer.SetCADWriterType(CZemtarCADExchangeWriter::eWriterSTEP);
///     writer.Export(document, "/tmp/engine.step", nullptr, nullptr, nullptr, nullptr, eLengthUnitInch);
///     bool written = CZemtarFile::FileExists("/tmp/engine.step");
///
/// Exports run on the host's GUI thread and never overlap: the walk behind them is a singleton.
class ZEMTAR_EXPORT CZemtarCADExchangeWriter : public CZemtarWriter
{
public:
    /// The numbering is that of the importer. Creo, NX and SolidWorks keep their numbers although nothing
    /// writes them.
    enum eWriterType : int
    {
        eWriterNone = 0,
        eWriterACIS = 1,
        eWriterCreo = 2,
        eWriterIFC = 3,
        eWriterIGES = 4,
        eWriterJT = 5,
        eWriterNX = 6,
        eWriterParasolid = 7,
        eWriterRhino = 8,
        eWriterSolidWorks = 9,
        eWriterSTEP = 10
    };

    CZemtarCADExchangeWriter();

    /// Chooses the format; it stays chosen until changed. A type without a writer makes `Export` report
    /// "Writer is NULL!".
    void SetCADWriterType(eWriterType type) { m_writerType = type; }

    /// Chooses how a JT export is split into files: 0 one file, 1 a file a part. Any other value, and so the
    /// initial 100, leaves the SDK's own mode untouched.
    void SetJTExportMethod(int method) { m_jtExportMethod = method; }

    /// Gives the SDK's number of a host length unit; a unit without a counterpart, or out of range, gives
    /// metres (2).
    static int TranslateUnit(enumLengthUnit unit);

    /// Makes the SDK's writer for the chosen format, set to `unit`. The caller owns it. Null for a type
    /// without a writer. Throws std::bad_alloc.
    cadex::Base_Writer* GetCADWriter(enumLengthUnit unit);

    /// Writes `document` to `fileName` in the length unit of `unit`. `transform` (null: the identity) is
    /// handed to the traversal and does not show in the file. Cameras, scene states and section plane are not
    /// part of a CAD file and are ignored.
    ///
    /// The result is always false, also after the file was written: callers look for the file, and failures
    /// are on standard error. A null document or `eWriterNone` does nothing and says nothing. Exceptions:
    /// std::bad_alloc.
    bool Export(CZemtarDocument* document, CZemtarString fileName, CZemtarTransform* transform,
                std::vector<CZemtarCamera*>* cameras, std::vector<CZemtarSceneState*>* sceneStates,
                CZemtarSectionPlane* sectionPlane, CZemtarUnit unit) override;

private:
    eWriterType m_writerType = eWriterNone;
    int m_jtExportMethod;
};

} // namespace Zemtar
