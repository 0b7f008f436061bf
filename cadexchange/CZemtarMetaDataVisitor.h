#pragma once

#include "common/ZemtarExport.h"
#include "host/CZemtarString.h"

#include <cadex/ModelData_PropertyTable.hxx>

#include <map>
#include <vector>

namespace Zemtar {

/// Collects a property table as text by name. The import lets the table of every element accept it.
///
///     visitor.Clear();
///     element.Properties().Accept(visitor);
///     for (const CZemtarString& key : visitor.GetKeys())
///         use(key, visitor.GetValue(key));
///
/// A name that occurs twice keeps the value visited last. Numbers become 32-bit integers: of 64 bits the low
/// 32 are kept, floating-point values are truncated toward zero, and NaN and values that do not fit give
/// "-2147483648". Times become ISO 8601 in UTC, empty outside the years 1 to 9999. Points and boxes are
/// ignored.
class ZEMTAR_EXPORT CZemtarMetaDataVisitor : public cadex::ModelData_PropertyTable::Visitor
{
public:
    /// Empties the map.
    void Clear();

    /// All names, ascending in the host string's order.
    std::vector<CZemtarString> GetKeys() const;

    /// The value under a name. An unknown name is inserted with an empty value.
    CZemtarString GetValue(CZemtarString key);

    /// The map itself; valid until the next change.
    const std::map<CZemtarString, CZemtarString>& Values() const { return m_values; }

    void operator()(const cadex::Base_UTF16String& name, cadex::I32 value) override;
    void operator()(const cadex::Base_UTF16String& name, cadex::I64 value) override;
    void operator()(const cadex::Base_UTF16String& name, float value) override;
    void operator()(const cadex::Base_UTF16String& name, double value) override;
    void operator()(const cadex::Base_UTF16String& name,
                    cadex::ModelData_PropertyTable::TimeType value) override;
    void operator()(const cadex::Base_UTF16String& name, const cadex::Base_UTF16String& value) override;
    void operator()(const cadex::Base_UTF16String& name, const cadex::ModelData_Point& value) override;
    void operator()(const cadex::Base_UTF16String& name, const cadex::ModelData_Box& value) override;

private:
    std::map<CZemtarString, CZemtarString> m_values;
};

} // namespace Zemtar
