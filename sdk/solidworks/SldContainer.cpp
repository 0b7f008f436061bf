#include "sdk/solidworks/SldContainer.h"

#include <algorithm>

namespace cadex::solidworks {

namespace {

/// What packed streams may become: this much for any file, and so many times its size.
constexpr std::size_t LeastBudget = std::size_t{64} << 20;
constexpr std::size_t BudgetFactor = 64;

/// The layout is that of a ZIP archive whose signatures differ from file to file: version 2.0, the tightest
/// packing, deflate.
constexpr std::string_view Marker("\x14\x00\x06\x00\x08\x00", 6);
constexpr std::size_t FileHeader = 8;   ///< places of blocks are counted from behind it
constexpr std::size_t BeforeMarker = 6; ///< of an entry of the directory: signature, version of the writer
constexpr std::size_t EntryName = 40;   ///< from the marker on
constexpr std::size_t BlockMarker = 4;
constexpr std::size_t BlockHeader = 30;

/// Names have the two halves of each byte swapped.
std::string NameOf(std::string_view bytes)
{
    std::string name(bytes);
    for (char& c : name) {
        const auto byte = static_cast<unsigned char>(c);
        c = static_cast<char>(byte >> 4 | (byte & 15) << 4);
    }
    return name;
}

} // namespace

Container::Container(std::string_view bytes)
    : myBytes(bytes), myBudget(std::max(LeastBudget, bytes.size() * BudgetFactor))
{
    if (CompoundFile::IsOne(bytes)) {
        myCompound.emplace(bytes);
    } else {
        ReadDirectory();
    }
}

/// Takes the entry of the directory whose marker lies there; false when it is none, or not that of the block
/// which it names.
bool Container::ReadEntry(std::size_t marker, std::size_t& end)
{
    if (marker < BeforeMarker || !solidworks::Has(myBytes, marker, EntryName)) {
        return false;
    }
    const std::string_view entry = myBytes.substr(marker);
    const std::size_t nameSize = ValueAt<std::uint16_t>(entry, 22);
    const std::size_t place = ValueAt<std::uint32_t>(entry, 36) + FileHeader;
    end = marker + EntryName + nameSize;
    if (nameSize == 0 || end > myBytes.size() || place >= marker ||
        !solidworks::Has(myBytes, place, BlockHeader + nameSize)) {
        return false;
    }
    // marker, time, checksum, sizes and the length of the name stand in both, and so does the name
    const std::string_view block = myBytes.substr(place);
    constexpr std::size_t Common = 24;
    if (block.substr(BlockMarker, Common) != entry.substr(0, Common) ||
        block.substr(BlockHeader, nameSize) != entry.substr(EntryName, nameSize)) {
        return false;
    }
    Block found;
    found.crc = ValueAt<std::uint32_t>(entry, 10);
    found.packed = ValueAt<std::uint32_t>(entry, 14);
    found.size = ValueAt<std::uint32_t>(entry, 18);
    found.data = place + BlockHeader + nameSize + ValueAt<std::uint16_t>(block, 28);
    if (!solidworks::Has(myBytes, found.data, found.packed)) {
        return false;
    }
    myBlocks.emplace(NameOf(entry.substr(EntryName, nameSize)), found);
    return true;
}

/// Blocks stand between bytes without meaning, among them headers of blocks that are not there; so what
/// counts is the directory, whose entries have one signature and lie one behind the other.
void Container::ReadDirectory()
{
    bool hasMarkers = false;
    std::size_t behind = 0; // the entries so far
    std::size_t entries = 0;
    std::string_view signature;
    for (std::size_t at = myBytes.find(Marker); at != std::string_view::npos;
         at = myBytes.find(Marker, at + 1)) {
        hasMarkers = true;
        std::size_t end = 0;
        if (!ReadEntry(at, end)) {
            continue;
        }
        const std::size_t begin = at - BeforeMarker;
        if (behind != 0 && begin != behind) {
            throw Unreadable("the directory of the file is damaged");
        }
        signature = myBytes.substr(begin, BeforeMarker + Marker.size());
        behind = end;
        ++entries;
    }
    if (entries == 0) {
        throw Unreadable(hasMarkers ? "the file has no directory: it is cut or damaged"
                                    : "not a SolidWorks document");
    }
    for (std::size_t at = myBytes.find(signature); at != std::string_view::npos;
         at = myBytes.find(signature, at + 1)) {
        if (entries-- == 0) {
            throw Unreadable("an entry of the directory is not that of its block");
        }
    }
}

bool Container::Has(const std::string& name) const
{
    if (!myCompound) {
        return myBlocks.count(name) != 0;
    }
    return myCompound->Streams().count(name) != 0 || myCompound->Streams().count(name + "__ZLB") != 0;
}

std::optional<std::string> Container::Read(const std::string& name)
{
    if (!myCompound) {
        const auto found = myBlocks.find(name);
        if (found == myBlocks.end()) {
            return std::nullopt;
        }
        const Block& block = found->second;
        std::string bytes =
            Inflate(myBytes.substr(block.data, block.packed), block.size, text::Packing::Raw, myBudget);
        if (text::Crc32(0, bytes) != block.crc) {
            throw Unreadable("the checksum of a block is wrong");
        }
        return bytes;
    }
    for (const char* suffix : {"", "__ZLB"}) {
        const auto found = myCompound->Streams().find(name + suffix);
        if (found != myCompound->Streams().end()) {
            std::string bytes = myCompound->BytesOf(found->second);
            std::size_t at = 0;
            return IsWrapped(bytes) ? Unwrap(bytes, at, myBudget) : std::move(bytes);
        }
    }
    return std::nullopt;
}

} // namespace cadex::solidworks
