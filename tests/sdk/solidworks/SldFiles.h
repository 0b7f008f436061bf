// SolidWorks files in memory: archives of blocks, compound files, display lists and trees of components, in
// the layouts that the reader knows.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <zlib.h>

#include <cadex/SLD_Reader.hxx>

#include "tests/support/DamagedFiles.h"

namespace sldtest {

template <typename T>
std::string Raw(T value)
{
    std::string bytes(sizeof(T), '\0');
    std::memcpy(bytes.data(), &value, sizeof(T));
    return bytes;
}
inline std::string U16(unsigned value)
{
    return Raw(static_cast<std::uint16_t>(value));
}
inline std::string U32(std::size_t value)
{
    return Raw(static_cast<std::uint32_t>(value));
}

/// Deflate, raw or in a zlib stream.
inline std::string Packed(const std::string& bytes, bool isRaw)
{
    z_stream stream{};
    deflateInit2(&stream, 9, Z_DEFLATED, isRaw ? -MAX_WBITS : MAX_WBITS, 8, Z_DEFAULT_STRATEGY);
    std::string packed(deflateBound(&stream, static_cast<uLong>(bytes.size())), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
    stream.avail_in = static_cast<uInt>(bytes.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    deflate(&stream, Z_FINISH);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

inline std::string Wrapped(const std::string& bytes)
{
    const std::string packed = Packed(bytes, false);
    return std::string("\x23\x1d\xd5\x71\xda\x81\x48\xa2\xa8\x58\x98\xb2\x1b\x89\xef\x99", 16) +
           U32(bytes.size()) + U32(packed.size()) + packed;
}

using Streams = std::vector<std::pair<std::string, std::string>>;

/// Blocks, between which stand headers of blocks that are not there, and their directory.
inline std::string Archive(const Streams& streams)
{
    const std::string marker("\x14\x00\x06\x00\x08\x00", 6);
    std::string file("\x11\x22\x33\x44\x00\x00\x00\x04", 8);
    std::string directory;
    for (const auto& [name, bytes] : streams) {
        file += "?????" + marker + "time" + U32(1760) + U32(440) + U32(880) + U32(10) + "0123456789";
        std::string swapped = name;
        for (char& c : swapped) {
            const auto byte = static_cast<unsigned char>(c);
            c = static_cast<char>(byte >> 4 | (byte & 15) << 4);
        }
        const std::string packed = Packed(bytes, true);
        const auto crc =
            crc32(0, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uInt>(bytes.size()));
        const std::string common = marker + "time" + U32(crc) + U32(packed.size()) + U32(bytes.size()) +
                                   U16(swapped.size()) + U16(0);
        directory += "DIR!" + U16(0) + common + std::string(10, '\0') + U32(file.size() - 8) + swapped;
        file += "BLK!" + common + swapped + packed;
    }
    return file + directory + "END!" + std::string(40, 'x');
}

/// A compound file of sectors of 512 bytes: table, directory, small sectors, their table, large streams.
inline std::string Compound(const Streams& streams)
{
    constexpr std::uint32_t End = 0xFFFFFFFE;
    constexpr std::size_t Sector = 512;
    constexpr std::size_t SmallSector = 64;
    constexpr std::size_t SmallLimit = 4096;
    const auto padded = [](std::string bytes, std::size_t size) {
        bytes.resize((bytes.size() + size - 1) / size * size);
        return bytes;
    };
    std::vector<std::uint32_t> table(1, 0xFFFFFFFD); // of the sector that is the table itself
    std::string sectors;
    const auto addChain = [&](const std::string& bytes) {
        const std::string whole = padded(bytes, Sector);
        const auto first = static_cast<std::uint32_t>(table.size());
        for (std::size_t i = 1; i <= whole.size() / Sector; ++i) {
            table.push_back(i == whole.size() / Sector ? End : first + static_cast<std::uint32_t>(i));
        }
        sectors += whole;
        return whole.empty() ? End : first;
    };
    std::string small;
    std::string smallTable;
    std::string directory;
    const auto addEntry = [&](const std::string& name, char kind, std::uint32_t right, std::uint32_t child,
                              std::uint32_t first, std::size_t size) {
        std::string entry(128, '\0');
        for (std::size_t i = 0; i < name.size(); ++i) {
            entry[2 * i] = name[i];
        }
        entry.replace(64, 2, U16(2 * name.size() + 2));
        entry[66] = kind;
        entry.replace(68, 12, U32(0xFFFFFFFF) + U32(right) + U32(child));
        entry.replace(116, 8, U32(first) + U32(size));
        directory += entry;
    };
    std::vector<std::array<std::size_t, 2>> places;
    for (const auto& [name, bytes] : streams) {
        if (bytes.size() >= SmallLimit) {
            places.push_back({addChain(bytes), bytes.size()});
            continue;
        }
        const std::size_t first = small.size() / SmallSector;
        small += padded(bytes, SmallSector);
        for (std::size_t next = first + 1; next <= small.size() / SmallSector; ++next) {
            smallTable += U32(next == small.size() / SmallSector ? End : next);
        }
        places.push_back({bytes.empty() ? End : first, bytes.size()});
    }
    addEntry("Root Entry", 5, 0xFFFFFFFF, 1, addChain(small), small.size());
    // each stream to the right of the one before; those of the folder hang on it the same way
    const std::string folder = "Contents/";
    std::vector<std::size_t> inside;
    std::vector<std::size_t> beside;
    for (std::size_t i = 0; i < streams.size(); ++i) {
        (streams[i].first.starts_with(folder) ? inside : beside).push_back(i);
    }
    const std::size_t firstBeside = 2 + inside.size();
    addEntry("Contents", 1, beside.empty() ? 0xFFFFFFFF : static_cast<std::uint32_t>(firstBeside),
             inside.empty() ? 0xFFFFFFFF : 2, 0, 0);
    const auto addAll = [&](const std::vector<std::size_t>& group, std::size_t number) {
        for (std::size_t i = 0; i < group.size(); ++i) {
            const std::string& name = streams[group[i]].first;
            addEntry(name.substr(name.starts_with(folder) ? folder.size() : 0), 2,
                     i + 1 < group.size() ? static_cast<std::uint32_t>(number + i + 1) : 0xFFFFFFFF,
                     0xFFFFFFFF, static_cast<std::uint32_t>(places[group[i]][0]), places[group[i]][1]);
        }
    };
    addAll(inside, 2);
    addAll(beside, firstBeside);
    const std::uint32_t directoryAt = addChain(directory);
    const std::uint32_t smallTableAt = addChain(smallTable);
    std::string header("\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1", 8);
    header += std::string(16, '\0') + U16(62) + U16(3) + U16(0xFFFE) + U16(9) + U16(6) + std::string(6, '\0');
    header += U32(0) + U32(1) + U32(directoryAt) + U32(0) + U32(SmallLimit) + U32(smallTableAt) + U32(1) +
              U32(End) + U32(0) + U32(0);
    header.resize(Sector, '\xFF');
    std::string tableBytes;
    for (const std::uint32_t next : table) {
        tableBytes += U32(next);
    }
    tableBytes.resize(Sector, '\xFF');
    return header + tableBytes + sectors;
}

/// The mark, the count, two bytes a character.
inline std::string Text(std::string_view ascii)
{
    std::string bytes = "\xff\xfe\xff";
    bytes += static_cast<char>(ascii.size());
    for (const char c : ascii) {
        bytes += c;
        bytes += '\0';
    }
    return bytes;
}

using Points = std::vector<std::array<float, 3>>; ///< metres

inline std::string ArrayOf(std::size_t itemSize, std::size_t kind, const std::string& items)
{
    return U32(itemSize) + U32(kind) + U32(2) + U32(items.size() / itemSize) + items;
}

inline std::string Class(std::string_view name)
{
    return U16(0xFFFF) + U16(1) + U16(name.size()) + std::string(name);
}

/// The display list of a document, written front to back.
class DisplayText
{
public:
    std::string bytes = std::string(24, '\x01');

    /// Of the next body: how many faces it has.
    void Body(std::size_t faces)
    {
        bytes += myIsFirst ? Class("uoTempBodyTessData_c") : U16(0x8022);
        bytes += U16(faces);
    }
    void Face(const std::vector<std::uint32_t>& strips, const Points& points, const Points& normals)
    {
        bytes += myIsFirst ? Class("uoTempFaceTessData_c") : U16(0x8024);
        myIsFirst = false;
        bytes += U32(points.size() - 2 * strips.size()) + U32(strips.size());
        std::string lengths;
        for (const std::uint32_t length : strips) {
            lengths += U32(length);
        }
        bytes += ArrayOf(4, 8, lengths) + ArrayOf(12, 100, Items(points)) + ArrayOf(12, 100, Items(normals));
        bytes += ArrayOf(4, 8, U32(4)) + ArrayOf(4, 8, U32(4)) + ArrayOf(1, 8, std::string(4, '\0'));
        bytes += std::string(40, '\0');
    }
    /// Of the document, the face before, or, with a name or behind the last face, the body.
    void Look(std::uint32_t colour, double transparency, std::string_view material,
              std::string_view body = {})
    {
        bytes +=
            (body.empty() ? std::string() : Text(body)) + U32(0) + U32(1) + U32(0xFFFFFFFF) + U16(0x8034);
        bytes += U32(colour) + U32(0) + U32(0xC0C0C0) + Text("") + Text(material);
        for (const double number : {1., 1., .5, .4, transparency, 0.}) {
            bytes += Raw(number);
        }
        bytes += U32(0) + U32(1);
    }
    /// Rows of the rotation (empty: none), metres.
    void Component(std::string_view name, const std::vector<double>& rotation,
                   const std::array<double, 3>& place, std::string_view configuration, std::string_view model)
    {
        bytes += U16(0x8038) + Text(name) + (rotation.empty() ? '\0' : '\1');
        for (const double number : rotation) {
            bytes += Raw(number);
        }
        for (const double number : place) {
            bytes += Raw(number);
        }
        bytes += Raw(1.) + std::string(64, '\0') + Text(configuration) + std::string(10, '\0') + Text(model);
        bytes += Text("C:\\parts\\" + std::string(model) + ".SLDPRT") + std::string(40, '\0');
    }

private:
    static std::string Items(const Points& points)
    {
        std::string items;
        for (const auto& point : points) {
            for (const float value : point) {
                items += Raw(value);
            }
        }
        return items;
    }

    bool myIsFirst = true;
};

/// The faces of a box from the origin, each a strip of four corners with its normal.
inline void AddBox(DisplayText& list, float x, float y, float z)
{
    const auto face = [&](const std::array<float, 3>& at, const std::array<float, 3>& u,
                          const std::array<float, 3>& v) {
        Points points;
        for (const auto& [a, b] : {std::pair(0.F, 0.F), {1.F, 0.F}, {0.F, 1.F}, {1.F, 1.F}}) {
            points.push_back(
                {at[0] + a * u[0] + b * v[0], at[1] + a * u[1] + b * v[1], at[2] + a * u[2] + b * v[2]});
        }
        const std::array<float, 3> n{u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2],
                                     u[0] * v[1] - u[1] * v[0]};
        const float size = n[0] * n[0] + n[1] * n[1] + n[2] * n[2];
        const float length = std::sqrt(size);
        list.Face({4}, points, Points(4, {n[0] / length, n[1] / length, n[2] / length}));
    };
    face({0, 0, 0}, {0, y, 0}, {x, 0, 0});
    face({0, 0, z}, {x, 0, 0}, {0, y, 0});
    face({0, 0, 0}, {x, 0, 0}, {0, 0, z});
    face({0, y, 0}, {0, 0, z}, {x, 0, 0});
    face({0, 0, 0}, {0, 0, z}, {0, y, 0});
    face({x, 0, 0}, {0, y, 0}, {0, 0, z});
}

inline std::optional<cadex::ModelData_Model> Read(const std::string& bytes)
{
    return cadex::test::ReadBytes<cadex::SLD_Reader>(bytes);
}

} // namespace sldtest
