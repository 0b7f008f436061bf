// The container of a 3DM file: chunks within chunks, with their sizes and checksums, and the primitive values
// in them. Little-endian throughout.
//
//     Archive archive(bytes);                       // throws Unreadable when this is no 3DM file
//     archive.ForEachTable([&](Chunk& table) {
//         table.ForEachChild([&](Chunk& record) { const int unit = record.I32(); ... });
//     });
//
// NOTE: a chunk is a type code of four bytes and a value of four bytes (eight from version 50 on). A code
// with the highest bit set has the value for its data; otherwise the value is the length of what follows.
// Codes with bit 0x8000 end in a CRC-32 of the chunk's own bytes, which are those that belong to no chunk
// inside it.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include <cadex/Base_UTF16String.hxx>

namespace cadex::rhino {

static_assert(std::endian::native == std::endian::little, "values are copied as they stand in the file");

/// The file is damaged, or no such file; what() says how.
class Unreadable : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Sixteen bytes as they stand in the file: the first three groups little-endian.
struct Uuid
{
    std::array<std::uint8_t, 16> bytes{};

    constexpr Uuid() = default;
    /// From the usual text with hyphens.
    constexpr explicit Uuid(std::string_view text)
    {
        constexpr std::size_t Order[16] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
        std::size_t digit = 0;
        for (const char c : text) {
            if (c == '-' || digit >= 32) {
                continue;
            }
            const int value = c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10;
            std::uint8_t& byte = bytes[Order[digit / 2]];
            byte = static_cast<std::uint8_t>((byte << 4) | value);
            ++digit;
        }
    }

    constexpr bool IsNil() const { return *this == Uuid(); }
    friend constexpr bool operator==(const Uuid&, const Uuid&) = default;
    friend constexpr bool operator<(const Uuid& a, const Uuid& b) { return a.bytes < b.bytes; }
};

/// Type codes of chunks.
namespace code {
inline constexpr std::uint32_t Comment = 0x00000001;
inline constexpr std::uint32_t EndOfFile = 0x00007FFF;
inline constexpr std::uint32_t EndOfTable = 0xFFFFFFFF;
inline constexpr std::uint32_t Anonymous = 0x40008000;
inline constexpr std::uint32_t Component = 0x40008002;
inline constexpr std::uint32_t Object = 0x00027FFA; ///< an object of some class
inline constexpr std::uint32_t ObjectClass = 0x0002FFFB;
inline constexpr std::uint32_t ObjectData = 0x0002FFFC;
inline constexpr std::uint32_t UserData = 0x00027FFD;
inline constexpr std::uint32_t UserDataHeader = 0x0002FFF9;
inline constexpr std::uint32_t ObjectEnd = 0x80027FFF;

inline constexpr std::uint32_t PropertiesTable = 0x10000014;
inline constexpr std::uint32_t SettingsTable = 0x10000015;
inline constexpr std::uint32_t BitmapTable = 0x10000016;
inline constexpr std::uint32_t MappingTable = 0x10000025;
inline constexpr std::uint32_t MaterialTable = 0x10000010;
inline constexpr std::uint32_t LineTypeTable = 0x10000023;
inline constexpr std::uint32_t LayerTable = 0x10000011;
inline constexpr std::uint32_t GroupTable = 0x10000018;
inline constexpr std::uint32_t FontTable = 0x10000019;
inline constexpr std::uint32_t DimensionStyleTable = 0x10000020;
inline constexpr std::uint32_t LightTable = 0x10000012;
inline constexpr std::uint32_t HatchPatternTable = 0x10000022;
inline constexpr std::uint32_t DefinitionTable = 0x10000021;
inline constexpr std::uint32_t ObjectTable = 0x10000013;
inline constexpr std::uint32_t HistoryTable = 0x10000026;
inline constexpr std::uint32_t UserTable = 0x10000017;

inline constexpr std::uint32_t LibraryVersion = 0xA0000026; ///< short
inline constexpr std::uint32_t Notes = 0x20008022;
inline constexpr std::uint32_t Application = 0x20008024;
inline constexpr std::uint32_t Units = 0x20008031;
inline constexpr std::uint32_t MaterialRecord = 0x20008040;
inline constexpr std::uint32_t LayerRecord = 0x20008050;
inline constexpr std::uint32_t DefinitionRecord = 0x20008076;
inline constexpr std::uint32_t ObjectRecord = 0x20008070;
inline constexpr std::uint32_t ObjectKind = 0x82000071; ///< short
inline constexpr std::uint32_t ObjectAttributes = 0x02008072;
inline constexpr std::uint32_t AttributesUserData = 0x02000073;
inline constexpr std::uint32_t ObjectRecordEnd = 0x8200007F; ///< short
inline constexpr std::uint32_t UserTableUuid = 0x20008080;
inline constexpr std::uint32_t UserTableData = 0x20000081;

inline constexpr std::uint32_t ShortBit = 0x80000000;
inline constexpr std::uint32_t CrcBit = 0x00008000;
} // namespace code

/// What the chunks of a file share.
struct ArchiveFacts
{
    const char* bytes = nullptr;
    int version = 0;           ///< of the format: 2 to 4, then 50, 60, 70, 80
    std::uint32_t toolkit = 0; ///< that wrote the file; layouts depend on it
    std::size_t budget = 0;    ///< bytes that may still come out of compressed buffers
    int depth = 0;             ///< of the objects that are being read inside each other
};

/// A chunk that is being read, front to back. Every read throws Unreadable where the chunk ends too early, so
/// that no size or count is believed before its bytes are there.
class Chunk
{
public:
    /// A version in front of data: one byte, or two numbers in an anonymous chunk.
    struct Version
    {
        int major = 0;
        int minor = 0;
    };

    Chunk(ArchiveFacts& facts, std::uint32_t typeCode, std::int64_t value, std::size_t begin, std::size_t end)
        : myFacts(&facts), myCode(typeCode), myValue(value), myAt(begin), myEnd(end), myOwnFrom(begin)
    {
    }

    std::uint32_t Code() const { return myCode; }
    bool IsShort() const { return (myCode & code::ShortBit) != 0; }
    std::int64_t Value() const { return myValue; } ///< of a short chunk
    std::size_t Position() const { return myAt; }
    std::size_t Left() const { return myEnd - myAt; }
    bool AtEnd() const { return myAt == myEnd; }
    ArchiveFacts& Facts() const { return *myFacts; }

    template <typename T>
    T Get()
    {
        static_assert(std::is_trivially_copyable_v<T>);
        T value;
        std::memcpy(&value, Take(sizeof(T)).data(), sizeof(T));
        return value;
    }
    std::uint8_t U8() { return Get<std::uint8_t>(); }
    bool Bool() { return U8() != 0; }
    std::int32_t I32() { return Get<std::int32_t>(); }
    std::uint32_t U32() { return Get<std::uint32_t>(); }
    double Double() { return Get<double>(); }
    Uuid Id() { return Get<Uuid>(); }
    Base_UTF16String Text();
    template <std::size_t N>
    std::array<double, N> Doubles()
    {
        return Get<std::array<double, N>>();
    }
    /// A count of four bytes and as many items.
    template <typename T>
    std::vector<T> Array()
    {
        return Items<T>(Count(sizeof(T)));
    }
    template <typename T>
    std::vector<T> Items(std::size_t count)
    {
        Require(count, sizeof(T));
        std::vector<T> items(count);
        if (count > 0) {
            std::memcpy(items.data(), Take(count * sizeof(T)).data(), count * sizeof(T));
        }
        return items;
    }
    /// A count of four bytes, of items that take at least so many bytes each.
    std::size_t Count(std::size_t itemSize);
    std::string_view Take(std::size_t size);
    void Skip(std::size_t size) { Take(size); }
    /// Leaves the rest unread; the checksum then stays untested.
    void SkipRest()
    {
        myAt = myEnd;
        myIsWhole = false;
    }

    Version ByteVersion();
    /// A buffer that may be compressed: its bytes, of which there must be `expected`, or none.
    std::string Buffer(std::size_t expected);

    /// The next chunk inside this one; this one goes on behind it.
    Chunk Child();
    /// The same, which must have this code.
    Chunk Child(std::uint32_t wanted);
    /// An anonymous chunk with its version.
    Chunk Versioned(Version& version);
    void SkipChild() { Child(); }
    /// To be called when all that is wanted has been read: tests the checksum if nothing is left.
    void Finish();

    /// Gives each record of a table to `read`, and finishes it; the table must be closed by its end mark.
    void ForEachRecord(const std::function<void(Chunk& record)>& read);

private:
    void Require(std::size_t count, std::size_t itemSize) const;

    ArchiveFacts* myFacts;
    std::uint32_t myCode;
    std::int64_t myValue;
    std::size_t myAt;
    std::size_t myEnd;
    std::size_t myOwnFrom; ///< own bytes from here on are not in the checksum yet
    std::uint32_t myCrc = 0;
    bool myIsWhole = true;
};

/// The file as a whole: header, tables, end mark.
class Archive
{
public:
    /// Finds the header, which other bytes may precede. Throws Unreadable without one, for version 1 and for
    /// versions to come.
    explicit Archive(std::string_view bytes);

    /// Gives each table to `read`, in order. Throws Unreadable when a size does not fit, a checksum is wrong
    /// or the file's size is not the one in its end mark.
    void ForEachTable(const std::function<void(Chunk& table)>& read);

    ArchiveFacts facts;

private:
    std::size_t mySize;
    std::size_t myFirst; ///< byte of the first chunk
};

} // namespace cadex::rhino
