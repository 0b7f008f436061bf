#pragma once

#include "apps/viewer/MeshProbe.h"

#include <QString>

#include <memory>

enum class MeasureKind
{
    Length, ///< between two points
    Angle,  ///< between the normals of two faces
    Radius, ///< of a cylindrical or spherical face
    Area    ///< of a face
};

/// What came of measuring: metres, square metres or degrees, and what is drawn of it.
struct Measurement
{
    MeasureKind kind = MeasureKind::Length;
    double value = 0.0;
    Vec3 difference;       ///< of a length: from the first point to the second
    bool isSphere = false; ///< of a radius
    std::vector<Vec3>
        points; ///< a line in the world, displaced as its parts are; the text stands at its middle

    /// "12.5 mm  (3, 4, 12)", in the user's language and millimetres.
    QString Text() const;
};

/// Makes measurements of surface points as they are picked; knows no window. Values are those of the mesh, as
/// fine as it was imported.
///
///     MeasureTool tool(model);
///     tool.Begin(MeasureKind::Length);
///     if (const auto measurement = tool.Add(hit, reach)) { ... }
class MeasureTool
{
public:
    /// The model must outlive the tool, or `Reset` be called.
    explicit MeasureTool(const SceneModel& model) : m_model(model) {}

    void Begin(MeasureKind kind);
    MeasureKind Kind() const { return m_kind; }
    /// Whether the next point is a second one.
    bool HasFirst() const { return m_first.has_value(); }

    /// Takes a point; corners and edges of the form within `reach`, in metres, attract those of a length.
    /// Gives the measurement that it completes. Where none can be made, `problem` says why, for the user.
    std::optional<Measurement> Add(const SurfacePoint& point, double reach);
    const QString& Problem() const { return m_problem; }

    /// Finds the surface of an instance along a ray; `isShown` as in `MeshProbe::Hit`.
    template <class IsShown>
    std::optional<SurfacePoint> Find(std::uint32_t instance, const Ray& ray, const IsShown& isShown)
    {
        return Probe(instance).Hit(ray, isShown);
    }

private:
    const MeshProbe& Probe(std::uint32_t instance);
    std::optional<Measurement> Radius(const SurfacePoint& point);
    Measurement Area(const SurfacePoint& point);
    Vec3 Shown(const SurfacePoint& point) const;

    const SceneModel& m_model;
    MeasureKind m_kind = MeasureKind::Length;
    std::optional<SurfacePoint> m_first;
    std::unique_ptr<MeshProbe> m_probe; ///< of the instance last asked for
    QString m_problem;
};
