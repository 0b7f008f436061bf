// Builds host documents as an application would.
#pragma once

#include "host/CZemtar3DObject.h"
#include "host/CZemtarCommonBasicMaterial.h"
#include "host/CZemtarDocument.h"
#include "host/CZemtarMaterial.h"
#include "host/CZemtarMetaData.h"
#include "host/CZemtarTransformNode.h"

#include <array>
#include <vector>

namespace Zemtar::Test {

using Turn = std::array<double, 9>; ///< row by row

inline CZemtarMatrix Placement(const std::array<double, 3>& move,
                               const Turn& turn = {1, 0, 0, 0, 1, 0, 0, 0, 1})
{
    CZemtarMatrix matrix;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            matrix.M(row, column) = turn[static_cast<std::size_t>(3 * row + column)];
        }
        matrix.M(row, 3) = move[static_cast<std::size_t>(row)];
    }
    return matrix;
}

class SceneBuilder
{
public:
    explicit SceneBuilder(CZemtarDocument& document) : m_document(document) {}

    CZemtarSceneNode* Group(const char* name, CZemtarSceneNode* parent, CZemtarSceneNode::enumNodeType type,
                            const CZemtarMatrix& placement = {}) const
    {
        CZemtarSceneNode* node = CZemtarTransformNode::Create(&m_document);
        node->SetNodeType(type);
        return Placed(node, name, parent, placement);
    }
    CZemtar3DObject* Mesh(const char* name, CZemtarSceneNode* parent, const CZemtarGeometry* geometry,
                          const CZemtarMatrix& placement = {}, CZemtarMaterial* material = nullptr) const
    {
        CZemtar3DObject* object = CZemtar3DObject::Create(&m_document);
        object->SetGeometry(geometry);
        object->SetMaterial(material);
        Placed(object, name, parent, placement);
        return object;
    }
    CZemtarMaterial* Material(double r, double g, double b) const
    {
        CZemtarMaterial* material = CZemtarMaterial::Create(&m_document);
        material->BasicMaterialAsGeneralMaterial()->SetDiffuseColor({r, g, b, 1.0});
        return material;
    }

    using Points = std::vector<std::array<double, 3>>;

    /// Triangles by three indices each.
    CZemtarGeometry* Triangles(const Points& points, const std::vector<unsigned>& corners) const
    {
        CZemtarGeometry* geometry = Geometry(points);
        geometry->SetPolygonsTable(CZemtarPolygonsTable::Create(&m_document));
        for (std::size_t i = 0; i + 2 < corners.size(); i += 3) {
            geometry->PolygonsTable()->Append(corners[i], corners[i + 1], corners[i + 2]);
        }
        return geometry;
    }
    CZemtarGeometry* Triangle() const
    {
        return Triangles({{0, 0, 0}, {0.5, 0, 0}, {0, 0.25, 0.1}}, {0, 1, 2});
    }
    /// A closed box from the origin.
    CZemtarGeometry* Box(double x, double y, double z) const
    {
        return Triangles(
            {{0, 0, 0}, {x, 0, 0}, {x, y, 0}, {0, y, 0}, {0, 0, z}, {x, 0, z}, {x, y, z}, {0, y, z}},
            {0, 2, 1, 0, 3, 2, 4, 5, 6, 4, 6, 7, 0, 1, 5, 0, 5, 4,
             1, 2, 6, 1, 6, 5, 2, 3, 7, 2, 7, 6, 3, 0, 4, 3, 4, 7});
    }
    CZemtarGeometry* Line(const Points& points) const
    {
        CZemtarGeometry* geometry = Geometry(points);
        auto* segments = CZemtarPolyLinesTable::Create(&m_document);
        for (unsigned i = 1; i < points.size(); ++i) {
            segments->Append(i - 1, i);
        }
        geometry->SetPolyLinesTable(segments);
        return geometry;
    }

private:
    CZemtarGeometry* Geometry(const Points& points) const
    {
        CZemtarGeometry* geometry = CZemtarGeometry::Create(&m_document);
        auto* vertices = CZemtarVerticiesTable::Create(&m_document, true);
        for (const auto& p : points) {
            vertices->Append(p[0], p[1], p[2]);
        }
        geometry->SetVerticiesTable(vertices);
        return geometry;
    }
    static CZemtarSceneNode* Placed(CZemtarSceneNode* node, const char* name, CZemtarSceneNode* parent,
                                    const CZemtarMatrix& placement)
    {
        node->SetName(name);
        node->SetLocalMatrix(placement);
        if (parent) {
            node->SetParent(parent);
        }
        return node;
    }

    CZemtarDocument& m_document;
};

} // namespace Zemtar::Test
