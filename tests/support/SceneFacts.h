// What must survive a trip through a file, gathered from a document.
#pragma once

#include "host/CZemtar3DObject.h"
#include "host/CZemtarCommonBasicMaterial.h"
#include "host/CZemtarDocument.h"
#include "host/CZemtarMaterial.h"
#include "host/CZemtarMetaData.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <string>
#include <vector>

namespace Zemtar::Test {

using Point = std::array<double, 3>;

inline double Dot(const Point& a, const Point& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
inline Point Minus(const Point& a, const Point& b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
inline Point Cross(const Point& a, const Point& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

struct Bounds
{
    Point min{HUGE_VAL, HUGE_VAL, HUGE_VAL};
    Point max{-HUGE_VAL, -HUGE_VAL, -HUGE_VAL};

    void Add(const Point& p)
    {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            min[axis] = std::min(min[axis], p[axis]);
            max[axis] = std::max(max[axis], p[axis]);
        }
    }
    /// Half the way around the box.
    double Size() const { return max[0] - min[0] + max[1] - min[1] + max[2] - min[2]; }
    /// The largest distance between corresponding sides.
    double DistanceTo(const Bounds& other) const
    {
        double distance = 0.0;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            distance = std::max(
                {distance, std::abs(min[axis] - other.min[axis]), std::abs(max[axis] - other.max[axis])});
        }
        return distance;
    }
};

/// A document's content in the world, in metres.
struct SceneFacts
{
    explicit SceneFacts(const CZemtarDocument& document)
    {
        for (const CZemtarSceneNode* root : document.RootNodes()) {
            Visit(*root);
        }
        for (const auto& [id, count] : m_uses) {
            uses.push_back(count);
        }
        std::sort(uses.begin(), uses.end());
    }

    std::size_t triangles = 0;
    std::size_t slivers = 0; ///< triangles without an area worth the name
    Bounds bounds;
    double volume = 0.0;                 ///< enclosed; also mirrored bodies count positive
    double curves = 0.0;                 ///< length of all segments
    std::map<std::string, double> areas; ///< of each colour; "" has none
    /// Name, then metadata as "name=value" in order of text; depth first.
    using Labels = std::vector<std::vector<std::string>>;
    Labels nodes;          ///< assemblies, parts and meshes
    Labels groups;         ///< assemblies and parts alone
    std::vector<int> uses; ///< of each geometry by meshes, ascending

private:
    void Visit(const CZemtarSceneNode& node)
    {
        const auto* mesh = dynamic_cast<const CZemtar3DObject*>(&node);
        if (mesh || node.IsAssembly() || node.IsPart()) {
            nodes.push_back(LabelsOf(node));
        }
        if (node.IsAssembly() || node.IsPart()) {
            groups.push_back(nodes.back());
        }
        if (mesh && mesh->Geometry()) {
            ++m_uses[mesh->GeometyDefinitionID()];
            Add(*mesh);
        }
        for (const CZemtarSceneNode* child : node.ChildNodes()) {
            Visit(*child);
        }
    }

    static std::vector<std::string> LabelsOf(const CZemtarSceneNode& node)
    {
        std::vector<std::string> lines{node.Name().toStdString()};
        std::map<CZemtarString, CZemtarMetaData::NamedValues> categories;
        node.MetaData()->ListNamedValues(categories);
        for (const auto& [category, pairs] : categories) {
            for (const auto& [name, value] : pairs) {
                lines.push_back(name.toStdString() + "=" + value.toStdString());
            }
        }
        std::sort(lines.begin() + 1, lines.end());
        return lines;
    }

    static std::string ColourOf(const CZemtar3DObject& mesh)
    {
        const auto* look =
            mesh.Material()
                ? dynamic_cast<const CZemtarCommonBasicMaterial*>(mesh.Material()->BasicMaterial())
                : nullptr;
        std::string text;
        for (const double channel :
             look ? std::vector{look->DiffuseColor().R(), look->DiffuseColor().G(), look->DiffuseColor().B()}
                  : std::vector<double>()) {
            text += std::to_string(std::lround(10000.0 * channel)) + " ";
        }
        return text;
    }

    void Add(const CZemtar3DObject& mesh)
    {
        const CZemtarMatrix toWorld = mesh.LocalToWorldMatrix(true);
        std::vector<Point> points;
        const CZemtarGeometry& geometry = *mesh.Geometry();
        for (unsigned i = 0; geometry.VerticiesTable() && i < geometry.VerticiesTable()->Count(); ++i) {
            const CZemtar3DVertex p = toWorld.TransformPoint(geometry.VerticiesTable()->Item(i));
            points.push_back({p.X(), p.Y(), p.Z()});
            bounds.Add(points.back());
        }
        const Point x{toWorld.M(0, 0), toWorld.M(1, 0), toWorld.M(2, 0)};
        const Point y{toWorld.M(0, 1), toWorld.M(1, 1), toWorld.M(2, 1)};
        const Point z{toWorld.M(0, 2), toWorld.M(1, 2), toWorld.M(2, 2)};
        const double side = Dot(x, Cross(y, z)) < 0.0 ? -1.0 : 1.0;
        double& area = areas[ColourOf(mesh)];
        for (unsigned i = 0; geometry.PolygonsTable() && i < geometry.PolygonsTable()->Count(); ++i) {
            const CZemtar3DPolygon corners = geometry.PolygonsTable()->Item(i);
            const Point& a = points.at(corners.VertexIndex(0));
            const Point ab = Minus(points.at(corners.VertexIndex(1)), a);
            const Point ac = Minus(points.at(corners.VertexIndex(2)), a);
            const Point normal = Cross(ab, ac);
            const double length = std::sqrt(Dot(normal, normal));
            ++triangles;
            slivers += length <= 1e-8 * (Dot(ab, ab) + Dot(ac, ac));
            area += length / 2.0;
            volume += side * Dot(a, normal) / 6.0;
        }
        for (unsigned i = 0; geometry.PolyLinesTable() && i < geometry.PolyLinesTable()->Count(); ++i) {
            const auto [first, second] = geometry.PolyLinesTable()->Item(i);
            const Point way = Minus(points.at(second), points.at(first));
            curves += std::sqrt(Dot(way, way));
        }
    }

    std::map<CZemtarString, int> m_uses;
};

} // namespace Zemtar::Test
