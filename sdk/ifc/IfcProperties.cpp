#include "sdk/ifc/IfcProperties.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace cadex::ifc {
namespace {

void AddText(ModelData_PropertyTable& table, const char* name, const Base_UTF16String& text)
{
    if (!text.IsEmpty()) {
        table.Add(Base_UTF16String(name), text);
    }
}

void AddText(ModelData_PropertyTable& table, const char* name, const std::string& text)
{
    AddText(table, name, Base_UTF16String(text.c_str()));
}

/// A whole number without unit fits the table as a number.
bool ReadWhole(std::string_view raw, I32& number)
{
    const TypedValue typed = ReadTyped(raw);
    double value = 0;
    if ((typed.type != "IFCINTEGER" && typed.type != "IFCPOSITIVEINTEGER" &&
         typed.type != "IFCCOUNTMEASURE") ||
        !ReadNumber(typed.value, value) || value != std::floor(value) ||
        std::abs(value) > std::numeric_limits<I32>::max()) {
        return false;
    }
    number = static_cast<I32>(value);
    return true;
}

} // namespace

std::string NumberText(double value)
{
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, value == 0 ? 0.0 : value).ptr;
    return {text, end};
}

ModelData_PropertyTable PropertyReader::OfObject(const Entity& object) const
{
    ModelData_PropertyTable table{initialized()};
    AddText(table, "GlobalId", object.Text(0));
    AddText(table, "IfcType", std::string(DisplayName(object.TypeName())));
    AddText(table, "ObjectType", object.Text(4));
    AddText(table, "Description", object.Text(3));
    const bool project = object.Is(Type::IfcProject);
    AddText(table, project || IsSpatial(object.TypeName()) ? "LongName" : "Tag",
            object.Text(project ? 5 : 7));
    const Entity type = myFile.Get(Relations::Find(myRelations.typeOf, object.Id()));
    AddText(table, "TypeName", type.Text(2));
    AddMaterial(object.Id(), table);
    for (Id set : type.Refs(5)) {
        AddSet(myFile.Get(set), table);
    }
    for (Id set : myRelations.List(myRelations.propertySets, object.Id())) {
        AddSet(myFile.Get(set), table);
    }
    return table;
}

ModelData_PropertyTable PropertyReader::OfType(const Entity& type) const
{
    ModelData_PropertyTable table{initialized()};
    for (Id set : type.Refs(5)) {
        AddSet(myFile.Get(set), table);
    }
    return table;
}

void PropertyReader::AddMaterial(Id object, ModelData_PropertyTable& table) const
{
    Id found = Relations::Find(myRelations.materialOf, object);
    found = found != 0 ? found
                       : Relations::Find(myRelations.materialOf, Relations::Find(myRelations.typeOf, object));
    // Down from usage to set to layer to material, never in circles: each level is visited once.
    std::vector<Id> level{found};
    std::string names;
    for (int depth = 0; depth < 4 && !level.empty(); ++depth) {
        std::vector<Id> below;
        for (Id id : level) {
            const Entity entity = myFile.Get(id);
            if (entity.Is(Type::IfcMaterial)) {
                names += (names.empty() ? "" : ", ") + entity.Text(0).ToUTF8();
                continue;
            }
            for (std::size_t argument = 0; argument < entity.Size(); ++argument) {
                const std::vector<Id> parts = entity.Refs(argument);
                below.insert(below.end(), parts.begin(), parts.end());
            }
        }
        level = below.size() < 1000 ? below : std::vector<Id>();
    }
    AddText(table, "Material", names);
}

void PropertyReader::AddSet(const Entity& set, ModelData_PropertyTable& table) const
{
    const bool quantities = set.Is(Type::IfcElementQuantity);
    mySteps = 0;
    if (!quantities && !set.Is(Type::IfcPropertySet)) {
        return;
    }
    const Base_UTF16String name = set.Text(2);
    const std::string bare = name.ToUTF8();
    const bool plain =
        bare.empty() || bare == PlainSetName || bare.rfind(std::string(PlainSetName) + " (", 0) == 0;
    const Base_UTF16String prefix = plain ? Base_UTF16String() : name + Base_UTF16String(".");
    for (Id id : set.Refs(quantities ? 5 : 4)) {
        AddProperty(prefix, myFile.Get(id), table, 0);
    }
}

std::string PropertyReader::UnitOf(const Entity& property, std::size_t argument) const
{
    return UnitSymbol(property.Ref(argument));
}

std::string PropertyReader::Value(std::string_view raw, const std::string& unit) const
{
    const TypedValue typed = ReadTyped(raw);
    double number = 0;
    if (typed.value == ".T." || typed.value == ".F." || typed.value == ".U.") {
        return typed.value == ".T." ? "true" : (typed.value == ".F." ? "false" : "unknown");
    }
    if (!typed.value.empty() && typed.value.front() == '\'') {
        return ReadString(typed.value).ToUTF8();
    }
    if (typed.value.size() > 2 && typed.value.front() == '.' && typed.value.back() == '.') {
        return std::string(typed.value.substr(1, typed.value.size() - 2));
    }
    if (ReadNumber(typed.value, number)) {
        const std::string symbol = unit.empty() ? MeasureSymbol(myUnits, typed.type) : unit;
        return NumberText(number) + (symbol.empty() ? "" : " " + symbol);
    }
    return {};
}

std::string PropertyReader::Values(std::string_view list, const std::string& unit) const
{
    std::string text;
    ListReader reader(list);
    for (std::string_view item; reader.Next(item);) {
        text += (text.empty() ? "" : ", ") + Value(item, unit);
    }
    return text;
}

std::string PropertyReader::QuantityText(const Entity& quantity) const
{
    // Name, Description, Unit, value
    const char* kind = nullptr;
    switch (quantity.Type()) {
    case Type::IfcQuantityLength:
        kind = "IFCLENGTHMEASURE";
        break;
    case Type::IfcQuantityArea:
        kind = "IFCAREAMEASURE";
        break;
    case Type::IfcQuantityVolume:
        kind = "IFCVOLUMEMEASURE";
        break;
    case Type::IfcQuantityWeight:
        kind = "IFCMASSMEASURE";
        break;
    case Type::IfcQuantityTime:
        kind = "IFCTIMEMEASURE";
        break;
    default:
        kind = "";
        break;
    }
    const std::string own = UnitOf(quantity, 2);
    return Value(quantity.Raw(3), own.empty() ? MeasureSymbol(myUnits, kind) : own);
}

void PropertyReader::AddProperty(const Base_UTF16String& prefix, const Entity& property,
                                 ModelData_PropertyTable& table, int depth) const
{
    const Base_UTF16String name = prefix + property.Text(0);
    std::string text;
    I32 whole = 0;
    switch (property.Type()) {
    case Type::IfcPropertySingleValue: // Name, Description, NominalValue, Unit
        if (!property.IsSet(3) && ReadWhole(property.Raw(2), whole)) {
            table.Add(name, whole);
            return;
        }
        text = Value(property.Raw(2), UnitOf(property, 3));
        break;
    case Type::IfcPropertyEnumeratedValue: // Name, Description, EnumerationValues, EnumerationReference
        text = Values(property.Raw(2), {});
        break;
    case Type::IfcPropertyListValue: // Name, Description, ListValues, Unit
        text = Values(property.Raw(2), UnitOf(property, 3));
        break;
    case Type::IfcPropertyBoundedValue: // Name, Description, UpperBoundValue, LowerBoundValue, Unit
        text = Value(property.Raw(3), UnitOf(property, 4)) + " .. " +
               Value(property.Raw(2), UnitOf(property, 4));
        break;
    case Type::IfcPropertyTableValue: // Name, Description, DefiningValues, DefinedValues, ...
        text = Values(property.Raw(2), UnitOf(property, 5)) + " -> " +
               Values(property.Raw(3), UnitOf(property, 6));
        break;
    case Type::IfcPropertyReferenceValue: // Name, Description, UsageName, PropertyReference
        text = property.Ref(3).Text(0).ToUTF8();
        break;
    case Type::IfcComplexProperty:         // Name, Description, UsageName, HasProperties
    case Type::IfcPhysicalComplexQuantity: // Name, Description, HasQuantities, ...
        for (Id id : property.Refs(property.Is(Type::IfcComplexProperty) ? 3 : 2)) {
            if (depth < 8 && ++mySteps < 100'000) {
                AddProperty(name + Base_UTF16String("."), myFile.Get(id), table, depth + 1);
            }
        }
        return;
    case Type::IfcQuantityLength:
    case Type::IfcQuantityArea:
    case Type::IfcQuantityVolume:
    case Type::IfcQuantityCount:
    case Type::IfcQuantityWeight:
    case Type::IfcQuantityTime:
    case Type::IfcQuantityNumber:
        text = QuantityText(property);
        break;
    default:
        return;
    }
    if (!text.empty() && !name.IsEmpty()) {
        table.Add(name, Base_UTF16String(text.c_str()));
    }
}

} // namespace cadex::ifc
