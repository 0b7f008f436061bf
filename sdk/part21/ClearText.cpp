#include "sdk/part21/ClearText.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "sdk/text/TextNumbers.h"

namespace cadex::part21 {

using text::ParseReal;
namespace {

bool IsBlank(char c)
{
    return static_cast<unsigned char>(c) <= ' ';
}

bool IsNameCharacter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || (c >= 'a' && c <= 'z') ||
           c == '!' || c == '-';
}

// Past blanks and comments.
const char* SkipBlanks(const char* p, const char* end)
{
    while (p < end) {
        if (IsBlank(*p)) {
            ++p;
        } else if (*p == '/' && end - p > 1 && p[1] == '*') {
            const std::string_view rest(p + 2, static_cast<std::size_t>(end - p - 2));
            const std::size_t close = rest.find("*/");
            p = close == std::string_view::npos ? end : p + 2 + close + 2;
        } else {
            break;
        }
    }
    return p;
}

// Past a text that starts at its first apostrophe; a doubled apostrophe stands for one and does not end it.
const char* SkipString(const char* p, const char* end)
{
    for (++p; p < end; ++p) {
        if (*p == '\'') {
            if (end - p > 1 && p[1] == '\'') {
                ++p;
            } else {
                return p + 1;
            }
        }
    }
    return end;
}

// Past balanced parentheses; `p` stands behind the opening one.
const char* SkipToClose(const char* p, const char* end)
{
    for (int depth = 1; p < end;) {
        const char c = *p;
        if (c == '\'') {
            p = SkipString(p, end);
            continue;
        }
        if (c == '/' && end - p > 1 && p[1] == '*') {
            p = SkipBlanks(p, end);
            continue;
        }
        ++p;
        if (c == '(') {
            ++depth;
        } else if (c == ')' && --depth == 0) {
            return p;
        }
    }
    return end;
}

std::string_view NameAt(const char* p, const char* end)
{
    const char* start = p;
    while (p < end && IsNameCharacter(*p)) {
        ++p;
    }
    return {start, static_cast<std::size_t>(p - start)};
}

std::uint32_t HashName(std::string_view name)
{
    std::uint32_t hash = 2166136261U; // FNV-1a
    for (const char c : name) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 16777619U;
    }
    return hash;
}

} // namespace

void Cursor::SkipBlank()
{
    myPosition = SkipBlanks(myPosition, myEnd);
}

void Cursor::Separate()
{
    SkipBlank();
    if (myPosition < myEnd && *myPosition == ',') {
        ++myPosition;
        SkipBlank();
    }
}

bool Cursor::More()
{
    SkipBlank();
    return myPosition < myEnd && *myPosition != ')' && *myPosition != ';';
}

Cursor::Kind Cursor::Next()
{
    if (!More()) {
        return Kind::None;
    }
    const char c = *myPosition;
    switch (c) {
    case '$':
    case '*':
        return Kind::Omitted;
    case '#':
        return Kind::Reference;
    case '\'':
        return Kind::String;
    case '(':
        return Kind::List;
    case '.':
        return myEnd - myPosition > 1 && myPosition[1] >= '0' && myPosition[1] <= '9' ? Kind::Real
                                                                                      : Kind::Enumerator;
    default:
        break;
    }
    if ((c >= '0' && c <= '9') || c == '-' || c == '+') {
        for (const char* p = myPosition + 1; p < myEnd; ++p) {
            if (*p == '.' || *p == 'E' || *p == 'e') {
                return Kind::Real;
            }
            if (*p < '0' || *p > '9') {
                break;
            }
        }
        return Kind::Integer;
    }
    return IsNameCharacter(c) ? Kind::Typed : Kind::None;
}

void Cursor::Skip()
{
    switch (Next()) {
    case Kind::None:
        myFailed = true;
        return;
    case Kind::String:
        myPosition = SkipString(myPosition, myEnd);
        break;
    case Kind::List:
        myPosition = SkipToClose(myPosition + 1, myEnd);
        break;
    case Kind::Typed:
        EnterTyped();
        myPosition = SkipToClose(myPosition, myEnd);
        break;
    default:
        while (myPosition < myEnd && *myPosition != ',' && *myPosition != ')' && *myPosition != ';') {
            ++myPosition;
        }
    }
    Separate();
}

bool Cursor::EnterList()
{
    if (Next() != Kind::List) {
        if (Next() == Kind::None) {
            myFailed = true;
        } else {
            Skip();
        }
        return false;
    }
    ++myPosition;
    return true;
}

void Cursor::Leave()
{
    myPosition = SkipToClose(myPosition, myEnd);
    Separate();
}

std::string_view Cursor::EnterTyped()
{
    if (Next() != Kind::Typed) {
        return {};
    }
    const std::string_view name = NameAt(myPosition, myEnd);
    myPosition += name.size();
    SkipBlank();
    if (myPosition >= myEnd || *myPosition != '(') {
        myFailed = true;
        return {};
    }
    ++myPosition;
    return name;
}

RecordId Cursor::Reference()
{
    if (Next() != Kind::Reference) {
        Skip();
        return 0;
    }
    RecordId id = 0;
    const auto [end, error] = std::from_chars(myPosition + 1, myEnd, id);
    myPosition = end;
    if (error != std::errc()) {
        myFailed = true;
        id = 0;
    }
    Separate();
    return id;
}

std::string_view Cursor::Number()
{
    const Kind kind = Next();
    if (kind != Kind::Real && kind != Kind::Integer) {
        myFailed = true;
        if (kind != Kind::None) {
            Skip();
        }
        return {};
    }
    const char* start = myPosition;
    while (myPosition < myEnd && (IsNameCharacter(*myPosition) || *myPosition == '.' || *myPosition == '+')) {
        ++myPosition;
    }
    const std::string_view number(start, static_cast<std::size_t>(myPosition - start));
    Separate();
    return number;
}

double Cursor::Real()
{
    double value = 0.0;
    if (!ParseReal(Number(), value)) {
        myFailed = true;
    }
    return value;
}

std::int64_t Cursor::Integer()
{
    std::string_view number = Number();
    if (!number.empty() && number.front() == '+') {
        number.remove_prefix(1);
    }
    std::int64_t value = 0;
    if (std::from_chars(number.data(), number.data() + number.size(), value).ec != std::errc()) {
        myFailed = true;
    }
    return value;
}

std::string_view Cursor::String()
{
    const Kind kind = Next();
    if (kind != Kind::String) {
        if (kind == Kind::None) {
            myFailed = true;
        } else {
            Skip();
        }
        return {};
    }
    const char* start = myPosition + 1;
    myPosition = SkipString(myPosition, myEnd);
    const char* end = myPosition > start ? myPosition - 1 : start;
    Separate();
    return {start, static_cast<std::size_t>(end - start)};
}

std::string_view Cursor::Enumerator()
{
    if (Next() != Kind::Enumerator) {
        Skip();
        return {};
    }
    const std::string_view name = NameAt(myPosition + 1, myEnd);
    Skip();
    return name;
}

void Cursor::References(std::vector<RecordId>& ids)
{
    ids.clear();
    if (!EnterList()) {
        return;
    }
    while (More() && !myFailed) {
        if (const RecordId id = Reference()) {
            ids.push_back(id);
        }
    }
    Leave();
}

bool Cursor::Reals(double* values, int count)
{
    if (!EnterList()) {
        return false;
    }
    int read = 0;
    while (read < count && More() && !myFailed) {
        values[read++] = Real();
    }
    Leave();
    return read == count && !myFailed;
}

bool ClearText::Load(std::string bytes)
{
    *this = ClearText();
    myBytes = std::move(bytes);
    myTypes.emplace_back();
    myTypeTable.assign(1024, 0);
    if (!IndexStatements()) {
        return false;
    }
    SortByType();
    return SortById();
}

bool ClearText::IndexStatements()
{
    const char* const begin = myBytes.data();
    const char* const end = begin + myBytes.size();
    const char* p = SkipBlanks(begin, end);
    if (std::string_view(p, static_cast<std::size_t>(end - p)).substr(0, 12) != "ISO-10303-21") {
        return false;
    }
    myRecords.reserve(myBytes.size() / 48); // untouched memory costs nothing, copying it does
    bool inHeader = false;
    bool inData = false;
    bool hasData = false;
    while (p < end) {
        p = SkipBlanks(p, end);
        const char* statement = p;
        // To the end of the statement: the next semicolon outside texts and comments.
        while (p < end && *p != ';') {
            if (*p == '\'') {
                p = SkipString(p, end);
            } else if (*p == '/') {
                const char* next = SkipBlanks(p, end);
                p = next == p ? p + 1 : next;
            } else {
                ++p;
            }
        }
        if (statement < end && *statement == '#') {
            // Other sections refer to records of other files in the same form.
            if (inData && !IndexRecord(statement, p)) {
                return false;
            }
        } else if (const std::string_view name = NameAt(statement, p); name == "HEADER") {
            inHeader = true;
        } else if (name == "DATA") {
            myDataOffset = hasData ? myDataOffset : static_cast<std::size_t>(statement - begin);
            inHeader = false;
            inData = true;
            hasData = true;
        } else if (name == "END-ISO-10303-21") {
            break;
        } else if (name == "ENDSEC") {
            inHeader = false;
            inData = false;
        } else if (inHeader) {
            const char* open = SkipBlanks(statement + name.size(), p);
            if (open < p && *open == '(') {
                myHeader.push_back({name, static_cast<std::size_t>(open + 1 - begin)});
            }
        }
        ++p;
    }
    return hasData;
}

void ClearText::AppendReferences(const Record& record, std::vector<RecordId>& ids) const
{
    bool inText = false;
    const char* const end = myBytes.data() + record.offset + record.size;
    for (const char* p = end - record.size; p < end; ++p) {
        if (*p == '\'') {
            inText = !inText;
        } else if (*p == '#' && !inText) {
            RecordId id = 0;
            std::from_chars(p + 1, end, id);
            ids.push_back(id);
        }
    }
}

bool ClearText::IndexRecord(const char* statement, const char* end)
{
    Record record;
    const auto [behind, error] = std::from_chars(statement + 1, end, record.id);
    const char* p = SkipBlanks(behind, end);
    if (error != std::errc() || record.id == 0 || p >= end || *p != '=') {
        return false;
    }
    p = SkipBlanks(p + 1, end);
    const std::string_view name = NameAt(p, end);
    p = SkipBlanks(p + name.size(), end);
    if (p >= end || *p != '(' || myRecords.size() >= std::numeric_limits<std::uint32_t>::max()) {
        return false;
    }
    record.type = TypeNumber(name);
    record.offset = static_cast<std::size_t>(p + 1 - myBytes.data());
    record.size = static_cast<std::uint32_t>(std::min<std::size_t>(
        static_cast<std::size_t>(end - p - 1), std::numeric_limits<std::uint32_t>::max()));
    myRecords.push_back(record);
    return true;
}

std::uint32_t ClearText::TypeNumber(std::string_view name)
{
    if (name.empty()) {
        return 0;
    }
    const std::size_t mask = myTypeTable.size() - 1;
    std::size_t slot = HashName(name) & mask;
    while (myTypeTable[slot] != 0) {
        if (myTypes[myTypeTable[slot]] == name) {
            return myTypeTable[slot];
        }
        slot = (slot + 1) & mask;
    }
    const auto number = static_cast<std::uint32_t>(myTypes.size());
    myTypes.push_back(name);
    myTypeTable[slot] = number;
    if (myTypes.size() * 2 > myTypeTable.size()) {
        std::vector<std::uint32_t> table(myTypeTable.size() * 2, 0);
        for (std::uint32_t i = 1; i < myTypes.size(); ++i) {
            std::size_t place = HashName(myTypes[i]) & (table.size() - 1);
            while (table[place] != 0) {
                place = (place + 1) & (table.size() - 1);
            }
            table[place] = i;
        }
        myTypeTable.swap(table);
    }
    return number;
}

void ClearText::SortByType()
{
    myTypeStarts.assign(myTypes.size() + 1, 0);
    for (const Record& record : myRecords) {
        ++myTypeStarts[record.type + 1];
    }
    for (std::size_t i = 1; i < myTypeStarts.size(); ++i) {
        myTypeStarts[i] += myTypeStarts[i - 1];
    }
    std::vector<std::size_t> next(myTypeStarts.begin(), myTypeStarts.end() - 1);
    std::vector<Record> sorted(myRecords.size());
    myFileOrder.reserve(myRecords.size());
    for (const Record& record : myRecords) {
        myFileOrder.push_back(static_cast<std::uint32_t>(next[record.type]));
        sorted[next[record.type]++] = record;
    }
    myRecords.swap(sorted);
}

// False when two records have the same number.
bool ClearText::SortById()
{
    constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();
    RecordId highest = 0;
    for (const Record& record : myRecords) {
        highest = std::max(highest, record.id);
    }
    myDense = highest < 4 * static_cast<RecordId>(myRecords.size()) + 1024;
    if (myDense) {
        myById.assign(static_cast<std::size_t>(highest) + 1, none);
        for (std::uint32_t i = 0; i < myRecords.size(); ++i) {
            std::uint32_t& place = myById[static_cast<std::size_t>(myRecords[i].id)];
            if (place != none) {
                return false;
            }
            place = i;
        }
        return true;
    }
    myById.resize(myRecords.size());
    for (std::uint32_t i = 0; i < myById.size(); ++i) {
        myById[i] = i;
    }
    const auto idAt = [this](std::uint32_t i) { return myRecords[i].id; };
    std::sort(myById.begin(), myById.end(),
              [&](std::uint32_t a, std::uint32_t b) { return idAt(a) < idAt(b); });
    return std::adjacent_find(myById.begin(), myById.end(), [&](std::uint32_t a, std::uint32_t b) {
               return idAt(a) == idAt(b);
           }) == myById.end();
}

const ClearText::Record* ClearText::Find(RecordId id) const
{
    if (myDense) {
        return id < myById.size() && myById[static_cast<std::size_t>(id)] < myRecords.size()
                   ? &myRecords[myById[static_cast<std::size_t>(id)]]
                   : nullptr;
    }
    const auto place =
        std::lower_bound(myById.begin(), myById.end(), id,
                         [this](std::uint32_t i, RecordId wanted) { return myRecords[i].id < wanted; });
    return place != myById.end() && myRecords[*place].id == id ? &myRecords[*place] : nullptr;
}

std::span<const ClearText::Record> ClearText::OfType(std::string_view name) const
{
    for (std::size_t type = 1; type < myTypes.size(); ++type) {
        if (myTypes[type] == name) {
            return {myRecords.data() + myTypeStarts[type], myTypeStarts[type + 1] - myTypeStarts[type]};
        }
    }
    return {};
}

Cursor ClearText::Arguments(const Record& record) const
{
    const char* start = myBytes.data() + record.offset;
    return {start, start + record.size};
}

Cursor ClearText::Arguments(RecordId id, std::string_view type, bool& found) const
{
    const Record* record = Find(id);
    found = record != nullptr && Is(*record, type);
    if (found) {
        return Arguments(*record);
    }
    if (record == nullptr || record->type != 0) {
        return {};
    }
    // A complex instance: PART_A(...) PART_B(...), without commas between.
    const char* p = myBytes.data() + record->offset;
    const char* const end = p + record->size;
    while ((p = SkipBlanks(p, end)) < end && *p != ')') {
        const std::string_view name = NameAt(p, end);
        p = SkipBlanks(p + name.size(), end);
        if (p >= end || *p != '(') {
            break;
        }
        if (name == type) {
            found = true;
            return {p + 1, end};
        }
        p = SkipToClose(p + 1, end);
    }
    return {};
}

Cursor ClearText::Header(std::string_view name) const
{
    for (const HeaderRecord& record : myHeader) {
        if (record.name == name) {
            return {myBytes.data() + record.offset, myBytes.data() + myBytes.size()};
        }
    }
    return {};
}

bool EndsWith(std::string_view name, std::string_view suffix)
{
    return name.size() >= suffix.size() && name.substr(name.size() - suffix.size()) == suffix;
}

} // namespace cadex::part21
