#include "sdk/jt/JtContainer.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <new>

#include <lzma.h>
#include <zlib.h>

namespace cadex::jt {

namespace {

constexpr std::size_t VersionSize = 80;
constexpr std::size_t SegmentHeadSize = 24;

constexpr std::uint8_t Deflated = 2;
constexpr std::uint8_t Lzma = 3;

constexpr std::size_t FirstPiece = 1 << 16;
/// What a decoder of LZMA may take for itself; encoders' highest settings ask for 65 MB.
constexpr std::uint64_t LzmaMemory = std::uint64_t{256} << 20;

/// Types whose data begin with how they are packed.
bool IsPacked(int type)
{
    return (type >= segment::SceneGraph && type <= segment::MetaData) || type > segment::LastShape;
}

/// Calls `step(out, room)` for ever more room, until it says that the stream has ended. It returns the bytes
/// that it wrote, and whether it is done.
template <typename Step>
void UnpackBy(const Step& step, std::string& unpacked, Budget& budget)
{
    unpacked.clear();
    std::size_t size = 0;
    bool isDone = false;
    while (!isDone) {
        const std::size_t room = std::max(FirstPiece, size);
        budget.Take(room);
        unpacked.resize(size + room);
        size += step(&unpacked[size], room, isDone);
    }
    unpacked.resize(size);
}

void UnpackLzma(std::string_view packed, std::string& unpacked, Budget& budget)
{
    lzma_stream stream = LZMA_STREAM_INIT;
    if (lzma_auto_decoder(&stream, LzmaMemory, 0) != LZMA_OK) {
        throw std::bad_alloc();
    }
    struct End
    {
        lzma_stream& stream;
        ~End() { lzma_end(&stream); }
    } end{stream};
    stream.next_in = reinterpret_cast<const std::uint8_t*>(packed.data());
    stream.avail_in = packed.size();
    const auto step = [&](char* out, std::size_t room, bool& isDone) {
        stream.next_out = reinterpret_cast<std::uint8_t*>(out);
        stream.avail_out = room;
        const lzma_ret result = lzma_code(&stream, LZMA_FINISH);
        isDone = result == LZMA_STREAM_END;
        if (!isDone && (result != LZMA_OK || stream.avail_out != 0)) {
            throw Unreadable("a packed segment is damaged");
        }
        return room - stream.avail_out;
    };
    UnpackBy(step, unpacked, budget);
}

/// A whole zlib stream, whose unpacked size is not told.
void Inflate(std::string_view packed, std::string& unpacked, Budget& budget)
{
    z_stream stream{};
    if (inflateInit(&stream) != Z_OK) {
        throw std::bad_alloc();
    }
    struct End
    {
        z_stream& stream;
        ~End() { inflateEnd(&stream); }
    } end{stream};
    // zlib takes what it reads as not constant, and changes nothing
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
    stream.avail_in = static_cast<uInt>(packed.size());
    const auto step = [&](char* out, std::size_t room, bool& isDone) {
        stream.next_out = reinterpret_cast<Bytef*>(out);
        stream.avail_out = static_cast<uInt>(std::min<std::size_t>(room, std::numeric_limits<uInt>::max()));
        const std::size_t offered = stream.avail_out;
        const int result = inflate(&stream, Z_NO_FLUSH);
        isDone = result == Z_STREAM_END;
        if (!isDone && (result != Z_OK || stream.avail_out != 0)) {
            throw Unreadable("a packed segment is damaged");
        }
        return offered - stream.avail_out;
    };
    UnpackBy(step, unpacked, budget);
}

} // namespace

Container::Container(std::string bytes) : myBytes(std::move(bytes))
{
    ReadHeader();
    mySceneGraph = Find(mySceneGraphId);
    if (mySceneGraph == nullptr || mySceneGraph->type != segment::SceneGraph) {
        throw Unreadable("the file has no scene graph");
    }
}

const Segment* Container::Find(const Guid& id) const
{
    const auto found = mySegments.find(id);
    return found == mySegments.end() ? nullptr : &found->second;
}

/// NOTE: 80 characters "Version 9.5 JT ...", a byte for the order of bytes (0 little), an integer of no use,
/// the offset of the table, the id of the scene graph's segment.
void Container::ReadHeader()
{
    constexpr std::string_view Magic = "Version ";
    int major = 0;
    int minor = 0;
    const char* const end = myBytes.data() + std::min(myBytes.size(), VersionSize);
    if (myBytes.size() < VersionSize + 1 || !myBytes.starts_with(Magic)) {
        throw Unreadable("not a JT file");
    }
    const auto [point, noMajor] = std::from_chars(myBytes.data() + Magic.size(), end, major);
    if (noMajor != std::errc() || point == end || *point != '.' ||
        std::from_chars(point + 1, end, minor).ec != std::errc() || minor < 0 || minor > 9) {
        throw Unreadable("not a JT file");
    }
    if (major < 8 || major > 10) {
        throw Unreadable("JT files of version " + std::to_string(major) + " are not supported");
    }
    myFormat.version = 10 * major + minor;
    const char order = myBytes[VersionSize];
    if (order != 0 && order != 1) {
        throw Unreadable("not a JT file");
    }
    myFormat.isBigEndian = order == 1;
    Bytes head(std::string_view(myBytes).substr(VersionSize + 1), myFormat);
    head.I32();
    const std::uint64_t table = myFormat.IsV10() ? head.U64() : head.U32();
    mySceneGraphId = head.Id();
    if (table >= myBytes.size()) {
        throw Unreadable("the table of segments lies beyond the end of the file");
    }
    ReadTable(static_cast<std::size_t>(table));
}

void Container::ReadTable(std::size_t offset)
{
    const std::string_view whole(myBytes);
    Bytes table(whole.substr(offset), myFormat);
    const std::size_t count = table.Count(myFormat.IsV10() ? 32 : 28);
    for (std::size_t i = 0; i < count; ++i) {
        const Guid id = table.Id();
        const std::uint64_t at = myFormat.IsV10() ? table.U64() : table.U32();
        const std::uint32_t size = table.U32();
        const int type = static_cast<int>(table.U32() >> 24);
        if (at > whole.size() || size > whole.size() - at || size < SegmentHeadSize) {
            throw Unreadable("a segment lies beyond the end of the file");
        }
        Bytes head(whole.substr(static_cast<std::size_t>(at), SegmentHeadSize), myFormat);
        if (head.Id() != id || head.I32() != type) {
            throw Unreadable("a segment is not what the table says");
        }
        mySegments[id] = {type, static_cast<std::size_t>(at) + SegmentHeadSize, size - SegmentHeadSize};
    }
}

Bytes Container::Open(const Segment& segment, std::string& storage, Budget& budget) const
{
    const std::string_view data = std::string_view(myBytes).substr(segment.offset, segment.size);
    if (!IsPacked(segment.type)) {
        return {data, myFormat};
    }
    Bytes in(data, myFormat);
    in.I32(); // whether it is packed; the method says so too
    const std::int32_t size = in.I32();
    const std::uint8_t method = in.U8();
    if (size < 1) {
        throw Unreadable("a segment has a negative size");
    }
    const std::string_view packed = in.Take(static_cast<std::size_t>(size) - 1);
    if (method == Deflated) {
        Inflate(packed, storage, budget);
    } else if (method == Lzma) {
        UnpackLzma(packed, storage, budget);
    } else {
        return {packed, myFormat};
    }
    return {storage, myFormat};
}

} // namespace cadex::jt
