// Constrained Delaunay triangulation of regions of the plane: polygons with holes, and points inside them.
//
//     Delaunay mesh;
//     if (mesh.Start(points, {{0, 1, 2, 3}, {4, 5, 6}}) == Delaunay::Outcome::Done) {
//         mesh.Insert({0.5, 0.5}, 0.1);                     // number 7, unless refused
//         for (const Delaunay::Triangle& t : mesh.Triangles()) { ... }
//     }
//
// Every side of the loops is a side of triangles, or a chain of sides where it runs through other points; all
// other sides fulfil the Delaunay condition as far as the loops leave them free. The region is what an odd
// number of loops encloses, however they are oriented. Time grows nearly linearly with the points. The object
// may be started anew and then keeps its memory.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "sdk/mesh/PlanePredicates.h"

namespace cadex::mesh {

class Delaunay
{
public:
    static constexpr int None = -1;
    using Triangle = std::array<int, 3>; ///< numbers of points, counter-clockwise
    using Loops = std::vector<std::vector<int>>;

    enum class Outcome
    {
        Done,
        NotUsable,    ///< a coordinate is not finite or beyond 1e60, or a loop names a point that is none
        LoopsCross,   ///< sides of loops cross between points
        NothingInside ///< the loops enclose no area
    };

    /// A side between two triangles of the region that belongs to no loop.
    struct InnerSide
    {
        int from;
        int to;
    };

    /// Triangulates the region. Points that belong to no loop are used when they lie inside. Of points at the
    /// same place one stands for all. After anything but Done there are no triangles.
    Outcome Start(const std::vector<PlanePoint>& points, const Loops& loops);

    /// Adds a point inside the region and gives its number; the numbers follow those of Start's points. None
    /// when it is refused: outside, on a side of a loop or nearer to it than half of `clearance`, nearer than
    /// `clearance` to a corner of the triangle around it. `near` is a point close to it, if one is known.
    int Insert(const PlanePoint& point, double clearance = 0, int near = None);

    /// The triangles of the region at this time.
    std::vector<Triangle> Triangles() const;

    std::vector<InnerSide> InnerSides() const;
    /// Appends those that end at a point which Insert gave.
    void InnerSidesAt(int point, std::vector<InnerSide>& result) const;
    /// Whether the side is (still) there; both ends are points of the region.
    bool IsInnerSide(const InnerSide& side) const;

    /// An inner side and the corners of its two triangles to the left and to the right.
    struct Diagonal
    {
        int from;
        int to;
        int left;
        int right;
    };
    /// Turns inner sides into the other diagonal, from left to right, where that is one and `isBetter` says
    /// so, for surfaces over the plane that know better than distances in it. The mesh is no longer
    /// Delaunay's then: it should be complete. Comes to an end whatever `isBetter` says.
    void TurnSides(const std::function<bool(const Diagonal&)>& isBetter);

private:
    // Inside, points are numbered from 3 on: the corners of a triangle around everything come first.
    static constexpr int Surrounding = 3;

    struct Cell
    {
        std::array<int, 3> corners;
        std::array<int, 3> neighbours;         ///< across the side opposite the corner; None outside
        std::array<std::uint8_t, 3> uses = {}; ///< how often loops run along that side
        bool isInside = false;
    };
    struct Place
    {
        int cell = None;
        int side = None;   ///< the point lies on this side of the cell
        int corner = None; ///< the point lies at this corner of the cell
    };
    /// The side of a cell opposite a corner.
    struct Side
    {
        int cell = None;
        int corner = None;
    };

    void Surround(const std::vector<PlanePoint>& points);
    bool InsertAll();
    Place Locate(const PlanePoint& point, int start) const;
    void InsertAt(int node, const Place& place);
    void SplitCell(int node, int cell);
    void SplitSide(int node, Side side);
    void Flip(Side side);
    void LegaliseAround();
    void Legalise(std::vector<InnerSide>& sides);
    bool IsFlippable(Side side) const;

    bool Constrain(int from, int to);
    int StepTowards(int from, int to, Side& found) const;
    bool CollectCrossed(int from, int& to, Side first, std::vector<InnerSide>& crossed) const;
    bool Clear(int from, int to, std::vector<InnerSide>& crossed);
    void MarkInside();

    Side FindSide(int from, int to) const;
    Side Opposite(Side side) const;
    int CornerOf(int cell, int node) const;
    void MarkUsed(Side side);
    void Replace(int cell, int before, int after);
    bool IsNear(const PlanePoint& point, const Cell& cell, double clearance) const;

    const PlanePoint& At(int node) const { return myPoints[static_cast<std::size_t>(node)]; }
    int& CellOf(int node) { return myCellOf[static_cast<std::size_t>(node)]; }
    int CellOf(int node) const { return myCellOf[static_cast<std::size_t>(node)]; }
    Cell& CellAt(int cell) { return myCells[static_cast<std::size_t>(cell)]; }
    const Cell& CellAt(int cell) const { return myCells[static_cast<std::size_t>(cell)]; }

    std::vector<PlanePoint> myPoints;
    std::vector<Cell> myCells;
    std::vector<int> myCellOf; ///< one of the cells at each point
    std::vector<int> mySame;   ///< the point that stands for it
    std::vector<int> myStack;  ///< cells whose first corner is new
    int myLast = 0;            ///< where the search for the next place begins
};

} // namespace cadex::mesh
