// Colours, names and properties that the attribute records of a SAT file give to their owners.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include <cadex/Base_UTF16String.hxx>
#include <cadex/ModelData_Appearance.hxx>

#include "sdk/acis/AcisBodies.h"
#include "sdk/acis/AcisRecords.h"
#include "sdk/model/AppearanceCache.h"

namespace cadex::acis {

/// Reads all attributes of a file once. Owners are records. The records must outlive the table.
class AttributeTable
{
public:
    explicit AttributeTable(const Records& records);

    /// Null when the owner has none.
    ModelData_Appearance LookOf(int owner);

    /// The text under a key that is a name; all others become properties.
    void Describe(int owner, FileBody& body) const;

private:
    void Add(std::size_t record);
    void AddColour(int owner, float red, float green, float blue);
    void AddText(std::size_t record, int owner, const Fields& fields);
    std::string_view LastText(std::size_t first, std::size_t& last) const;

    const Records& myRecords;
    internal::AppearanceCache myLooks;
    std::unordered_map<int, internal::Colour> myColours;
    std::unordered_multimap<int, std::pair<std::size_t, std::pair<Base_UTF16String, Base_UTF16String>>>
        myTexts; ///< with the record, for the order
};

} // namespace cadex::acis
