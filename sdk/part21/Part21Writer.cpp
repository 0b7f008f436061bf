#include "sdk/part21/Part21Writer.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <ctime>

namespace cadex::part21 {

namespace {

constexpr std::size_t LongestNumber = 40;

/// Appends `digits` upper-case hexadecimal digits.
void AppendHex(std::string& out, UTF32 value, int digits)
{
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) {
        out += "0123456789ABCDEF"[(value >> shift) & 0xF];
    }
}

UTF32 CodePointAt(const UTF16* units, std::size_t length, std::size_t& pos)
{
    const UTF32 unit = units[pos++];
    if (unit < 0xD800 || unit > 0xDFFF) {
        return unit;
    }
    if (unit <= 0xDBFF && pos < length && units[pos] >= 0xDC00 && units[pos] <= 0xDFFF) {
        return 0x10000 + ((unit - 0xD800) << 10) + (units[pos++] - 0xDC00u);
    }
    return 0xFFFD;
}

/// Which escape a character needs: 0 none, else the digits of each character inside it.
int EscapeOf(UTF32 code)
{
    return code >= 0x20 && code < 0x7F ? 0 : code < 0x10000 ? 4 : 8;
}

/// Prints a finite value and returns the end; the place has LongestNumber bytes.
// NOTE: ISO 10303-21, 6.4.2: a real has a decimal point after its first digits and an exponent in upper case.
template <typename T>
char* PrintReal(char* place, T value)
{
    char* end = std::to_chars(place, place + LongestNumber - 1, value == 0 ? T(0) : value).ptr;
    char* point = std::find_if(place, end, [](char c) { return c == '.' || c == 'e'; });
    char* exponent = std::find(point, end, 'e');
    if (point == exponent) // no point yet
    {
        std::memmove(point + 1, point, static_cast<std::size_t>(end - point));
        *point = '.';
        ++exponent;
        ++end;
    }
    if (exponent < end) {
        *exponent = 'E';
    }
    return end;
}

} // namespace

std::string Part21Real(double value)
{
    char text[LongestNumber];
    return std::string(text, PrintReal(text, value));
}

std::string Part21Real(float value)
{
    char text[LongestNumber];
    return std::string(text, PrintReal(text, value));
}

std::string Part21TimeStamp()
{
    return Part21TimeStamp(std::chrono::system_clock::to_time_t(std::chrono::system_clock::now()));
}

std::string Part21TimeStamp(std::time_t time)
{
    std::tm utc{};
#ifdef _WIN32
    gmtime_s(&utc, &time);
#else
    gmtime_r(&time, &utc);
#endif
    char text[32];
    return std::string(text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc));
}

// NOTE: ISO 10303-21, 6.4.3: inside \X2\ ... \X0\ each character has four digits, inside \X4\ ... \X0\ eight.
void AppendPart21String(std::string& out, const Base_UTF16String& text)
{
    out += '\'';
    int open = 0;
    for (std::size_t pos = 0; pos < text.Length();) {
        const UTF32 code = CodePointAt(text.Data(), text.Length(), pos);
        const int escape = EscapeOf(code);
        if (escape != open && open != 0) {
            out += "\\X0\\";
        }
        if (escape != open && escape != 0) {
            out += escape == 4 ? "\\X2\\" : "\\X4\\";
        }
        open = escape;
        if (escape != 0) {
            AppendHex(out, code, escape);
            continue;
        }
        const char c = static_cast<char>(code);
        out.append(c == '\'' || c == '\\' ? 2 : 1, c);
    }
    out += open != 0 ? "\\X0\\'" : "'";
}

Part21Writer::Part21Writer(ByteSink& sink)
    : mySink(sink), myBuffer(new char[BufferSize]), myEnd(myBuffer.get())
{
}

void Part21Writer::BeginFile(const Part21Header& header)
{
    Text("ISO-10303-21;\nHEADER;\n");
    Record("FILE_DESCRIPTION", std::array{header.description}, std::string(header.implementationLevel));
    End();
    Record("FILE_NAME", header.fileName, header.timeStamp, std::array{header.author},
           std::array{header.organization}, header.preprocessor, header.originatingSystem, "");
    End();
    Record("FILE_SCHEMA", std::array{std::string(header.schema)});
    End();
    Text("ENDSEC;\nDATA;\n");
}

bool Part21Writer::EndFile()
{
    Text("ENDSEC;\nEND-ISO-10303-21;\n");
    Flush();
    return myOk;
}

void Part21Writer::Put(Ref ref)
{
    if (!ref) {
        Text("$");
        return;
    }
    char* place = Need(LongestNumber);
    *place = '#';
    myEnd = std::to_chars(place + 1, place + LongestNumber, ref.id).ptr;
}

void Part21Writer::Put(const RefRange& range)
{
    Text("(");
    for (std::size_t i = 0; i < range.count; ++i) {
        if (i != 0) {
            Text(",");
        }
        Put(Ref{range.first.id + i * range.step});
    }
    Text(")");
}

void Part21Writer::Put(const Xyz& value)
{
    Text("(");
    Put(value.x);
    Text(",");
    Put(value.y);
    Text(",");
    Put(value.z);
    Text(")");
}

void Part21Writer::Put(const TypedReal& value)
{
    Text(value.type);
    Text("(");
    Put(value.value);
    Text(")");
}

void Part21Writer::Put(const Base_UTF16String& text)
{
    if (text.IsEmpty()) {
        Text("''");
        return;
    }
    std::string literal;
    AppendPart21String(literal, text);
    Text(literal);
}

void Part21Writer::Put(double value)
{
    PutReal(value);
}

void Part21Writer::Put(float value)
{
    PutReal(value);
}

void Part21Writer::PutInteger(std::int64_t value)
{
    char* place = Need(LongestNumber);
    myEnd = std::to_chars(place, place + LongestNumber, value).ptr;
}

template <typename T>
void Part21Writer::PutReal(T value)
{
    if (!std::isfinite(value)) {
        myOk = false; // there is no such real; the file must not be taken for a right one
        value = 0;
    }
    myEnd = PrintReal(Need(LongestNumber), value);
}

void Part21Writer::TextSlow(std::string_view text)
{
    Flush();
    if (text.size() > BufferSize) {
        myOk = myOk && mySink.Write(text);
        return;
    }
    std::memcpy(myEnd, text.data(), text.size());
    myEnd += text.size();
}

void Part21Writer::Flush()
{
    const auto size = static_cast<std::size_t>(myEnd - myBuffer.get());
    myOk = myOk && (size == 0 || mySink.Write(std::string_view(myBuffer.get(), size)));
    myEnd = myBuffer.get();
}

} // namespace cadex::part21
