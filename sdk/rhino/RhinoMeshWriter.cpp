#include "sdk/rhino/RhinoMeshWriter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <unordered_map>

#include "sdk/rhino/RhinoTables.h"

namespace cadex::rhino {

namespace {

constexpr double Farthest = 1e30; ///< far within single precision

/// From corners with an index for each kind of value to vertices with one.
class Vertices
{
public:
    explicit Vertices(const internal::TriangleSetImpl& mesh) : myMesh(mesh)
    {
        const bool sharesNormals = !mesh.HasNormals() || mesh.normals.indices.empty();
        const bool sharesUVs = !mesh.HasUVs() || mesh.uvs.indices.empty();
        if (!sharesNormals || !sharesUVs) {
            Separate();
        }
    }

    std::size_t Count() const { return IsShared() ? myMesh.points.size() : myCornerOf.size(); }
    U32 OfCorner(std::size_t corner) const
    {
        return IsShared() ? myMesh.indices[corner] : myVertexOf[corner];
    }
    const ModelData_Point& Point(std::size_t vertex) const
    {
        return myMesh.points[IsShared() ? vertex : myMesh.indices[myCornerOf[vertex]]];
    }
    const ModelData_Vectorf& Normal(std::size_t vertex) const
    {
        return myMesh.normals.values[IsShared() ? vertex : myMesh.normals.index[myCornerOf[vertex]]];
    }
    const ModelData_Point2d& UV(std::size_t vertex) const
    {
        return myMesh.uvs.values[IsShared() ? vertex : myMesh.uvs.index[myCornerOf[vertex]]];
    }

private:
    bool IsShared() const { return myVertexOf.empty(); }

    void Separate()
    {
        using Key = std::array<U32, 3>;
        struct Hash
        {
            std::size_t operator()(const Key& key) const
            {
                std::uint64_t mixed = 0;
                for (const U32 part : key) {
                    mixed = (mixed ^ part) * 0x9E3779B97F4A7C15U;
                    mixed ^= mixed >> 29;
                }
                return static_cast<std::size_t>(mixed);
            }
        };
        std::unordered_map<Key, U32, Hash> known;
        known.reserve(myMesh.points.size() * 2);
        myVertexOf.reserve(myMesh.indices.size());
        for (std::size_t corner = 0; corner < myMesh.indices.size(); ++corner) {
            const Key key{myMesh.indices[corner], myMesh.HasNormals() ? myMesh.normals.index[corner] : 0,
                          myMesh.HasUVs() ? myMesh.uvs.index[corner] : 0};
            const auto [place, isNew] = known.try_emplace(key, static_cast<U32>(myCornerOf.size()));
            if (isNew) {
                myCornerOf.push_back(corner);
            }
            myVertexOf.push_back(place->second);
        }
    }

    const internal::TriangleSetImpl& myMesh;
    std::vector<U32> myVertexOf;         ///< by corner; empty when the vertices are the mesh's points
    std::vector<std::size_t> myCornerOf; ///< one corner of each vertex
};

/// Appends values to bytes whose room was reserved.
template <typename T>
void Append(std::string& bytes, std::initializer_list<T> values)
{
    bytes.append(reinterpret_cast<const char*>(values.begin()), values.size() * sizeof(T));
}

class MeshWriter
{
public:
    MeshWriter(ChunkWriter& out, const internal::TriangleSetImpl& mesh, const mesh::Matrix3& linear)
        : myOut(out), myMesh(mesh), myLinear(linear), myVertices(mesh)
    {
        const bool isUniform = linear[1] == 0 && linear[2] == 0 && linear[3] == 0 && linear[5] == 0 &&
                               linear[6] == 0 && linear[7] == 0 && linear[0] == linear[4] &&
                               linear[4] == linear[8] && linear[0] > 0;
        myFactor = isUniform ? linear[0] : 0;
        myIsMirrored = mesh::Determinant(linear) < 0;
        ListPoints();
        ListFaces();
    }

    void Write()
    {
        const std::size_t vertices = myVertices.Count();
        const std::size_t faces = myFaces.size() / 3;
        myOut.BeginObject(MeshId);
        myOut.Put(std::uint8_t{0x35}); // version 3.5
        myOut.PutAll({static_cast<std::int32_t>(vertices), static_cast<std::int32_t>(faces)});
        myOut.PutAll({0., 1., 0., 1., 0., 1., 0., 1.}); // domains of texture and surface
        myOut.PutAll({0., 0.});                         // size of the surface
        myOut.Put(myBox);
        myOut.PutAll({1.F, 1.F, 1.F, -1.F, -1.F, -1.F}); // boxes of normals and texture: not known
        myOut.PutAll({1.F, 1.F, -1.F, -1.F});
        myOut.Put(std::int32_t{-1});                 // closed: not known
        myOut.PutAll<std::uint8_t>({0, 0, 0, 0, 0}); // no parameters, no statistics
        WriteFaces(vertices);
        if (vertices > 0) {
            myOut.Buffer(vertices * 12, [&] { return std::string(PointBytes()); });
            myOut.Buffer(myMesh.HasNormals() ? vertices * 12 : 0, [&] { return NormalBytes(); });
            myOut.Buffer(myMesh.HasUVs() ? vertices * 8 : 0, [&] { return UVBytes(); });
            myOut.Put(std::uint32_t{0}); // curvatures
            myOut.Put(std::uint32_t{0}); // colours
        }
        myOut.Put(std::int32_t{0});
        myOut.Put(Uuid()); // mapping
        if (vertices > 0) {
            myOut.Put(std::uint32_t{0}); // surface parameters
        }
        myOut.BeginVersioned(1, 1); // tag of the mapping
        myOut.Put(Uuid());
        myOut.Put(std::uint32_t{0});
        myOut.PutIdentity();
        myOut.Put(std::uint32_t{0});
        myOut.End();
        myOut.PutAll<std::uint8_t>({0, 0, 0});
        myOut.EndData();
        if (myIsRounded) {
            WriteExactPoints();
        }
        myOut.EndObject();
    }

private:
    std::array<double, 3> Mapped(const ModelData_Point& point) const
    {
        if (myFactor != 0) {
            return {point.X() * myFactor, point.Y() * myFactor, point.Z() * myFactor};
        }
        return mesh::Multiply(myLinear, mesh::Vector3{point.X(), point.Y(), point.Z()});
    }

    void ListPoints()
    {
        const std::size_t count = myVertices.Count();
        myPoints.reserve(count);
        myIsUsable.assign(count, true);
        std::array<float, 3> low{};
        std::array<float, 3> high{};
        for (std::size_t i = 0; i < count; ++i) {
            const std::array<double, 3> exact = Mapped(myVertices.Point(i));
            std::array<float, 3> rounded{};
            for (std::size_t k = 0; k < 3; ++k) {
                if (!(std::abs(exact[k]) < Farthest)) {
                    myIsUsable[i] = false;
                    myHasUnusable = true;
                    continue;
                }
                rounded[k] = static_cast<float>(exact[k]);
                myIsRounded = myIsRounded || static_cast<double>(rounded[k]) != exact[k];
                low[k] = i == 0 ? rounded[k] : std::min(low[k], rounded[k]);
                high[k] = i == 0 ? rounded[k] : std::max(high[k], rounded[k]);
            }
            myPoints.push_back(rounded);
        }
        std::copy(low.begin(), low.end(), myBox.begin());
        std::copy(high.begin(), high.end(), myBox.begin() + 3);
    }

    void ListFaces()
    {
        myFaces.reserve(myMesh.indices.size());
        for (std::size_t i = 0; i + 2 < myMesh.indices.size(); i += 3) {
            const U32 a = myVertices.OfCorner(i);
            const U32 b = myVertices.OfCorner(i + (myIsMirrored ? 2 : 1));
            const U32 c = myVertices.OfCorner(i + (myIsMirrored ? 1 : 2));
            const bool isUsable = !myHasUnusable || (myIsUsable[a] && myIsUsable[b] && myIsUsable[c]);
            if (a != b && b != c && c != a && isUsable) {
                const U32 corners[] = {a, b, c};
                myFaces.insert(myFaces.end(), corners, corners + 3);
            }
        }
    }

    template <typename Index>
    void WriteFacesAs()
    {
        myOut.Put(static_cast<std::int32_t>(sizeof(Index)));
        const std::size_t size = myFaces.size() / 3 * 4 * sizeof(Index);
        if (myOut.IsMeasuring()) {
            myOut.Skip(size);
            return;
        }
        std::vector<Index> corners;
        corners.reserve(myFaces.size() / 3 * 4);
        for (std::size_t i = 0; i < myFaces.size(); i += 3) {
            const Index third = static_cast<Index>(myFaces[i + 2]);
            const Index face[] = {static_cast<Index>(myFaces[i]), static_cast<Index>(myFaces[i + 1]), third,
                                  third};
            corners.insert(corners.end(), face, face + 4);
        }
        myOut.Bytes({reinterpret_cast<const char*>(corners.data()), size});
    }

    void WriteFaces(std::size_t vertices)
    {
        if (vertices <= std::numeric_limits<std::uint8_t>::max()) {
            WriteFacesAs<std::uint8_t>();
        } else if (vertices <= std::numeric_limits<std::uint16_t>::max()) {
            WriteFacesAs<std::uint16_t>();
        } else {
            WriteFacesAs<std::uint32_t>();
        }
    }

    std::string_view PointBytes() const
    {
        return {reinterpret_cast<const char*>(myPoints.data()), myPoints.size() * sizeof(myPoints[0])};
    }

    std::string NormalBytes() const
    {
        const mesh::Matrix3 cofactors = mesh::Cofactors(myLinear);
        std::string bytes;
        bytes.reserve(myVertices.Count() * 12);
        for (std::size_t i = 0; i < myVertices.Count(); ++i) {
            const ModelData_Vectorf& normal = myVertices.Normal(i);
            if (myFactor != 0) {
                Append(bytes, {normal.X(), normal.Y(), normal.Z()});
                continue;
            }
            const mesh::Vector3 turned =
                mesh::Multiply(cofactors, mesh::Vector3{normal.X(), normal.Y(), normal.Z()});
            double length = std::hypot(turned[0], turned[1], turned[2]);
            length = length > 0 ? (myIsMirrored ? -length : length) : 1;
            Append(bytes, {static_cast<float>(turned[0] / length), static_cast<float>(turned[1] / length),
                           static_cast<float>(turned[2] / length)});
        }
        return bytes;
    }

    std::string UVBytes() const
    {
        std::string bytes;
        bytes.reserve(myVertices.Count() * 8);
        for (std::size_t i = 0; i < myVertices.Count(); ++i) {
            const ModelData_Point2d& uv = myVertices.UV(i);
            Append(bytes, {static_cast<float>(uv.X()), static_cast<float>(uv.Y())});
        }
        return bytes;
    }

    /// NOTE: as files of version 5 keep them: counts, the checksum of the rounded points, so that a reader
    /// knows whether the two still belong together, and that of the exact ones.
    void WriteExactPoints()
    {
        const std::size_t count = myPoints.size();
        myOut.BeginUserData(ExactPointsId);
        myOut.BeginVersioned(1, 0);
        myOut.PutAll({static_cast<std::int32_t>(count), static_cast<std::int32_t>(count)});
        if (myOut.IsMeasuring()) {
            myOut.Skip(8 + 4 + count * 24);
        } else {
            std::string bytes;
            bytes.reserve(count * 24);
            for (std::size_t i = 0; i < count; ++i) {
                const auto point = myIsUsable[i] ? Mapped(myVertices.Point(i)) : std::array<double, 3>{};
                Append(bytes, {point[0], point[1], point[2]});
            }
            myOut.PutAll({ChunkWriter::ChecksumOf(PointBytes()), ChunkWriter::ChecksumOf(bytes)});
            myOut.Put(static_cast<std::int32_t>(count));
            myOut.Bytes(bytes);
        }
        myOut.End();
        myOut.EndUserData();
    }

    ChunkWriter& myOut;
    const internal::TriangleSetImpl& myMesh;
    const mesh::Matrix3& myLinear;
    Vertices myVertices;
    double myFactor = 0; ///< when the points are only scaled
    bool myIsMirrored = false;
    bool myIsRounded = false;
    bool myHasUnusable = false;
    std::vector<std::array<float, 3>> myPoints;
    std::vector<bool> myIsUsable;
    std::vector<U32> myFaces;
    std::array<float, 6> myBox{};
};

} // namespace

void WriteMesh(ChunkWriter& out, const internal::TriangleSetImpl& mesh, const mesh::Matrix3& linear)
{
    MeshWriter(out, mesh, linear).Write();
}

} // namespace cadex::rhino
