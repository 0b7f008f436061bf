#include "sdk/jt/JtShapes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <string>

#include "sdk/jt/JtElements.h"
#include "sdk/jt/JtTopology.h"
#include "sdk/jt/JtVertices.h"
#include "sdk/mesh/Polygons.h"
#include "sdk/text/Inflate.h"

namespace cadex::jt {

namespace {

using internal::TriangleArrays;

/// What the primitives of a shape are.
enum class Primitive : std::uint8_t
{
    Strips,
    Polygons,
    Polylines,
    Points
};

Primitive PrimitiveOf(const Guid& id)
{
    if (id == kind::TriangleLevel) {
        return Primitive::Strips;
    }
    if (id == kind::PolygonLevel) {
        return Primitive::Polygons;
    }
    if (id == kind::PolylineLevel) {
        return Primitive::Polylines;
    }
    if (id == kind::PointLevel) {
        return Primitive::Points;
    }
    throw Unsupported("a shape of an unknown kind");
}

void AddTriangle(TriangleArrays& arrays, U32 a, U32 b, U32 c)
{
    if (a != b && b != c && a != c) {
        arrays.indices.insert(arrays.indices.end(), {a, b, c});
    }
}

void AddPolygon(TriangleArrays& arrays, const std::vector<U32>& corners)
{
    if (corners.size() > 3) {
        std::vector<ModelData_Point> polygon;
        polygon.reserve(corners.size());
        for (const U32 corner : corners) {
            polygon.push_back(arrays.points[corner]);
        }
        std::vector<std::size_t> places;
        mesh::PolygonCutter cutter;
        if (cutter.Cut(polygon, places)) {
            for (std::size_t i = 0; i + 2 < places.size(); i += 3) {
                AddTriangle(arrays, corners[places[i]], corners[places[i + 1]], corners[places[i + 2]]);
            }
            return;
        }
    }
    for (std::size_t i = 2; i < corners.size(); ++i) {
        AddTriangle(arrays, corners[0], corners[i - 1], corners[i]);
    }
}

/// Cuts the primitives, whose corners are `corners` from one start to the next.
void AddPrimitives(Shape& shape, Primitive primitive, const std::vector<std::int32_t>& starts,
                   const std::vector<U32>& corners)
{
    for (std::size_t i = 0; i + 1 < starts.size(); ++i) {
        if (starts[i] < 0 || starts[i + 1] < starts[i] ||
            static_cast<std::size_t>(starts[i + 1]) > corners.size()) {
            throw Unreadable("the strips of a shape are damaged");
        }
        const auto first = static_cast<std::size_t>(starts[i]);
        const auto last = static_cast<std::size_t>(starts[i + 1]);
        if (primitive == Primitive::Strips) {
            for (std::size_t k = first + 2; k < last; ++k) {
                const bool isTurned = (k - first) % 2 != 0;
                AddTriangle(shape.arrays, corners[isTurned ? k - 1 : k - 2],
                            corners[isTurned ? k - 2 : k - 1], corners[k]);
            }
        } else if (primitive == Primitive::Polygons) {
            AddPolygon(shape.arrays, {corners.begin() + static_cast<std::ptrdiff_t>(first),
                                      corners.begin() + static_cast<std::ptrdiff_t>(last)});
        } else if (primitive == Primitive::Polylines) {
            shape.lines.emplace_back(corners.begin() + static_cast<std::ptrdiff_t>(first),
                                     corners.begin() + static_cast<std::ptrdiff_t>(last));
        } else {
            for (std::size_t k = first; k < last; ++k) {
                shape.lines.push_back({corners[k]});
            }
        }
    }
}

struct Bindings
{
    bool hasNormals = false;
    bool hasUvs = false;
    bool hasColours = false;
};

/// Vertices as they stand, packed as a whole: for each its texture coordinates, colour, normal, position.
VertexTable ReadExactVertices(Bytes& in, const Bindings& bindings, Budget& budget)
{
    const std::int32_t size = in.I32();
    const std::int32_t packedSize = in.I32(); // negative where it did not pay
    if (size < 0) {
        throw Unreadable("the vertices of a shape are damaged");
    }
    std::string storage;
    std::string_view raw;
    if (packedSize > 0) {
        const std::string_view packed = in.Take(static_cast<std::size_t>(packedSize));
        budget.Take(static_cast<std::size_t>(size));
        if (text::CanInflateTo(packed, static_cast<std::size_t>(size))) {
            storage.resize(static_cast<std::size_t>(size));
            raw = text::Inflate(packed, text::Packing::Zlib, storage) ? std::string_view(storage) : raw;
        }
    } else {
        raw = in.Take(static_cast<std::size_t>(-static_cast<std::int64_t>(packedSize)));
    }
    const std::size_t before = (bindings.hasUvs ? 2 : 0) + (bindings.hasColours ? 3 : 0);
    const std::size_t each = (before + (bindings.hasNormals ? 6 : 3)) * sizeof(float);
    if (raw.size() != static_cast<std::size_t>(size) || raw.size() % each != 0) {
        throw Unreadable("the vertices of a shape are damaged");
    }
    const std::size_t count = raw.size() / each;
    VertexTable table;
    table.hasColours = bindings.hasColours;
    table.points.reserve(count);
    table.normals.reserve(bindings.hasNormals ? count : 0);
    table.uvs.reserve(bindings.hasUvs ? count : 0);
    Bytes data(raw, in.FileFormat());
    for (std::size_t i = 0; i < count; ++i) {
        std::array<float, 3> v{};
        if (bindings.hasUvs) {
            v[0] = data.F32();
            v[1] = data.F32();
            table.uvs.emplace_back(v[0], v[1]);
        }
        data.Skip(bindings.hasColours ? 3 * sizeof(float) : 0);
        if (bindings.hasNormals) {
            std::generate(v.begin(), v.end(), [&] { return data.F32(); });
            table.normals.emplace_back(v[0], v[1], v[2]);
        }
        std::generate(v.begin(), v.end(), [&] { return data.F32(); });
        if (!std::isfinite(v[0]) || !std::isfinite(v[1]) || !std::isfinite(v[2])) {
            throw Unreadable("a point is not finite");
        }
        table.points.emplace_back(v[0], v[1], v[2]);
    }
    return table;
}

void TakeVertices(Shape& shape, VertexTable&& table)
{
    shape.hasColours = table.hasColours;
    shape.arrays.points = std::move(table.points);
    shape.arrays.normals = std::move(table.normals);
    shape.arrays.uvs = std::move(table.uvs);
}

/// NOTE: "Vertex Based Shape Compressed Rep Data", version 8.
void ReadFirstForm(Bytes& in, Primitive primitive, Shape& shape, Budget& budget)
{
    in.Skip(2 + 4 + 4); // version; bindings and bits, which stand below once more
    in.Skip(2 + 2);     // versions of the kind of shape and of what follows
    Bindings bindings;
    bindings.hasNormals = in.U8() != 0;
    bindings.hasUvs = in.U8() != 0;
    bindings.hasColours = in.U8() != 0;
    const std::uint8_t bits = in.U8();
    in.Skip(3);
    const std::vector<std::int32_t> starts = ReadPacket(in, Predictor::Stride1, budget);
    std::vector<U32> corners;
    if (bits == 0) {
        TakeVertices(shape, ReadExactVertices(in, bindings, budget));
        corners.resize(shape.arrays.points.size());
        std::iota(corners.begin(), corners.end(), U32{0});
    } else {
        TakeVertices(shape, ReadQuantisedVertices(in, bindings.hasNormals, bindings.hasUvs,
                                                  bindings.hasColours, budget));
        const std::vector<std::int32_t> indices = ReadPacket(in, Predictor::StripIndex, budget);
        corners.reserve(indices.size());
        for (const std::int32_t index : indices) {
            if (index < 0 || static_cast<std::size_t>(index) >= shape.arrays.points.size()) {
                throw Unreadable("the strips of a shape are damaged");
            }
            corners.push_back(static_cast<U32>(index));
        }
    }
    AddPrimitives(shape, primitive, starts, corners);
}

/// One vertex for each pair of position and attribute that occurs.
class VertexPairs
{
public:
    VertexPairs(const CodedMesh& mesh, const VertexTable& table, TriangleArrays& arrays)
        : myTable(table), myArrays(arrays), myOfAttribute(mesh.attributeCount, {Unused, 0})
    {
        myHasAttributes = !table.normals.empty() || !table.uvs.empty();
        if (table.points.size() != mesh.pointCount ||
            (!table.normals.empty() && table.normals.size() != mesh.attributeCount) ||
            (!table.uvs.empty() && table.uvs.size() != mesh.attributeCount)) {
            throw Unreadable("the vertices of a shape are damaged");
        }
        if (!myHasAttributes) {
            myArrays.points = table.points;
        }
    }

    U32 Of(U32 point, U32 attribute)
    {
        if (!myHasAttributes) {
            return point;
        }
        if (attribute >= myOfAttribute.size()) {
            throw Unreadable("the vertices of a shape are damaged");
        }
        auto& [owner, vertex] = myOfAttribute[attribute]; // an attribute belongs to one position
        if (owner == Unused) {
            owner = point;
            vertex = static_cast<U32>(myArrays.points.size());
            myArrays.points.push_back(myTable.points[point]);
            if (!myTable.normals.empty()) {
                myArrays.normals.push_back(myTable.normals[attribute]);
            }
            if (!myTable.uvs.empty()) {
                myArrays.uvs.push_back(myTable.uvs[attribute]);
            }
        }
        return vertex;
    }

private:
    static constexpr U32 Unused = 0xFFFFFFFF;

    const VertexTable& myTable;
    TriangleArrays& myArrays;
    bool myHasAttributes = false;
    std::vector<std::pair<U32, U32>> myOfAttribute; ///< position and vertex
};

/// NOTE: "TopoMesh Topologically Compressed LOD Data", from version 9 on.
void ReadSecondForm(Bytes& in, Primitive primitive, Shape& shape, Budget& budget)
{
    if (primitive != Primitive::Strips && primitive != Primitive::Polygons) {
        throw Unsupported("lines and points of files from version 9 on");
    }
    in.Version();
    in.Version();
    in.U64();     // bindings, which stand below once more
    in.Version(); // of the data that follow
    in.I32();
    in.Version();
    const CodedMesh mesh = ReadTopology(in, budget);
    const VertexTable table = ReadVertexRecords(in, budget);
    shape.hasColours = table.hasColours;
    VertexPairs vertices(mesh, table, shape.arrays);
    std::vector<U32> corners;
    for (std::size_t i = 0; i + 1 < mesh.starts.size(); ++i) {
        corners.clear();
        for (std::size_t k = mesh.starts[i]; k < mesh.starts[i + 1]; ++k) {
            corners.push_back(vertices.Of(mesh.points[k], mesh.attributes[k]));
        }
        AddPolygon(shape.arrays, corners);
    }
}

} // namespace

Shape ReadShape(Bytes in, Budget& values)
{
    Element element = ReadElement(in, false);
    Shape shape;
    const Primitive primitive = PrimitiveOf(element.kind);
    const bool isFlat = primitive == Primitive::Strips || primitive == Primitive::Polygons;
    shape.kind = isFlat ? Shape::Kind::Triangles : Shape::Kind::Polylines;
    if (in.FileFormat().IsV8()) {
        ReadFirstForm(element.data, primitive, shape, values);
        return shape;
    }
    try {
        ReadSecondForm(element.data, primitive, shape, values);
    } catch (const Unreadable& reason) {
        // later minor versions may pack in other ways
        if (in.FileFormat().IsV10()) {
            throw Unsupported(std::string("a shape of a newer form: ") + reason.what());
        }
        throw;
    }
    return shape;
}

} // namespace cadex::jt
