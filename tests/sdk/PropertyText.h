// A property table as text, for comparison: one line an entry, with the kind of its value.
#pragma once

#include <string>

#include <cadex/ModelData_PropertyTable.hxx>

namespace cadex {

class PropertyText : public ModelData_PropertyTable::Visitor
{
public:
    std::string text;

    void operator()(const Base_UTF16String& n, I32 v) override { Print(n, "i32 " + std::to_string(v)); }
    void operator()(const Base_UTF16String& n, I64 v) override { Print(n, "i64 " + std::to_string(v)); }
    void operator()(const Base_UTF16String& n, float v) override { Print(n, "f " + std::to_string(v)); }
    void operator()(const Base_UTF16String& n, double v) override { Print(n, "d " + std::to_string(v)); }
    void operator()(const Base_UTF16String& n, ModelData_PropertyTable::TimeType v) override
    {
        Print(n, "t " + std::to_string(v.myValue));
    }
    void operator()(const Base_UTF16String& n, const Base_UTF16String& v) override { Print(n, v.ToUTF8()); }
    void operator()(const Base_UTF16String& n, const ModelData_Point& v) override
    {
        Print(n, "p " + std::to_string(v.Y()));
    }
    void operator()(const Base_UTF16String& n, const ModelData_Box& v) override
    {
        Print(n, "b " + std::to_string(v.MaxCorner().Z()));
    }

private:
    void Print(const Base_UTF16String& name, const std::string& value)
    {
        text += name.ToUTF8() + '=' + value + '\n';
    }
};

} // namespace cadex
