// A file in the clear text encoding of ISO 10303-21 (STEP, IFC): an index of its records by number and by
// type. Which entities make a STEP or an IFC file is its callers' business.
//
//     ClearText text;
//     if (text.Load(std::move(bytes))) {
//         for (const ClearText::Record& product : text.OfType("PRODUCT")) {
//             Cursor arguments = text.Arguments(product);
//             std::string_view id = arguments.String();
//         }
//     }
//
// The index is built in one pass over the bytes and takes 20 bytes a record; arguments are parsed when they
// are asked for. What is odd in a file has one answer, whatever the format:
//
// - Blanks are all characters up to the space; comments are blanks. A byte order mark may come first.
// - A statement that is no well-formed record (its parentheses do not match, something follows them, its
// number
//   is none or above 4,294,967,295) is left out and reported; what refers to it finds nothing.
// - Two records with one number: the first stands when both say the same; else neither, and it is reported.
// - There may be several DATA sections; records in others refer to other files and are not read.
// - A file that ends inside a data section, a comment or a text is cut off, and refused.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "sdk/part21/Cursor.h"

namespace cadex::part21 {

/// Views and cursors point into the text: it must outlive them.
class ClearText
{
public:
    struct Record
    {
        std::uint64_t offset : 48; ///< of the first byte behind the opening parenthesis
        std::uint64_t type : 16;   ///< see TypeName; 0 for a record of several types (complex instance)
        std::uint32_t id = 0;
        std::uint32_t size = 0; ///< bytes of the arguments, with the closing parenthesis
    };

    /// Takes the bytes over and indexes them. False, with the reason reported, when they are no exchange
    /// structure or none that is whole.
    bool Load(std::string bytes);

    const std::string& Bytes() const { return myBytes; }
    std::size_t Count() const { return myRecords.size(); }
    /// Sorted by type, then in the order of the file.
    const std::vector<Record>& Records() const { return myRecords; }
    /// Calls back for each record, ascending by number.
    template <typename Visit>
    void ForEachByNumber(const Visit& visit) const
    {
        for (const std::uint32_t place : myById) {
            if (place < myRecords.size()) {
                visit(myRecords[place]);
            }
        }
    }
    /// Places in Records() in the order of the file.
    std::vector<std::uint32_t> FileOrder() const;
    /// First byte of the (first) DATA section.
    std::size_t DataOffset() const { return myDataOffset; }

    /// Null when there is no such record.
    const Record* Find(RecordId id) const;
    /// All records of exactly this type, in the order of the file.
    std::span<const Record> OfType(std::string_view name) const;
    std::size_t CountOf(std::string_view name) const { return OfType(name).size(); }

    /// The types that occur have numbers from 1 to TypeCount() - 1, in the order in which they first come.
    std::size_t TypeCount() const { return myTypes.size(); }
    std::string_view TypeName(std::size_t type) const { return myTypes[type]; }
    std::span<const Record> OfTypeNumber(std::size_t type) const;
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
    class Indexer;

    std::uint32_t TypeNumber(std::string_view name, std::uint32_t hash);
    std::uint32_t FindType(std::string_view name, std::uint32_t hash) const;
    void SortByType();
    bool IndexNumbers(std::vector<std::uint32_t>& equal);
    void DropEqualNumbers(std::vector<std::uint32_t> equal);

    std::string myBytes;
    std::vector<Record> myRecords;         // sorted by type, then in the order of the file
    std::vector<std::size_t> myTypeStarts; // first record of each type, and the end
    std::vector<std::uint32_t> myById;     // places in myRecords: by number when dense, else sorted by number
    bool myDense = false;
    std::size_t myDataOffset = 0;
    std::vector<std::string_view> myTypes;
    std::vector<std::uint32_t> myTypeTable; // open hash table of type numbers
    std::vector<HeaderRecord> myHeader;
};

/// True where the name is that of a type or of a later edition's: ends in SHAPE_REPRESENTATION, for example.
bool EndsWith(std::string_view name, std::string_view suffix);

} // namespace cadex::part21
