// What attributes say of the nodes that they belong to: colours, transparency, names, layers, densities,
// texts.
#pragma once

#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include <cadex/Base_UTF16String.hxx>
#include <cadex/ModelData_Appearance.hxx>

#include "sdk/model/AppearanceCache.h"
#include "sdk/parasolid/XtNodes.h"

namespace cadex::parasolid {

class AttributeTable
{
public:
    explicit AttributeTable(const Nodes& nodes);

    /// Null when the node has neither colour nor transparency.
    ModelData_Appearance LookOf(int node);
    /// Empty when it has none.
    Base_UTF16String NameOf(int node) const;
    /// "Layer", "Density" (kilogrammes in a cubic metre), and texts under the names of their attributes.
    std::vector<std::pair<Base_UTF16String, Base_UTF16String>> PropertiesOf(int node) const;
    bool IsInvisible(int node) const;

private:
    struct Entry
    {
        std::optional<internal::Colour> colour = {};
        double translucency = 0; ///< 1: nothing is seen
        Base_UTF16String name = {};
        bool hasUnicodeName = false;
        bool isInvisible = false;
        std::vector<std::pair<Base_UTF16String, Base_UTF16String>> properties = {};
    };

    void Add(const Nodes& nodes, const Node& attribute, const std::string& kind);

    std::unordered_map<int, Entry> myEntries; ///< by owner
    internal::AppearanceCache myLooks;
};

} // namespace cadex::parasolid
