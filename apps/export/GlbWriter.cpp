#include "apps/export/GlbBinary.h"
#include "apps/export/GlbJson.h"
#include "apps/export/GlbLayout.h"
#include "apps/export/OutputFile.h"
#include "apps/export/Writers.h"

#include <bit>
#include <limits>
#include <stdexcept>

static_assert(std::endian::native == std::endian::little, "glTF numbers are little-endian");

void WriteGlb(SceneParts& scene, OutputFile& file, GlbPacking packing)
{
    if (packing == GlbPacking::Meshopt && !HasMeshopt()) {
        throw std::runtime_error("this build has no meshopt compressor");
    }
    constexpr std::uint32_t Magic = 0x46546C67;
    constexpr std::uint32_t Version = 2;
    constexpr std::uint32_t JsonChunk = 0x4E4F534A;
    constexpr std::uint32_t BinaryChunk = 0x004E4942;
    constexpr std::uint64_t HeaderSize = 12;
    constexpr std::uint64_t ChunkHeaderSize = 8;
    constexpr std::uint64_t Most = std::numeric_limits<std::uint32_t>::max();
    GlbLayout layout(scene, packing);
    layout.PlaceViews([&](const GlbAccessor& accessor) {
        file.GoOn();
        return PackedGlbArray(layout, accessor).size();
    });
    for (const std::uint32_t word : {Magic, Version, 0U, 0U, JsonChunk}) {
        file.WriteValue(word); // both lengths come when they are known
    }
    WriteGlbJson(layout, file);
    const std::uint64_t jsonSize = file.Size() - HeaderSize - ChunkHeaderSize;
    const std::uint64_t size = file.Size() + ChunkHeaderSize + layout.BinarySize();
    if (size > Most) {
        throw std::runtime_error("the model needs more than the 4 GB that a GLB file holds");
    }
    file.WriteValue(static_cast<std::uint32_t>(layout.BinarySize()));
    file.WriteValue(BinaryChunk);
    file.Expect(size);
    WriteGlbBinary(layout, file);
    if (file.Size() != size) {
        throw std::logic_error("GLB: the layout is not what was written");
    }
    file.Patch(8, static_cast<std::uint32_t>(size));
    file.Patch(12, static_cast<std::uint32_t>(jsonSize));
}
