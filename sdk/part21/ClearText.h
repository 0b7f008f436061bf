// A STEP file as text: an index of its records by number and by type, and a cursor over the arguments of a
// record.
//
//     ClearText text;
//     if (text.Load(std::move(bytes))) {
//         for (ClearText::Record product : text.OfType("PRODUCT")) {
//             Cursor arguments = text.Arguments(product);
//             std::string_view id = arguments.String();
//         }
//     }
//
// NOTE: the syntax is that of ISO 10303-21 (clear text encoding). The index is built in one pass over the
// bytes and takes 16 bytes a record; records are parsed only when they are asked for. The product structure,
// styles, properties and facets are read this way, whichever way the geometry is read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace cadex::part21 {

/// Number of a record in the file (#123); 0 is no record.
using RecordId = std::uint64_t;

/// Reads the arguments of one record from left to right. A read of the wrong kind gives an empty value and
/// marks the cursor as failed, as running past the end does; nothing throws.
class Cursor
{
public:
    Cursor() = default;
    /// Stands before the first argument: `position` is behind the opening parenthesis.
    Cursor(const char* position, const char* end) : myPosition(position), myEnd(end) {}

    /// Enters the list that is the next argument. After it Leave skips what is left of it.
    bool EnterList();
    void Leave();
    /// Enters a value with a type name, LENGTH_MEASURE(3.5), and gives the name; empty when the next argument
    /// has none.
    std::string_view EnterTyped();
    /// True while the list or record entered last has another argument.
    bool More();
    void Skip();

    /// The next argument as a reference (0 for $ and everything else), a number, a text or an enumerator
    /// without its points. The text is raw: see DecodeString.
    RecordId Reference();
    double Real();
    std::int64_t Integer();
    std::string_view String();
    std::string_view Enumerator();
    /// Fills the references of a list; anything else in it is left out.
    void References(std::vector<RecordId>& ids);
    /// Fills up to `count` numbers of a list; false when there are fewer.
    bool Reals(double* values, int count);

    /// What kind the next argument is.
    enum class Kind
    {
        None,    ///< no further argument, or not well-formed
        Omitted, ///< $ or *
        Reference,
        Integer,
        Real,
        String,
        Enumerator,
        Typed,
        List
    };
    Kind Next();

    bool Failed() const { return myFailed; }

private:
    void SkipBlank();
    void Separate();
    std::string_view Number();

    const char* myPosition = nullptr;
    const char* myEnd = nullptr;
    bool myFailed = false;
};

/// The text and its index. Views and cursors point into it: it must outlive them.
class ClearText
{
public:
    struct Record
    {
        RecordId id = 0;
        std::uint32_t type = 0; ///< see TypeName; 0 for a record of several types (complex instance)
        std::uint32_t size = 0; ///< bytes of the arguments, at most
        std::size_t offset = 0; ///< of the first byte behind the opening parenthesis
    };

    /// Takes the bytes over and indexes them. False when they are no exchange structure (no "ISO-10303-21;"
    /// at the start) or have no DATA section. Records that cannot be understood are left out.
    bool Load(std::string bytes);

    const std::string& Bytes() const { return myBytes; }
    std::size_t Count() const { return myRecords.size(); }
    /// Sorted by type.
    const std::vector<Record>& Records() const { return myRecords; }
    /// Place in Records() of the n-th record of the file.
    std::size_t InFileOrder(std::size_t n) const { return myFileOrder[n]; }
    /// First byte of the (first) DATA section.
    std::size_t DataOffset() const { return myDataOffset; }

    /// Null when there is no such record.
    const Record* Find(RecordId id) const;
    /// All records of exactly this type, in the order of the file.
    std::span<const Record> OfType(std::string_view name) const;
    std::size_t CountOf(std::string_view name) const { return OfType(name).size(); }

    /// Name of the record's type; empty for a complex instance.
    std::string_view TypeName(const Record& record) const { return myTypes[record.type]; }
    bool Is(const Record& record, std::string_view name) const { return TypeName(record) == name; }
    Cursor Arguments(const Record& record) const;
    /// Arguments of the record when it is of the type, or of its part of that type when it is a complex
    /// instance; `found` tells which is which from a cursor without arguments.
    Cursor Arguments(RecordId id, std::string_view type, bool& found) const;
    /// Appends the numbers that the record refers to, wherever they stand in it.
    void AppendReferences(const Record& record, std::vector<RecordId>& ids) const;

    /// Arguments of a record of the HEADER section, for example FILE_NAME; without arguments when there is
    /// none.
    Cursor Header(std::string_view name) const;

private:
    struct HeaderRecord
    {
        std::string_view name;
        std::size_t offset = 0;
    };

    bool IndexStatements();
    bool IndexRecord(const char* statement, const char* end);
    std::uint32_t TypeNumber(std::string_view name);
    void SortByType();
    bool SortById();

    std::string myBytes;
    std::vector<Record> myRecords;         // sorted by type, then in the order of the file
    std::vector<std::size_t> myTypeStarts; // first record of each type, and the end
    std::vector<std::uint32_t> myById;     // places in myRecords: by number when dense, else sorted by number
    bool myDense = false;
    std::vector<std::uint32_t> myFileOrder;
    std::size_t myDataOffset = 0;
    std::vector<std::string_view> myTypes;
    std::vector<std::uint32_t> myTypeTable; // open hash table of type numbers
    std::vector<HeaderRecord> myHeader;
};

/// True where the name is that of a type or of a later edition's: ends in SHAPE_REPRESENTATION, for example.
bool EndsWith(std::string_view name, std::string_view suffix);

} // namespace cadex::part21
