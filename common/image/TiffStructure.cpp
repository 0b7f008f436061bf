// TIFF: the first directory of a file, as far as FreeImage's reader has to be able to believe it. The codings
// themselves are those of libtiff, which looks after itself.

#include "common/image/ImageFiles.h"
#include "common/image/PictureBytes.h"
#include "common/image/PictureStructure.h"

#include <algorithm>
#include <array>
#include <map>

namespace Zemtar::ImageFiles {
namespace {

enum Tag : unsigned
{
    Width = 256,
    Height = 257,
    BitsPerSample = 258,
    Photometric = 262,
    SamplesPerPixel = 277,
    RowsPerStrip = 278,
    Planar = 284,
    ColorMap = 320,
    TileWidth = 322,
    TileHeight = 323,
};

/// What pixels depend on. Thumbnails, metadata and further directories have readers of their own, and are
/// left out.
constexpr std::array<unsigned, 37> kTagsOfPixels = {
    Width,        Height, BitsPerSample, 259, Photometric, 266, 273, 274,      SamplesPerPixel,
    RowsPerStrip, 279,    Planar,        292, 293,         317, 318, ColorMap, TileWidth,
    TileHeight,   324,    325,           332, 334,         338, 339, 347,      512,
    513,          514,    519,           520, 521,         529, 530, 531,      532,
    37439};

constexpr unsigned kShort = 3;

enum PhotometricKind : unsigned
{
    WhiteIsZero = 0,
    BlackIsZero = 1,
    Rgb = 2,
    Palette = 3,
    Separated = 5,
    YCbCr = 6,
    CieLab = 8,
    IccLab = 9,
    ItuLab = 10,
    LogLuv = 32845,
};

struct Entry
{
    QByteArray bytes; ///< as in the directory
    std::uint64_t count = 0;
    std::uint64_t value = 0; ///< the first
};

/// The directory of a classic or a big file in either order of bytes.
class Directory
{
public:
    explicit Directory(const QByteArray& bytes) : m_bytes(bytes), m_file(bytes)
    {
        m_isLittle = bytes.startsWith("II");
        m_file.Skip(2);
        const std::uint64_t version = Number(2);
        m_isBig = version == 43;
        if (m_isBig) {
            m_file.Skip(4);
        }
        m_isGood = (m_isLittle || bytes.startsWith("MM")) && (m_isBig || version == 42);
        Seek(Number(PlaceBytes()));
        const std::uint64_t count = Number(m_isBig ? 8 : 2);
        for (std::uint64_t i = 0; i < count && IsGood(); ++i) {
            ReadEntry();
        }
    }

    bool IsGood() const { return m_isGood && m_file.IsGood(); }
    bool Has(unsigned tag) const { return m_entries.count(tag) > 0; }
    std::uint64_t Count(unsigned tag) const { return Has(tag) ? m_entries.at(tag).count : 0; }
    std::uint64_t Value(unsigned tag, std::uint64_t missing) const
    {
        return Has(tag) ? m_entries.at(tag).value : missing;
    }

    /// The file with a directory of the tags of pixels alone, which names the samples a pixel in any case:
    /// without, FreeImage takes grey for grey and alpha.
    QByteArray WithPixelsAlone() const
    {
        std::map<unsigned, Entry> entries = m_entries;
        entries.try_emplace(SamplesPerPixel, Entry{OneSample(), 1, 1});
        QByteArray texts;
        std::uint64_t count = 0;
        for (const auto& [tag, entry] : entries) {
            if (std::find(kTagsOfPixels.begin(), kTagsOfPixels.end(), tag) != kTagsOfPixels.end()) {
                texts += entry.bytes;
                ++count;
            }
        }
        QByteArray file = m_bytes;
        file += QByteArray(file.size() % 2, '\0'); // directories begin at even places
        const QByteArray place = Text(static_cast<std::uint64_t>(file.size()), PlaceBytes());
        file.replace(m_isBig ? 8 : 4, PlaceBytes(), place);
        return file + Text(count, m_isBig ? 8 : 2) + texts + QByteArray(PlaceBytes(), '\0');
    }

private:
    int PlaceBytes() const { return m_isBig ? 8 : 4; }

    void Seek(std::uint64_t place)
    {
        constexpr std::uint64_t kFarthest = std::uint64_t{1} << 62;
        m_file.Seek(static_cast<qint64>(std::min(place, kFarthest)));
    }

    std::uint64_t Number(int bytes)
    {
        std::uint64_t value = 0;
        for (int i = 0; i < bytes; ++i) {
            const std::uint64_t byte = m_file.Byte();
            value = m_isLittle ? value | (byte << (8 * i)) : (value << 8) | byte;
        }
        return value;
    }

    QByteArray Text(std::uint64_t value, int bytes) const
    {
        QByteArray text(bytes, '\0');
        for (int i = 0; i < bytes; ++i) {
            text[m_isLittle ? i : bytes - 1 - i] = static_cast<char>(value >> (8 * i));
        }
        return text;
    }

    QByteArray OneSample() const
    {
        return Text(SamplesPerPixel, 2) + Text(kShort, 2) + Text(1, PlaceBytes()) + Text(1, 2) +
               QByteArray(PlaceBytes() - 2, '\0');
    }

    void ReadEntry()
    {
        constexpr std::array<int, 19> kTypeBytes = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4, 0, 0, 8, 8, 8};
        const qint64 start = m_file.Position();
        const auto tag = static_cast<unsigned>(Number(2));
        const auto type = static_cast<std::size_t>(Number(2));
        Entry entry;
        entry.count = Number(PlaceBytes());
        const qint64 inlined = m_file.Position();
        const int bytes = type < kTypeBytes.size() ? kTypeBytes[type] : 0;
        const bool isElsewhere = bytes > 0 && entry.count > std::uint64_t(PlaceBytes() / bytes);
        if (isElsewhere) {
            Seek(Number(PlaceBytes()));
            const auto left = static_cast<std::uint64_t>(m_file.Left());
            m_isGood = m_isGood && entry.count <= left / static_cast<std::uint64_t>(bytes);
        }
        entry.value = Number(bytes);
        m_file.Seek(inlined + PlaceBytes());
        entry.bytes = m_bytes.mid(start, m_file.Position() - start);
        m_entries.emplace(tag, entry); // libtiff takes the first of two as well
    }

    const QByteArray& m_bytes;
    PictureBytes m_file;
    bool m_isLittle = false, m_isBig = false, m_isGood = true;
    std::map<unsigned, Entry> m_entries;
};

struct TiffPicture
{
    std::uint64_t bits = 0, samples = 0;
    unsigned photometric = 0;
    bool isTiled = false, isPlanar = false;
};

/// Whether FreeImage's bitmap for such samples has room for the rows that it copies, and the palette that it
/// fills.
bool isSoundLayout(const TiffPicture& picture, std::uint64_t colors)
{
    const std::uint64_t bits = picture.bits;
    const std::uint64_t samples = picture.samples;
    if (picture.isTiled && samples != 1 && samples != 3 && samples != 4) {
        return false;
    }
    const bool isSmall = bits == 1 || bits == 4;
    const bool isDeep = bits == 16 || bits == 32 || bits == 64;
    switch (picture.photometric) {
    case WhiteIsZero:
    case BlackIsZero:
        return (isSmall && samples == 1) || (isDeep && samples <= 2) ||
               (bits == 8 && (samples == 1 || (samples == 2 && !picture.isTiled)));
    case Palette:
        return colors >= (std::uint64_t{3} << bits) &&
               ((isSmall && samples == 1) ||
                (bits == 8 && (samples == 1 || (samples == 2 && !picture.isTiled))));
    case Rgb:
        return samples >= 3 && (bits == 8 || isDeep);
    case Separated:
        return samples >= 4 && (bits == 8 || bits == 16);
    case YCbCr:
    case CieLab:
    case IccLab:
    case ItuLab:
        return samples >= 3 && (bits == 8 || bits == 16);
    case LogLuv:
        return samples == 3 && !picture.isTiled && !picture.isPlanar;
    default:
        return false;
    }
}

} // namespace

bool isSoundTiff(QByteArray& bytes)
{
    constexpr std::uint64_t kMost = std::uint64_t{1} << 31;
    constexpr std::uint64_t kMostSamples = 16;
    const Directory directory(bytes);
    const std::uint64_t width = directory.Value(Width, 0);
    const std::uint64_t height = directory.Value(Height, 0);
    TiffPicture picture;
    picture.bits = directory.Value(BitsPerSample, 1);
    picture.samples = directory.Value(SamplesPerPixel, 1);
    picture.photometric = static_cast<unsigned>(directory.Value(Photometric, WhiteIsZero));
    picture.isTiled = directory.Has(TileWidth) || directory.Has(TileHeight);
    picture.isPlanar = directory.Value(Planar, 1) == 2;
    const std::uint64_t tileWidth = directory.Value(TileWidth, 16);
    const std::uint64_t tileHeight = directory.Value(TileHeight, 16);
    const std::uint64_t pixelBits = picture.bits * picture.samples;
    if (!directory.IsGood() || width >= kMost || height >= kMost || picture.bits > 64 ||
        picture.samples < 1 || picture.samples > kMostSamples || directory.Value(RowsPerStrip, 1) < 1 ||
        tileWidth < 1 || tileWidth >= kMost || tileHeight < 1 || tileHeight >= kMost ||
        tileWidth * pixelBits % 8 != 0 || !isSoundLayout(picture, directory.Count(ColorMap)) ||
        !isCredibleSize(static_cast<qint64>(width), static_cast<qint64>(height),
                        static_cast<qint64>(pixelBits), bytes.size()) ||
        (picture.isTiled &&
         !isPossibleSize(static_cast<qint64>(tileWidth), static_cast<qint64>(tileHeight)))) {
        return false;
    }
    bytes = directory.WithPixelsAlone();
    return true;
}

} // namespace Zemtar::ImageFiles
