#include "apps/viewer/MeasureTool.h"

#include "apps/geometry/CircleFit.h"

#include <QCoreApplication>
#include <QLocale>
#include <QtMath>

namespace {

QString Tr(const char* text)
{
    return QCoreApplication::translate("MeasureTool", text);
}

QString Number(double value)
{
    return QLocale().toString(std::abs(value) < 1e-9 ? 0.0 : value, 'g', 6);
}

QString Millimetres(double metres)
{
    return Number(metres * 1000.0);
}

} // namespace

QString Measurement::Text() const
{
    switch (kind) {
    case MeasureKind::Length:
        return Tr("%1 mm  (%2, %3, %4)")
            .arg(Millimetres(value), Millimetres(difference.x), Millimetres(difference.y),
                 Millimetres(difference.z));
    case MeasureKind::Angle:
        return Tr("%1°").arg(Number(value));
    case MeasureKind::Radius:
        return isSphere ? Tr("SR %1 mm").arg(Millimetres(value))
                        : Tr("R %1 mm, ⌀ %2 mm").arg(Millimetres(value), Millimetres(2.0 * value));
    case MeasureKind::Area:
        break;
    }
    return Tr("%1 mm²").arg(Number(value * 1e6));
}

void MeasureTool::Begin(MeasureKind kind)
{
    m_kind = kind;
    m_first.reset();
    m_problem.clear();
}

const MeshProbe& MeasureTool::Probe(std::uint32_t instance)
{
    if (!m_probe || m_probe->Number() != instance) {
        m_probe = std::make_unique<MeshProbe>(m_model, instance);
    }
    return *m_probe;
}

Vec3 MeasureTool::Shown(const SurfacePoint& point) const
{
    return point.point + m_model.DisplacementOf(point.instance);
}

std::optional<Measurement> MeasureTool::Add(const SurfacePoint& picked, double reach)
{
    m_problem.clear();
    SurfacePoint point = picked;
    if (m_kind == MeasureKind::Length) {
        point.point = Probe(point.instance).Snapped(point.point, reach);
    } else if (m_kind == MeasureKind::Area) {
        return Area(point);
    } else if (m_kind == MeasureKind::Radius) {
        return Radius(point);
    }
    if (!m_first) {
        m_first = point;
        return std::nullopt;
    }
    Measurement result;
    result.kind = m_kind;
    result.points = {Shown(*m_first), Shown(point)};
    result.difference = point.point - m_first->point;
    result.value = m_kind == MeasureKind::Length
                       ? Length(result.difference)
                       : qRadiansToDegrees(std::atan2(Length(Cross(m_first->normal, point.normal)),
                                                      Dot(m_first->normal, point.normal)));
    m_first.reset();
    return result;
}

std::optional<Measurement> MeasureTool::Radius(const SurfacePoint& point)
{
    const MeshProbe& probe = Probe(point.instance);
    std::vector<std::uint32_t> corners = probe.FaceAt(point.triangle);
    std::vector<Vec3> points;
    std::vector<Vec3> normals;
    for (std::size_t i = 0; i < corners.size(); i += 3) {
        const Vec3 facet = Cross(probe.Place(corners[i + 1]) - probe.Place(corners[i]),
                                 probe.Place(corners[i + 2]) - probe.Place(corners[i]));
        const double size = Length(facet);
        for (std::size_t k = 0; k < 3; ++k) {
            points.push_back(probe.Place(corners[i + k]));
            const Vec3& own = probe.Normal(corners[i + k]);
            const bool hasOwn = Dot(own, own) > 0.5;
            normals.push_back(hasOwn || !(size > 0.0) ? own : 1.0 / size * facet);
        }
    }
    const std::optional<RoundSurface> round = FitRoundSurface(points, normals);
    if (!round) {
        m_problem = Tr("This face is neither a cylinder nor a sphere.");
        return std::nullopt;
    }
    Measurement result;
    result.kind = MeasureKind::Radius;
    result.value = round->radius;
    result.isSphere = !round->IsCylinder();
    // From the axis, on the height of the point, to the point.
    const Vec3 way = m_model.DisplacementOf(point.instance);
    const Vec3 foot = round->center + Dot(point.point - round->center, round->axis) * round->axis;
    result.points = {foot + way, point.point + way};
    return result;
}

Measurement MeasureTool::Area(const SurfacePoint& point)
{
    const MeshProbe& probe = Probe(point.instance);
    Measurement result;
    result.kind = MeasureKind::Area;
    result.value = probe.AreaOf(probe.FaceAt(point.triangle));
    result.points = {Shown(point)};
    return result;
}
