#include "sdk/step/StepExcerpt.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <iterator>
#include <string>
#include <string_view>

namespace cadex::step {

namespace {

constexpr std::size_t PieceSize = 64 * 1024;

// What the kernel starts from when it makes shapes, and what it finds from there against the direction of a
// reference.
constexpr std::string_view Starts[] = {
    "PRODUCT_DEFINITION",
    "PRODUCT_DEFINITION_WITH_ASSOCIATED_DOCUMENTS",
    "PRODUCT_DEFINITION_SHAPE",
    "NEXT_ASSEMBLY_USAGE_OCCURRENCE",
    "SHAPE_DEFINITION_REPRESENTATION",
    "CONTEXT_DEPENDENT_SHAPE_REPRESENTATION",
    "SHAPE_REPRESENTATION_RELATIONSHIP",
    "REPRESENTATION_RELATIONSHIP",
    "REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION",
};

bool IsStart(std::string_view type)
{
    return std::find(std::begin(Starts), std::end(Starts), type) != std::end(Starts) ||
           EndsWith(type, "SHAPE_REPRESENTATION");
}

// How a byte of a record's arguments goes on its way.
enum class Way : unsigned char
{
    Copy,
    Drop,    // blank
    Text,    // up to an apostrophe that is not doubled
    Number,  // perhaps with zeros too many
    Name,    // of a type, or a reference: its digits are no number
    Comment, // perhaps
    Open,
    Close,
    Wrong, // in no argument
};

constexpr std::array<Way, 256> Ways = [] {
    std::array<Way, 256> ways{};
    for (std::size_t c = 0; c <= ' '; ++c) {
        ways[c] = Way::Drop;
    }
    for (std::size_t c = '0'; c <= '9'; ++c) {
        ways[c] = Way::Number;
    }
    for (std::size_t c = 'A'; c <= 'Z'; ++c) {
        ways[c] = Way::Name;
    }
    ways['-'] = ways['+'] = Way::Number;
    ways['#'] = Way::Name;
    ways['\''] = Way::Text;
    ways['/'] = Way::Comment;
    ways['('] = Way::Open;
    ways[')'] = Way::Close;
    ways['='] = Way::Wrong;
    return ways;
}();

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

char* Copy(const char* from, const char* to, char* out)
{
    return std::copy(from, to, out);
}

const char* SkipComment(const char* p, const char* end)
{
    const std::string_view rest(p, static_cast<std::size_t>(end - p));
    const std::size_t close = rest.find("*/", 2);
    return close == std::string_view::npos ? end : p + close + 2;
}

// 1.500E+00 as 1.5: what is cut off does not change the value.
const char* CopyNumber(const char* p, const char* end, char*& out)
{
    const char* const start = p++;
    while (p < end && IsDigit(*p)) {
        ++p;
    }
    if (p == end || *p != '.') {
        out = Copy(start, p, out); // an integer, or nothing that is known here
        return p;
    }
    const char* last = p++;
    for (; p < end && IsDigit(*p); ++p) {
        last = *p != '0' ? p : last;
    }
    out = Copy(start, last + 1, out);
    if (p == end || (*p != 'E' && *p != 'e')) {
        return p;
    }
    ++p;
    const bool negative = p < end && *p == '-';
    p += p < end && (*p == '-' || *p == '+') ? 1 : 0;
    while (p < end && *p == '0') {
        ++p;
    }
    const char* const exponent = p;
    while (p < end && IsDigit(*p)) {
        ++p;
    }
    if (p > exponent) {
        *out++ = 'E';
        *out = '-';
        out += negative ? 1 : 0;
        out = Copy(exponent, p, out);
    }
    return p;
}

const char* SkipBlank(const char* p, const char* end)
{
    while (p < end && static_cast<unsigned char>(*p) <= ' ') {
        ++p;
    }
    return p;
}

// Without the apostrophes in it: no shape depends on them. Null when the text has no end, or when what stands
// behind it is neither a comma nor a parenthesis.
const char* CopyText(const char* p, const char* end, char*& out)
{
    *out++ = *p++;
    for (;;) {
        const char* const close = std::find(p, end, '\'');
        out = Copy(p, close, out);
        if (close == end) {
            return nullptr;
        }
        p = close + 1;
        if (p == end || *p != '\'') {
            break;
        }
        ++p;
    }
    *out++ = '\'';
    const char* next = SkipBlank(p, end);
    while (end - next > 1 && next[0] == '/' && next[1] == '*') {
        next = SkipBlank(SkipComment(next, end), end);
    }
    return next < end && (*next == ',' || *next == ')') ? p : nullptr;
}

// Never longer than what it is made of. Null when the arguments are not well-formed.
//
// NOTE: the kernel ends a text where an apostrophe stands before a comma or a parenthesis, and goes on behind
// errors. Where it then sees records that are none, with numbers that others have, it follows uninitialised
// memory, now and then for ever. So it only gets what has one reading.
char* CopyCompact(const char* p, const char* end, char* out)
{
    int depth = 1;
    while (p < end) {
        const char* const start = p;
        switch (Ways[static_cast<unsigned char>(*p)]) {
        case Way::Drop:
            ++p;
            break;
        case Way::Copy:
            *out++ = *p++;
            break;
        case Way::Open:
            *out++ = *p++;
            ++depth;
            break;
        case Way::Close:
            *out++ = *p++;
            if (--depth == 0) {
                p = SkipBlank(p, end);
                return p == end || *p == '/' ? out : nullptr;
            }
            break;
        case Way::Number:
            p = CopyNumber(p, end, out);
            break;
        case Way::Text:
            p = CopyText(p, end, out);
            if (p == nullptr) {
                return nullptr;
            }
            break;
        case Way::Name:
            for (++p; p < end && (IsDigit(*p) || *p == '_' || (*p >= 'A' && *p <= 'Z')); ++p) {
            }
            out = Copy(start, p, out);
            break;
        case Way::Comment:
            if (end - p > 1 && p[1] == '*') {
                p = SkipComment(p, end);
            } else {
                *out++ = *p++;
            }
            break;
        case Way::Wrong:
            return nullptr;
        }
    }
    return nullptr;
}

// The name of a schema as all write it: "AUTOMOTIVE_DESIGN { 1 0 10303 214 1 1 1 1 }".
bool IsSchemaCharacter(char c)
{
    return IsDigit(c) || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
           std::string_view(" _{}.-").find(c) != std::string_view::npos;
}

} // namespace

StepExcerpt::StepExcerpt(const ClearText& text)
    : myText(text), myNeeded(text.Count(), false), myOrder(text.FileOrder())
{
    SelectNeeded();
}

void StepExcerpt::SelectNeeded()
{
    const std::vector<ClearText::Record>& records = myText.Records();
    const auto placeOf = [&](const ClearText::Record* record) {
        return static_cast<std::size_t>(record - records.data());
    };
    bool hasProducts = false;
    std::vector<std::size_t> open;
    for (std::size_t place = 0; place < records.size(); ++place) {
        const std::string_view type = myText.TypeName(records[place]);
        hasProducts = hasProducts || type == Starts[0] || type == Starts[1];
        if (IsStart(type)) {
            myNeeded[place] = true;
            open.push_back(place);
        }
    }
    if (!hasProducts) {
        myNeeded.assign(records.size(), true);
        return;
    }
    while (!open.empty()) {
        const ClearText::Record& record = records[open.back()];
        open.pop_back();
        const char* p = myText.Bytes().data() + record.offset;
        const char* const end = p + record.size;
        // A number sign in a text may select a record too many, which does no harm.
        while ((p = static_cast<const char*>(std::memchr(p, '#', static_cast<std::size_t>(end - p)))) !=
               nullptr) {
            RecordId id = 0;
            p = std::from_chars(p + 1, end, id).ptr;
            const ClearText::Record* target = myText.Find(id);
            if (target != nullptr && !myNeeded[placeOf(target)]) {
                myNeeded[placeOf(target)] = true;
                open.push_back(placeOf(target));
            }
        }
    }
}

void StepExcerpt::Reserve(std::size_t size)
{
    if (myPiece.size() < myUsed + size) {
        myPiece.resize(std::max(2 * myPiece.size(), myUsed + size));
    }
}

void StepExcerpt::Append(std::string_view text)
{
    Reserve(text.size());
    std::copy(text.begin(), text.end(), myPiece.begin() + static_cast<std::ptrdiff_t>(myUsed));
    myUsed += text.size();
}

void StepExcerpt::AppendHeader()
{
    Append("ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\nFILE_NAME('','',(''),(''),'','','');\n");
    Cursor schemas = myText.Header("FILE_SCHEMA");
    if (schemas.EnterList() && schemas.More()) {
        std::string name(schemas.String());
        std::erase_if(name, [](char c) { return !IsSchemaCharacter(c); });
        Append("FILE_SCHEMA(('" + name + "'));\n");
    }
    Append("ENDSEC;\nDATA;\n");
}

void StepExcerpt::AppendRecord(const ClearText::Record& record)
{
    constexpr std::size_t longestNumber = 20;
    const std::string_view type = myText.TypeName(record);
    Reserve(type.size() + longestNumber + record.size + 8);
    char* out = myPiece.data() + myUsed;
    *out++ = '#';
    out = std::to_chars(out, out + longestNumber, record.id).ptr;
    *out++ = '=';
    out = Copy(type.data(), type.data() + type.size(), out);
    *out++ = '(';
    const char* const start = myText.Bytes().data() + record.offset;
    out = CopyCompact(start, start + record.size, out);
    if (out == nullptr) {
        myIsMalformed = true;
        return;
    }
    *out++ = ';';
    *out++ = '\n';
    myUsed = static_cast<std::size_t>(out - myPiece.data());
}

StepExcerpt::int_type StepExcerpt::underflow()
{
    myUsed = 0;
    if (!myHasHeader) {
        myHasHeader = true;
        AppendHeader();
    }
    while (myNext < myText.Count() && myUsed < PieceSize && !myIsMalformed) {
        const std::size_t place = myOrder[myNext++];
        if (myNeeded[place]) {
            AppendRecord(myText.Records()[place]);
        }
    }
    if ((myNext == myText.Count() || myIsMalformed) && !myHasEnd) {
        myHasEnd = true;
        Append("ENDSEC;\nEND-ISO-10303-21;\n");
    }
    setg(myPiece.data(), myPiece.data(), myPiece.data() + myUsed);
    return myUsed == 0 ? traits_type::eof() : traits_type::to_int_type(myPiece.front());
}

} // namespace cadex::step
