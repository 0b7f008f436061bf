// From tables and polylines to the sets of a poly representation, by appearance and name.
#pragma once

#include <cstddef>
#include <functional>
#include <unordered_map>
#include <utility>
#include <vector>

#include <cadex/Base_UTF16String.hxx>
#include <cadex/ModelData_Appearance.hxx>
#include <cadex/ModelData_PolyRepresentation.hxx>

#include "sdk/mesh/TriangleAssembly.h"
#include "sdk/occt/CurvePolylines.h"

namespace cadex::occt {

/// What the members of a set have in common.
struct SetLabel
{
    ModelData_Appearance appearance;
    Base_UTF16String name = {}; ///< of the solids or sheets that it shows; empty: that of the part
};

/// Numbers labels in the order in which they come; the body's own is number 0.
class SetLabels
{
public:
    explicit SetLabels(const ModelData_Appearance& first) { NumberOf(first); }

    std::size_t NumberOf(const ModelData_Appearance& appearance, const Base_UTF16String& name = {})
    {
        const auto [it, isNew] = myNumbers.try_emplace({appearance.Impl(), name}, myLabels.size());
        return isNew ? Append(appearance, name) : it->second;
    }
    /// A label of its own, whatever it says.
    std::size_t Append(const ModelData_Appearance& appearance, const Base_UTF16String& name = {})
    {
        myLabels.push_back({appearance, name});
        return myLabels.size() - 1;
    }

    const std::vector<SetLabel>& All() const { return myLabels; }

private:
    using Key = std::pair<const void*, Base_UTF16String>; ///< identity of the appearance, name
    struct KeyHash
    {
        std::size_t operator()(const Key& key) const
        {
            constexpr std::size_t Prime = 1099511628211U;
            std::size_t hash = std::hash<const void*>()(key.first);
            for (std::size_t i = 0; i < key.second.Length(); ++i) {
                hash = (hash ^ key.second.Data()[i]) * Prime;
            }
            return hash;
        }
    };
    std::unordered_map<Key, std::size_t, KeyHash> myNumbers;
    std::vector<SetLabel> myLabels;
};

/// One triangle set for each table that is not empty, with the label of the same place. `partName` is for
/// labels without a name.
void AddTriangleSets(std::vector<mesh::TriangleTables>&& tables, const std::vector<SetLabel>& labels,
                     const Base_UTF16String& partName, ModelData_PolyRepresentation& result);

/// One polyline set for each chain of curves that meet end to end, by groups of equal labels.
void AddPolylineSets(std::vector<std::vector<Polyline>> curves, const std::vector<SetLabel>& labels,
                     const Base_UTF16String& partName, ModelData_PolyRepresentation& result);

/// A null handle in place of a representation without sets.
ModelData_PolyRepresentation NullIfEmpty(const ModelData_PolyRepresentation& representation);

} // namespace cadex::occt
