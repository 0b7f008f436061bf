#include "sdk/ifc/IfcTypes.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <unordered_map>

namespace cadex::ifc {
namespace {

// Objects of IFC2X3 and IFC4 that stand in a spatial tree.
constexpr std::string_view ObjectTypes[] = {"IfcActuator",
                                            "IfcAirTerminal",
                                            "IfcAirTerminalBox",
                                            "IfcAirToAirHeatRecovery",
                                            "IfcAlarm",
                                            "IfcAlignment",
                                            "IfcAnnotation",
                                            "IfcAudioVisualAppliance",
                                            "IfcBeam",
                                            "IfcBeamStandardCase",
                                            "IfcBoiler",
                                            "IfcBridge",
                                            "IfcBridgePart",
                                            "IfcBuilding",
                                            "IfcBuildingElementPart",
                                            "IfcBuildingElementProxy",
                                            "IfcBuildingStorey",
                                            "IfcBurner",
                                            "IfcCableCarrierFitting",
                                            "IfcCableCarrierSegment",
                                            "IfcCableFitting",
                                            "IfcCableSegment",
                                            "IfcChiller",
                                            "IfcChimney",
                                            "IfcCivilElement",
                                            "IfcCoil",
                                            "IfcColumn",
                                            "IfcColumnStandardCase",
                                            "IfcCommunicationsAppliance",
                                            "IfcCompressor",
                                            "IfcCondenser",
                                            "IfcController",
                                            "IfcCooledBeam",
                                            "IfcCoolingTower",
                                            "IfcCovering",
                                            "IfcCurtainWall",
                                            "IfcDamper",
                                            "IfcDiscreteAccessory",
                                            "IfcDistributionChamberElement",
                                            "IfcDistributionControlElement",
                                            "IfcDistributionElement",
                                            "IfcDistributionFlowElement",
                                            "IfcDistributionPort",
                                            "IfcDoor",
                                            "IfcDoorStandardCase",
                                            "IfcDuctFitting",
                                            "IfcDuctSegment",
                                            "IfcDuctSilencer",
                                            "IfcElectricAppliance",
                                            "IfcElectricDistributionBoard",
                                            "IfcElectricDistributionPoint",
                                            "IfcElectricFlowStorageDevice",
                                            "IfcElectricGenerator",
                                            "IfcElectricMotor",
                                            "IfcElectricTimeControl",
                                            "IfcElectricalElement",
                                            "IfcElementAssembly",
                                            "IfcEnergyConversionDevice",
                                            "IfcEngine",
                                            "IfcEquipmentElement",
                                            "IfcEvaporativeCooler",
                                            "IfcEvaporator",
                                            "IfcExternalSpatialElement",
                                            "IfcFacility",
                                            "IfcFacilityPart",
                                            "IfcFan",
                                            "IfcFastener",
                                            "IfcFilter",
                                            "IfcFireSuppressionTerminal",
                                            "IfcFlowController",
                                            "IfcFlowFitting",
                                            "IfcFlowInstrument",
                                            "IfcFlowMeter",
                                            "IfcFlowMovingDevice",
                                            "IfcFlowSegment",
                                            "IfcFlowStorageDevice",
                                            "IfcFlowTerminal",
                                            "IfcFlowTreatmentDevice",
                                            "IfcFooting",
                                            "IfcFurnishingElement",
                                            "IfcFurniture",
                                            "IfcGeographicElement",
                                            "IfcGrid",
                                            "IfcHeatExchanger",
                                            "IfcHumidifier",
                                            "IfcInterceptor",
                                            "IfcJunctionBox",
                                            "IfcLamp",
                                            "IfcLightFixture",
                                            "IfcMechanicalFastener",
                                            "IfcMedicalDevice",
                                            "IfcMember",
                                            "IfcMemberStandardCase",
                                            "IfcMotorConnection",
                                            "IfcOpeningElement",
                                            "IfcOpeningStandardCase",
                                            "IfcOutlet",
                                            "IfcPile",
                                            "IfcPipeFitting",
                                            "IfcPipeSegment",
                                            "IfcPlate",
                                            "IfcPlateStandardCase",
                                            "IfcProject",
                                            "IfcProjectionElement",
                                            "IfcProtectiveDevice",
                                            "IfcProtectiveDeviceTrippingUnit",
                                            "IfcProxy",
                                            "IfcPump",
                                            "IfcRailing",
                                            "IfcRailway",
                                            "IfcRamp",
                                            "IfcRampFlight",
                                            "IfcReinforcingBar",
                                            "IfcReinforcingMesh",
                                            "IfcRoad",
                                            "IfcRoof",
                                            "IfcSanitaryTerminal",
                                            "IfcSensor",
                                            "IfcShadingDevice",
                                            "IfcSite",
                                            "IfcSlab",
                                            "IfcSlabElementedCase",
                                            "IfcSlabStandardCase",
                                            "IfcSolarDevice",
                                            "IfcSpace",
                                            "IfcSpaceHeater",
                                            "IfcSpatialZone",
                                            "IfcStackTerminal",
                                            "IfcStair",
                                            "IfcStairFlight",
                                            "IfcStructuralCurveMember",
                                            "IfcStructuralSurfaceMember",
                                            "IfcSurfaceFeature",
                                            "IfcSwitchingDevice",
                                            "IfcSystemFurnitureElement",
                                            "IfcTank",
                                            "IfcTendon",
                                            "IfcTendonAnchor",
                                            "IfcTransformer",
                                            "IfcTransportElement",
                                            "IfcTubeBundle",
                                            "IfcUnitaryControlElement",
                                            "IfcUnitaryEquipment",
                                            "IfcValve",
                                            "IfcVibrationIsolator",
                                            "IfcVirtualElement",
                                            "IfcVoidingFeature",
                                            "IfcWall",
                                            "IfcWallElementedCase",
                                            "IfcWallStandardCase",
                                            "IfcWasteTerminal",
                                            "IfcWindow",
                                            "IfcWindowStandardCase"};

std::string UpperCase(std::string_view text)
{
    std::string upper(text);
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
    return upper;
}

} // namespace

Type TypeOf(std::string_view upperCaseName)
{
    static const auto* table = [] {
        auto* types = new std::unordered_map<std::string, Type>;
#define CADEX_IFC_ENTRY(name) types->emplace(UpperCase("Ifc" #name), Type::Ifc##name);
        CADEX_IFC_TYPES(CADEX_IFC_ENTRY)
#undef CADEX_IFC_ENTRY
        return types;
    }();
    const auto found = table->find(std::string(upperCaseName));
    return found == table->end() ? Type::Other : found->second;
}

std::string_view DisplayName(std::string_view upperCaseName)
{
    static const auto* table = [] {
        auto* names = new std::unordered_map<std::string, std::string_view>;
        for (std::string_view name : ObjectTypes) {
            names->emplace(UpperCase(name), name);
        }
        return names;
    }();
    const auto found = table->find(std::string(upperCaseName));
    return found == table->end() ? upperCaseName : found->second;
}

bool IsSpatial(std::string_view upperCaseName)
{
    static constexpr std::string_view Places[] = {
        "IFCSITE",        "IFCBUILDING",       "IFCBUILDINGSTOREY", "IFCSPACE",
        "IFCSPATIALZONE", "IFCFACILITY",       "IFCFACILITYPART",   "IFCBRIDGE",
        "IFCBRIDGEPART",  "IFCROAD",           "IFCROADPART",       "IFCRAILWAY",
        "IFCRAILWAYPART", "IFCMARINEFACILITY", "IFCMARINEPART",     "IFCEXTERNALSPATIALELEMENT"};
    return std::find(std::begin(Places), std::end(Places), upperCaseName) != std::end(Places);
}

} // namespace cadex::ifc
