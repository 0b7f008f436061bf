#include "host/CZemtarMetaData.h"

#include <algorithm>

namespace Zemtar {

std::vector<unsigned>::const_iterator CZemtarMetaData::Category::Seek(const CZemtarString& name) const
{
    return std::lower_bound(
        byName.begin(), byName.end(), name,
        [this](unsigned entry, const CZemtarString& sought) { return entries[entry].name < sought; });
}

void CZemtarMetaData::InsertCatagory(const CZemtarString& category)
{
    m_categories.try_emplace(category);
}

void CZemtarMetaData::SetValue(const CZemtarString& value, const CZemtarString& name,
                               const CZemtarString& category, const CZemtarString& unit)
{
    Category& target = m_categories[category];
    const auto place = target.Seek(name);
    if (place != target.byName.end() && target.entries[*place].name == name) {
        target.entries[*place].value = value;
        target.entries[*place].unit = unit;
        return;
    }
    target.byName.insert(place, static_cast<unsigned>(target.entries.size()));
    target.entries.push_back({name, value, unit});
}

void CZemtarMetaData::ListNamedValues(std::map<CZemtarString, NamedValues>& values) const
{
    values.clear();
    for (const auto& [name, category] : m_categories) {
        NamedValues& list = values[name];
        list.reserve(category.entries.size());
        for (const Entry& entry : category.entries) {
            list.emplace_back(entry.name, entry.value);
        }
    }
}

const CZemtarMetaData::Entry* CZemtarMetaData::Find(const CZemtarString& name,
                                                    const CZemtarString& category) const
{
    const auto found = m_categories.find(category);
    if (found == m_categories.end()) {
        return nullptr;
    }
    const auto place = found->second.Seek(name);
    if (place == found->second.byName.end() || found->second.entries[*place].name != name) {
        return nullptr;
    }
    return &found->second.entries[*place];
}

CZemtarString CZemtarMetaData::Value(const CZemtarString& name, const CZemtarString& category) const
{
    const Entry* entry = Find(name, category);
    return entry != nullptr ? entry->value : CZemtarString();
}

CZemtarString CZemtarMetaData::Unit(const CZemtarString& name, const CZemtarString& category) const
{
    const Entry* entry = Find(name, category);
    return entry != nullptr ? entry->unit : CZemtarString();
}

} // namespace Zemtar
