// Property tables of objects: attributes, property sets and quantities as text with units.
#pragma once

#include <cadex/ModelData_PropertyTable.hxx>

#include "sdk/ifc/IfcRelations.h"
#include "sdk/ifc/IfcUnits.h"

namespace cadex::ifc {

/// The set whose properties keep their bare names; every other property is called "SetName.PropertyName".
inline constexpr std::string_view PlainSetName = "Properties";

class PropertyReader
{
public:
    PropertyReader(const IfcFile& file, const Relations& relations)
        : myFile(file), myRelations(relations), myUnits(ReadProjectUnits(file))
    {
    }

    /// "GlobalId", "IfcType", "ObjectType", "Description", "LongName", "Tag", "TypeName", "Material" as far
    /// as they are set, then all sets of the object's type, then the object's own, so that these win where
    /// names are equal. Real numbers are text with their unit ("2.5 m²"), whole numbers are numbers.
    ModelData_PropertyTable OfObject(const Entity& object) const;
    /// Of the type object that a shared part comes from.
    ModelData_PropertyTable OfType(const Entity& type) const;

private:
    void AddSet(const Entity& set, ModelData_PropertyTable& table) const;
    void AddProperty(const Base_UTF16String& prefix, const Entity& property, ModelData_PropertyTable& table,
                     int depth) const;
    void AddMaterial(Id object, ModelData_PropertyTable& table) const;
    std::string Value(std::string_view raw, const std::string& unit) const;
    std::string Values(std::string_view list, const std::string& unit) const;
    std::string UnitOf(const Entity& property, std::size_t argument) const;
    std::string QuantityText(const Entity& quantity) const;

    const IfcFile& myFile;
    const Relations& myRelations;
    ProjectUnits myUnits;
    mutable std::size_t mySteps = 0; ///< within one set: complex properties may fan out without end
};

/// The shortest decimal text that reads back as the same number; "." whatever the locale.
std::string NumberText(double value);

} // namespace cadex::ifc
