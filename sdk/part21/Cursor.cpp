#include "sdk/part21/Cursor.h"

#include <algorithm>
#include <charconv>

#include "sdk/part21/Scan.h"
#include "sdk/text/TextNumbers.h"

namespace cadex::part21 {

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
    case '"':
        return Kind::Binary;
    case '.':
        return myEnd - myPosition > 1 && IsDigit(myPosition[1]) ? Kind::Real : Kind::Enumerator;
    default:
        break;
    }
    if (IsDigit(c) || c == '-' || c == '+') {
        const char* p = std::find_if_not(myPosition + 1, myEnd, IsDigit);
        return p < myEnd && (*p == '.' || IsNameCharacter(*p)) ? Kind::Real : Kind::Integer;
    }
    return IsNameCharacter(c) ? Kind::Typed : Kind::None;
}

// Behind the next argument, where a comma, a blank or a parenthesis follows; null when there is none.
const char* Cursor::BehindNext()
{
    switch (Next()) {
    case Kind::None:
        return nullptr;
    case Kind::String:
    case Kind::Binary:
        return SkipQuoted(myPosition, myEnd, *myPosition);
    case Kind::List:
        return SkipToClose(myPosition + 1, myEnd);
    case Kind::Typed: {
        const std::string_view name = NameAt(myPosition, myEnd);
        const char* open = SkipBlanks(myPosition + name.size(), myEnd);
        return open < myEnd && *open == '(' ? SkipToClose(open + 1, myEnd) : open;
    }
    default: {
        const char* p = myPosition + 1;
        while (p < myEnd && *p != ',' && *p != ')' && *p != ';') {
            ++p;
        }
        return p;
    }
    }
}

void Cursor::Skip()
{
    const char* behind = BehindNext();
    if (behind == nullptr) {
        myFailed = true;
        return;
    }
    myPosition = behind;
    Separate();
}

std::string_view Cursor::Raw()
{
    const char* behind = BehindNext();
    if (behind == nullptr) {
        myFailed = true;
        return {};
    }
    const char* const start = myPosition;
    myPosition = behind;
    while (behind > start && IsBlank(behind[-1])) {
        --behind;
    }
    Separate();
    return {start, static_cast<std::size_t>(behind - start)};
}

bool Cursor::EnterList()
{
    if (Next() != Kind::List) {
        Skip();
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

// False, with the argument passed, when the next one is no number.
bool Cursor::IsNumber()
{
    const Kind kind = Next();
    if (kind == Kind::Real || kind == Kind::Integer) {
        return true;
    }
    myFailed = true;
    if (kind != Kind::None) {
        Skip();
    }
    return false;
}

double Cursor::Real()
{
    double value = 0;
    if (!IsNumber()) {
        return value;
    }
    const char* behind = text::ReadReal(myPosition, myEnd, value);
    if (behind == myPosition || (behind < myEnd && (IsNameCharacter(*behind) || *behind == '.'))) {
        myFailed = true;
        Skip();
        return 0;
    }
    myPosition = behind;
    Separate();
    return value;
}

std::int64_t Cursor::Integer()
{
    std::int64_t value = 0;
    if (!IsNumber()) {
        return value;
    }
    const char* start = myPosition + (*myPosition == '+' ? 1 : 0);
    if (std::from_chars(start, myEnd, value).ec != std::errc()) {
        myFailed = true;
    }
    Skip();
    return value;
}

std::string_view Cursor::String()
{
    if (Next() != Kind::String) {
        Skip();
        return {};
    }
    const char* start = myPosition + 1;
    myPosition = SkipQuoted(myPosition, myEnd);
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

void Cursor::AppendReals(std::vector<double>& values)
{
    // Lists of points are the bulk of some files: parentheses, commas and blanks are passed alike.
    const char* behind = BehindNext();
    if (behind == nullptr) {
        myFailed = true;
        return;
    }
    for (const char* p = myPosition; p < behind;) {
        double value = 0;
        const char* next = text::ReadReal(p, behind, value);
        if (next != p) {
            values.push_back(value);
            p = next;
        } else if (IsBlank(*p) || *p == ',' || *p == '(' || *p == ')') {
            ++p;
        } else {
            myFailed = true;
            break;
        }
    }
    myPosition = behind;
    Separate();
}

} // namespace cadex::part21
