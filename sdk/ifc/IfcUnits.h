// Units of the project, as factors for geometry and as text behind property values.
#pragma once

#include <map>
#include <string>

#include "sdk/ifc/IfcFile.h"

namespace cadex::ifc {

struct ProjectUnits
{
    double toMillimetres = 1000;
    double toRadians = 1;
    std::map<std::string, std::string, std::less<>> symbols; ///< "LENGTHUNIT" -> "mm", UTF-8
};

/// From the IfcUnitAssignment of the first project; SI units where it says nothing.
ProjectUnits ReadProjectUnits(const IfcFile& file);

/// "m²", "W/(m²·K)", "°" ... of an IfcNamedUnit, IfcDerivedUnit or IfcMonetaryUnit, UTF-8; empty when
/// unknown.
std::string UnitSymbol(const Entity& unit);

/// The symbol that the project gives to values of a measure type ("IFCAREAMEASURE"); empty for what has no
/// unit.
std::string MeasureSymbol(const ProjectUnits& units, std::string_view measureType);

} // namespace cadex::ifc
