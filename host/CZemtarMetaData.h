#pragma once

#include "host/CZemtarString.h"
#include "host/ZemtarCoreExport.h"

#include <map>
#include <utility>
#include <vector>

namespace Zemtar {

/// Named texts of a scene node, grouped by category: part numbers, authors, dates. Every node has one, empty
/// at first.
///
///     node->MetaData()->SetValue("steel", "Material", "Properties", "");
class ZEMTAR_CORE_EXPORT CZemtarMetaData
{
public:
    using NamedValues = std::vector<std::pair<CZemtarString, CZemtarString>>;

    /// Adds an empty category; one of that name is left as it is.
    void InsertCatagory(const CZemtarString& category);
    /// Sets a value, given first, under its name and category. A missing category is made; a value under the
    /// same name is replaced and keeps its place. `unit` is the value's unit of measure, empty for none.
    void SetValue(const CZemtarString& value, const CZemtarString& name, const CZemtarString& category,
                  const CZemtarString& unit);

    /// Replaces what `values` holds by all categories (empty ones too), each with its (name, value) pairs in
    /// order of insertion.
    void ListNamedValues(std::map<CZemtarString, NamedValues>& values) const;
    /// Gives the value, or the empty string.
    CZemtarString Value(const CZemtarString& name, const CZemtarString& category) const;
    /// Gives the value's unit of measure, or the empty string.
    CZemtarString Unit(const CZemtarString& name, const CZemtarString& category) const;
    bool IsEmpty() const { return m_categories.empty(); }

private:
    struct Entry
    {
        CZemtarString name;
        CZemtarString value;
        CZemtarString unit;
    };
    struct Category
    {
        std::vector<Entry> entries;   ///< in order of insertion
        std::vector<unsigned> byName; ///< positions in entries, ascending by name
        std::vector<unsigned>::const_iterator Seek(const CZemtarString& name) const;
    };

    const Entry* Find(const CZemtarString& name, const CZemtarString& category) const;

    std::map<CZemtarString, Category> m_categories;
};

} // namespace Zemtar
