#include "common/image/ExrHeader.h"

#include "common/image/ImageFiles.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

namespace Zemtar::ImageFiles {
namespace {

// NOTE: layout by "OpenEXR File Layout": a magic number and a version word; then attributes, each a name, a
// type, a size and a value, ended by an empty name; little-endian. Multi-part files have one list after
// another, the last empty.

constexpr std::uint32_t kMagic = 20000630;
constexpr std::uint32_t kMultiPart = 0x1000;

/// Scan lines in a chunk, by compression; those of later compressions are at most 256.
constexpr std::array<qint64, 9> kLinesPerChunk = {1, 1, 1, 16, 32, 16, 32, 32, 32};
constexpr qint64 kMostLinesPerChunk = 256;
constexpr qint64 kBytesPerChunk = 16; ///< its place in the table, its position and size

/// Reads a header field by field; after the first field that is not there, everything is 0 and IsGood false.
class Fields
{
public:
    Fields(std::FILE* file, long size) : m_file(file), m_size(size) { std::rewind(file); }

    bool IsGood() const { return m_isGood; }

    int Byte()
    {
        const int byte = m_isGood ? std::fgetc(m_file) : EOF;
        m_isGood = byte != EOF;
        return m_isGood ? byte : 0;
    }

    std::uint32_t Word()
    {
        std::uint32_t value = 0;
        for (int shift = 0; shift < 32; shift += 8) {
            value |= static_cast<std::uint32_t>(Byte()) << shift;
        }
        return value;
    }

    std::string Text()
    {
        constexpr std::size_t kLongest = 255;
        std::string text;
        for (int byte = Byte(); byte != 0; byte = Byte()) {
            text += static_cast<char>(byte);
            m_isGood = m_isGood && text.size() <= kLongest;
        }
        return text;
    }

    long Position() const { return std::ftell(m_file); }

    /// Goes to the end of a value that began at `start`; it must lie within the file.
    void EndValue(long start, std::uint32_t size)
    {
        m_isGood = m_isGood && size <= static_cast<std::uint32_t>(m_size - start) &&
                   std::fseek(m_file, start + static_cast<long>(size), SEEK_SET) == 0;
    }

private:
    std::FILE* m_file;
    long m_size;
    bool m_isGood = true;
};

/// What a header says about size, as far as the plausibility of a file depends on it.
struct Window
{
    qint64 width = 0, height = 0;
    qint64 tileWidth = 0, tileHeight = 0; ///< 0 for scan lines
    qint64 linesPerChunk = kMostLinesPerChunk;

    qint64 Chunks() const
    {
        const auto parts = [](qint64 whole, qint64 part) { return (whole + part - 1) / part; };
        return tileWidth > 0 && tileHeight > 0 ? parts(width, tileWidth) * parts(height, tileHeight)
                                               : parts(height, linesPerChunk);
    }
};

/// Sizes of the values that are all of one size.
struct FixedSize
{
    std::string_view type;
    std::uint32_t size;
};
constexpr FixedSize kFixedSizes[] = {
    {"box2f", 16},
    {"box2i", 16},
    {"chromaticities", 32},
    {"compression", 1},
    {"deepImageState", 1},
    {"double", 8},
    {"envmap", 1},
    {"float", 4},
    {"int", 4},
    {"keycode", 28},
    {"lineOrder", 1},
    {"m33d", 72},
    {"m33f", 36},
    {"m44d", 128},
    {"m44f", 64},
    {"rational", 8},
    {"tiledesc", 9},
    {"timecode", 8},
    {"v2d", 16},
    {"v2f", 8},
    {"v2i", 8},
    {"v3d", 24},
    {"v3f", 12},
    {"v3i", 12},
};

/// The size by what a value of a type holds: decoders go by that, not by the size in the file. No more than
/// one byte beyond `size` is looked at.
std::uint64_t sizeByContent(Fields& fields, const std::string& type, std::uint32_t size)
{
    const long start = fields.Position();
    const auto taken = [&] { return static_cast<std::uint32_t>(fields.Position() - start); };
    const auto* fixed = std::find_if(std::begin(kFixedSizes), std::end(kFixedSizes),
                                     [&](const FixedSize& each) { return each.type == type; });
    if (fixed != std::end(kFixedSizes)) {
        return fixed->size;
    }
    if (type == "chlist") {
        constexpr int kChannelWords = 4; // kind, linearity, sampling in x and y
        while (fields.IsGood() && taken() < size && !fields.Text().empty()) {
            for (int i = 0; i < kChannelWords; ++i) {
                fields.Word();
            }
        }
        return taken();
    }
    if (type == "preview") {
        const std::uint64_t pixels = std::uint64_t{fields.Word()} * fields.Word();
        return pixels < size ? taken() + 4 * pixels : std::uint64_t{size} + 1;
    }
    if (type == "stringvector") {
        while (fields.IsGood() && taken() < size) {
            const std::uint32_t length = fields.Word();
            fields.EndValue(fields.Position(), length);
        }
        return taken();
    }
    return size;
}

void readValue(Fields& fields, const std::string& name, Window& window)
{
    if (name == "dataWindow") {
        std::array<qint64, 4> box;
        for (qint64& side : box) {
            side = static_cast<std::int32_t>(fields.Word());
        }
        window.width = box[2] - box[0] + 1;
        window.height = box[3] - box[1] + 1;
    } else if (name == "tiles") {
        window.tileWidth = fields.Word();
        window.tileHeight = fields.Word();
    } else if (name == "compression") {
        const auto kind = static_cast<std::size_t>(fields.Byte());
        window.linesPerChunk = kind < kLinesPerChunk.size() ? kLinesPerChunk[kind] : kMostLinesPerChunk;
    }
}

} // namespace

bool isCredibleExrHeader(std::FILE* file, long fileSize)
{
    Fields fields(file, fileSize);
    const bool isExr = fields.Word() == kMagic;
    const bool hasMoreParts = (fields.Word() & kMultiPart) != 0;
    for (std::string name = fields.Text(); isExr && fields.IsGood() && !name.empty();
         name = hasMoreParts ? fields.Text() : std::string()) {
        Window window;
        for (; fields.IsGood() && !name.empty(); name = fields.Text()) {
            const std::string type = fields.Text();
            const std::uint32_t size = fields.Word();
            const long start = fields.Position();
            if (sizeByContent(fields, type, size) != size) {
                return false;
            }
            fields.EndValue(start, 0);
            readValue(fields, name, window);
            fields.EndValue(start, size);
        }
        if (!fields.IsGood() || !isPossibleSize(window.width, window.height) ||
            window.Chunks() > fileSize / kBytesPerChunk) {
            return false;
        }
    }
    return isExr && fields.IsGood();
}

} // namespace Zemtar::ImageFiles
