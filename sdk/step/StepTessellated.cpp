#include "sdk/step/StepTessellated.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>

#include "sdk/step/StepPlacedBody.h"

namespace cadex::step {

namespace {

constexpr int MaximalNesting = 32;

// Numbers from 1 in the file, from 0 here; throws Damaged beyond the limit.
std::size_t Index(std::int64_t number, std::size_t limit, RecordId record)
{
    if (number < 1 || static_cast<std::uint64_t>(number) > limit) {
        throw Damaged("a triangle with a point that is not there", record);
    }
    return static_cast<std::size_t>(number) - 1;
}

std::vector<std::vector<int>> ReadIntegerRows(Cursor& cursor)
{
    std::vector<std::vector<int>> rows;
    if (cursor.EnterList()) {
        while (cursor.More() && !cursor.Failed()) {
            rows.push_back(ReadIntegers(cursor));
        }
        cursor.Leave();
    }
    return rows;
}

using Triangle = std::array<int, 3>;

// NOTE: every other triangle of a strip runs the other way round; a fan's all begin at its first point.
void AppendStrips(const std::vector<std::vector<int>>& strips, std::vector<Triangle>& triangles)
{
    for (const std::vector<int>& strip : strips) {
        for (std::size_t i = 0; i + 2 < strip.size(); ++i) {
            const bool odd = i % 2 != 0;
            triangles.push_back({strip[i], strip[odd ? i + 2 : i + 1], strip[odd ? i + 1 : i + 2]});
        }
    }
}

void AppendFans(const std::vector<std::vector<int>>& fans, std::vector<Triangle>& triangles)
{
    for (const std::vector<int>& fan : fans) {
        for (std::size_t i = 1; i + 1 < fan.size(); ++i) {
            triangles.push_back({fan[0], fan[i], fan[i + 1]});
        }
    }
}

gp_XYZ ToKernel(const ModelData_Point& point)
{
    return {point.X(), point.Y(), point.Z()};
}

} // namespace

void StepTessellated::Read(const StepRecords::Record& record, const ModelData_Appearance& surface,
                           const ModelData_Appearance& curve)
{
    ReadItem(record.id, {surface, curve}, 0);
}

// Solid and shell: name, items, link. Face: name, coordinates, number of points, normals, link.
RecordId StepTessellated::LinkOf(const StepRecords::Record& record) const
{
    const StepType type = myRecords.TypeOf(record);
    Cursor arguments = myRecords.Named(record);
    if (type == StepType::TriangulatedFace || type == StepType::ComplexTriangulatedFace) {
        arguments.Skip();
        arguments.Skip();
        arguments.Skip();
        return arguments.Reference();
    }
    if (type != StepType::TessellatedSolid && type != StepType::TessellatedShell) {
        return 0;
    }
    const std::vector<RecordId> members = arguments.References();
    const RecordId link = arguments.Reference();
    const StepRecords::Record* first =
        link != 0 || members.empty() ? nullptr : myRecords.Text().Find(members.front());
    const bool isFace = first != nullptr && (myRecords.TypeOf(*first) == StepType::TriangulatedFace ||
                                             myRecords.TypeOf(*first) == StepType::ComplexTriangulatedFace);
    return isFace ? LinkOf(*first) : link;
}

void StepTessellated::ReadItem(RecordId id, Looks looks, int depth)
{
    if (depth > MaximalNesting) {
        throw Damaged("a tessellation that is made of itself", id);
    }
    myGeometry.CountStep();
    const StepRecords::Record& record = myRecords.Get(id);
    if (const auto found = myStyles.items.find(id); found != myStyles.items.end()) {
        const StepStyle& style = found->second;
        looks.surface = style.surface.IsNull() ? looks.surface : style.surface;
        looks.curve = style.curve.IsNull() ? looks.curve : style.curve;
    }
    Cursor arguments = myRecords.Named(record);
    switch (myRecords.TypeOf(record)) {
    case StepType::TriangulatedFace:
        ReadFace(record, arguments, true, false, looks);
        break;
    case StepType::ComplexTriangulatedFace:
        ReadFace(record, arguments, true, true, looks);
        break;
    case StepType::TriangulatedSurface:
        ReadFace(record, arguments, false, false, looks);
        break;
    case StepType::ComplexTriangulatedSurface:
        ReadFace(record, arguments, false, true, looks);
        break;
    case StepType::TessellatedSolid:
        ++mySolidDepth;
        ReadMembers(arguments, looks, depth);
        --mySolidDepth;
        break;
    case StepType::TessellatedShell:
    case StepType::TessellatedSet:
        ReadMembers(arguments, looks, depth);
        break;
    case StepType::TessellatedCurves:
    case StepType::TessellatedEdge:
        ReadLines(record, arguments, myRecords.TypeOf(record) == StepType::TessellatedCurves, looks);
        break;
    case StepType::Complex: {
        // A set at a place of its own.
        bool found = false;
        Cursor location = myRecords.Part(record, "REPOSITIONED_TESSELLATED_ITEM", found);
        const gp_Trsf before = myPlacement;
        if (found) {
            myPlacement = before * TransformationTo(myGeometry, location.Reference());
            myCoordinates.clear();
        }
        Cursor members = myRecords.Part(record, "TESSELLATED_GEOMETRIC_SET", found);
        ReadMembers(members, looks, depth);
        myPlacement = before;
        myCoordinates.clear();
        break;
    }
    default:
        throw Unsupported("a tessellation of an unknown kind, " + myRecords.NameOf(record), id);
    }
}

void StepTessellated::ReadMembers(Cursor arguments, const Looks& looks, int depth)
{
    const std::vector<RecordId> members = arguments.References();
    for (const RecordId member : members) {
        ReadItem(member, looks, depth + 1);
    }
}

const StepTessellated::Coordinates& StepTessellated::CoordinatesOf(RecordId id)
{
    const auto [known, isNew] = myCoordinates.try_emplace(id);
    if (!isNew) {
        return known->second;
    }
    const StepRecords::Record& record = myRecords.Get(id, StepType::CoordinatesList);
    Cursor arguments = myRecords.Named(record);
    arguments.Skip(); // how many
    const double unit = myGeometry.Units().length;
    const bool isPlaced = myPlacement.Form() != gp_Identity;
    if (arguments.EnterList()) {
        while (arguments.More() && !arguments.Failed()) {
            double c[3] = {0, 0, 0};
            if (!arguments.Reals(c, 3)) {
                break;
            }
            gp_Pnt point(c[0] * unit, c[1] * unit, c[2] * unit);
            if (isPlaced) {
                point.Transform(myPlacement);
            }
            for (const double coordinate : {point.X(), point.Y(), point.Z()}) {
                if (!(std::abs(coordinate) <= MaximalCoordinate)) {
                    throw Damaged("coordinates out of range", id);
                }
            }
            known->second.points.emplace_back(point.X(), point.Y(), point.Z());
        }
    }
    Expect(arguments, record);
    return known->second;
}

std::size_t StepTessellated::GroupOf(const ModelData_Appearance& look, bool hasNormals)
{
    for (std::size_t i = 0; i < myFacets.size(); ++i) {
        const occt::FacetGroup& group = myFacets[i];
        if (group.appearance.Impl() == look.Impl() && group.normals.empty() != hasNormals) {
            return i;
        }
    }
    myFacets.emplace_back();
    myFacets.back().appearance = look;
    return myFacets.size() - 1;
}

// Name, coordinates, number of points, normals [, exact face], pnindex, triangles or strips and fans.
void StepTessellated::ReadFace(const StepRecords::Record& record, Cursor arguments, bool isFace,
                               bool isComplex, const Looks& looks)
{
    mySolidsOnly = mySolidsOnly && mySolidDepth > 0;
    const Coordinates& coordinates = CoordinatesOf(arguments.Reference());
    arguments.Skip(); // how many points
    const std::vector<std::vector<double>> normals = ReadRealRows(arguments);
    if (isFace) {
        arguments.Skip();
    }
    const std::vector<int> indices = ReadIntegers(arguments);
    const std::size_t count = indices.empty() ? coordinates.points.size() : indices.size();
    const std::vector<std::vector<int>> first = ReadIntegerRows(arguments);
    std::vector<Triangle> triangles;
    if (isComplex) {
        AppendStrips(first, triangles);
        AppendFans(ReadIntegerRows(arguments), triangles);
    } else {
        for (const std::vector<int>& row : first) {
            if (row.size() != 3) {
                throw Damaged("a triangle without three points", record.id);
            }
            triangles.push_back({row[0], row[1], row[2]});
        }
    }
    Expect(arguments, record);
    const bool hasNormals = !normals.empty() && (normals.size() == 1 || normals.size() == count);
    occt::FacetGroup& group = myFacets[GroupOf(looks.surface, hasNormals)];
    constexpr U32 Unset = ~U32{0};
    std::vector<U32> made(count, Unset);
    const auto corner = [&](int number) {
        const std::size_t place = Index(number, count, record.id);
        if (made[place] == Unset) {
            const std::size_t point =
                indices.empty() ? place : Index(indices[place], coordinates.points.size(), record.id);
            made[place] = static_cast<U32>(group.points.size());
            group.points.push_back(coordinates.points[point]);
            if (hasNormals) {
                const std::vector<double>& given = normals[normals.size() == 1 ? 0 : place];
                gp_XYZ normal = given.size() == 3 ? gp_XYZ(given[0], given[1], given[2]) : gp_XYZ(0, 0, 1);
                normal = normal.Modulus() > gp::Resolution() ? normal.Normalized() : gp_XYZ(0, 0, 1);
                if (myPlacement.Form() != gp_Identity) {
                    normal = gp_Dir(normal).Transformed(myPlacement).XYZ();
                }
                group.normals.emplace_back(static_cast<float>(normal.X()), static_cast<float>(normal.Y()),
                                           static_cast<float>(normal.Z()));
            }
        }
        return made[place];
    };
    for (const Triangle& triangle : triangles) {
        const U32 a = corner(triangle[0]);
        const U32 b = corner(triangle[1]);
        const U32 c = corner(triangle[2]);
        const gp_XYZ origin = ToKernel(group.points[a]);
        const gp_XYZ area = (ToKernel(group.points[b]) - origin).Crossed(ToKernel(group.points[c]) - origin);
        if (area.Modulus() > 0) {
            group.indices.insert(group.indices.end(), {a, b, c});
        }
    }
}

// Name, coordinates [, exact edge], strips or a strip.
void StepTessellated::ReadLines(const StepRecords::Record& record, Cursor arguments, bool isSet,
                                const Looks& looks)
{
    const Coordinates& coordinates = CoordinatesOf(arguments.Reference());
    if (!isSet) {
        arguments.Skip();
    }
    const std::vector<std::vector<int>> strips =
        isSet ? ReadIntegerRows(arguments) : std::vector<std::vector<int>>{ReadIntegers(arguments)};
    Expect(arguments, record);
    for (const std::vector<int>& strip : strips) {
        occt::FacetCurve curve;
        curve.appearance = looks.curve.IsNull() ? looks.surface : looks.curve;
        for (const int number : strip) {
            curve.points.push_back(coordinates.points[Index(number, coordinates.points.size(), record.id)]);
        }
        if (curve.points.size() > 1) {
            myPolylines.push_back(std::move(curve));
        }
    }
}

bool StepTessellated::IsSolid() const
{
    if (!mySolidsOnly) {
        return false;
    }
    std::map<std::tuple<double, double, double>, int> places;
    std::map<std::pair<int, int>, int> edges;
    for (const occt::FacetGroup& group : myFacets) {
        std::vector<int> numbers;
        for (const ModelData_Point& point : group.points) {
            const auto size = static_cast<int>(places.size());
            numbers.push_back(
                places.try_emplace({point.X() + 0.0, point.Y() + 0.0, point.Z() + 0.0}, size).first->second);
        }
        for (std::size_t i = 0; i + 2 < group.indices.size(); i += 3) {
            for (std::size_t k = 0; k < 3; ++k) {
                const int a = numbers[group.indices[i + k]];
                const int b = numbers[group.indices[i + (k + 1) % 3]];
                edges[std::minmax(a, b)] += a < b ? 1 : -1;
            }
        }
    }
    return !edges.empty() &&
           std::all_of(edges.begin(), edges.end(), [](const auto& edge) { return edge.second == 0; });
}

} // namespace cadex::step
