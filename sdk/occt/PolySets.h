// From tables and polylines to the sets of a poly representation, by appearance.
#pragma once

#include <cstddef>
#include <unordered_map>
#include <vector>

#include <cadex/Base_UTF16String.hxx>
#include <cadex/ModelData_Appearance.hxx>
#include <cadex/ModelData_PolyRepresentation.hxx>

#include "sdk/mesh/TriangleAssembly.h"
#include "sdk/occt/CurvePolylines.h"

namespace cadex::occt {

/// Numbers appearances in the order in which they come; the body's own is number 0.
class AppearanceGroups
{
public:
    explicit AppearanceGroups(const ModelData_Appearance& first) { NumberOf(first); }

    std::size_t NumberOf(const ModelData_Appearance& appearance)
    {
        const auto [it, isNew] = myNumbers.try_emplace(appearance.Impl(), myAppearances.size());
        return isNew ? Append(appearance) : it->second;
    }
    /// A group of its own, whatever it looks like.
    std::size_t Append(const ModelData_Appearance& appearance)
    {
        myAppearances.push_back(appearance);
        return myAppearances.size() - 1;
    }

    const std::vector<ModelData_Appearance>& All() const { return myAppearances; }

private:
    std::unordered_map<const void*, std::size_t> myNumbers;
    std::vector<ModelData_Appearance> myAppearances;
};

/// One triangle set for each table that is not empty, with the appearance of the same place.
void AddTriangleSets(std::vector<mesh::TriangleTables>&& tables,
                     const std::vector<ModelData_Appearance>& appearances, const Base_UTF16String& name,
                     ModelData_PolyRepresentation& result);

/// One polyline set for each chain of curves that meet end to end, by groups of equal appearance.
void AddPolylineSets(std::vector<std::vector<Polyline>> curves,
                     const std::vector<ModelData_Appearance>& appearances, const Base_UTF16String& name,
                     ModelData_PolyRepresentation& result);

/// A null handle in place of a representation without sets.
ModelData_PolyRepresentation NullIfEmpty(const ModelData_PolyRepresentation& representation);

} // namespace cadex::occt
