#include "sdk/part21/ClearText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <limits>
#include <string>

#include <cadex/internal/Progress.hxx>
#include <cadex/internal/Reports.hxx>

#include "sdk/part21/Scan.h"

namespace cadex::part21 {

namespace {

using internal::Report;
using internal::Reports;

constexpr std::uint32_t NoPlace = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint32_t LargestNumber = NoPlace;
constexpr std::size_t MostTypes = std::size_t{1} << 16;

/// Bytes at which the index must look twice.
constexpr std::array<bool, 256> Marks = [] {
    std::array<bool, 256> marks{};
    for (const char c : {'\'', '"', '(', ')', ';', '/', '\0'}) {
        marks[static_cast<unsigned char>(c)] = true;
    }
    return marks;
}();

bool Refuse(const char* reason)
{
    Reports::Add(Report::Kind::Refused, reason);
    return false;
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

/// One pass over the bytes, statement by statement.
class ClearText::Indexer
{
public:
    explicit Indexer(ClearText& text)
        : myText(text),
          myBegin(text.myBytes.data()),
          myEnd(myBegin + text.myBytes.size()),
          myPosition(myBegin)
    {
    }

    bool Run()
    {
        constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";
        if (myText.myBytes.starts_with(ByteOrderMark)) {
            myPosition += ByteOrderMark.size();
        }
        if (!SkipToStatement() || !Rest().starts_with("ISO-10303-21")) {
            return Refuse("the file is no exchange structure of ISO 10303-21");
        }
        // Memory that is not touched costs nothing, copying does.
        myText.myRecords.reserve(myText.myBytes.size() / 48);
        bool hasData = false;
        Section section = Section::None;
        for (std::size_t count = 1; SkipToStatement() && section != Section::Behind; ++count) {
            if (count % StatementsBetweenLooks == 0 && !IsWanted()) {
                return false;
            }
            const Statement statement = ReadStatement();
            if (!statement.isEnded) {
                if (*statement.start != '#' && section == Section::None) {
                    break; // what follows the last section is of no interest
                }
                return Refuse("the file is cut off: its last statement does not end");
            }
            if (*statement.start == '#') {
                if (section == Section::Data) {
                    AddRecord(statement);
                }
                continue;
            }
            section = SectionAfter(statement, section);
            hasData = hasData || section == Section::Data;
        }
        if (!hasData) {
            return Refuse("the file has no data section");
        }
        return section != Section::Data || Refuse("the file is cut off: its data section does not end");
    }

private:
    enum class Section
    {
        None,
        Header,
        Data,
        Behind ///< the end of the exchange structure
    };

    static constexpr std::size_t StatementsBetweenLooks = 4096;

    bool IsWanted() const
    {
        return internal::Progress::GoesOn(static_cast<std::size_t>(myPosition - myBegin),
                                          static_cast<std::size_t>(myEnd - myBegin));
    }

    struct Statement
    {
        char* start = nullptr;
        char* end = nullptr;   ///< the semicolon
        char* open = nullptr;  ///< the first parenthesis
        char* close = nullptr; ///< its partner
        bool isEnded = false;
        bool isSound = true; ///< parentheses match, and only blanks follow the first pair
    };

    std::string_view Rest() const { return {myPosition, static_cast<std::size_t>(myEnd - myPosition)}; }

    /// Makes the comment a blank, so that nothing behind has to know of it.
    bool BlankComment()
    {
        const std::size_t close = Rest().find("*/", 2);
        if (close == std::string_view::npos) {
            return false;
        }
        std::memset(myPosition, ' ', close + 2);
        myPosition += close + 2;
        return true;
    }

    bool IsComment() const { return *myPosition == '/' && myPosition + 1 < myEnd && myPosition[1] == '*'; }

    /// False at the end of the file.
    bool SkipToStatement()
    {
        while (myPosition < myEnd) {
            if (IsBlank(*myPosition)) {
                ++myPosition;
            } else if (!IsComment() || !BlankComment()) {
                return true; // without the end of a comment that of the statement will be missed
            }
        }
        return false;
    }

    Statement ReadStatement()
    {
        Statement result;
        result.start = myPosition;
        std::size_t depth = 0;
        while (myPosition < myEnd) {
            while (!Marks[static_cast<unsigned char>(*myPosition)]) {
                ++myPosition;
            }
            switch (*myPosition) {
            case '\'':
            case '"':
                // An apostrophe that nothing follows ends no text: SkipQuoted has then met the end.
                myPosition = const_cast<char*>(SkipQuoted(myPosition, myEnd, *myPosition));
                continue;
            case '(':
                result.isSound = result.isSound && (depth > 0 || result.open == nullptr);
                result.open = result.open == nullptr ? myPosition : result.open;
                ++depth;
                break;
            case ')':
                result.isSound = result.isSound && depth > 0;
                depth -= depth > 0 ? 1 : 0;
                result.close = depth == 0 && result.close == nullptr ? myPosition : result.close;
                break;
            case '/':
                if (IsComment()) {
                    if (!BlankComment()) {
                        return result;
                    }
                    continue;
                }
                break;
            case ';':
                result.end = myPosition++;
                result.isEnded = true;
                result.isSound = result.isSound && depth == 0;
                return result;
            default: // a zero, perhaps the one behind the last byte
                if (myPosition == myEnd) {
                    return result;
                }
            }
            ++myPosition;
        }
        return result;
    }

    Section SectionAfter(const Statement& statement, Section section)
    {
        const std::string_view name = NameAt(statement.start, statement.end);
        if (name == "HEADER") {
            return Section::Header;
        }
        if (name == "DATA") {
            if (myText.myDataOffset == 0) {
                myText.myDataOffset = static_cast<std::size_t>(statement.start - myBegin);
            }
            return Section::Data;
        }
        if (name == "ENDSEC") {
            return Section::None;
        }
        if (name == "END-ISO-10303-21") {
            return Section::Behind;
        }
        if (section == Section::Header && statement.open != nullptr) {
            myText.myHeader.push_back({name, static_cast<std::size_t>(statement.open + 1 - myBegin)});
        } else if (section == Section::Data) {
            Reports::Add(Report::Kind::LeftOut, "something between the records that is none");
        }
        return section;
    }

    void AddRecord(const Statement& statement)
    {
        std::uint64_t id = 0;
        const auto [behind, error] = std::from_chars(statement.start + 1, statement.end, id);
        const char* p = SkipBlanks(behind, statement.end);
        if (error != std::errc() || id == 0 || id > LargestNumber) {
            Reports::Add(Report::Kind::LeftOut, "a record whose number is none, or too large");
            return;
        }
        if (p == statement.end || *p != '=') {
            LeaveOut(id);
            return;
        }
        p = SkipBlanks(p + 1, statement.end);
        const char* const name = p;
        std::uint32_t hash = 2166136261U; // as HashName
        for (; IsNameCharacter(*p); ++p) {
            hash = (hash ^ static_cast<unsigned char>(*p)) * 16777619U;
        }
        const std::string_view type(name, static_cast<std::size_t>(p - name));
        if (!statement.isSound || SkipBlanks(p, statement.end) != statement.open ||
            SkipBlanks(statement.close + 1, statement.end) != statement.end ||
            statement.close - statement.open > std::ptrdiff_t{LargestNumber}) {
            LeaveOut(id);
            return;
        }
        const std::uint32_t number = myText.TypeNumber(type, hash);
        if (number >= MostTypes || myText.myRecords.size() >= NoPlace) {
            LeaveOut(id);
            return;
        }
        Record record{};
        record.offset = static_cast<std::uint64_t>(statement.open + 1 - myBegin);
        record.type = number & 0xFFFFU;
        record.id = static_cast<std::uint32_t>(id);
        record.size = static_cast<std::uint32_t>(statement.close - statement.open);
        myText.myRecords.push_back(record);
    }

    static void LeaveOut(std::uint64_t id)
    {
        Reports::Add(Report::Kind::LeftOut, "a record that is not well-formed", id);
    }

    ClearText& myText;
    char* const myBegin;
    char* const myEnd;
    char* myPosition;
};

bool ClearText::Load(std::string bytes)
{
    *this = ClearText();
    myBytes = std::move(bytes);
    myTypes.emplace_back();
    myTypeTable.assign(1024, 0);
    if (!Indexer(*this).Run()) {
        return false;
    }
    SortByType();
    std::vector<std::uint32_t> equal;
    if (!IndexNumbers(equal)) {
        DropEqualNumbers(std::move(equal));
    }
    return true;
}

std::uint32_t ClearText::FindType(std::string_view name, std::uint32_t hash) const
{
    const std::size_t mask = myTypeTable.size() - 1;
    std::size_t slot = hash & mask;
    while (myTypeTable[slot] != 0 && myTypes[myTypeTable[slot]] != name) {
        slot = (slot + 1) & mask;
    }
    return static_cast<std::uint32_t>(slot);
}

std::uint32_t ClearText::TypeNumber(std::string_view name, std::uint32_t hash)
{
    if (name.empty()) {
        return 0;
    }
    const std::uint32_t slot = FindType(name, hash);
    if (myTypeTable[slot] != 0 || myTypes.size() == MostTypes) {
        return myTypeTable[slot] != 0 ? myTypeTable[slot] : MostTypes;
    }
    const auto number = static_cast<std::uint32_t>(myTypes.size());
    myTypes.push_back(name);
    myTypeTable[slot] = number;
    if (myTypes.size() * 2 > myTypeTable.size()) {
        myTypeTable.assign(myTypeTable.size() * 2, 0);
        for (std::uint32_t i = 1; i < myTypes.size(); ++i) {
            myTypeTable[FindType(myTypes[i], HashName(myTypes[i]))] = i;
        }
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
    for (const Record& record : myRecords) {
        sorted[next[record.type]++] = record;
    }
    myRecords.swap(sorted);
}

// False when numbers came more than once; `equal` then has the places of the second records and on, with
// those of the firsts before them.
bool ClearText::IndexNumbers(std::vector<std::uint32_t>& equal)
{
    std::uint64_t highest = 0;
    for (const Record& record : myRecords) {
        highest = std::max<std::uint64_t>(highest, record.id);
    }
    myDense = highest < 4 * static_cast<std::uint64_t>(myRecords.size()) + 1024;
    if (myDense) {
        myById.assign(static_cast<std::size_t>(highest) + 1, NoPlace);
        for (std::uint32_t i = 0; i < myRecords.size(); ++i) {
            std::uint32_t& place = myById[myRecords[i].id];
            if (place != NoPlace) {
                equal.insert(equal.end(), {place, i});
            } else {
                place = i;
            }
        }
        return equal.empty();
    }
    myById.resize(myRecords.size());
    for (std::uint32_t i = 0; i < myById.size(); ++i) {
        myById[i] = i;
    }
    std::sort(myById.begin(), myById.end(), [&](std::uint32_t a, std::uint32_t b) {
        return myRecords[a].id != myRecords[b].id ? myRecords[a].id < myRecords[b].id : a < b;
    });
    for (std::size_t i = 0, first = 0; i + 1 < myById.size(); ++i) {
        first = myRecords[myById[i]].id == myRecords[myById[first]].id ? first : i;
        if (myRecords[myById[i + 1]].id == myRecords[myById[first]].id) {
            equal.insert(equal.end(), {myById[first], myById[i + 1]});
        }
    }
    return equal.empty();
}

// The first of equal numbers stands when all say the same, else none.
void ClearText::DropEqualNumbers(std::vector<std::uint32_t> equal)
{
    const auto content = [this](std::uint32_t place) {
        return std::string_view(myBytes).substr(myRecords[place].offset, myRecords[place].size);
    };
    std::vector<bool> drops(myRecords.size(), false);
    for (std::size_t i = 0; i < equal.size(); i += 2) {
        const std::uint32_t first = equal[i];
        const std::uint32_t other = equal[i + 1];
        drops[other] = true;
        if (myRecords[first].type != myRecords[other].type || content(first) != content(other)) {
            drops[first] = true;
            Reports::Add(Report::Kind::LeftOut, "records that have the number of another one",
                         myRecords[first].id);
        }
    }
    std::vector<Record> kept;
    kept.reserve(myRecords.size());
    myTypeStarts.assign(myTypes.size() + 1, 0);
    for (std::size_t i = 0; i < myRecords.size(); ++i) {
        if (!drops[i]) {
            kept.push_back(myRecords[i]);
            ++myTypeStarts[myRecords[i].type + 1];
        }
    }
    for (std::size_t i = 1; i < myTypeStarts.size(); ++i) {
        myTypeStarts[i] += myTypeStarts[i - 1];
    }
    myRecords.swap(kept);
    equal.clear();
    IndexNumbers(equal);
}

std::vector<std::uint32_t> ClearText::FileOrder() const
{
    std::vector<std::uint32_t> order(myRecords.size());
    for (std::uint32_t i = 0; i < order.size(); ++i) {
        order[i] = i;
    }
    std::sort(order.begin(), order.end(),
              [this](std::uint32_t a, std::uint32_t b) { return myRecords[a].offset < myRecords[b].offset; });
    return order;
}

void ClearText::AppendReferences(const Record& record, std::vector<RecordId>& ids) const
{
    const char* p = myBytes.data() + record.offset;
    const char* const end = p + record.size;
    while (p < end) {
        if (*p == '\'') {
            p = SkipQuoted(p, end);
            continue;
        }
        if (*p == '#') {
            RecordId id = 0;
            std::from_chars(p + 1, end, id);
            ids.push_back(id);
        }
        ++p;
    }
}

const ClearText::Record* ClearText::Find(RecordId id) const
{
    if (myDense) {
        return id < myById.size() && myById[static_cast<std::size_t>(id)] != NoPlace
                   ? &myRecords[myById[static_cast<std::size_t>(id)]]
                   : nullptr;
    }
    const auto place =
        std::lower_bound(myById.begin(), myById.end(), id,
                         [this](std::uint32_t i, RecordId wanted) { return myRecords[i].id < wanted; });
    return place != myById.end() && myRecords[*place].id == id ? &myRecords[*place] : nullptr;
}

std::span<const ClearText::Record> ClearText::OfTypeNumber(std::size_t type) const
{
    return {myRecords.data() + myTypeStarts[type], myTypeStarts[type + 1] - myTypeStarts[type]};
}

std::span<const ClearText::Record> ClearText::OfType(std::string_view name) const
{
    if (myTypeTable.empty()) {
        return {};
    }
    const std::uint32_t type = myTypeTable[FindType(name, HashName(name))];
    return type == 0 ? std::span<const Record>() : OfTypeNumber(type);
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
    return name.ends_with(suffix);
}

} // namespace cadex::part21
