// Clear text of ISO 10303-21, the exchange structure under STEP and IFC files, written as a stream: one
// buffer, no entity is kept. The layer knows syntax only; which entities make a STEP or an IFC file is its
// callers' business.
//
//     Part21Writer out(sink);
//     out.BeginFile(header);
//     Ref point = out.Add("CARTESIAN_POINT", "", Xyz{0, 0, 12.5});   // #1=CARTESIAN_POINT('',(0.,0.,12.5));
//     Ref loop = out.Reserve();                                      // named before it is written
//     out.AddAs(loop, "POLY_LOOP", "", std::array{point, other, third});
//     bool ok = out.EndFile();
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include <cadex/Base_UTF16String.hxx>

#include "sdk/text/AtomicFile.h"

namespace cadex::part21 {

using text::ByteSink;

/// An entity's instance name, #id. Id 0 stands for none and is written as $.
struct Ref
{
    std::uint64_t id = 0;
    explicit operator bool() const { return id != 0; }
};

/// `count` entities with ids first, first + step, ...: a parameter list (#1,#4,#7).
struct RefRange
{
    Ref first;
    std::size_t count = 0;
    std::size_t step = 1;
};

/// Text that stands in the file as it is: Raw{"$"}, Raw{"*"}, Raw{".T."}, a typed or a nested parameter.
struct Raw
{
    std::string_view text;
};

/// A list of three reals.
struct Xyz
{
    double x = 0;
    double y = 0;
    double z = 0;
};

/// A typed parameter: TypedReal{"LENGTH_MEASURE", 25.4} is LENGTH_MEASURE(25.4).
struct TypedReal
{
    std::string_view type;
    double value = 0;
};

/// What the header says of the file; all of it may be empty but the schema.
struct Part21Header
{
    Base_UTF16String description;
    std::string_view implementationLevel = "2;1";
    Base_UTF16String fileName;
    std::string timeStamp; ///< ISO 8601; see Part21TimeStamp
    Base_UTF16String author;
    Base_UTF16String organization;
    Base_UTF16String preprocessor;
    Base_UTF16String originatingSystem;
    std::string_view schema;
};

/// A time in UTC, as 2024-05-17T09:30:00Z; without an argument now.
std::string Part21TimeStamp();
std::string Part21TimeStamp(std::time_t time);

/// The shortest form that reads back the same, always with a decimal point; the value must be finite.
std::string Part21Real(double value);
std::string Part21Real(float value);

/// Appends the text as a string literal, quotes included. Printable ASCII stands as it is, apostrophe and
/// backslash doubled; all else, control characters too, becomes \X2\ or \X4\. Surrogates without a partner
/// become U+FFFD.
void AppendPart21String(std::string& out, const Base_UTF16String& text);

/// Parameters may be: Ref, RefRange, Raw, Xyz, TypedReal, const char* and std::string (UTF-8) and
/// Base_UTF16String (string literals), double and float (shortest form that reads back the same, always with
/// a decimal point), integers, and arrays, vectors or spans of these (lists).
class Part21Writer
{
public:
    explicit Part21Writer(ByteSink& sink);

    /// Writes everything before the first entity.
    void BeginFile(const Part21Header& header);
    /// Writes the end and empties the buffer. False when the sink failed at any time, or a real was not
    /// finite.
    bool EndFile();
    /// False once the file cannot become right; lets long loops stop early.
    bool Ok() const { return myOk; }

    /// Takes `count` consecutive ids; each must be given to AddAs (or Begin) later.
    Ref Reserve(std::size_t count = 1)
    {
        const Ref first{myNext};
        myNext += count;
        return first;
    }

    template <typename... Parameters>
    Ref Add(std::string_view type, const Parameters&... parameters)
    {
        const Ref ref = Reserve();
        AddAs(ref, type, parameters...);
        return ref;
    }

    template <typename... Parameters>
    void AddAs(Ref ref, std::string_view type, const Parameters&... parameters)
    {
        Begin(ref);
        Record(type, parameters...);
        End();
    }

    /// Pieces of a complex entity: Begin(ref); Text("("); Record("LENGTH_UNIT"); ... Text(")"); End();
    void Begin(Ref ref)
    {
        Put(ref);
        Text("=");
    }
    template <typename... Parameters>
    void Record(std::string_view type, const Parameters&... parameters)
    {
        Text(type);
        Text("(");
        std::size_t written = 0;
        (PutListed(parameters, written), ...);
        Text(")");
    }
    void End() { Text(";\n"); }

    /// Bytes as they are.
    void Text(std::string_view text)
    {
        if (text.size() > Room()) {
            TextSlow(text);
            return;
        }
        std::memcpy(myEnd, text.data(), text.size());
        myEnd += text.size();
    }

    void Put(Ref ref);
    void Put(const RefRange& range);
    void Put(const Raw& raw) { Text(raw.text); }
    void Put(const Xyz& value);
    void Put(const TypedReal& value);
    void Put(const char* utf8)
    {
        if (*utf8 == 0) {
            Text("''"); // most labels of entities are empty
            return;
        }
        Put(Base_UTF16String(utf8));
    }
    void Put(const std::string& utf8) { Put(Base_UTF16String(utf8.c_str())); }
    void Put(const Base_UTF16String& text);
    void Put(double value);
    void Put(float value);
    template <typename T>
    requires std::is_integral_v<T>
    void Put(T value) { PutInteger(static_cast<std::int64_t>(value)); }
    template <typename T>
    void Put(std::span<const T> list)
    {
        Text("(");
        std::size_t written = 0;
        for (const T& item : list) {
            PutListed(item, written);
        }
        Text(")");
    }
    template <typename T>
    void Put(const std::vector<T>& list)
    {
        Put(std::span<const T>(list));
    }
    template <typename T, std::size_t N>
    void Put(const std::array<T, N>& list)
    {
        Put(std::span<const T>(list));
    }

private:
    static constexpr std::size_t BufferSize = std::size_t{1} << 18;

    template <typename T>
    void PutListed(const T& parameter, std::size_t& written)
    {
        if (written++ != 0) {
            Text(",");
        }
        Put(parameter);
    }

    std::size_t Room() const { return static_cast<std::size_t>(myBuffer.get() + BufferSize - myEnd); }
    /// A place for at least `size` bytes, which must be small.
    char* Need(std::size_t size)
    {
        if (size > Room()) {
            Flush();
        }
        return myEnd;
    }
    void TextSlow(std::string_view text);
    void PutInteger(std::int64_t value);
    template <typename T>
    void PutReal(T value);
    void Flush();

    ByteSink& mySink;
    std::unique_ptr<char[]> myBuffer;
    char* myEnd;
    std::uint64_t myNext = 1;
    bool myOk = true;
};

} // namespace cadex::part21
