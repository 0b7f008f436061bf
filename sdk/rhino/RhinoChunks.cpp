#include "sdk/rhino/RhinoChunks.h"

#include <algorithm>
#include <charconv>

#include "sdk/text/Inflate.h"

namespace cadex::rhino {

namespace {

constexpr std::string_view Magic = "3D Geometry File Format ";
constexpr std::size_t VersionDigits = 8;
/// What compressed buffers may become: this much for any file, and so many times its size.
constexpr std::size_t LeastBudget = std::size_t{64} << 20;
constexpr std::size_t BudgetFactor = 64;

constexpr std::uint32_t TableKind = 0x10000000;
constexpr std::uint32_t KindMask = 0xF0000000;

} // namespace

void Chunk::Require(std::size_t count, std::size_t itemSize) const
{
    if (itemSize != 0 && count > Left() / itemSize) {
        throw Unreadable("a count is larger than what follows it");
    }
}

std::size_t Chunk::Count(std::size_t itemSize)
{
    const std::int32_t count = I32();
    if (count < 0) {
        throw Unreadable("a count is negative");
    }
    Require(static_cast<std::size_t>(count), itemSize);
    return static_cast<std::size_t>(count);
}

std::string_view Chunk::Take(std::size_t size)
{
    if (size > Left()) {
        throw Unreadable("a chunk ends too early");
    }
    const std::string_view taken(myFacts->bytes + myAt, size);
    myAt += size;
    return taken;
}

Base_UTF16String Chunk::Text()
{
    const std::vector<UTF16> units = Items<UTF16>(Count(sizeof(UTF16)));
    const auto end = std::find(units.begin(), units.end(), UTF16{0});
    return {units.data(), static_cast<std::size_t>(end - units.begin())};
}

Chunk::Version Chunk::ByteVersion()
{
    const std::uint8_t byte = U8();
    return {byte >> 4, byte & 15};
}

std::string Chunk::Buffer(std::size_t expected)
{
    const std::size_t size = U32();
    if (size == 0) {
        return {};
    }
    if (size != expected) {
        throw Unreadable("a buffer has not the size that belongs to it");
    }
    const std::uint32_t crc = U32();
    const std::uint8_t method = U8();
    std::string result;
    if (method == 0) {
        result = Take(size);
    } else if (method == 1) {
        Chunk packed = Child(code::Anonymous);
        const std::string_view bytes = packed.Take(packed.Left());
        if (size > myFacts->budget || !text::CanInflateTo(bytes, size)) {
            throw Unreadable("a compressed buffer claims too much memory");
        }
        myFacts->budget -= size;
        result.resize(size);
        if (!text::Inflate(bytes, text::Packing::Zlib, result)) {
            throw Unreadable("a compressed buffer is damaged");
        }
        packed.Finish();
    } else {
        throw Unreadable("a buffer is packed in an unknown way");
    }
    if (text::Crc32(0, result) != crc) {
        throw Unreadable("the checksum of a buffer is wrong");
    }
    return result;
}

Chunk Chunk::Child()
{
    if ((myCode & code::CrcBit) != 0) {
        myCrc = text::Crc32(myCrc, {myFacts->bytes + myOwnFrom, myAt - myOwnFrom});
    }
    const std::uint32_t typeCode = U32();
    const std::int64_t value = myFacts->version >= 50 ? Get<std::int64_t>() : Get<std::int32_t>();
    const std::size_t begin = myAt;
    std::size_t end = begin;
    if ((typeCode & code::ShortBit) == 0) {
        const std::int64_t checksum = (typeCode & code::CrcBit) != 0 ? 4 : 0;
        if (value < checksum || static_cast<std::uint64_t>(value) > Left()) {
            throw Unreadable("the size of a chunk does not fit into what holds it");
        }
        myAt += static_cast<std::size_t>(value);
        end = myAt - static_cast<std::size_t>(checksum);
    }
    myOwnFrom = myAt;
    return {*myFacts, typeCode, value, begin, end};
}

Chunk Chunk::Child(std::uint32_t wanted)
{
    Chunk child = Child();
    if (child.Code() != wanted) {
        throw Unreadable("a chunk is of another kind than expected");
    }
    return child;
}

Chunk Chunk::Versioned(Version& version)
{
    Chunk child = Child(code::Anonymous);
    version.major = child.I32();
    version.minor = child.I32();
    return child;
}

void Chunk::Finish()
{
    if ((myCode & code::CrcBit) == 0 || IsShort() || !myIsWhole || !AtEnd()) {
        return;
    }
    myCrc = text::Crc32(myCrc, {myFacts->bytes + myOwnFrom, myAt - myOwnFrom});
    myOwnFrom = myAt;
    std::uint32_t stored = 0;
    std::memcpy(&stored, myFacts->bytes + myEnd, sizeof(stored));
    if (stored != myCrc) {
        throw Unreadable("the checksum of a chunk is wrong");
    }
}

void Chunk::ForEachRecord(const std::function<void(Chunk& record)>& read)
{
    while (true) {
        Chunk record = Child();
        if (record.Code() == code::EndOfTable) {
            break;
        }
        read(record);
        record.Finish();
    }
}

Archive::Archive(std::string_view bytes) : mySize(bytes.size())
{
    const std::size_t start = bytes.find(Magic);
    if (start == std::string_view::npos || bytes.size() - start < Magic.size() + VersionDigits) {
        throw Unreadable("not a 3DM file");
    }
    std::string_view digits = bytes.substr(start + Magic.size(), VersionDigits);
    digits.remove_prefix(std::min(digits.find_first_not_of(' '), digits.size()));
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), facts.version);
    if (error != std::errc() || end != digits.data() + digits.size()) {
        throw Unreadable("not a 3DM file");
    }
    if (facts.version == 1) {
        throw Unreadable("3DM files of version 1 are not supported; save the file in a newer version");
    }
    if (facts.version < 2 || facts.version >= 100 || (facts.version > 4 && facts.version < 50)) {
        throw Unreadable("unknown version of 3DM");
    }
    facts.bytes = bytes.data();
    facts.budget = LeastBudget + BudgetFactor * bytes.size();
    myFirst = start + Magic.size() + VersionDigits;
}

void Archive::ForEachTable(const std::function<void(Chunk& table)>& read)
{
    Chunk file(facts, 0, 0, myFirst, mySize);
    Chunk comment = file.Child();
    if (comment.Code() != code::Comment) {
        throw Unreadable("the file does not begin with its comment");
    }
    while (true) {
        Chunk table = file.Child();
        if (table.Code() == code::EndOfFile) {
            const std::size_t header = myFirst - Magic.size() - VersionDigits;
            const std::uint64_t size = table.Left() >= 8 ? table.Get<std::uint64_t>() : table.U32();
            if (size != file.Position() - header) {
                throw Unreadable("the file has not the size that it had when it was written");
            }
            return;
        }
        if (table.IsShort() || (table.Code() & KindMask) != TableKind) {
            throw Unreadable("a table is of an unknown kind");
        }
        read(table);
    }
}

} // namespace cadex::rhino
