#include "sdk/solidworks/CompoundFile.h"

#include <algorithm>
#include <limits>

namespace cadex::solidworks {

namespace {

constexpr std::string_view Magic("\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1", 8);
constexpr std::size_t HeaderSize = 512;
constexpr std::size_t EntrySize = 128;
constexpr std::size_t TableInHeader = 109;      ///< sectors of the table that the header itself names
constexpr std::uint32_t FirstMark = 0xFFFFFFFA; ///< from here on numbers are no sectors
constexpr std::uint32_t NoEntry = 0xFFFFFFFF;
constexpr std::uint64_t Whole = std::numeric_limits<std::uint64_t>::max();
constexpr std::uint8_t Folder = 1;
constexpr std::uint8_t StreamKind = 2;

std::uint32_t U32(std::string_view bytes, std::size_t at)
{
    return ValueAt<std::uint32_t>(bytes, at);
}

} // namespace

struct CompoundFile::Entry
{
    std::string name;
    std::uint8_t kind = 0;
    std::uint32_t left = NoEntry;
    std::uint32_t right = NoEntry;
    std::uint32_t child = NoEntry;
    Stream stream;
};

bool CompoundFile::IsOne(std::string_view bytes)
{
    return bytes.substr(0, Magic.size()) == Magic;
}

CompoundFile::CompoundFile(std::string_view bytes) : myBytes(bytes)
{
    if (!IsOne(bytes) || bytes.size() < HeaderSize) {
        throw Unreadable("the compound file ends in its header");
    }
    const auto shift = ValueAt<std::uint16_t>(bytes, 30);
    const auto smallShift = ValueAt<std::uint16_t>(bytes, 32);
    if ((shift != 9 && shift != 12) || smallShift != 6) {
        throw Unreadable("the compound file has sectors of an unknown size");
    }
    mySectorSize = std::size_t{1} << shift;
    mySmallLimit = U32(bytes, 56);
    ReadTable();
    ReadDirectory();
}

std::string_view CompoundFile::SectorAt(std::uint32_t sector) const
{
    const std::size_t at = (std::size_t{sector} + 1) * mySectorSize;
    if (at >= myBytes.size()) { // the last one may be cut
        throw Unreadable("a sector lies behind the end of the compound file");
    }
    return myBytes.substr(at, mySectorSize);
}

void CompoundFile::ReadTable()
{
    const std::size_t most = myBytes.size() / mySectorSize + 1;
    std::vector<std::uint32_t> sectors;
    const auto add = [&](std::string_view list, std::size_t count, std::size_t at) {
        for (std::size_t i = 0; i < count; ++i) {
            const std::uint32_t sector = U32(list, at + 4 * i);
            if (sector < FirstMark) {
                sectors.push_back(sector);
            }
        }
        if (sectors.size() > most) {
            throw Unreadable("the table of the compound file is larger than the file");
        }
    };
    add(myBytes, TableInHeader, 76);
    const std::size_t perSector = mySectorSize / 4;
    std::size_t lists = 0;
    for (std::uint32_t next = U32(myBytes, 68); next < FirstMark;) {
        const std::string_view list = SectorAt(next);
        add(list, perSector - 1, 0);
        next = U32(list, mySectorSize - 4);
        if (++lists > most) {
            throw Unreadable("the table of the compound file has no end");
        }
    }
    myNext.reserve(sectors.size() * perSector);
    for (const std::uint32_t sector : sectors) {
        const std::string_view list = SectorAt(sector);
        for (std::size_t i = 0; i < perSector; ++i) {
            myNext.push_back(list.size() >= 4 * i + 4 ? U32(list, 4 * i) : NoEntry);
        }
    }
}

std::string CompoundFile::Chain(std::uint32_t first, std::uint64_t size) const
{
    std::string result;
    if (size != Whole) {
        if (size > myBytes.size()) {
            throw Unreadable("a stream is larger than the compound file");
        }
        result.reserve(static_cast<std::size_t>(size));
    }
    const std::size_t most = myBytes.size() / mySectorSize + 1;
    std::size_t sectors = 0;
    for (std::uint32_t sector = first; sector < FirstMark && result.size() < size; ++sectors) {
        if (sector >= myNext.size() || sectors > most) {
            throw Unreadable("a chain of sectors leads nowhere or has no end");
        }
        result += SectorAt(sector);
        sector = myNext[sector];
    }
    if (size != Whole) {
        if (result.size() < size) {
            throw Unreadable("a stream ends too early");
        }
        result.resize(static_cast<std::size_t>(size));
    }
    return result;
}

std::string CompoundFile::SmallChain(std::uint32_t first, std::uint32_t size) const
{
    if (size > mySmallSectors.size()) {
        throw Unreadable("a small stream is larger than all of them");
    }
    std::string result;
    std::size_t sectors = 0;
    for (std::uint32_t sector = first; sector < FirstMark && result.size() < size; ++sectors) {
        if (sector >= myNextSmall.size() || sectors > myNextSmall.size() ||
            !Has(mySmallSectors, sector * mySmallSize, 1)) {
            throw Unreadable("a chain of small sectors leads nowhere or has no end");
        }
        result.append(mySmallSectors, sector * mySmallSize, mySmallSize);
        sector = myNextSmall[sector];
    }
    if (result.size() < size) {
        throw Unreadable("a small stream ends too early");
    }
    result.resize(size);
    return result;
}

std::string CompoundFile::BytesOf(const Stream& stream) const
{
    return stream.size < mySmallLimit ? SmallChain(stream.first, stream.size)
                                      : Chain(stream.first, stream.size);
}

/// The directory is a tree of entries, each with those beside it to the left and right and those in it.
void CompoundFile::ReadDirectory()
{
    const std::string directory = Chain(U32(myBytes, 48), Whole);
    std::vector<Entry> entries(directory.size() / EntrySize);
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const std::string_view bytes = std::string_view(directory).substr(i * EntrySize, EntrySize);
        const std::size_t nameSize = std::min<std::size_t>(ValueAt<std::uint16_t>(bytes, 64), 64);
        Entry& entry = entries[i];
        entry.name = Utf16At(bytes, 0, nameSize < 2 ? 0 : nameSize / 2 - 1).ToUTF8();
        entry.kind = ValueAt<std::uint8_t>(bytes, 66);
        entry.left = U32(bytes, 68);
        entry.right = U32(bytes, 72);
        entry.child = U32(bytes, 76);
        entry.stream = {U32(bytes, 116), U32(bytes, 120)};
    }
    if (entries.empty()) {
        throw Unreadable("the compound file has no directory");
    }
    mySmallSectors = Chain(entries[0].stream.first, entries[0].stream.size);
    const std::string smallTable = Chain(U32(myBytes, 60), Whole);
    myNextSmall.resize(smallTable.size() / 4);
    for (std::size_t i = 0; i < myNextSmall.size(); ++i) {
        myNextSmall[i] = U32(smallTable, 4 * i);
    }

    std::vector<std::pair<std::uint32_t, std::string>> open{{entries[0].child, std::string()}};
    std::vector<bool> seen(entries.size());
    while (!open.empty()) {
        const auto [index, folder] = std::move(open.back());
        open.pop_back();
        if (index >= entries.size() || seen[index]) {
            continue;
        }
        seen[index] = true;
        const Entry& entry = entries[index];
        open.emplace_back(entry.left, folder);
        open.emplace_back(entry.right, folder);
        if (entry.kind == Folder) {
            open.emplace_back(entry.child, folder + entry.name + "/");
        } else if (entry.kind == StreamKind) {
            myStreams.emplace(folder + entry.name, entry.stream);
        }
    }
}

} // namespace cadex::solidworks
