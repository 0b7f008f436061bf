#include "sdk/jt/JtStrips.h"

#include <algorithm>

namespace cadex::jt {

namespace {

constexpr U32 None = 0xFFFFFFFF;
/// At vertices of more triangles a strip may end early.
constexpr U32 MostLooks = 64;

/// The edges of triangles by the vertex that they start at.
class DirectedEdges
{
public:
    DirectedEdges(const std::vector<U32>& indices, std::size_t vertexCount)
        : myIndices(indices), myFirst(vertexCount + 1, 0), myCorners(indices.size())
    {
        for (const U32 index : indices) {
            ++myFirst[index + 1];
        }
        for (std::size_t i = 0; i < vertexCount; ++i) {
            myFirst[i + 1] += myFirst[i];
        }
        std::vector<U32> next(myFirst.begin(), myFirst.end() - 1);
        for (std::size_t corner = 0; corner < indices.size(); ++corner) {
            myCorners[next[indices[corner]]++] = static_cast<U32>(corner);
        }
    }

    /// A triangle that `isFree` and has the edge from a to b; `third` is its other corner.
    template <typename IsFree>
    U32 Find(U32 a, U32 b, const IsFree& isFree, U32& third) const
    {
        const U32 last = std::min(myFirst[a + 1], myFirst[a] + MostLooks);
        for (U32 i = myFirst[a]; i < last; ++i) {
            const U32 corner = myCorners[i];
            const U32 triangle = corner / 3;
            const U32 base = 3 * triangle;
            if (myIndices[base + (corner - base + 1) % 3] == b && isFree(triangle)) {
                third = myIndices[base + (corner - base + 2) % 3];
                return triangle;
            }
        }
        return None;
    }

private:
    const std::vector<U32>& myIndices;
    std::vector<U32> myFirst;
    std::vector<U32> myCorners;
};

} // namespace

Strips MakeStrips(const std::vector<U32>& indices, std::size_t vertexCount)
{
    const DirectedEdges edges(indices, vertexCount);
    std::vector<bool> isUsed(indices.size() / 3, false);
    Strips strips;
    for (std::size_t i = 0; i < isUsed.size(); ++i) { // those without area go nowhere
        const U32* const c = &indices[3 * i];
        isUsed[i] = c[0] == c[1] || c[1] == c[2] || c[0] == c[2];
    }
    std::vector<U32> taken;
    const auto grow = [&](U32 first, std::size_t turn, std::vector<U32>& strip) {
        taken.assign(1, first);
        const std::size_t base = 3 * static_cast<std::size_t>(first);
        strip = {indices[base + turn], indices[base + (turn + 1) % 3], indices[base + (turn + 2) % 3]};
        isUsed[first] = true;
        const auto isFree = [&](U32 triangle) { return !isUsed[triangle]; };
        for (;;) {
            // the last edge, in the sense that the next triangle has it
            U32 a = strip[strip.size() - 2];
            U32 b = strip.back();
            if (strip.size() % 2 != 0) {
                std::swap(a, b);
            }
            U32 third = 0;
            const U32 next = edges.Find(a, b, isFree, third);
            if (next == None) {
                return;
            }
            isUsed[next] = true;
            taken.push_back(next);
            strip.push_back(third);
        }
    };
    std::vector<U32> best;
    std::vector<U32> strip;
    for (U32 triangle = 0; triangle < isUsed.size(); ++triangle) {
        if (isUsed[triangle]) {
            continue;
        }
        best.clear();
        std::size_t bestTurn = 0;
        for (std::size_t turn = 0; turn < 3; ++turn) {
            grow(triangle, turn, strip);
            for (const U32 one : taken) {
                isUsed[one] = false;
            }
            if (strip.size() > best.size()) {
                best = strip;
                bestTurn = turn;
            }
        }
        grow(triangle, bestTurn, strip);
        strips.corners.insert(strips.corners.end(), strip.begin(), strip.end());
        strips.starts.push_back(static_cast<U32>(strips.corners.size()));
    }
    return strips;
}

} // namespace cadex::jt
