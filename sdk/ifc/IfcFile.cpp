#include "sdk/ifc/IfcFile.h"

#include <algorithm>
#include <limits>

namespace cadex::ifc {
namespace {

bool IsBlank(char c)
{
    return c == ' ' || c == '\n' || c == '\r' || c == '\t' || c == '\f' || c == '\v';
}

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool IsNameCharacter(char c)
{
    return (c >= 'A' && c <= 'Z') || IsDigit(c) || c == '_' || (c >= 'a' && c <= 'z');
}

void SkipBlanks(std::string_view text, std::size_t& position)
{
    while (position < text.size() && IsBlank(text[position])) {
        ++position;
    }
}

bool Take(std::string_view text, std::size_t& position, std::string_view token)
{
    SkipBlanks(text, position);
    if (text.substr(position, token.size()) != token) {
        return false;
    }
    position += token.size();
    return true;
}

/// From the opening quote to behind the closing one; npos when the string does not end. A doubled quote is
/// simply the end of one string and the start of the next.
std::size_t SkipString(std::string_view text, std::size_t position)
{
    const std::size_t end = text.find('\'', position + 1);
    return end == std::string_view::npos ? end : end + 1;
}

/// From an opening parenthesis to behind its partner; npos when there is none before the end of the instance.
std::size_t SkipParentheses(std::string_view text, std::size_t position)
{
    std::size_t depth = 0;
    while (position < text.size()) {
        const char c = text[position];
        if (c == '(') {
            ++depth;
        } else if (c == ')') {
            if (--depth == 0) {
                return position + 1;
            }
        } else if (c == '\'') {
            position = SkipString(text, position);
            if (position == std::string_view::npos) {
                return position;
            }
            continue;
        } else if (c == ';' || c == '=') {
            return std::string_view::npos;
        }
        ++position;
    }
    return std::string_view::npos;
}

/// Comments become blanks, so that nothing behind has to know of them. False when one does not end.
bool BlankComments(std::string& text)
{
    if (text.find("/*") == std::string::npos) {
        return true;
    }
    for (std::size_t i = 0; i + 1 < text.size(); ++i) {
        if (text[i] == '\'') {
            const std::size_t end = text.find('\'', i + 1);
            if (end == std::string::npos) {
                return true; // the index finds the same and calls the file damaged
            }
            i = end;
        } else if (text[i] == '/' && text[i + 1] == '*') {
            const std::size_t end = text.find("*/", i + 2);
            if (end == std::string::npos) {
                return false;
            }
            std::fill(text.begin() + static_cast<std::ptrdiff_t>(i),
                      text.begin() + static_cast<std::ptrdiff_t>(end) + 2, ' ');
            i = end + 1;
        }
    }
    return true;
}

} // namespace

bool IfcFile::Load(std::string text)
{
    myText = std::move(text);
    myRecords.clear();
    mySlots.clear();
    std::size_t position = myText.rfind("\xEF\xBB\xBF", 0) == 0 ? 3 : 0;
    if (!Take(myText, position, "ISO-10303-21;") || !BlankComments(myText) || !ReadHeader(position) ||
        !ReadData(position) || myRecords.empty()) {
        return false;
    }
    Index();
    return true;
}

bool IfcFile::ReadHeader(std::size_t& position)
{
    const std::string_view text(myText);
    if (!Take(text, position, "HEADER;")) {
        return false;
    }
    mySchema.clear();
    while (!Take(text, position, "ENDSEC;")) {
        const std::size_t start = position;
        while (position < text.size() && IsNameCharacter(text[position])) {
            ++position;
        }
        const std::string_view name = text.substr(start, position - start);
        SkipBlanks(text, position);
        const std::size_t open = position;
        position = position < text.size() && text[position] == '(' ? SkipParentheses(text, position)
                                                                   : std::string_view::npos;
        if (position == std::string_view::npos || !Take(text, position, ";")) {
            return false;
        }
        if (name == "FILE_SCHEMA") {
            const std::size_t quote = text.find('\'', open);
            const std::size_t end = quote < position ? text.find('\'', quote + 1) : position;
            mySchema = end < position ? text.substr(quote + 1, end - quote - 1) : std::string_view();
            std::transform(mySchema.begin(), mySchema.end(), mySchema.begin(),
                           [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
        }
    }
    return mySchema.rfind("IFC", 0) == 0;
}

bool IfcFile::ReadData(std::size_t& position)
{
    const std::string_view text(myText);
    if (!Take(text, position, "DATA") || position >= text.size()) {
        return false;
    }
    position = text.find(';', position); // a data section may have parameters
    if (position == std::string_view::npos) {
        return false;
    }
    ++position;
    myRecords.reserve(text.size() / 64);
    for (;;) {
        SkipBlanks(text, position);
        if (position >= text.size()) {
            return false;
        }
        if (text[position] != '#') {
            return Take(text, position, "ENDSEC;");
        }
        std::uint64_t id = 0;
        for (++position; position < text.size() && IsDigit(text[position]) && id < (1ULL << 33U);
             ++position) {
            id = id * 10 + static_cast<std::uint64_t>(text[position] - '0');
        }
        if (id == 0 || id > std::numeric_limits<Id>::max() || !Take(text, position, "=")) {
            return false;
        }
        SkipBlanks(text, position);
        const std::size_t start = position;
        while (position < text.size() && IsNameCharacter(text[position])) {
            ++position;
        }
        const std::string_view name = text.substr(start, position - start);
        SkipBlanks(text, position);
        position = position < text.size() && text[position] == '(' ? SkipParentheses(text, position)
                                                                   : std::string_view::npos;
        if (position == std::string_view::npos ||
            position - start > std::numeric_limits<std::uint32_t>::max()) {
            return false;
        }
        const Record record{start, static_cast<std::uint16_t>(ifc::TypeOf(name)), static_cast<Id>(id),
                            static_cast<std::uint32_t>(position - start)};
        myRecords.push_back(record);
        if (!Take(text, position, ";")) {
            return false;
        }
    }
}

void IfcFile::Index()
{
    const auto byId = [](const Record& a, const Record& b) { return a.id < b.id; };
    if (!std::is_sorted(myRecords.begin(), myRecords.end(), byId)) {
        std::stable_sort(myRecords.begin(), myRecords.end(), byId);
    }
    const auto end = std::unique(myRecords.begin(), myRecords.end(),
                                 [](const Record& a, const Record& b) { return a.id == b.id; });
    myRecords.erase(end, myRecords.end());
    myRecords.shrink_to_fit();
    const std::uint64_t highest = myRecords.back().id;
    if (highest <= 4 * static_cast<std::uint64_t>(myRecords.size()) + 1024) {
        mySlots.assign(static_cast<std::size_t>(highest) + 1, 0);
        for (std::size_t i = 0; i < myRecords.size(); ++i) {
            mySlots[myRecords[i].id] = static_cast<std::uint32_t>(i + 1);
        }
    }
}

const IfcFile::Record* IfcFile::Find(Id id) const
{
    if (!mySlots.empty()) {
        const std::uint32_t slot = id < mySlots.size() ? mySlots[id] : 0;
        return slot == 0 ? nullptr : &myRecords[slot - 1];
    }
    const auto found = std::lower_bound(myRecords.begin(), myRecords.end(), id,
                                        [](const Record& record, Id value) { return record.id < value; });
    return found == myRecords.end() || found->id != id ? nullptr : &*found;
}

Entity IfcFile::Get(Id id) const
{
    const Record* record = Find(id);
    return record == nullptr ? Entity() : At(*record);
}

ifc::Type IfcFile::TypeOf(Id id) const
{
    const Record* record = Find(id);
    return record == nullptr ? ifc::Type::Other : static_cast<ifc::Type>(record->type);
}

Entity IfcFile::At(const Record& record) const
{
    const std::string_view text = std::string_view(myText).substr(record.offset, record.length);
    Entity entity;
    entity.myFile = this;
    entity.myType = static_cast<ifc::Type>(record.type);
    entity.myId = record.id;
    const std::size_t open = text.find('(');
    std::size_t nameEnd = 0;
    while (nameEnd < open && IsNameCharacter(text[nameEnd])) {
        ++nameEnd;
    }
    entity.myTypeName = text.substr(0, nameEnd);
    ListReader arguments(text.substr(open));
    while (entity.myCount < Entity::MaxArguments && arguments.Next(entity.myArguments[entity.myCount])) {
        ++entity.myCount;
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
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (list[i] == '\'') {
            i = std::min(SkipString(list, i), list.size()) - 1;
        } else if (list[i] == '#') {
            if (const ifc::Id id = ReadReference(list.substr(i))) {
                ids.push_back(id);
            }
        }
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
