#include "apps/export/GlbBinary.h"

#include "apps/export/OutputFile.h"

#include <algorithm>
#include <cmath>

#ifdef ZEMTAR_MESHOPTIMIZER
#include <meshoptimizer.h>
#endif

namespace GlbBox {

float Extent(const ShapeView& shape)
{
    float extent = 0.0F;
    for (unsigned axis = 0; axis < 3; ++axis) {
        extent = std::max(extent, shape.High()[axis] - shape.Low()[axis]);
    }
    return extent > 0.0F ? extent : 1.0F;
}

std::uint16_t SixteenBits(double value, double low, double extent)
{
    return static_cast<std::uint16_t>(std::lround(std::clamp((value - low) / extent, 0.0, 1.0) * 65535.0));
}

} // namespace GlbBox

namespace {

/// Calls `sink(data, bytes)` with block after block of elements that `fill(element, numbers)` makes.
template <class Number, std::size_t Width, class Fill, class Sink>
void StreamElements(std::uint64_t count, const Fill& fill, const Sink& sink)
{
    constexpr std::size_t BlockSize = 8192; // longer than the file's own buffer, which is passed over then
    std::array<Number, Width * BlockSize> block{};
    for (std::uint64_t start = 0; start < count; start += BlockSize) {
        const std::size_t length = std::min<std::uint64_t>(BlockSize, count - start);
        for (std::size_t i = 0; i < length; ++i) {
            fill(static_cast<std::uint32_t>(start + i), block.data() + Width * i);
        }
        sink(block.data(), length * Width * sizeof(Number));
    }
}

/// Calls `sink(data, bytes)` with block after block of indices.
template <class Index, class Sink>
void StreamIndices(const ShapeView& shape, bool lines, const Sink& sink)
{
    if constexpr (sizeof(Index) == sizeof(unsigned)) {
        if (!lines && shape.SoundTriangles()) {
            sink(shape.SoundTriangles(), 3 * shape.TriangleCount() * sizeof(Index));
            return;
        }
    }
    constexpr std::size_t BlockSize = 24576; // whole triangles and whole segments
    std::array<Index, BlockSize> block{};
    std::size_t length = 0;
    const auto flush = [&] {
        sink(block.data(), length * sizeof(Index));
        length = 0;
    };
    if (lines) {
        shape.ForEachSegment([&](std::uint32_t a, std::uint32_t b) {
            block[length++] = static_cast<Index>(a);
            block[length++] = static_cast<Index>(b);
            if (length == BlockSize) {
                flush();
            }
        });
    } else {
        shape.ForEachTriangle([&](std::uint32_t a, std::uint32_t b, std::uint32_t c) {
            block[length++] = static_cast<Index>(a);
            block[length++] = static_cast<Index>(b);
            block[length++] = static_cast<Index>(c);
            if (length == BlockSize) {
                flush();
            }
        });
    }
    flush();
}

template <class Sink>
void Stream(const GlbLayout& layout, const GlbAccessor& accessor, const Sink& sink)
{
    const ShapeView& shape = layout.ShapeOf(accessor);
    const auto copy = [](const auto& from, auto* to, auto convert) {
        for (std::size_t i = 0; i < 3; ++i) {
            to[i] = convert(from[i], i);
        }
    };
    const auto single = [](double value, std::size_t) { return static_cast<float>(value); };
    switch (accessor.section) {
    case GlbSection::Places:
        if (layout.IsQuantized()) {
            const double extent = GlbBox::Extent(shape);
            const auto bits = [&](double value, std::size_t axis) {
                return GlbBox::SixteenBits(static_cast<float>(value), shape.Low()[axis], extent);
            };
            StreamElements<std::uint16_t, 4>(
                accessor.count, [&](auto i, auto* to) { copy(shape.Place(i), to, bits); }, sink);
        } else {
            StreamElements<float, 3>(
                accessor.count, [&](auto i, auto* to) { copy(shape.Place(i), to, single); }, sink);
        }
        break;
    case GlbSection::Normals:
        if (layout.IsQuantized()) {
            const auto bits = [](double value, std::size_t) {
                return static_cast<std::int8_t>(std::lround(value * 127.0));
            };
            StreamElements<std::int8_t, 4>(
                accessor.count, [&](auto i, auto* to) { copy(shape.Normal(i), to, bits); }, sink);
        } else {
            StreamElements<float, 3>(
                accessor.count, [&](auto i, auto* to) { copy(shape.Normal(i), to, single); }, sink);
        }
        break;
    case GlbSection::Coordinates:
        StreamElements<float, 2>(
            accessor.count,
            [&](auto i, float* to) { // here v runs down from the picture's top
                const auto [u, v] = shape.Coordinate(i);
                to[0] = static_cast<float>(u);
                to[1] = static_cast<float>(1.0 - v);
            },
            sink);
        break;
    case GlbSection::ShortIndices:
        StreamIndices<std::uint16_t>(shape, accessor.lines, sink);
        break;
    default:
        StreamIndices<std::uint32_t>(shape, accessor.lines, sink);
    }
}

} // namespace

std::vector<unsigned char> PackedGlbArray([[maybe_unused]] const GlbLayout& layout,
                                          [[maybe_unused]] const GlbAccessor& accessor)
{
    std::vector<unsigned char> packed;
#ifdef ZEMTAR_MESHOPTIMIZER
    const std::size_t stride = layout.Stride(accessor.section);
    const std::size_t count = accessor.count;
    const std::uint32_t vertices = layout.ShapeOf(accessor).VertexCount();
    std::vector<unsigned char> plain;
    plain.reserve(count * stride);
    if (!IsIndices(accessor.section)) {
        Stream(layout, accessor, [&](const void* data, std::size_t size) {
            const auto* bytes = static_cast<const unsigned char*>(data);
            plain.insert(plain.end(), bytes, bytes + size);
        });
        meshopt_encodeVertexVersion(0);
        packed.resize(meshopt_encodeVertexBufferBound(count, stride));
        packed.resize(meshopt_encodeVertexBuffer(packed.data(), packed.size(), plain.data(), count, stride));
        return packed;
    }
    std::vector<unsigned> indices;
    indices.reserve(count);
    StreamIndices<std::uint32_t>(layout.ShapeOf(accessor), accessor.lines,
                                 [&](const std::uint32_t* data, std::size_t size) {
                                     indices.insert(indices.end(), data, data + size / sizeof(*data));
                                 });
    meshopt_encodeIndexVersion(1);
    if (accessor.lines) {
        packed.resize(meshopt_encodeIndexSequenceBound(count, vertices));
        packed.resize(meshopt_encodeIndexSequence(packed.data(), packed.size(), indices.data(), count));
    } else {
        packed.resize(meshopt_encodeIndexBufferBound(count, vertices));
        packed.resize(meshopt_encodeIndexBuffer(packed.data(), packed.size(), indices.data(), count));
    }
#endif
    return packed;
}

void WriteGlbBinary(const GlbLayout& layout, OutputFile& file)
{
    std::uint32_t view = 0;
    for (const GlbAccessor& accessor : layout.Accessors()) {
        if (accessor.view != view) {
            file.Align('\0');
            view = accessor.view;
        }
        if (layout.IsCompressed()) {
            const std::vector<unsigned char> packed = PackedGlbArray(layout, accessor);
            file.Write(packed.data(), packed.size());
        } else {
            Stream(layout, accessor, [&file](const void* data, std::size_t size) { file.Write(data, size); });
        }
    }
    file.Align('\0');
    for (const Picture& picture : layout.Pictures()) {
        picture.WriteTo(file);
        file.Align('\0');
    }
}
