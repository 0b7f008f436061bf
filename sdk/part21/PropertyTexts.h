// The entries of a property table as pairs of texts, for formats whose properties are texts.
//
//     PropertyTexts texts;
//     properties.Accept(texts);
//     for (const auto& [name, value] : texts.texts) { ... }
#pragma once

#include <charconv>
#include <string>
#include <utility>
#include <vector>

#include <cadex/ModelData_PropertyTable.hxx>

#include "sdk/part21/Part21Writer.h"

namespace cadex::part21 {

/// Numbers are the shortest text that gives them back, times as in Part 21, points three numbers.
class PropertyTexts final : public ModelData_PropertyTable::Visitor
{
public:
    std::vector<std::pair<Base_UTF16String, Base_UTF16String>> texts;

    void operator()(const Base_UTF16String& name, I32 value) override { Add(name, std::to_string(value)); }
    void operator()(const Base_UTF16String& name, I64 value) override { Add(name, std::to_string(value)); }
    void operator()(const Base_UTF16String& name, float value) override { Add(name, NumberText(value)); }
    void operator()(const Base_UTF16String& name, double value) override { Add(name, NumberText(value)); }
    void operator()(const Base_UTF16String& name, ModelData_PropertyTable::TimeType value) override
    {
        Add(name, Part21TimeStamp(value.myValue));
    }
    void operator()(const Base_UTF16String& name, const Base_UTF16String& value) override
    {
        texts.emplace_back(name, value);
    }
    void operator()(const Base_UTF16String& name, const ModelData_Point& value) override
    {
        Add(name, PointText(value));
    }
    void operator()(const Base_UTF16String& name, const ModelData_Box& value) override
    {
        Add(name, PointText(value.MinCorner()) + " - " + PointText(value.MaxCorner()));
    }

private:
    void Add(const Base_UTF16String& name, const std::string& value)
    {
        texts.emplace_back(name, Base_UTF16String(value.c_str()));
    }
    template <typename Number>
    static std::string NumberText(Number value)
    {
        char buffer[64];
        const auto end = std::to_chars(buffer, buffer + sizeof(buffer), value).ptr;
        return {buffer, end};
    }
    static std::string PointText(const ModelData_Point& point)
    {
        return NumberText(point.X()) + ' ' + NumberText(point.Y()) + ' ' + NumberText(point.Z());
    }
};

} // namespace cadex::part21
