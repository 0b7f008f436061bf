#include "sdk/step/StepPropertyWriter.h"

#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace cadex::step {

using part21::Part21Real;
using part21::Part21TimeStamp;
using part21::Raw;

namespace {

/// Writes one representation item for each entry.
class ItemVisitor final : public ModelData_PropertyTable::Visitor
{
public:
    explicit ItemVisitor(Part21Writer& out) : myOut(out) {}

    std::vector<Ref> items;

    void operator()(const Base_UTF16String& name, I32 value) override
    {
        items.push_back(myOut.Add("INTEGER_REPRESENTATION_ITEM", name, value));
    }
    void operator()(const Base_UTF16String& name, I64 value) override
    {
        if (value >= std::numeric_limits<I32>::min() && value <= std::numeric_limits<I32>::max()) {
            (*this)(name, static_cast<I32>(value));
        } else {
            Describe(name, std::to_string(value).c_str());
        }
    }
    void operator()(const Base_UTF16String& name, float value) override { Measure(name, value); }
    void operator()(const Base_UTF16String& name, double value) override { Measure(name, value); }
    void operator()(const Base_UTF16String& name, ModelData_PropertyTable::TimeType value) override
    {
        Describe(name, Part21TimeStamp(value.myValue).c_str());
    }
    void operator()(const Base_UTF16String& name, const Base_UTF16String& value) override
    {
        Describe(name, value);
    }
    void operator()(const Base_UTF16String& name, const ModelData_Point& value) override
    {
        Describe(name, Text(value).c_str());
    }
    void operator()(const Base_UTF16String& name, const ModelData_Box& value) override
    {
        Describe(name, (Text(value.MinCorner()) + " - " + Text(value.MaxCorner())).c_str());
    }

private:
    void Describe(const Base_UTF16String& name, const Base_UTF16String& value)
    {
        items.push_back(myOut.Add("DESCRIPTIVE_REPRESENTATION_ITEM", name, value));
    }

    template <typename T>
    void Measure(const Base_UTF16String& name, T value)
    {
        if (std::isfinite(value)) {
            const std::string measure = "RATIO_MEASURE(" + Part21Real(value) + ')';
            items.push_back(myOut.Add("VALUE_REPRESENTATION_ITEM", name, Raw{measure}));
        } else {
            Describe(name, std::isnan(value) ? "nan" : value > 0 ? "inf" : "-inf");
        }
    }

    static std::string Text(const ModelData_Point& point)
    {
        return Part21Real(point.X()) + ' ' + Part21Real(point.Y()) + ' ' + Part21Real(point.Z());
    }

    Part21Writer& myOut;
};

} // namespace

void WriteStepProperties(Part21Writer& out, const ModelData_PropertyTable& table, Ref target, Ref context)
{
    if (table.IsEmpty()) {
        return;
    }
    ItemVisitor visitor(out);
    table.Accept(visitor);
    const Ref property = out.Add("PROPERTY_DEFINITION", "user defined attribute", "", target);
    const Ref values = out.Add("REPRESENTATION", "user defined attributes", visitor.items, context);
    out.Add("PROPERTY_DEFINITION_REPRESENTATION", property, values);
}

} // namespace cadex::step
