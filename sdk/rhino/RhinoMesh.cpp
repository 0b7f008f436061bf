#include "sdk/rhino/RhinoMesh.h"

#include <algorithm>

namespace cadex::rhino {

namespace {

template <typename T>
T ItemAt(std::string_view bytes, std::size_t index)
{
    T value;
    std::memcpy(&value, bytes.data() + index * sizeof(T), sizeof(T));
    return value;
}

/// The arrays of a mesh: buffers in newer files, counted arrays in older ones.
class VertexArrays
{
public:
    VertexArrays(Chunk& data, bool packed, std::size_t vertices)
        : myData(data), myIsPacked(packed), myVertices(vertices)
    {
    }

    /// Nothing, or as many items as vertices.
    std::string Next(std::size_t itemSize)
    {
        if (myIsPacked) {
            return myVertices == 0 ? std::string() : myData.Buffer(myVertices * itemSize);
        }
        const std::size_t count = myData.Count(itemSize);
        return std::string(myData.Take(count * itemSize));
    }

private:
    Chunk& myData;
    bool myIsPacked;
    std::size_t myVertices;
};

double SquaredDistance(const ModelData_Point& a, const ModelData_Point& b)
{
    const double x = a.X() - b.X();
    const double y = a.Y() - b.Y();
    const double z = a.Z() - b.Z();
    return x * x + y * y + z * z;
}

void AddTriangle(std::vector<U32>& indices, U32 a, U32 b, U32 c)
{
    if (a != b && b != c && c != a) {
        const U32 corners[] = {a, b, c};
        indices.insert(indices.end(), corners, corners + 3);
    }
}

/// A triangle has its third corner twice. Faces with a corner outside the vertices are left out.
template <typename Index>
void AddFaces(std::string_view bytes, std::size_t faces, internal::TriangleArrays& arrays)
{
    const std::size_t points = arrays.points.size();
    arrays.indices.reserve(faces * 3);
    for (std::size_t face = 0; face < faces; ++face) {
        U32 corner[4];
        bool isKnown = true;
        for (std::size_t i = 0; i < 4; ++i) {
            corner[i] = static_cast<U32>(ItemAt<Index>(bytes, face * 4 + i));
            isKnown = isKnown && corner[i] < points;
        }
        if (!isKnown) {
            continue;
        }
        const auto [a, b, c, d] = corner;
        if (c == d) {
            AddTriangle(arrays.indices, a, b, c);
        } else if (SquaredDistance(arrays.points[a], arrays.points[c]) <=
                   SquaredDistance(arrays.points[b], arrays.points[d])) {
            AddTriangle(arrays.indices, a, b, c);
            AddTriangle(arrays.indices, a, c, d);
        } else {
            AddTriangle(arrays.indices, a, b, d);
            AddTriangle(arrays.indices, b, c, d);
        }
    }
}

template <typename Number>
void SetPoints(std::string_view bytes, double millimetres, std::vector<ModelData_Point>& points)
{
    const auto scaled = [&](std::size_t index) { return ItemAt<Number>(bytes, index) * millimetres; };
    points.resize(bytes.size() / sizeof(Number) / 3);
    for (std::size_t i = 0; i < points.size(); ++i) {
        points[i] = {scaled(3 * i), scaled(3 * i + 1), scaled(3 * i + 2)};
    }
}

void SetNormals(std::string_view bytes, std::vector<ModelData_Vectorf>& normals)
{
    normals.reserve(bytes.size() / 12);
    for (std::size_t i = 0; i < bytes.size() / 12; ++i) {
        normals.emplace_back(ItemAt<float>(bytes, 3 * i), ItemAt<float>(bytes, 3 * i + 1),
                             ItemAt<float>(bytes, 3 * i + 2));
    }
}

void SetCoordinates(std::string_view bytes, std::vector<ModelData_Point2d>& uvs)
{
    uvs.reserve(bytes.size() / 8);
    for (std::size_t i = 0; i < bytes.size() / 8; ++i) {
        uvs.emplace_back(ItemAt<float>(bytes, 2 * i), ItemAt<float>(bytes, 2 * i + 1));
    }
}

void SetColour(std::string_view bytes, Mesh& mesh)
{
    const std::size_t count = bytes.size() / sizeof(PackedColour);
    for (std::size_t i = 0; i < count && !mesh.hasMixedColours; ++i) {
        const auto colour = ItemAt<PackedColour>(bytes, i);
        mesh.hasMixedColours = mesh.colour && *mesh.colour != colour;
        mesh.colour = colour;
    }
    if (mesh.hasMixedColours) {
        mesh.colour.reset();
    }
}

void SkipOptional(Chunk& data)
{
    if (data.Bool()) {
        data.SkipChild();
    }
}

/// What newer versions append; gives the vertices in double precision when they are there.
std::string ReadAppendix(Chunk& data, int minor, std::size_t vertices)
{
    std::string exact;
    data.Skip(16); // mapping
    if (vertices > 0) {
        data.Buffer(vertices * 16); // surface parameters
    }
    if (minor >= 4) {
        data.SkipChild();
    }
    if (minor >= 5) {
        data.Skip(3);
    }
    if (minor >= 6) {
        SkipOptional(data); // which faces form polygons of more corners: their triangles are there anyway
    }
    if (minor >= 7 && data.Bool()) {
        Chunk::Version version;
        Chunk chunk = data.Versioned(version);
        const std::size_t count = chunk.U32();
        if (count == vertices) {
            exact = chunk.Buffer(vertices * 24);
            chunk.Finish();
        }
    }
    if (minor >= 8) {
        data.Skip(48);
    }
    if (minor > 8) {
        data.SkipRest();
    }
    return exact;
}

} // namespace

Mesh ReadMesh(Chunk& data, double millimetres)
{
    const Chunk::Version version = data.ByteVersion();
    if (version.major != 1 && version.major != 3) {
        throw Unreadable("a mesh is of an unknown version");
    }
    const std::int32_t vertexCount = data.I32();
    const std::int32_t faceCount = data.I32();
    if (vertexCount < 0 || faceCount < 0) {
        throw Unreadable("a mesh has a negative size");
    }
    const auto vertices = static_cast<std::size_t>(vertexCount);
    const auto faces = static_cast<std::size_t>(faceCount);
    data.Skip(64 + 16 + 64 + 4); // domains and scale of texture and surface, boxes, closed
    for (int i = 0; i < 5; ++i) {
        SkipOptional(data); // mesh parameters, statistics of curvatures
    }
    const std::int32_t indexSize = data.I32();
    if (indexSize != 1 && indexSize != 2 && indexSize != 4) {
        throw Unreadable("the indices of a mesh have an unknown size");
    }
    if (faces > data.Left() / (4 * static_cast<std::size_t>(indexSize))) {
        throw Unreadable("a mesh claims more faces than there are");
    }
    const std::string_view indices = data.Take(faces * 4 * static_cast<std::size_t>(indexSize));

    VertexArrays arrays(data, version.major == 3, vertices);
    Mesh mesh;
    SetPoints<float>(arrays.Next(12), millimetres, mesh.arrays.points);
    SetNormals(arrays.Next(12), mesh.arrays.normals);
    SetCoordinates(arrays.Next(8), mesh.arrays.uvs);
    arrays.Next(16); // curvatures
    SetColour(arrays.Next(4), mesh);
    if (version.minor >= 2) {
        data.Skip(4);
    }
    if (version.major == 3 && version.minor >= 3) {
        const std::string exact = ReadAppendix(data, version.minor, vertices);
        if (!exact.empty()) {
            SetPoints<double>(exact, millimetres, mesh.arrays.points);
        }
    }
    switch (indexSize) {
    case 1:
        AddFaces<std::uint8_t>(indices, faces, mesh.arrays);
        break;
    case 2:
        AddFaces<std::uint16_t>(indices, faces, mesh.arrays);
        break;
    default:
        AddFaces<std::uint32_t>(indices, faces, mesh.arrays);
        break;
    }
    return mesh;
}

void UseExactPoints(Mesh& mesh, const std::vector<double>& points, double millimetres)
{
    if (points.size() == mesh.arrays.points.size() * 3) {
        SetPoints<double>({reinterpret_cast<const char*>(points.data()), points.size() * sizeof(double)},
                          millimetres, mesh.arrays.points);
    }
}

} // namespace cadex::rhino
