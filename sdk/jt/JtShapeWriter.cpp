#include "sdk/jt/JtShapeWriter.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <unordered_map>

#include <zlib.h>

#include <cadex/internal/Reports.hxx>

#include "sdk/jt/JtOut.h"
#include "sdk/jt/JtStrips.h"
#include "sdk/model/TriangleSets.h"

namespace cadex::jt {

namespace {

/// Vertices of a shape, each a position with what belongs to it.
struct VertexList
{
    std::vector<std::array<float, 3>> points;
    std::vector<std::array<float, 3>> normals;
    std::vector<std::array<float, 2>> uvs;
};

std::array<float, 3> Mapped(const ModelData_Point& point, const mesh::Matrix3& linear)
{
    const mesh::Vector3 mapped = mesh::Multiply(linear, mesh::ToVector(point));
    return {static_cast<float>(mapped[0]), static_cast<float>(mapped[1]), static_cast<float>(mapped[2])};
}

/// Indices of position, normal and texture coordinate; those that a set has not are 0.
struct CornerKey
{
    U32 point = 0;
    U32 normal = 0;
    U32 uv = 0;

    friend bool operator==(const CornerKey&, const CornerKey&) = default;
};
struct CornerHash
{
    std::size_t operator()(const CornerKey& key) const
    {
        std::uint64_t bits = key.point * 0x9E3779B97F4A7C15U;
        bits = (bits ^ (bits >> 32) ^ key.normal) * 0xBF58476D1CE4E5B9U;
        bits = (bits ^ (bits >> 32) ^ key.uv) * 0x94D049BB133111EBU;
        return static_cast<std::size_t>(bits ^ (bits >> 29));
    }
};

/// One vertex for each triple of indices; gives the triangles by vertices.
std::vector<U32> MergeCorners(const internal::TriangleSetImpl& set, const mesh::Matrix3& linear,
                              VertexList& list)
{
    const bool hasNormals = set.HasNormals();
    const bool hasUvs = set.HasUVs();
    const mesh::Matrix3 turn =
        mesh::Transposed(mesh::Determinant(linear) != 0 ? mesh::Inverse(linear) : mesh::Identity3);
    std::unordered_map<CornerKey, U32, CornerHash> known;
    known.reserve(set.points.size() + set.points.size() / 2);
    std::vector<U32> indices;
    indices.reserve(set.indices.size());
    for (std::size_t corner = 0; corner < set.indices.size(); ++corner) {
        const CornerKey key{set.indices[corner], hasNormals ? set.normals.index[corner] : 0,
                            hasUvs ? set.uvs.index[corner] : 0};
        const auto [place, isNew] = known.try_emplace(key, static_cast<U32>(list.points.size()));
        indices.push_back(place->second);
        if (!isNew) {
            continue;
        }
        list.points.push_back(Mapped(set.points[key.point], linear));
        if (hasNormals) {
            const ModelData_Vectorf& n = set.normals.values[key.normal];
            const mesh::Vector3 turned = mesh::Multiply(turn, mesh::Vector3{n.X(), n.Y(), n.Z()});
            const double length = std::max(mesh::Length(turned), std::numeric_limits<double>::min());
            list.normals.push_back({static_cast<float>(turned[0] / length),
                                    static_cast<float>(turned[1] / length),
                                    static_cast<float>(turned[2] / length)});
        }
        if (hasUvs) {
            const ModelData_Point2d& uv = set.uvs.values[key.uv];
            list.uvs.push_back({static_cast<float>(uv.X()), static_cast<float>(uv.Y())});
        }
    }
    return indices;
}

void Include(ShapeFacts& facts, const std::array<float, 3>& point)
{
    for (std::size_t i = 0; i < 3; ++i) {
        facts.box[i] = facts.vertices == 0 ? point[i] : std::min(facts.box[i], point[i]);
        facts.box[3 + i] = facts.vertices == 0 ? point[i] : std::max(facts.box[3 + i], point[i]);
    }
    ++facts.vertices;
}

double AreaOf(const VertexList& list, const std::vector<U32>& indices)
{
    double area = 0;
    for (std::size_t i = 0; i + 2 < indices.size(); i += 3) {
        const auto at = [&](std::size_t k) {
            const std::array<float, 3>& p = list.points[indices[i + k]];
            return mesh::Vector3{p[0], p[1], p[2]};
        };
        area += mesh::Length(mesh::Cross(mesh::Minus(at(1), at(0)), mesh::Minus(at(2), at(0)))) / 2;
    }
    return area;
}

/// NOTE: "Vertex Based Shape Compressed Rep Data": the list of starts not coded, but as differences from what
/// the predictor expects; then the vertices of all corners as they stand, in a zlib stream.
std::string WriteElement(const VertexList& list, const Strips& strips, ShapeFacts& facts)
{
    Out out;
    const auto putBindings = [&] {
        out.U8(facts.hasNormals ? 1 : 0);
        out.U8(facts.hasUvs ? 1 : 0);
        out.U8(0); // no colours
    };
    const auto putBits = [&] { out.U32(0); }; // exact
    out.Begin(facts.isLines ? kind::PolylineLevel : kind::TriangleLevel, BaseType::ShapeLevel);
    out.I16(1);
    putBindings();
    out.U8(0);
    putBits();
    out.I16(1);
    out.I16(1);
    putBindings();
    putBits();
    out.U8(0); // not coded
    out.Count(strips.starts.size());
    for (std::size_t i = 0; i < strips.starts.size(); ++i) {
        const U32 expected = i < 4 ? 0 : 2 * strips.starts[i - 1] - strips.starts[i - 2];
        out.U32(strips.starts[i] - expected);
    }
    Out vertices;
    for (const U32 corner : strips.corners) {
        const auto put = [&](const auto& values) {
            for (const float value : values) {
                vertices.F32(value);
            }
        };
        if (facts.hasUvs) {
            put(list.uvs[corner]);
        }
        if (facts.hasNormals) {
            put(list.normals[corner]);
        }
        put(list.points[corner]);
    }
    facts.bytes = vertices.Bytes().size();
    const std::string packed = Deflated(vertices.Bytes());
    out.Count(vertices.Bytes().size());
    out.Count(packed.size());
    out.Raw(packed);
    out.End();
    return out.Bytes();
}

} // namespace

std::string Deflated(std::string_view bytes)
{
    uLongf size = compressBound(static_cast<uLong>(bytes.size()));
    std::string packed(size, '\0');
    if (compress2(reinterpret_cast<Bytef*>(packed.data()), &size,
                  reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uLong>(bytes.size()),
                  Z_BEST_SPEED) != Z_OK) {
        throw std::bad_alloc();
    }
    packed.resize(size);
    return packed;
}

std::string WriteShape(const ModelData_PolyVertexSet& set, const mesh::Matrix3& linear, ShapeFacts& facts)
{
    facts = {};
    VertexList list;
    Strips strips;
    if (set.IsOfType<ModelData_IndexedTriangleSet>()) {
        const auto& impl = *static_cast<const internal::TriangleSetImpl*>(set.Impl());
        facts.hasNormals = impl.HasNormals();
        facts.hasUvs = impl.HasUVs();
        std::vector<U32> indices = MergeCorners(impl, linear, list);
        if (mesh::Determinant(linear) < 0) {
            for (std::size_t i = 0; i + 2 < indices.size(); i += 3) {
                std::swap(indices[i + 1], indices[i + 2]);
            }
        }
        strips = MakeStrips(indices, list.points.size());
        facts.primitives = indices.size() / 3;
        facts.area = AreaOf(list, indices);
    } else if (set.IsOfType<ModelData_PolyLineSet>()) {
        const auto& impl = *static_cast<const internal::PolyLineSetImpl*>(set.Impl());
        facts.isLines = true;
        for (std::size_t i = 0; i + 1 < impl.starts.size(); ++i) {
            for (std::size_t k = impl.starts[i]; k < impl.starts[i + 1]; ++k) {
                strips.corners.push_back(static_cast<U32>(list.points.size()));
                list.points.push_back(Mapped(impl.points[k], linear));
            }
            strips.starts.push_back(static_cast<U32>(strips.corners.size()));
        }
        facts.primitives = strips.starts.size() - 1;
    }
    const auto isFinite = [](const std::array<float, 3>& p) {
        return std::isfinite(p[0]) && std::isfinite(p[1]) && std::isfinite(p[2]);
    };
    if (!std::all_of(list.points.begin(), list.points.end(), isFinite)) {
        internal::Reports::Add(internal::Report::Kind::LeftOut, "a mesh with a point that is not finite");
        return {};
    }
    for (const U32 corner : strips.corners) {
        Include(facts, list.points[corner]);
    }
    return facts.IsEmpty() ? std::string() : WriteElement(list, strips, facts);
}

} // namespace cadex::jt
