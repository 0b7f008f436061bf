#pragma once

#include "host/CZemtarDocument.h"

#include <QJsonObject>
#include <QString>

#include <array>

namespace Zemtar {
class CZemtarMatrix;
}

/// What `zemtar-cad import` says of a document: totals, world bounds, and the node tree as text or JSON.
/// Lengths are metres.
class SceneReport
{
public:
    struct Totals
    {
        qint64 nodes = 0;
        qint64 assemblies = 0;
        qint64 parts = 0;
        qint64 meshes = 0;    ///< mesh nodes with triangles
        qint64 polylines = 0; ///< mesh nodes with line segments
        qint64 vertices = 0;
        qint64 triangles = 0;
        qint64 segments = 0;
        qint64 materials = 0;
    };

    /// Walks the document once; it must outlive the report.
    explicit SceneReport(const Zemtar::CZemtarDocument& document);

    const Totals& Sums() const { return m_totals; }
    /// Tells whether any mesh has a vertex; without one the bounds mean nothing.
    bool HasBounds() const { return m_hasBounds; }
    const std::array<double, 3>& BoundsMin() const { return m_min; }
    const std::array<double, 3>& BoundsMax() const { return m_max; }

    /// Writes one line a node, indented by depth, metadata and solid hints below their node.
    void PrintTree(std::ostream& out) const;
    /// Gives "unit", "roots", "totals" and "bounds".
    QJsonObject ToJson() const;

private:
    void Count(const Zemtar::CZemtarSceneNode& node, const Zemtar::CZemtarMatrix& parentToWorld);

    const Zemtar::CZemtarDocument& m_document;
    Totals m_totals;
    bool m_hasBounds = false;
    std::array<double, 3> m_min{};
    std::array<double, 3> m_max{};
};
