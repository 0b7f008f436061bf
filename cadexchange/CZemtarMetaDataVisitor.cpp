#include "cadexchange/CZemtarMetaDataVisitor.h"

#include "cadexchange/Truncation.h"
#include "common/encoding/CZemtarConvert.h"

#include <QDateTime>

namespace Zemtar {

void CZemtarMetaDataVisitor::Clear()
{
    m_values.clear();
}

std::vector<CZemtarString> CZemtarMetaDataVisitor::GetKeys() const
{
    std::vector<CZemtarString> keys;
    keys.reserve(m_values.size());
    for (const auto& entry : m_values) {
        keys.push_back(entry.first);
    }
    return keys;
}

CZemtarString CZemtarMetaDataVisitor::GetValue(CZemtarString key)
{
    return m_values[key];
}

void CZemtarMetaDataVisitor::operator()(const cadex::Base_UTF16String& name, cadex::I32 value)
{
    m_values[name.ToWString()] = CZemtarString(value);
}

void CZemtarMetaDataVisitor::operator()(const cadex::Base_UTF16String& name, cadex::I64 value)
{
    // The low 32 bits alone are wanted: 4294967297 is "1".
    (*this)(name, static_cast<cadex::I32>(static_cast<cadex::U32>(value)));
}

void CZemtarMetaDataVisitor::operator()(const cadex::Base_UTF16String& name, float value)
{
    (*this)(name, TruncateToInt(value));
}

void CZemtarMetaDataVisitor::operator()(const cadex::Base_UTF16String& name, double value)
{
    // The loss of the fraction is wanted: 1234.9 is "1234".
    (*this)(name, TruncateToInt(value));
}

void CZemtarMetaDataVisitor::operator()(const cadex::Base_UTF16String& name,
                                        cadex::ModelData_PropertyTable::TimeType value)
{
    const QDateTime time = QDateTime::fromSecsSinceEpoch(value.myValue).toUTC();
    m_values[name.ToWString()] = CZemtarConvert::QStringToCZemtarString(time.toString(Qt::ISODate));
}

void CZemtarMetaDataVisitor::operator()(const cadex::Base_UTF16String& name,
                                        const cadex::Base_UTF16String& value)
{
    m_values[name.ToWString()] = CZemtarString(value.ToWString());
}

void CZemtarMetaDataVisitor::operator()(const cadex::Base_UTF16String&, const cadex::ModelData_Point&) {}

void CZemtarMetaDataVisitor::operator()(const cadex::Base_UTF16String&, const cadex::ModelData_Box&) {}

} // namespace Zemtar
