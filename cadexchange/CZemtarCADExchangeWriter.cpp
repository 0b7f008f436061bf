#include "cadexchange/CZemtarCADExchangeWriter.h"

#include "cadexchange/CZemtarCADExchangeWriterHandler.h"
#include "cadexchange/ExchangeLock.h"
#include "host/CZemtarTransform.h"

#include <cadex/ACIS_Writer.hxx>
#include <cadex/ACIS_WriterParameters.hxx>
#include <cadex/IFC_Writer.hxx>
#include <cadex/IFC_WriterParameters.hxx>
#include <cadex/IGES_Writer.hxx>
#include <cadex/IGES_WriterParameters.hxx>
#include <cadex/JT_Writer.hxx>
#include <cadex/JT_WriterParameters.hxx>
#include <cadex/Para_Writer.hxx>
#include <cadex/Rhino_Writer.hxx>
#include <cadex/Rhino_WriterParameters.hxx>
#include <cadex/STEP_Writer.hxx>
#include <cadex/STEP_WriterParameters.hxx>

#include <memory>

namespace Zemtar {

namespace {

/// Matches neither JT split method, so that an export that was never configured keeps the SDK's own.
constexpr int JTExportMethodNotSet = 100;

struct UnitPair
{
    enumLengthUnit host;
    cadex::Base_LengthUnit sdk;
};

// Units that the SDK does not know are written in metres.
constexpr cadex::Base_LengthUnit FallbackUnit = cadex::Base_LU_Meters;
constexpr UnitPair UnitTable[] = {
    {eLengthUnitMicrometre, cadex::Base_LU_Micrometers},
    {eLengthUnitMillimetre, cadex::Base_LU_Millimeters},
    {eLengthUnitCentimetre, cadex::Base_LU_Centimeters},
    {eLengthUnitDecimetre, cadex::Base_LU_Decimeters},
    {eLengthUnitMetre, cadex::Base_LU_Meters},
    {eLengthUnitKilometre, cadex::Base_LU_Kilometers},
    {eLengthUnitMil, cadex::Base_LU_Mils},
    {eLengthUnitInch, cadex::Base_LU_Inches},
    {eLengthUnitFoot, cadex::Base_LU_Feets},
    {eLengthUnitYard, cadex::Base_LU_Yards},
    {eLengthUnitMile, cadex::Base_LU_Miles},
};

cadex::Base_LengthUnit SdkUnit(enumLengthUnit unit)
{
    return static_cast<cadex::Base_LengthUnit>(CZemtarCADExchangeWriter::TranslateUnit(unit));
}

template <class Writer>
cadex::Base_Writer* MakeWriter(enumLengthUnit unit)
{
    auto writer = std::make_unique<Writer>();
    writer->Parameters().LengthUnit() = SdkUnit(unit);
    return writer.release();
}

cadex::Base_Writer* MakeJTWriter(enumLengthUnit unit, int exportMethod)
{
    auto writer = std::make_unique<cadex::JT_Writer>();
    cadex::JT_WriterParameters& parameters = writer->Parameters();
    parameters.PolyRepresentationUnit() = SdkUnit(unit);
    if (exportMethod == cadex::JT_WriterParameters::Monolithic ||
        exportMethod == cadex::JT_WriterParameters::PerPart) {
        parameters.SetFileSplitMode(static_cast<cadex::JT_WriterParameters::FileSplitModeType>(exportMethod));
    }
    return writer.release();
}

} // namespace

CZemtarCADExchangeWriter::CZemtarCADExchangeWriter() : m_jtExportMethod(JTExportMethodNotSet) {}

int CZemtarCADExchangeWriter::TranslateUnit(enumLengthUnit unit)
{
    for (const UnitPair& pair : UnitTable) {
        if (pair.host == unit) {
            return pair.sdk;
        }
    }
    return FallbackUnit;
}

cadex::Base_Writer* CZemtarCADExchangeWriter::GetCADWriter(enumLengthUnit unit)
{
    switch (m_writerType) {
    case eWriterACIS:
        return MakeWriter<cadex::ACIS_Writer>(unit);
    case eWriterIFC:
        return MakeWriter<cadex::IFC_Writer>(unit);
    case eWriterIGES:
        return MakeWriter<cadex::IGES_Writer>(unit);
    case eWriterJT:
        return MakeJTWriter(unit, m_jtExportMethod);
    case eWriterParasolid:
        return new cadex::Para_Writer; // the format is always in metres
    case eWriterRhino:
        return MakeWriter<cadex::Rhino_Writer>(unit);
    case eWriterSTEP:
        return MakeWriter<cadex::STEP_Writer>(unit);
    default:
        return nullptr;
    }
}

bool CZemtarCADExchangeWriter::Export(CZemtarDocument* document, CZemtarString fileName,
                                      CZemtarTransform* transform, std::vector<CZemtarCamera*>* /*cameras*/,
                                      std::vector<CZemtarSceneState*>* /*sceneStates*/,
                                      CZemtarSectionPlane* /*sectionPlane*/, CZemtarUnit unit)
{
    if (!document) {
        return false;
    }
    CZemtarMatrix matrix;
    if (transform) {
        matrix = transform->Matrix();
    }
    if (m_writerType == eWriterNone) {
        return false;
    }
    const std::lock_guard lock(ExchangeLock());
    const std::unique_ptr<cadex::Base_Writer> writer(GetCADWriter(unit.GetLengthUnit()));
    return CZemtarCADExchangeWriterHandler::getInstance()->Export(document, fileName, matrix, writer.get());
}

} // namespace Zemtar
