#include "sdk/mesh/Delaunay.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "sdk/mesh/DelaunayCorners.h"
#include "sdk/mesh/InsertionOrder.h"

namespace cadex::mesh {

namespace {

// Products of four differences of such coordinates stay within the range of double; what is smaller than the
// inverse counts as zero.
constexpr double LargestCoordinate = 1e60;
constexpr double SmallestCoordinate = 1e-60;

// So far off, in extents of the points, stand the corners of the triangle around them. They are never part of
// the region, whose loops keep its triangles from them.
constexpr PlanePoint SurroundingCorners[] = {{-30, -17}, {31, -19}, {1.3, 35}};

// So often, in the mean, a side may be turned.
constexpr std::size_t TurnsOfSide = 4;

bool IsUsable(const PlanePoint& point)
{
    return std::abs(point.x) <= LargestCoordinate && std::abs(point.y) <= LargestCoordinate;
}

PlanePoint Cleaned(const PlanePoint& point)
{
    const auto clean = [](double value) { return std::abs(value) < SmallestCoordinate ? 0.0 : value; };
    return {clean(point.x), clean(point.y)};
}

double SquareDistance(const PlanePoint& a, const PlanePoint& b)
{
    return (a.x - b.x) * (a.x - b.x) + (a.y - b.y) * (a.y - b.y);
}

} // namespace

Delaunay::Outcome Delaunay::Start(const std::vector<PlanePoint>& points, const Loops& loops)
{
    myCells.clear();
    const auto isPoint = [&](int i) { return i >= 0 && Index(i) < points.size(); };
    if (points.empty() || !std::all_of(points.begin(), points.end(), IsUsable) ||
        !std::all_of(loops.begin(), loops.end(), [&](const std::vector<int>& loop) {
            return std::all_of(loop.begin(), loop.end(), isPoint);
        })) {
        return Outcome::NotUsable;
    }
    Surround(points);
    bool isDone = InsertAll();
    for (std::size_t i = 0; i < loops.size() && isDone; ++i) {
        for (std::size_t k = 0; k < loops[i].size() && isDone; ++k) {
            const int from = loops[i][k];
            const int to = loops[i][k + 1 < loops[i].size() ? k + 1 : 0];
            isDone = Constrain(mySame[Index(from + Surrounding)], mySame[Index(to + Surrounding)]);
        }
    }
    if (!isDone) {
        myCells.clear();
        return Outcome::LoopsCross;
    }
    MarkInside();
    if (std::none_of(myCells.begin(), myCells.end(), [](const Cell& cell) { return cell.isInside; })) {
        myCells.clear();
        return Outcome::NothingInside;
    }
    return Outcome::Done;
}

void Delaunay::Surround(const std::vector<PlanePoint>& points)
{
    const PlaneExtent extent(points);
    const double size = std::max(
        extent.Size(),
        std::max({1e-9 * std::abs(extent.low.x), 1e-9 * std::abs(extent.low.y), SmallestCoordinate}));
    const PlanePoint middle{extent.low.x + (extent.high.x - extent.low.x) / 2,
                            extent.low.y + (extent.high.y - extent.low.y) / 2};
    myPoints.clear();
    myPoints.reserve(points.size() + Surrounding);
    for (const PlanePoint& corner : SurroundingCorners) {
        myPoints.push_back({middle.x + corner.x * size, middle.y + corner.y * size});
    }
    std::transform(points.begin(), points.end(), std::back_inserter(myPoints), Cleaned);
    myCells.clear();
    myCells.reserve(2 * myPoints.size());
    myCells.push_back({{0, 1, 2}, {None, None, None}});
    myCellOf.assign(myPoints.size(), 0);
    mySame.resize(myPoints.size());
    std::iota(mySame.begin(), mySame.end(), 0);
    myLast = 0;
}

bool Delaunay::InsertAll()
{
    const std::vector<PlanePoint> points(myPoints.begin() + Surrounding, myPoints.end());
    for (const int point : InsertionOrder(points)) {
        const int node = point + Surrounding;
        const Place place = Locate(At(node), myLast);
        if (place.cell == None) {
            return false;
        }
        if (place.corner != None) {
            mySame[Index(node)] = CellAt(place.cell).corners[Index(place.corner)];
        } else {
            InsertAt(node, place);
        }
    }
    return true;
}

// Walks from triangle to triangle. Where loops keep the triangulation from being Delaunay's, a walk that
// always asked the sides in one order might go round in circles.
Delaunay::Place Delaunay::Locate(const PlanePoint& point, int start) const
{
    int cell = start;
    for (std::size_t steps = 0; steps <= 2 * myCells.size() + 16; ++steps) {
        const Cell& here = CellAt(cell);
        int next = cell;
        Place place{cell, None, None};
        int onSides = 0;
        int corner = static_cast<int>(Scattered(static_cast<std::uint32_t>(steps)) % 3);
        for (int i = 0; i < 3; ++i, corner = Next(corner)) {
            const double side = Orientation(At(here.corners[Index(Next(corner))]),
                                            At(here.corners[Index(Previous(corner))]), point);
            if (side < 0) {
                next = here.neighbours[Index(corner)];
                break;
            }
            if (side == 0) {
                // On two sides: at the corner that is opposite neither.
                place.corner = onSides++ == 0 ? None : 3 - place.side - corner;
                place.side = onSides == 1 ? corner : place.side;
            }
        }
        if (next == None) {
            return {};
        }
        if (next == cell) {
            return place;
        }
        cell = next;
    }
    return {};
}

void Delaunay::InsertAt(int node, const Place& place)
{
    if (place.side == None) {
        SplitCell(node, place.cell);
    } else {
        SplitSide(node, {place.cell, place.side});
    }
    myLast = place.cell;
    LegaliseAround();
}

void Delaunay::SplitCell(int node, int cell)
{
    const Cell old = CellAt(cell);
    const int second = static_cast<int>(myCells.size());
    const int third = second + 1;
    const auto& [a, b, c] = old.corners;
    CellAt(cell) = {{node, a, b}, {old.neighbours[2], second, third}, {old.uses[2], 0, 0}, old.isInside};
    myCells.push_back({{node, b, c}, {old.neighbours[0], third, cell}, {old.uses[0], 0, 0}, old.isInside});
    myCells.push_back({{node, c, a}, {old.neighbours[1], cell, second}, {old.uses[1], 0, 0}, old.isInside});
    Replace(old.neighbours[0], cell, second);
    Replace(old.neighbours[1], cell, third);
    CellOf(node) = cell;
    CellOf(a) = cell;
    CellOf(b) = cell;
    CellOf(c) = second;
    myStack = {cell, second, third};
}

// The cells a, b, c and d, c, b on both sides of the side from b to c become four around the new point. The
// side between them is one of no loop.
void Delaunay::SplitSide(int node, Side side)
{
    const Side opposite = Opposite(side);
    const Cell here = CellAt(side.cell);
    const Cell there = CellAt(opposite.cell);
    const std::size_t k[] = {Index(side.corner), Index(Next(side.corner)), Index(Previous(side.corner))};
    const std::size_t m[] = {Index(opposite.corner), Index(Next(opposite.corner)),
                             Index(Previous(opposite.corner))};
    const int a = here.corners[k[0]];
    const int b = here.corners[k[1]];
    const int c = here.corners[k[2]];
    const int d = there.corners[m[0]];
    const int third = static_cast<int>(myCells.size());
    const int fourth = third + 1;
    CellAt(side.cell) = {
        {node, a, b}, {here.neighbours[k[2]], opposite.cell, third}, {here.uses[k[2]], 0, 0}, here.isInside};
    CellAt(opposite.cell) = {
        {node, b, d}, {there.neighbours[m[1]], fourth, side.cell}, {there.uses[m[1]], 0, 0}, there.isInside};
    myCells.push_back(
        {{node, c, a}, {here.neighbours[k[1]], side.cell, fourth}, {here.uses[k[1]], 0, 0}, here.isInside});
    myCells.push_back({{node, d, c},
                       {there.neighbours[m[2]], third, opposite.cell},
                       {there.uses[m[2]], 0, 0},
                       there.isInside});
    Replace(here.neighbours[k[1]], side.cell, third);
    Replace(there.neighbours[m[2]], opposite.cell, fourth);
    CellOf(node) = side.cell;
    CellOf(a) = side.cell;
    CellOf(b) = side.cell;
    CellOf(c) = third;
    CellOf(d) = fourth;
    myStack = {side.cell, opposite.cell, third, fourth};
}

// The cells a, b, c and d, c, b become a, b, d and a, d, c.
void Delaunay::Flip(Side side)
{
    const Side opposite = Opposite(side);
    const Cell here = CellAt(side.cell);
    const Cell there = CellAt(opposite.cell);
    const std::size_t k[] = {Index(side.corner), Index(Next(side.corner)), Index(Previous(side.corner))};
    const std::size_t m[] = {Index(opposite.corner), Index(Next(opposite.corner)),
                             Index(Previous(opposite.corner))};
    const int a = here.corners[k[0]];
    const int b = here.corners[k[1]];
    const int c = here.corners[k[2]];
    const int d = there.corners[m[0]];
    CellAt(side.cell) = {{a, b, d},
                         {there.neighbours[m[1]], opposite.cell, here.neighbours[k[2]]},
                         {there.uses[m[1]], 0, here.uses[k[2]]},
                         here.isInside};
    CellAt(opposite.cell) = {{a, d, c},
                             {there.neighbours[m[2]], here.neighbours[k[1]], side.cell},
                             {there.uses[m[2]], here.uses[k[1]], 0},
                             there.isInside};
    Replace(there.neighbours[m[1]], opposite.cell, side.cell);
    Replace(here.neighbours[k[1]], side.cell, opposite.cell);
    CellOf(a) = side.cell;
    CellOf(b) = side.cell;
    CellOf(d) = side.cell;
    CellOf(c) = opposite.cell;
}

/// True when the side belongs to no loop and the point beyond it lies in the circle around its cell.
bool Delaunay::IsFlippable(Side side) const
{
    const Cell& here = CellAt(side.cell);
    if (here.neighbours[Index(side.corner)] == None || here.uses[Index(side.corner)] != 0) {
        return false;
    }
    const Side opposite = Opposite(side);
    return IsInCircle(At(here.corners[0]), At(here.corners[1]), At(here.corners[2]),
                      At(CellAt(opposite.cell).corners[Index(opposite.corner)]));
}

void Delaunay::LegaliseAround()
{
    while (!myStack.empty()) {
        const int cell = myStack.back();
        myStack.pop_back();
        if (IsFlippable({cell, 0})) {
            const int other = CellAt(cell).neighbours[0];
            Flip({cell, 0});
            myStack.push_back(cell);
            myStack.push_back(other);
        }
    }
}

void Delaunay::Legalise(std::vector<InnerSide>& sides)
{
    while (!sides.empty()) {
        const Side side = FindSide(sides.back().from, sides.back().to);
        sides.pop_back();
        if (side.cell == None || !IsFlippable(side)) {
            continue;
        }
        const int other = CellAt(side.cell).neighbours[Index(side.corner)];
        Flip(side);
        const auto [a, b, d] = CellAt(side.cell).corners;
        const int c = CellAt(other).corners[2];
        sides.insert(sides.end(), {{a, b}, {b, d}, {d, c}, {c, a}});
    }
}

void Delaunay::MarkInside()
{
    std::vector<bool> isSeen(myCells.size(), false);
    myStack = {CellOf(0)};
    isSeen[Index(CellOf(0))] = true;
    while (!myStack.empty()) {
        const int cell = myStack.back();
        myStack.pop_back();
        const Cell here = CellAt(cell);
        for (std::size_t k = 0; k < 3; ++k) {
            const int other = here.neighbours[k];
            if (other != None && !isSeen[Index(other)]) {
                isSeen[Index(other)] = true;
                CellAt(other).isInside = here.isInside != (here.uses[k] % 2 == 1);
                myStack.push_back(other);
            }
        }
    }
}

int Delaunay::Insert(const PlanePoint& point, double clearance, int near)
{
    if (myCells.empty() || !IsUsable(point)) {
        return None;
    }
    const PlanePoint cleaned = Cleaned(point);
    const Place place = Locate(cleaned, near == None ? myLast : CellOf(mySame[Index(near + Surrounding)]));
    if (place.cell == None) {
        return None;
    }
    const Cell& cell = CellAt(place.cell);
    if (near == None) {
        myLast = place.cell;
    }
    if (!cell.isInside || place.corner != None || (place.side != None && cell.uses[Index(place.side)] != 0) ||
        (clearance > 0 && IsNear(cleaned, cell, clearance))) {
        return None;
    }
    const int node = static_cast<int>(myPoints.size());
    myPoints.push_back(cleaned);
    myCellOf.push_back(place.cell);
    mySame.push_back(node);
    InsertAt(node, place);
    return node - Surrounding;
}

bool Delaunay::IsNear(const PlanePoint& point, const Cell& cell, double clearance) const
{
    for (int corner = 0; corner < 3; ++corner) {
        const PlanePoint& from = At(cell.corners[Index(Next(corner))]);
        const PlanePoint& to = At(cell.corners[Index(Previous(corner))]);
        const bool isNearSide =
            cell.uses[Index(corner)] != 0 &&
            2 * Orientation(from, to, point) < clearance * std::sqrt(SquareDistance(from, to));
        if (isNearSide || SquareDistance(from, point) < clearance * clearance) {
            return true;
        }
    }
    return false;
}

std::vector<Delaunay::Triangle> Delaunay::Triangles() const
{
    std::vector<Triangle> result;
    result.reserve(myCells.size());
    for (const Cell& cell : myCells) {
        if (cell.isInside) {
            const auto& [a, b, c] = cell.corners;
            result.push_back({a - Surrounding, b - Surrounding, c - Surrounding});
        }
    }
    return result;
}

std::vector<Delaunay::InnerSide> Delaunay::InnerSides() const
{
    std::vector<InnerSide> result;
    for (const Cell& cell : myCells) {
        for (int corner = 0; corner < 3 && cell.isInside; ++corner) {
            const int from = cell.corners[Index(Next(corner))];
            const int to = cell.corners[Index(Previous(corner))];
            if (from < to && cell.uses[Index(corner)] == 0) {
                result.push_back({from - Surrounding, to - Surrounding});
            }
        }
    }
    return result;
}

void Delaunay::InnerSidesAt(int point, std::vector<InnerSide>& result) const
{
    const int node = point + Surrounding;
    const int start = CellOf(node);
    int cell = start;
    do {
        const int corner = CornerOf(cell, node);
        const Cell& here = CellAt(cell);
        result.push_back({point, here.corners[Index(Next(corner))] - Surrounding});
        cell = here.neighbours[Index(Next(corner))];
    } while (cell != None && cell != start);
}

bool Delaunay::IsInnerSide(const InnerSide& side) const
{
    const Side found = FindSide(side.from + Surrounding, side.to + Surrounding);
    return found.cell != None && CellAt(found.cell).isInside &&
           CellAt(found.cell).uses[Index(found.corner)] == 0;
}

void Delaunay::TurnSides(const std::function<bool(const Diagonal&)>& isBetter)
{
    std::vector<InnerSide> sides = InnerSides();
    const std::size_t most = TurnsOfSide * sides.size();
    for (std::size_t i = 0, turns = 0; i < sides.size() && turns < most; ++i) {
        if (!IsInnerSide(sides[i])) {
            continue;
        }
        const int from = sides[i].from + Surrounding;
        const int to = sides[i].to + Surrounding;
        const Side side = FindSide(from, to);
        const Side opposite = Opposite(side);
        const int left = CellAt(side.cell).corners[Index(side.corner)];
        const int right = CellAt(opposite.cell).corners[Index(opposite.corner)];
        if (Orientation(At(left), At(from), At(right)) > 0 && Orientation(At(right), At(to), At(left)) > 0 &&
            isBetter({sides[i].from, sides[i].to, left - Surrounding, right - Surrounding})) {
            Flip(side);
            ++turns;
            const auto [a, b, c, d] = std::array<int, 4>{from - Surrounding, right - Surrounding,
                                                         to - Surrounding, left - Surrounding};
            sides.insert(sides.end(), {{a, b}, {b, c}, {c, d}, {d, a}});
        }
    }
}

/// The side with `from` and `to` counter-clockwise; its cell is None when there is none.
Delaunay::Side Delaunay::FindSide(int from, int to) const
{
    // One cannot go all round a corner of the surrounding triangle.
    const bool isTurned = from < Surrounding;
    const int middle = isTurned ? to : from;
    const int start = CellOf(middle);
    int cell = start;
    do {
        const int corner = CornerOf(cell, middle);
        const Cell& here = CellAt(cell);
        if (!isTurned && here.corners[Index(Next(corner))] == to) {
            return {cell, Previous(corner)};
        }
        if (isTurned && here.corners[Index(Previous(corner))] == from) {
            return {cell, Next(corner)};
        }
        cell = here.neighbours[Index(Next(corner))];
    } while (cell != None && cell != start);
    return {};
}

/// The same side seen from the other cell.
Delaunay::Side Delaunay::Opposite(Side side) const
{
    const int other = CellAt(side.cell).neighbours[Index(side.corner)];
    const std::array<int, 3>& neighbours = CellAt(other).neighbours;
    const int corner = neighbours[0] == side.cell ? 0 : neighbours[1] == side.cell ? 1 : 2;
    return {other, corner};
}

int Delaunay::CornerOf(int cell, int node) const
{
    const std::array<int, 3>& corners = CellAt(cell).corners;
    return corners[0] == node ? 0 : corners[1] == node ? 1 : 2;
}

void Delaunay::MarkUsed(Side side)
{
    // Beyond a few uses only odd and even matter.
    const auto mark = [](std::uint8_t& uses) { uses = uses < 200 ? uses + 1 : uses - 1; };
    mark(CellAt(side.cell).uses[Index(side.corner)]);
    if (CellAt(side.cell).neighbours[Index(side.corner)] != None) {
        const Side opposite = Opposite(side);
        mark(CellAt(opposite.cell).uses[Index(opposite.corner)]);
    }
}

void Delaunay::Replace(int cell, int before, int after)
{
    if (cell != None) {
        for (int& neighbour : CellAt(cell).neighbours) {
            neighbour = neighbour == before ? after : neighbour;
        }
    }
}

} // namespace cadex::mesh
