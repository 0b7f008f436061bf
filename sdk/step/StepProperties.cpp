#include "sdk/step/StepProperties.h"

#include <limits>
#include <string>

#include "sdk/step/StepUnits.h"
#include "sdk/text/PlainText.h"
#include "sdk/text/TimeStamps.h"

namespace cadex::step {

using text::IsBlankText;
using text::ParseIsoTime;
namespace {

// Lists of items may hold further lists; what goes deeper runs in a circle.
constexpr int MaximalNesting = 8;

void AddInteger(ModelData_PropertyTable& table, const Base_UTF16String& name, std::int64_t value)
{
    if (value >= std::numeric_limits<I32>::min() && value <= std::numeric_limits<I32>::max()) {
        table.Add(name, static_cast<I32>(value));
    } else {
        table.Add(name, static_cast<I64>(value));
    }
}

// Reads one property's representation into a table.
class ItemReader
{
public:
    ItemReader(const ClearText& text, ModelData_PropertyTable& table, std::string_view fallback,
               bool useFallback)
        : myText(text), myTable(table), myFallback(fallback), myUseFallback(useFallback)
    {
    }

    void Read(RecordId id, int nesting = 0)
    {
        const ClearText::Record* record = myText.Find(id);
        if (record == nullptr || nesting > MaximalNesting) {
            return;
        }
        if (record->type == 0) {
            ReadComplex(id);
            return;
        }
        const std::string_view type = myText.TypeName(*record);
        Cursor arguments = myText.Arguments(*record);
        const Base_UTF16String name = Name(arguments.String());
        if (type == "CARTESIAN_POINT") {
            double c[3] = {0, 0, 0};
            if (arguments.Reals(c, 3)) {
                myTable.Add(name, ModelData_Point(c[0] * myLength, c[1] * myLength, c[2] * myLength));
            }
        } else if (type == "COMPOUND_REPRESENTATION_ITEM") {
            arguments.EnterTyped();
            const std::vector<RecordId> members = arguments.References();
            for (const RecordId member : members) {
                Read(member, nesting + 1);
            }
        } else if (EndsWith(type, "REPRESENTATION_ITEM")) {
            ReadValue(arguments, name);
        }
    }

    void SetLengthFactor(double factor) { myLength = factor > 0.0 ? factor : 1.0; }

private:
    Base_UTF16String Name(std::string_view raw) const
    {
        return DecodeString(myUseFallback || IsBlankText(raw) ? myFallback : raw);
    }

    void ReadComplex(RecordId id)
    {
        bool found = false;
        Cursor item = myText.Arguments(id, "REPRESENTATION_ITEM", found);
        if (!found) {
            return;
        }
        const Base_UTF16String name = Name(item.String());
        for (const std::string_view type : {"MEASURE_WITH_UNIT", "VALUE_REPRESENTATION_ITEM"}) {
            Cursor value = myText.Arguments(id, type, found);
            if (found && value.More()) {
                ReadValue(value, name);
                return;
            }
        }
    }

    // A value, perhaps under a measure's type name, and perhaps a unit behind it.
    void ReadValue(Cursor& arguments, const Base_UTF16String& name)
    {
        const bool typed = !arguments.EnterTyped().empty();
        switch (arguments.Next()) {
        case Cursor::Kind::String:
            myTable.Add(name, DecodeString(arguments.String()));
            return;
        case Cursor::Kind::Enumerator: {
            const std::string_view value = arguments.Enumerator();
            myTable.Add(name, value == "T"   ? Base_UTF16String("true")
                              : value == "F" ? Base_UTF16String("false")
                                             : DecodeString(value));
            return;
        }
        case Cursor::Kind::Integer: {
            Cursor ahead = arguments;
            const std::int64_t value = ahead.Integer();
            if (typed) {
                ahead.Leave();
            }
            if (ahead.Next() != Cursor::Kind::Reference && !ahead.Failed()) {
                AddInteger(myTable, name, value);
                return;
            }
            break; // a measure written without a point
        }
        case Cursor::Kind::Real:
            break;
        default:
            return;
        }
        const double value = arguments.Real();
        if (arguments.Failed()) {
            return;
        }
        if (typed) {
            arguments.Leave();
        }
        const bool hasUnit = arguments.Next() == Cursor::Kind::Reference;
        myTable.Add(name, hasUnit ? value * MeasureFactor(myText, arguments.Reference()) : value);
    }

    const ClearText& myText;
    ModelData_PropertyTable& myTable;
    const std::string_view myFallback;
    const bool myUseFallback;
    double myLength = 1.0;
};

ModelData_PropertyTable& TableOf(std::unordered_map<std::size_t, ModelData_PropertyTable>& tables,
                                 std::size_t number)
{
    ModelData_PropertyTable& table = tables[number];
    if (table.IsNull()) {
        table = ModelData_PropertyTable(initialized());
    }
    return table;
}

void AddText(ModelData_PropertyTable& table, const char* name, std::string_view raw)
{
    if (!IsBlankText(raw)) {
        table.Add(name, DecodeString(raw));
    }
}

// Texts of a list, one line: ('A','B') gives "A, B".
void AddTexts(ModelData_PropertyTable& table, const char* name, Cursor& arguments)
{
    Base_UTF16String all;
    if (!arguments.EnterList()) {
        return;
    }
    while (arguments.More() && !arguments.Failed()) {
        const std::string_view raw = arguments.String();
        if (!IsBlankText(raw)) {
            all = all.IsEmpty() ? DecodeString(raw) : all + ", " + DecodeString(raw);
        }
    }
    arguments.Leave();
    if (!all.IsEmpty()) {
        table.Add(name, all);
    }
}

} // namespace

void StepProperties::Read(const ClearText& text, const StepStructure& structure)
{
    for (std::size_t number = 0; number < structure.products.size(); ++number) {
        const StepProduct& product = structure.products[number];
        if (!product.id.IsEmpty() && product.id != product.name) {
            TableOf(products, number).Add("Product ID", product.id);
        }
        if (!product.description.IsEmpty()) {
            TableOf(products, number).Add("Description", product.description);
        }
    }
    for (const ClearText::Record& record : text.OfType("PROPERTY_DEFINITION_REPRESENTATION")) {
        Cursor link = text.Arguments(record);
        bool found = false;
        const RecordId definition = link.Reference();
        Cursor property = text.Arguments(definition, "PROPERTY_DEFINITION", found);
        const ClearText::Record* representation = text.Find(link.Reference());
        if (!found || representation == nullptr) {
            continue;
        }
        const std::string_view propertyName = property.String();
        property.Skip();
        const ClearText::Record* described = text.Find(property.Reference());
        std::size_t number = 0;
        ModelData_PropertyTable* table = nullptr;
        if (const RecordId owner = structure.OwnerOf(text, definition);
            structure.FindProduct(owner, number)) {
            table = &TableOf(products, number);
        } else if (structure.FindInstance(owner, number)) {
            table = &TableOf(instances, number);
        }
        // The volume of one solid among several is not the volume of the part.
        const bool ofAspect = described != nullptr && text.Is(*described, "SHAPE_ASPECT");
        if (table == nullptr || (ofAspect && propertyName.find("validation") != std::string_view::npos)) {
            continue;
        }
        Cursor arguments = text.Arguments(*representation);
        const std::string_view representationName = arguments.String();
        const std::vector<RecordId> items = arguments.References();
        ItemReader reader(text, *table, IsBlankText(representationName) ? propertyName : representationName,
                          propertyName == "material property");
        reader.SetLengthFactor(ContextLengthFactor(text, arguments.Reference()));
        for (const RecordId item : items) {
            reader.Read(item);
        }
    }
}

ModelData_PropertyTable ReadStepHeader(const ClearText& text)
{
    ModelData_PropertyTable table{initialized()};
    Cursor name = text.Header("FILE_NAME");
    if (name.More()) {
        name.Skip();
        const std::string_view stamp = name.String();
        if (const std::optional<time_t> time = ParseIsoTime(std::string(stamp))) {
            table.Add("Time Stamp", ModelData_PropertyTable::TimeType(*time));
        } else {
            AddText(table, "Time Stamp", stamp);
        }
        AddTexts(table, "Author", name);
        AddTexts(table, "Organization", name);
        AddText(table, "Preprocessor", name.String());
        AddText(table, "Originating System", name.String());
    }
    if (Cursor schema = text.Header("FILE_SCHEMA"); schema.More()) {
        AddTexts(table, "Schema", schema);
    }
    return table.IsEmpty() ? ModelData_PropertyTable() : table;
}

} // namespace cadex::step
