#include "sdk/solidworks/SldProperties.h"

#include <charconv>
#include <set>

#include "sdk/solidworks/SldPropertySets.h"
#include "sdk/solidworks/SldXml.h"
#include "sdk/text/TextNumbers.h"
#include "sdk/text/TimeStamps.h"

namespace cadex::solidworks {

namespace {

/// Behind the prefix of the name space.
std::string_view LocalName(std::string_view name)
{
    const std::size_t colon = name.find(':');
    return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

/// Each name once: a value that is there already is not replaced by an older one.
class Properties
{
public:
    explicit Properties(ModelData_PropertyTable& table) : myTable(table) {}

    template <typename Value>
    void Add(const std::string& name, const Value& value)
    {
        if (!name.empty() && mySeen.insert(name).second) {
            myTable.Add(name.c_str(), value);
        }
    }
    void AddText(const std::string& name, const std::string& value)
    {
        if (!value.empty()) {
            Add(name, Base_UTF16String(value.c_str()));
        }
    }
    void AddTime(const std::string& name, const std::string& stamp)
    {
        if (const auto time = text::ParseIsoTime(stamp)) {
            Add(name, ModelData_PropertyTable::TimeType(*time));
        }
    }

private:
    ModelData_PropertyTable& myTable;
    std::set<std::string> mySeen;
};

void AddCore(std::string_view xml, Properties& properties)
{
    static constexpr std::pair<std::string_view, const char*> Texts[] = {
        {"title", "Title"},       {"subject", "Subject"},      {"creator", "Author"},
        {"keywords", "Keywords"}, {"description", "Comments"}, {"lastModifiedBy", "Last saved by"}};
    for (const XmlElement& element : ReadXml(xml)) {
        const std::string_view name = LocalName(element.name);
        for (const auto& [key, property] : Texts) {
            if (name == key) {
                properties.AddText(property, element.text);
            }
        }
        if (name == "created") {
            properties.AddTime("Created", element.text);
        } else if (name == "modified") {
            properties.AddTime("Modified", element.text);
        }
    }
}

void AddApplication(std::string_view xml, Properties& properties)
{
    for (const XmlElement& element : ReadXml(xml)) {
        if (element.name == "Application") {
            properties.AddText("Application", element.text);
        } else if (element.name == "AppVersion") {
            properties.AddText("Application version", element.text);
        }
    }
}

/// A value inside of a property says its type by its own name.
void AddValue(const std::string& name, const XmlElement& value, Properties& properties)
{
    const std::string_view type = LocalName(value.name);
    double number = 0;
    if (type == "i2" || type == "i4" || type == "ui4" || type == "int") {
        I32 whole = 0;
        const char* const end = value.text.data() + value.text.size();
        const auto [stop, error] = std::from_chars(value.text.data(), end, whole);
        if (error == std::errc() && stop == end) {
            properties.Add(name, whole);
        }
    } else if ((type == "r4" || type == "r8") && text::ParseReal(value.text, number)) {
        properties.Add(name, number);
    } else if (type == "filetime" || type == "date") {
        properties.AddTime(name, value.text);
    } else {
        properties.AddText(name, value.text);
    }
}

/// The properties that the user defined.
void AddUserProperties(std::string_view xml, Properties& properties)
{
    bool isUsers = false;
    std::string name;
    for (const XmlElement& element : ReadXml(xml)) {
        if (element.name == "propertySection") {
            isUsers = element.Of("name") == "UserDefinedProperties";
        } else if (element.name == "property") {
            name = isUsers ? element.Of("name") : std::string_view();
        } else if (!name.empty()) {
            AddValue(name, element, properties);
            name.clear();
        }
    }
}

} // namespace

Base_UTF16String MaterialName(const std::string& text)
{
    const std::size_t first = text.find('|');
    const std::size_t last = text.rfind('|');
    return first == last ? Base_UTF16String()
                         : Base_UTF16String(text.substr(first + 1, last - first - 1).c_str());
}

void AddDocumentProperties(Container& container, const std::string& configuration,
                           ModelData_PropertyTable& table)
{
    Properties properties(table);
    const auto with = [&](const std::string& stream, void (*add)(std::string_view, Properties&)) {
        if (const std::optional<std::string> bytes = container.Read(stream)) {
            add(*bytes, properties);
        }
    };
    with("docProps/core.xml", AddCore);
    with("docProps/app.xml", AddApplication);
    with("docProps/Config-" + configuration + "-Properties.xml", AddUserProperties);
    with("docProps/custom.xml", AddUserProperties);
    for (const char* stream : {"\5SummaryInformation", "\5DocumentSummaryInformation"}) {
        if (const std::optional<std::string> bytes = container.Read(stream)) {
            AddPropertySet(*bytes, table);
        }
    }
}

void AddMaterial(Container& container, const std::string& configuration, ModelData_PropertyTable& table)
{
    const std::optional<std::string> bytes = container.Read("swXmlContents/MATERIALTREE");
    if (!bytes) {
        return;
    }
    std::map<std::string, std::string> densities; // by material
    std::string material;                         // that is being described
    for (const XmlElement& element : ReadXml(*bytes)) {
        if (element.name == "material") {
            material = element.Of("name");
        } else if (element.name == "DENS") {
            densities[material] = element.Of("value");
        } else if (element.name == "configuration" && element.Of("name") == configuration) {
            const std::string full(element.Of("material"));
            const Base_UTF16String name = MaterialName(full);
            if (name.IsEmpty()) {
                continue;
            }
            table.Add("Material", name);
            const auto density = densities.find(full.substr(0, full.rfind('|')));
            double value = 0;
            if (density != densities.end() && text::ParseReal(density->second, value) && value > 0) {
                table.Add("Density (kg/m³)", value);
            }
        }
    }
}

} // namespace cadex::solidworks
