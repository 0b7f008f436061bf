#include "cadexchange/CZemtarCADExchangeReader.h"

#include "cadexchange/CZemtarCADExchangeReaderHandler.h"
#include "cadexchange/ExchangeLock.h"
#include "host/CZemtarDocument.h"
#include "host/enumLengthUnit.h"

#include <cadex/ACIS_Reader.hxx>
#include <cadex/Base_Settings.hxx>
#include <cadex/Creo_Reader.hxx>
#include <cadex/IFC_Reader.hxx>
#include <cadex/IGES_Reader.hxx>
#include <cadex/JT_Reader.hxx>
#include <cadex/NX_Reader.hxx>
#include <cadex/Para_Reader.hxx>
#include <cadex/Rhino_Reader.hxx>
#include <cadex/SLD_Reader.hxx>
#include <cadex/STEP_Reader.hxx>

#include <memory>
#include <type_traits>
#include <utility>

namespace Zemtar {

namespace {

// Readers are deleted through their base.
static_assert(std::has_virtual_destructor_v<cadex::Base_Reader>);

/// Sets the SDK's process-wide parallelism for the life of the scope and puts its default, on, back.
class ParallelismScope
{
public:
    explicit ParallelismScope(bool on) { Set(on); }
    ~ParallelismScope() { Set(true); }
    ParallelismScope(const ParallelismScope&) = delete;
    ParallelismScope& operator=(const ParallelismScope&) = delete;

private:
    static void Set(bool on)
    {
        cadex::Base_Settings::Default()->SetValue(cadex::Base_Settings::ConcurrentMode, on);
    }
};

cadex::Base_Reader* NewStepReader()
{
    auto reader = std::make_unique<cadex::STEP_Reader>();
    reader->Parameters().PreferredBRepRepresentationType() = cadex::STEP_ReaderParameters::All;
    return reader.release();
}

} // namespace

CZemtarCADExchangeReader::CZemtarCADExchangeReader() : m_readerType(eReaderNone) {}

void CZemtarCADExchangeReader::SetCADReaderType(eReaderType type)
{
    m_readerType = type;
}

void CZemtarCADExchangeReader::setTessellationFactor(int value)
{
    m_tessellationFactor = value;
}

void CZemtarCADExchangeReader::setUseParallelProcessing(bool on)
{
    m_useParallelProcessing = on;
}

void CZemtarCADExchangeReader::setImportPolyLines(bool on)
{
    CZemtarCADExchangeReaderHandler::getInstance()->setImportPolylines(on);
}

void CZemtarCADExchangeReader::setTextureOutputDirectory(CZemtarString dir)
{
    CZemtarCADExchangeReaderHandler::getInstance()->setTextureOutputDirectory(std::move(dir));
}

cadex::Base_Reader* CZemtarCADExchangeReader::GetCADReader()
{
    switch (m_readerType) {
    case eReaderNone:
        return nullptr;
    case eReaderACIS:
        return new cadex::ACIS_Reader;
    case eReaderCreo:
        return new cadex::Creo_Reader;
    case eReaderIFC:
        return new cadex::IFC_Reader;
    case eReaderIGES:
        return new cadex::IGES_Reader;
    case eReaderJT:
        return new cadex::JT_Reader;
    case eReaderNX:
        return new cadex::NX_Reader;
    case eReaderParasolid:
        return new cadex::Para_Reader;
    case eReaderRhino:
        return new cadex::Rhino_Reader;
    case eReaderSolidWorks:
        return new cadex::SLD_Reader;
    case eReaderSTEP:
        return NewStepReader();
    }
    return nullptr;
}

CZemtarDocument* CZemtarCADExchangeReader::Import(CZemtarString fileName)
{
    if (m_readerType == eReaderNone) {
        return nullptr;
    }
    const std::lock_guard lock(ExchangeLock());
    const ParallelismScope parallelism(m_useParallelProcessing);
    const std::unique_ptr<cadex::Base_Reader> reader(GetCADReader());
    std::unique_ptr<CZemtarDocument> document(
        CZemtarCADExchangeReaderHandler::getInstance()->Import(fileName, reader.get(), m_tessellationFactor));
    if (document) {
        document->SetOriginalLengthUnit(eLengthUnitMillimetre);
        document->ApplyUnitToDocument();
    }
    return document.release();
}

} // namespace Zemtar
