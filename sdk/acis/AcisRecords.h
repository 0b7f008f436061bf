// The records of a SAT file (ACIS text, versions 4 to 31 and those to come of the same layout): a header and
// records of blank-separated fields, each closed by "#". Fields stay as views into the file.
//
//     Records records(bytes);                       // throws Unreadable
//     for (std::size_t i = 0; i < records.Size(); ++i) {
//         Fields fields = records.Own(i);           // behind what every entity begins with
//         if (records.Base(i) == "face") { const int next = fields.Pointer(); ... }
//     }
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace cadex::acis {

/// Why a file is refused.
class Unreadable : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

inline constexpr int None = -1;

struct Header
{
    int version = 0; ///< times 100
    std::string_view product;
    std::string_view kernel;
    std::string_view date;
    double millimetres = 1; ///< a unit of length of the file
};

class Records;

/// A cursor over fields. Reading behind the end gives empty fields, which are no numbers and no pointers.
class Fields
{
public:
    Fields(const Records& records, std::size_t first, std::size_t last)
        : myRecords(&records), myNext(first), myLast(last)
    {
    }

    bool AtEnd() const { return myNext >= myLast; }
    std::size_t Position() const { return myNext; }
    std::size_t Left() const { return myLast - myNext; }
    std::string_view Peek(std::size_t ahead = 0) const;
    std::string_view Next();
    void Skip(std::size_t count) { myNext = count < Left() ? myNext + count : myLast; }

    bool IsPointer() const;
    bool IsNumber() const;
    /// Number of the record that the next field points to; None for "$-1", a record that is not there, and
    /// anything else.
    int Pointer();
    /// NaN for what is no number.
    double Number();
    /// -1 for what is no whole number from 0 on.
    int Count();
    /// A word that tells a direction: true for "reversed" (and its number).
    bool IsReversed();

private:
    const Records* myRecords;
    std::size_t myNext;
    std::size_t myLast;
};

/// The file must outlive the records.
class Records
{
public:
    explicit Records(std::string_view bytes);

    const Header& Head() const { return myHeader; }
    std::size_t Size() const { return myRecords.size(); }

    /// The whole chain of the record's type ("rgb_color-st-attrib"), the last part of it, which tells the
    /// layout ("attrib"), and the first.
    std::string_view Type(std::size_t record) const { return Field(myRecords[record].first); }
    std::string_view Base(std::size_t record) const;
    std::string_view Kind(std::size_t record) const;

    /// All fields behind the type.
    Fields All(std::size_t record) const;
    /// The fields behind those that every entity has: attributes, numbers, history.
    Fields Own(std::size_t record) const;

    /// The block in braces that opens at the field, without the braces; a block that refers to another gives
    /// that one. Empty when no block opens there, or the reference leads nowhere.
    Fields Block(std::size_t field) const;

    std::string_view Field(std::size_t field) const;
    /// Whether the field stands in the file as a counted string; its count is not part of it.
    bool IsString(std::size_t field) const { return (myFields[field].length & StringFlag) != 0; }
    int Find(std::string_view pointer) const;

private:
    friend class Fields;
    static constexpr std::uint32_t StringFlag = 0x80000000U;

    struct Span
    {
        std::uint32_t offset;
        std::uint32_t length; ///< with StringFlag
    };
    struct Range
    {
        std::uint32_t first; ///< field
        std::uint32_t last;
    };

    std::string_view NextWord();
    std::string_view CountedString(std::string_view count);
    void ReadHeader();
    void ReadRecords();
    void AddField(std::string_view text, std::uint32_t flag);
    void FindLead();

    std::string_view myBytes;
    std::size_t myPosition = 0;
    Header myHeader;
    std::size_t myClaimed = 0; ///< records, as the header says; 0: it does not
    std::vector<Span> myFields;
    std::vector<Range> myRecords;
    std::vector<Range> myBlocks; ///< their braces, in the order of the opening ones; not those of references
    std::unordered_map<std::int64_t, int> myNumbered; ///< only where numbers differ from the order
    std::size_t myLead = 1;                           ///< fields that every entity has behind its type
};

} // namespace cadex::acis
