// The coding side of meshes whose connectivity is coded by the growing dual mesh, written for the tests.
#pragma once

#include <array>
#include <map>
#include <random>

#include "tests/sdk/jt/JtCoding.h"

namespace jttest {

/// Polygons over vertices, closed: holes are polygons that only cover.
struct ClosedMesh
{
    std::vector<std::vector<int>> polygons; ///< counter-clockwise
    std::vector<bool> isCover;
};

/// Codes a mesh; each vertex is given attributes that begin at random places of the ring of polygons around
/// it.
class DualCoder
{
public:
    std::array<Values, 8> degrees;
    Values valences;
    Values groups;
    Values flags;
    std::array<Values, 8> masks;
    Values middleMasks;
    Values highMasks;
    Values largeMasks;
    Values splitFaces;
    Values splitPlaces;
    std::vector<int> pointOrder;                           ///< vertices of the mesh in the order of the file
    std::map<std::pair<int, std::size_t>, int> attributes; ///< by vertex and polygon
    int attributeCount = 0;

    explicit DualCoder(const ClosedMesh& mesh, unsigned seed = 1) : myMesh(mesh), myRandom(seed)
    {
        for (std::size_t p = 0; p < mesh.polygons.size(); ++p) {
            for (std::size_t i = 0; i < mesh.polygons[p].size(); ++i) {
                myOwners[{mesh.polygons[p][i], Next(p, i)}] = p;
            }
        }
        myIsVisited.assign(mesh.polygons.size(), false);
        for (std::size_t p = 0; p < mesh.polygons.size(); ++p) {
            if (!myIsVisited[p]) {
                Component(p);
            }
        }
    }

private:
    struct Ring
    {
        std::vector<std::size_t> polygons; ///< counter-clockwise around the vertex
        std::vector<bool> isFilled;
        int empty = 0;
    };

    int Next(std::size_t p, std::size_t i) const
    {
        return myMesh.polygons[p][(i + 1) % myMesh.polygons[p].size()];
    }

    void Component(std::size_t p)
    {
        Visit(p);
        std::vector<bool> isKnown(myMesh.polygons[p].size(), false);
        for (std::size_t i = 0; i < isKnown.size(); ++i) {
            Activate(p, myMesh.polygons[p], i, isKnown);
        }
        for (int vertex = NextActive(); vertex >= 0; vertex = NextActive()) {
            Ring& ring = myRings.at(vertex);
            for (std::size_t i = 0; i < ring.polygons.size(); ++i) {
                if (!ring.isFilled[i]) {
                    Complete(ring.polygons[i], vertex);
                }
            }
        }
    }

    void Visit(std::size_t p)
    {
        myIsVisited[p] = true;
        valences.push_back(static_cast<int>(myMesh.polygons[p].size()));
        groups.push_back(0);
        flags.push_back(myMesh.isCover[p] ? 1 : 0);
    }

    void Fill(std::size_t p, int vertex)
    {
        Ring& ring = myRings.at(vertex);
        const auto at = std::find(ring.polygons.begin(), ring.polygons.end(), p) - ring.polygons.begin();
        ring.isFilled[static_cast<std::size_t>(at)] = true;
        --ring.empty;
    }

    /// What is reached over neighbours that are visited needs no symbol.
    void Complete(std::size_t p, int vertex)
    {
        std::vector<int> corners = myMesh.polygons[p];
        std::rotate(corners.begin(), std::find(corners.begin(), corners.end(), vertex), corners.end());
        const auto isVisited = [&](int a, int b) { return myIsVisited[myOwners.at({b, a})]; };
        std::vector<bool> isKnown(corners.size(), false);
        isKnown[0] = true;
        std::size_t first = 1;
        for (; first < corners.size() && isVisited(corners[first - 1], corners[first]); ++first) {
            isKnown[first] = true;
        }
        std::size_t last = corners.size() - 1;
        for (std::size_t before = 0; last >= first && isVisited(corners[last], corners[before]); --last) {
            isKnown[last] = true;
            before = last;
        }
        Visit(p);
        for (std::size_t i = 0; i < corners.size(); ++i) {
            if (isKnown[i]) {
                Fill(p, corners[i]);
            }
        }
        for (std::size_t i = first; i <= last; ++i) {
            Activate(p, corners, i, isKnown);
        }
    }

    void Activate(std::size_t p, const std::vector<int>& corners, std::size_t i, std::vector<bool>& isKnown)
    {
        const int vertex = corners[i];
        Values& list = degrees[ContextOf(corners, isKnown)];
        isKnown[i] = true;
        const auto begun = myRings.find(vertex);
        if (begun != myRings.end()) {
            const auto active = std::find(myActive.begin(), myActive.end(), vertex);
            const std::vector<std::size_t>& ring = begun->second.polygons;
            list.push_back(0);
            splitFaces.push_back(static_cast<int>(myActive.end() - active));
            splitPlaces.push_back(static_cast<int>(std::find(ring.begin(), ring.end(), p) - ring.begin()));
            Fill(p, vertex);
            return;
        }
        Ring ring;
        for (std::size_t q = p;;) {
            ring.polygons.push_back(q);
            const std::vector<int>& polygon = myMesh.polygons[q];
            const auto at =
                static_cast<std::size_t>(std::find(polygon.begin(), polygon.end(), vertex) - polygon.begin());
            const int previous = polygon[(at + polygon.size() - 1) % polygon.size()];
            q = myOwners.at({vertex, previous});
            if (q == p) {
                break;
            }
        }
        ring.isFilled.assign(ring.polygons.size(), false);
        ring.empty = static_cast<int>(ring.polygons.size());
        list.push_back(ring.empty);
        PutMask(vertex, ring.polygons);
        myRings[vertex] = ring;
        pointOrder.push_back(vertex);
        myActive.push_back(vertex);
        Fill(p, vertex);
    }

    void PutMask(int vertex, const std::vector<std::size_t>& ring)
    {
        std::vector<bool> marks(ring.size());
        std::generate(marks.begin(), marks.end(), [this] { return myRandom() % 3 == 0; });
        if (std::find(marks.begin(), marks.end(), true) == marks.end()) {
            marks[myRandom() % marks.size()] = true;
        }
        const auto count = static_cast<int>(std::count(marks.begin(), marks.end(), true));
        int attribute = attributeCount + count - 1; // that of the last mark, around
        int next = attributeCount;
        for (std::size_t i = 0; i < marks.size(); ++i) {
            attribute = marks[i] ? next++ : attribute;
            attributes[{vertex, ring[i]}] = attribute;
        }
        attributeCount += count;
        const auto word = [&](std::size_t from, std::size_t size) {
            std::uint32_t bits = 0;
            for (std::size_t i = 0; i < size && from + i < marks.size(); ++i) {
                bits |= (marks[from + i] ? 1U : 0U) << i;
            }
            return static_cast<std::int32_t>(bits);
        };
        if (marks.size() > 64) {
            for (std::size_t i = 0; i < marks.size(); i += 32) {
                largeMasks.push_back(word(i, 32));
            }
            return;
        }
        const std::size_t context = std::min<std::size_t>(7, marks.size() < 2 ? 0 : marks.size() - 2);
        masks[context].push_back(word(0, 30));
        if (context == 7) {
            middleMasks.push_back(word(30, 30));
            highMasks.push_back(word(60, 4));
        }
    }

    std::size_t ContextOf(const std::vector<int>& corners, const std::vector<bool>& isKnown) const
    {
        if (corners.size() == 2 || corners.size() > 4) {
            return corners.size() == 5 ? 6 : 7;
        }
        std::size_t sum = 0;
        std::size_t known = 0;
        for (std::size_t i = 0; i < corners.size(); ++i) {
            sum += isKnown[i] ? myRings.at(corners[i]).polygons.size() : 0;
            known += isKnown[i] ? 1 : 0;
        }
        const std::size_t usual = known * (corners.size() == 3 ? 6 : 4);
        return (corners.size() == 3 ? 0 : 3) + (sum < usual ? 0 : sum == usual ? 1 : 2);
    }

    int NextActive()
    {
        const auto isDone = [this](int vertex) { return myRings.at(vertex).empty == 0; };
        while (!myActive.empty() && isDone(myActive.back())) {
            myActive.pop_back();
        }
        int best = -1;
        for (std::size_t i = myActive.size(); i-- > 0 && i + 16 >= myActive.size();) {
            if (isDone(myActive[i])) {
                myActive.erase(myActive.begin() + static_cast<std::ptrdiff_t>(i));
            } else if (best < 0 || myRings.at(myActive[i]).empty < myRings.at(best).empty) {
                best = myActive[i];
            }
        }
        return best;
    }

    const ClosedMesh& myMesh;
    std::mt19937 myRandom;
    std::map<std::pair<int, int>, std::size_t> myOwners; ///< polygons by directed edges
    std::vector<bool> myIsVisited;
    std::map<int, Ring> myRings;
    std::vector<int> myActive;
};

} // namespace jttest
