#include "host/CZemtarMesh.h"

#include "host/CZemtarPolygonsTable.h"
#include "host/CZemtarRigGeometryTable.h"
#include "host/CZemtarTextureCoordinatesTable.h"
#include "host/CZemtarVerticiesNormalsTable.h"
#include "host/CZemtarVerticiesTable.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

namespace Zemtar {
namespace {

using Influence = CZemtarRigGeometryTable::Influence;

std::uint64_t BitsOf(double value)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof(bits));
    return bits;
}

bool IsSame(double a, double b)
{
    return a == b || BitsOf(a) == BitsOf(b);
}

std::uint64_t Mixed(std::uint64_t hash, std::uint64_t bits)
{
    hash = (hash ^ bits) * 0x9E3779B97F4A7C15U; // 2^64 divided by the golden ratio, odd
    return hash ^ hash >> 32;
}

template <std::size_t Width>
std::uint64_t HashOf(std::uint64_t hash, const double* values)
{
    for (std::size_t i = 0; i < Width; ++i) {
        hash = Mixed(hash, BitsOf(values[i] + 0.0)); // the sum turns -0.0 into 0.0
    }
    return hash;
}

template <std::size_t Width>
bool AreSame(const double* a, const double* b)
{
    bool same = true;
    for (std::size_t i = 0; i < Width; ++i) {
        same = same && IsSame(a[i], b[i]);
    }
    return same;
}

template <std::size_t Width>
void Move(double* values, std::size_t from, std::size_t to)
{
    std::copy_n(values + Width * from, Width, values + Width * to);
}

/// The tables of a mesh as blocks of memory; null for one that takes no part.
struct Blocks
{
    double* positions = nullptr;
    double* normals = nullptr;
    double* textureCoordinates = nullptr;
    Influence* rig = nullptr;

    void MoveVertex(std::size_t from, std::size_t to) const
    {
        Move<3>(positions, from, to);
        if (normals != nullptr) {
            Move<3>(normals, from, to);
        }
        if (textureCoordinates != nullptr) {
            Move<2>(textureCoordinates, from, to);
        }
        if (rig != nullptr) {
            rig[to] = rig[from];
        }
    }
};

/// What makes two vertices the same. The tables that take part are known when compiling, since this is the
/// innermost loop.
template <bool Normals, bool TextureCoordinates>
class Identity
{
public:
    Identity(const Blocks& blocks, bool withRig) : m_blocks(blocks), m_rig(withRig ? blocks.rig : nullptr) {}

    std::uint64_t Hash(std::size_t vertex) const
    {
        std::uint64_t hash = HashOf<3>(0, m_blocks.positions + 3 * vertex);
        if constexpr (Normals) {
            hash = HashOf<3>(hash, m_blocks.normals + 3 * vertex);
        }
        if constexpr (TextureCoordinates) {
            hash = HashOf<2>(hash, m_blocks.textureCoordinates + 2 * vertex);
        }
        return hash; // the rig is compared only: it seldom tells vertices of one place apart
    }

    bool operator()(std::size_t a, std::size_t b) const
    {
        bool same = AreSame<3>(m_blocks.positions + 3 * a, m_blocks.positions + 3 * b);
        if constexpr (Normals) {
            same = same && AreSame<3>(m_blocks.normals + 3 * a, m_blocks.normals + 3 * b);
        }
        if constexpr (TextureCoordinates) {
            same =
                same && AreSame<2>(m_blocks.textureCoordinates + 2 * a, m_blocks.textureCoordinates + 2 * b);
        }
        return same && (m_rig == nullptr || m_rig[a] == m_rig[b]);
    }

private:
    Blocks m_blocks;
    const Influence* m_rig;
};

/// The kept vertices by their hash: open addressing with linear probing, at most two thirds full. A slot
/// holds the vertex and half of its hash, so that a miss seldom touches the vertex and growing never does.
class VertexSet
{
public:
    VertexSet() : m_slots(16) {}

    void Prefetch(std::uint64_t hash) const
    {
        __builtin_prefetch(&m_slots[static_cast<std::uint32_t>(hash) & (m_slots.size() - 1)]);
    }

    /// Finds a kept vertex with that hash which `isSame` accepts; else stores `candidate` and gives it back.
    template <class IsSame>
    std::uint32_t FindOrInsert(std::uint64_t hash, std::uint32_t candidate, const IsSame& isSame)
    {
        if (3 * m_used >= 2 * m_slots.size()) {
            Grow();
        }
        const auto tag = static_cast<std::uint32_t>(hash);
        for (std::size_t place = tag & (m_slots.size() - 1);; place = (place + 1) & (m_slots.size() - 1)) {
            Slot& slot = m_slots[place];
            if (slot.vertex == None) {
                slot = {candidate, tag};
                ++m_used;
                return candidate;
            }
            if (slot.tag == tag && isSame(slot.vertex)) {
                return slot.vertex;
            }
        }
    }

private:
    static constexpr std::uint32_t None = 0xFFFFFFFFU;
    struct Slot
    {
        std::uint32_t vertex = None;
        std::uint32_t tag = 0;
    };

    void Grow()
    {
        std::vector<Slot> larger(2 * m_slots.size());
        for (const Slot& slot : m_slots) {
            if (slot.vertex != None) {
                std::size_t place = slot.tag & (larger.size() - 1);
                while (larger[place].vertex != None) {
                    place = (place + 1) & (larger.size() - 1);
                }
                larger[place] = slot;
            }
        }
        m_slots.swap(larger);
    }

    std::vector<Slot> m_slots; ///< a power of two, at most 2^32
    std::size_t m_used = 0;
};

/// Moves the vertices that stay to the front, writes for each vertex which one stands for it, and gives how
/// many stay. A batch is hashed ahead of its look-ups, so that their slots are on the way from memory when
/// they are needed.
template <class Same>
std::size_t Compact(const Blocks& blocks, const Same& same, std::size_t count, unsigned int* standIns)
{
    constexpr std::size_t BatchSize = 16;
    std::array<std::uint64_t, BatchSize> hashes;
    VertexSet kept;
    std::size_t keptCount = 0;
    for (std::size_t batch = 0; batch < count; batch += BatchSize) {
        const std::size_t size = std::min(BatchSize, count - batch);
        for (std::size_t i = 0; i < size; ++i) {
            hashes[i] = same.Hash(batch + i);
            kept.Prefetch(hashes[i]);
        }
        for (std::size_t i = 0; i < size; ++i) {
            const std::size_t vertex = batch + i;
            const auto next = static_cast<std::uint32_t>(keptCount);
            const std::uint32_t found =
                kept.FindOrInsert(hashes[i], next, [&](std::uint32_t other) { return same(vertex, other); });
            standIns[vertex] = found;
            if (found == next) {
                if (keptCount != vertex) {
                    blocks.MoveVertex(vertex, keptCount);
                }
                ++keptCount;
            }
        }
    }
    return keptCount;
}

std::size_t Compact(const Blocks& blocks, bool positionsOnly, std::size_t count, unsigned int* standIns)
{
    const bool normals = blocks.normals != nullptr && !positionsOnly;
    const bool textureCoordinates = blocks.textureCoordinates != nullptr && !positionsOnly;
    if (normals && textureCoordinates) {
        return Compact(blocks, Identity<true, true>(blocks, true), count, standIns);
    }
    if (normals) {
        return Compact(blocks, Identity<true, false>(blocks, true), count, standIns);
    }
    if (textureCoordinates) {
        return Compact(blocks, Identity<false, true>(blocks, true), count, standIns);
    }
    return Compact(blocks, Identity<false, false>(blocks, !positionsOnly), count, standIns);
}

/// Tells whether the polygons name the vertices one after the other, as importers write them.
bool IsSequence(const CZemtarPolygonsTable& polygons, std::size_t count)
{
    const unsigned int* indices = polygons.Data();
    bool sequence = polygons.IndexCount() == count;
    for (std::size_t i = 0; i < count && sequence; ++i) {
        sequence = indices[i] == i;
    }
    return sequence;
}

void Repoint(CZemtarPolygonsTable& polygons, const std::vector<unsigned int>& standIns)
{
    unsigned int* indices = polygons.Data();
    for (std::size_t i = 0; i < polygons.IndexCount(); ++i) {
        if (indices[i] < standIns.size()) {
            indices[i] = standIns[indices[i]];
        }
    }
}

/// Gives the table's block when its entries belong to `count` vertices.
template <class Table>
auto BlockOf(Table* table, std::size_t count) -> decltype(table->Data())
{
    return table != nullptr && table->Count() == count ? table->Data() : nullptr;
}

template <class Table, class Block>
void Shorten(Table* table, const Block* block, std::size_t count)
{
    if (block != nullptr) {
        table->Resize(count);
        table->ReleaseSurplus();
    }
}

} // namespace

void CZemtarMesh::CombineIdenticalVerticesInPlace(CZemtarVerticiesTable* vertices,
                                                  CZemtarVerticiesNormalsTable* normals,
                                                  CZemtarPolygonsTable* polygons,
                                                  CZemtarTextureCoordinatesTable* textureCoordinates,
                                                  bool positionsOnly, CZemtarRigGeometryTable* rig)
{
    if (vertices == nullptr || vertices->IsEmpty()) {
        return;
    }
    const std::size_t count = vertices->Count();
    const Blocks blocks{vertices->Data(), BlockOf(normals, count), BlockOf(textureCoordinates, count),
                        BlockOf(rig, count)};
    std::size_t kept = 0;
    if (polygons != nullptr && IsSequence(*polygons, count)) {
        // The indices turn into those of the stand-ins in the same pass.
        kept = Compact(blocks, positionsOnly, count, polygons->Data());
    } else {
        std::vector<unsigned int> standIns(count);
        kept = Compact(blocks, positionsOnly, count, standIns.data());
        if (polygons != nullptr) {
            Repoint(*polygons, standIns);
        }
    }
    Shorten(vertices, blocks.positions, kept);
    Shorten(normals, blocks.normals, kept);
    Shorten(textureCoordinates, blocks.textureCoordinates, kept);
    Shorten(rig, blocks.rig, kept);
}

} // namespace Zemtar
