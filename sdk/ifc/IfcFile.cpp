#include "sdk/ifc/IfcFile.h"

#include <algorithm>
#include <limits>

#include <cadex/internal/Reports.hxx>

#include "sdk/part21/Scan.h"
#include "sdk/part21/Strings.h"

namespace cadex::ifc {

bool IfcFile::Load(std::string text)
{
    mySchema.clear();
    myTypes.clear();
    if (!myText.Load(std::move(text))) {
        return false;
    }
    part21::Cursor schemas = myText.Header("FILE_SCHEMA");
    mySchema = schemas.EnterList() ? schemas.String() : std::string_view();
    std::transform(mySchema.begin(), mySchema.end(), mySchema.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
    if (!mySchema.starts_with("IFC") || myText.Count() == 0) {
        internal::Reports::Add(internal::Report::Kind::Refused, mySchema.starts_with("IFC")
                                                                    ? "the file has no records"
                                                                    : "the file's schema is not one of IFC");
        return false;
    }
    for (std::size_t type = 0; type < myText.TypeCount(); ++type) {
        myTypes.push_back(ifc::TypeOf(myText.TypeName(type)));
    }
    return true;
}

std::vector<Id> IfcFile::IdsOf(ifc::Type type) const
{
    std::vector<Id> ids;
    for (std::size_t number = 0; number < myTypes.size(); ++number) {
        if (myTypes[number] == type) {
            for (const Record& record : myText.OfTypeNumber(number)) {
                ids.push_back(record.id);
            }
        }
    }
    std::sort(ids.begin(), ids.end());
    return ids;
}

Entity IfcFile::Get(Id id) const
{
    const Record* record = myText.Find(id);
    return record == nullptr ? Entity() : At(*record);
}

ifc::Type IfcFile::TypeOf(Id id) const
{
    const Record* record = myText.Find(id);
    return record == nullptr ? ifc::Type::Other : TypeOf(*record);
}

Entity IfcFile::At(const Record& record) const
{
    Entity entity;
    entity.myFile = this;
    entity.myType = TypeOf(record);
    entity.myId = record.id;
    entity.myTypeName = myText.TypeName(record);
    part21::Cursor arguments = myText.Arguments(record);
    while (entity.myCount < Entity::MaxArguments && arguments.More() && !arguments.Failed()) {
        entity.myArguments[entity.myCount++] = arguments.Raw();
    }
    return entity;
}

bool Entity::IsSet(std::size_t index) const
{
    const std::string_view raw = Raw(index);
    return !raw.empty() && raw != "$" && raw != "*";
}

double Entity::Real(std::size_t index, double fallback) const
{
    double value = 0;
    return ReadNumber(Raw(index), value) ? value : fallback;
}

std::int64_t Entity::Integer(std::size_t index, std::int64_t fallback) const
{
    double value = 0;
    // Every count and index of the schemas is far below the limit up to which a double is exact.
    return ReadNumber(Raw(index), value) && value > -9e15 && value < 9e15 ? static_cast<std::int64_t>(value)
                                                                          : fallback;
}

bool Entity::Boolean(std::size_t index, bool fallback) const
{
    const std::string_view value = Enumeration(index);
    return value == "T" ? true : (value == "F" ? false : fallback);
}

std::string_view Entity::Enumeration(std::size_t index) const
{
    const std::string_view raw = ReadTyped(Raw(index)).value;
    return raw.size() > 2 && raw.front() == '.' && raw.back() == '.' ? raw.substr(1, raw.size() - 2)
                                                                     : std::string_view();
}

Base_UTF16String Entity::Text(std::size_t index) const
{
    return ReadString(ReadTyped(Raw(index)).value);
}

Id Entity::RefId(std::size_t index) const
{
    return ReadReference(Raw(index));
}

Entity Entity::Ref(std::size_t index) const
{
    const ifc::Id id = RefId(index);
    return id == 0 ? Entity() : myFile->Get(id);
}

std::vector<Id> Entity::Refs(std::size_t index) const
{
    std::vector<ifc::Id> ids;
    const std::string_view list = Raw(index);
    const char* p = list.data();
    const char* const end = p + list.size();
    while (p < end) {
        if (*p == '\'') {
            p = part21::SkipQuoted(p, end);
            continue;
        }
        if (*p == '#') {
            if (const ifc::Id id = ReadReference({p, static_cast<std::size_t>(end - p)})) {
                ids.push_back(id);
            }
        }
        ++p;
    }
    return ids;
}

std::vector<double> Entity::Reals(std::size_t index) const
{
    std::vector<double> numbers;
    ReadNumbers(Raw(index), numbers);
    return numbers;
}

} // namespace cadex::ifc
