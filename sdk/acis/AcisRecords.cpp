#include "sdk/acis/AcisRecords.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>

#include "sdk/text/TextNumbers.h"
#include "sdk/text/Utf.h"

namespace cadex::acis {

namespace {

bool IsBlank(char c)
{
    return c == ' ' || c == '\n' || c == '\r' || c == '\t';
}

std::optional<std::int64_t> WholeNumber(std::string_view text)
{
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || text.empty()) {
        return std::nullopt;
    }
    return value;
}

bool StartsLikeNumber(std::string_view text)
{
    const std::size_t sign = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
    return text.size() > sign && ((text[sign] >= '0' && text[sign] <= '9') || text[sign] == '.');
}

/// Bytes that so many characters of UTF-8 take; nothing when they are none.
std::optional<std::size_t> BytesOfCharacters(std::string_view bytes, std::size_t characters)
{
    std::string_view rest = bytes;
    char32_t c = 0;
    for (std::size_t i = 0; i < characters; ++i) {
        if (rest.empty() || !text::NextUtf8(rest, c)) {
            return std::nullopt;
        }
    }
    return bytes.size() - rest.size();
}

constexpr std::size_t Reference = static_cast<std::size_t>(-1);

constexpr std::string_view Topology[] = {"body", "lump", "shell", "face", "loop", "coedge", "edge", "vertex"};

} // namespace

std::string_view Fields::Peek(std::size_t ahead) const
{
    return ahead < Left() ? myRecords->Field(myNext + ahead) : std::string_view();
}

std::string_view Fields::Next()
{
    const std::string_view field = Peek();
    Skip(1);
    return field;
}

bool Fields::IsPointer() const
{
    return !AtEnd() && Peek().substr(0, 1) == "$";
}

bool Fields::IsNumber() const
{
    return StartsLikeNumber(Peek());
}

int Fields::Pointer()
{
    const std::string_view field = Next();
    return field.size() > 1 && field[0] == '$' ? myRecords->Find(field.substr(1)) : None;
}

double Fields::Number()
{
    double value = std::numeric_limits<double>::quiet_NaN();
    text::ParseReal(Next(), value);
    return value;
}

int Fields::Count()
{
    const auto value = WholeNumber(Next());
    return value && *value >= 0 && *value <= std::numeric_limits<int>::max() ? static_cast<int>(*value) : -1;
}

bool Fields::IsReversed()
{
    const std::string_view field = Next();
    return field == "reversed" || field == "1" || field == "true";
}

Records::Records(std::string_view bytes) : myBytes(bytes)
{
    if (bytes.size() >= StringFlag) {
        throw Unreadable("the file is too large");
    }
    ReadHeader();
    ReadRecords();
    FindLead();
}

std::string_view Records::NextWord()
{
    while (myPosition < myBytes.size() && IsBlank(myBytes[myPosition])) {
        ++myPosition;
    }
    const std::size_t begin = myPosition;
    while (myPosition < myBytes.size() && !IsBlank(myBytes[myPosition])) {
        ++myPosition;
    }
    return myBytes.substr(begin, myPosition - begin);
}

/// Counts are of bytes; those of characters are taken too (files that changed their encoding on the way).
std::string_view Records::CountedString(std::string_view count)
{
    const auto length = WholeNumber(count);
    if (!length || *length < 0) {
        throw Unreadable("a text has no length");
    }
    const std::size_t begin = myPosition + 1; // behind one blank
    const auto size = static_cast<std::uint64_t>(*length);
    if (begin > myBytes.size() || size > myBytes.size() - begin) {
        throw Unreadable("a text is longer than the file");
    }
    const auto endsAt = [&](std::uint64_t bytes) {
        return begin + bytes == myBytes.size() || IsBlank(myBytes[begin + bytes]);
    };
    std::optional<std::size_t> bytes = size;
    if (!endsAt(size)) {
        bytes = BytesOfCharacters(myBytes.substr(begin), size);
        if (!bytes || !endsAt(*bytes)) {
            throw Unreadable("a text has not the length that it claims");
        }
    }
    myPosition = begin + *bytes;
    return myBytes.substr(begin, *bytes);
}

void Records::ReadHeader()
{
    const auto version = WholeNumber(NextWord());
    const auto records = WholeNumber(NextWord());
    const auto bodies = WholeNumber(NextWord());
    const auto history = WholeNumber(NextWord());
    if (!version || !records || !bodies || !history || *version < 100 || *version > 99999 || *records < 0) {
        throw Unreadable("not an ACIS file");
    }
    myHeader.version = static_cast<int>(*version);
    if (myHeader.version < 200) {
        throw Unreadable("ACIS files before version 2 are not supported");
    }
    myClaimed = static_cast<std::size_t>(*records);
    for (std::string_view* text : {&myHeader.product, &myHeader.kernel, &myHeader.date}) {
        const std::string_view count = NextWord();
        const std::size_t begin = myPosition;
        try {
            *text = CountedString(count.substr(0, 1) == "@" ? count.substr(1) : count);
        } catch (const Unreadable&) {
            // No body depends on who wrote the file: a count that is wrong here costs the rest of the text.
            myPosition = begin;
            *text = NextWord();
        }
    }
    double numbers[3];
    for (double& number : numbers) {
        if (!text::ParseReal(NextWord(), number)) {
            throw Unreadable("the header of the file is damaged");
        }
    }
    if (numbers[0] > 0) {
        myHeader.millimetres = numbers[0];
    }
}

void Records::AddField(std::string_view text, std::uint32_t flag)
{
    myFields.push_back({static_cast<std::uint32_t>(text.data() - myBytes.data()),
                        static_cast<std::uint32_t>(text.size()) | flag});
}

void Records::ReadRecords()
{
    std::size_t first = 0;
    std::int64_t number = None; // as the file counts the record
    std::vector<std::pair<std::int64_t, int>> numbers;
    bool isOrdered = true;
    std::vector<std::size_t> open; // blocks; Reference for those that refer to another
    while (true) {
        const std::string_view word = NextWord();
        if (word.empty()) {
            throw Unreadable("the file ends too early");
        }
        const bool isStart = myFields.size() == first;
        if (isStart && (word == "End-of-ACIS-data" || word == "End-of-ASM-data" ||
                        word == "Begin-of-ACIS-History-Data" || word == "Begin-of-ASM-History-Data")) {
            break;
        }
        if (word == "#") {
            if (isStart || !open.empty()) {
                throw Unreadable(isStart ? "a record is empty" : "a record ends inside of a brace");
            }
            const auto record = static_cast<int>(myRecords.size());
            isOrdered = isOrdered && (number == None || number == record);
            numbers.emplace_back(number == None ? record : number, record);
            myRecords.push_back(
                {static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(myFields.size())});
            first = myFields.size();
            number = None;
            continue;
        }
        if (word.size() > 1 && word[0] == '@' && word[1] >= '0' && word[1] <= '9') {
            AddField(CountedString(word.substr(1)), StringFlag);
            continue;
        }
        if (isStart && number == None && word.size() > 1 && word[0] == '-') {
            if (const auto value = WholeNumber(word.substr(1))) {
                number = *value;
                continue;
            }
        }
        if (word == "{") {
            const std::size_t behind =
                std::min(myBytes.find_first_not_of(" \t\r\n", myPosition), myBytes.size());
            const bool isReference = myBytes.compare(behind, 4, "ref ") == 0;
            open.push_back(isReference ? Reference : myBlocks.size());
            if (!isReference) {
                myBlocks.push_back({static_cast<std::uint32_t>(myFields.size()), 0});
            }
        } else if (word == "}") {
            if (open.empty()) {
                throw Unreadable("a brace closes that was not open");
            }
            if (open.back() != Reference) {
                myBlocks[open.back()].last = static_cast<std::uint32_t>(myFields.size());
            }
            open.pop_back();
        }
        AddField(word, 0);
        // some files have the licence of their writer in front of the records, without an end
        if (myRecords.empty() && myFields.size() == 1 && (word == "T" || word == "F")) {
            myFields.clear();
            const std::string_view count = word == "T" ? NextWord() : std::string_view();
            if (count.size() > 1 && count[0] == '@') {
                CountedString(count.substr(1));
            }
        }
    }
    if (myFields.size() != first || myRecords.size() < myClaimed) {
        throw Unreadable("records are missing");
    }
    if (!isOrdered) {
        myNumbered.insert(numbers.begin(), numbers.end());
    }
}

/// Versions differ in what every entity begins with: "$attributes", from 7.0 "$attributes n $history", later
/// "$attributes n n $history". It is seen from the records of the topology, which go on with a pointer.
void Records::FindLead()
{
    for (std::size_t i = 0; i < myRecords.size(); ++i) {
        if (std::find(std::begin(Topology), std::end(Topology), Type(i)) == std::end(Topology)) {
            continue;
        }
        Fields fields = All(i);
        if (!fields.IsPointer()) {
            throw Unreadable("an entity has no attributes");
        }
        std::size_t numbers = 0;
        while (StartsLikeNumber(fields.Peek(1 + numbers))) {
            ++numbers;
        }
        myLead = numbers == 0 ? 1 : numbers + 2;
        return;
    }
}

std::string_view Records::Field(std::size_t field) const
{
    return myBytes.substr(myFields[field].offset, myFields[field].length & ~StringFlag);
}

std::string_view Records::Base(std::size_t record) const
{
    const std::string_view type = Type(record);
    const std::size_t dash = type.rfind('-');
    return dash == std::string_view::npos ? type : type.substr(dash + 1);
}

std::string_view Records::Kind(std::size_t record) const
{
    const std::string_view type = Type(record);
    return type.substr(0, type.find('-'));
}

Fields Records::All(std::size_t record) const
{
    return {*this, std::size_t{myRecords[record].first} + 1, myRecords[record].last};
}

Fields Records::Own(std::size_t record) const
{
    Fields fields = All(record);
    fields.Skip(myLead);
    return fields;
}

int Records::Find(std::string_view pointer) const
{
    const auto number = WholeNumber(pointer);
    if (!number || *number < 0) {
        return None;
    }
    if (!myNumbered.empty()) {
        const auto found = myNumbered.find(*number);
        return found == myNumbered.end() ? None : found->second;
    }
    return static_cast<std::uint64_t>(*number) < myRecords.size() ? static_cast<int>(*number) : None;
}

Fields Records::Block(std::size_t field) const
{
    if (field >= myFields.size() || IsString(field) || Field(field) != "{") {
        return {*this, 0, 0};
    }
    if (field + 2 < myFields.size() && Field(field + 1) == "ref") {
        const auto index = WholeNumber(Field(field + 2));
        if (!index || *index < 0 || static_cast<std::uint64_t>(*index) >= myBlocks.size()) {
            return {*this, 0, 0};
        }
        const Range block = myBlocks[static_cast<std::size_t>(*index)];
        return {*this, std::size_t{block.first} + 1, block.last};
    }
    const auto block = std::lower_bound(myBlocks.begin(), myBlocks.end(), field,
                                        [](const Range& range, std::size_t at) { return range.first < at; });
    return {*this, std::size_t{block->first} + 1, block->last};
}

} // namespace cadex::acis
