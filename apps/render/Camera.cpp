#include "apps/render/Camera.h"

#include <QStringList>
#include <QtMath>

#include <array>

namespace {

struct NamedView
{
    StandardView view;
    const char* name;
    double yaw;
    double pitch;
};

/// NOTE: an isometric view looks along a cube's diagonal, atan(1 / sqrt 2) below the horizon (ISO 5456-3).
constexpr NamedView Views[] = {
    {StandardView::Iso, "iso", -45.0, -35.264389682754654},
    {StandardView::Front, "front", 0.0, 0.0},
    {StandardView::Back, "back", 180.0, 0.0},
    {StandardView::Left, "left", 90.0, 0.0},
    {StandardView::Right, "right", -90.0, 0.0},
    {StandardView::Top, "top", 0.0, -90.0},
    {StandardView::Bottom, "bottom", 0.0, 90.0},
};

/// A fitted model leaves this part of the picture free around it.
constexpr double FitMargin = 1.06;

double TangentOfHalfView()
{
    return std::tan(qDegreesToRadians(0.5 * Camera::FieldOfView));
}

Vec3 TurnedAround(const Vec3& v, const Vec3& axis, double degrees)
{
    // NOTE: Rodrigues' rotation formula; the axis has length 1.
    const double c = std::cos(qDegreesToRadians(degrees));
    const double s = std::sin(qDegreesToRadians(degrees));
    return c * v + s * Cross(axis, v) + (1.0 - c) * Dot(axis, v) * axis;
}

} // namespace

bool ParseStandardView(const QString& name, StandardView& view)
{
    for (const NamedView& entry : Views) {
        if (name.compare(QLatin1String(entry.name), Qt::CaseInsensitive) == 0) {
            view = entry.view;
            return true;
        }
    }
    return false;
}

QString StandardViewNames()
{
    QStringList names;
    for (const NamedView& entry : Views) {
        names += QLatin1String(entry.name);
    }
    return names.join(' ');
}

void Camera::SetStandardView(StandardView view)
{
    for (const NamedView& entry : Views) {
        if (entry.view == view) {
            m_yaw = entry.yaw;
            m_pitch = entry.pitch;
        }
    }
}

Vec3 Camera::Forward() const
{
    const double yaw = qDegreesToRadians(m_yaw);
    const double pitch = qDegreesToRadians(m_pitch);
    return {std::sin(yaw) * std::cos(pitch), std::cos(yaw) * std::cos(pitch), std::sin(pitch)};
}

Vec3 Camera::Right() const
{
    const double yaw = qDegreesToRadians(m_yaw);
    return {std::cos(yaw), -std::sin(yaw), 0.0};
}

Vec3 Camera::Up() const
{
    return Cross(Right(), Forward());
}

void Camera::Orbit(double yaw, double pitch, const Vec3& pivot)
{
    const double newPitch = std::clamp(m_pitch + pitch, -90.0, 90.0);
    Vec3 arm = TurnedAround(m_target - pivot, Right(), newPitch - m_pitch);
    arm = TurnedAround(arm, {0.0, 0.0, 1.0}, -yaw);
    m_target = pivot + arm;
    m_pitch = newPitch;
    m_yaw = std::remainder(m_yaw + yaw, 360.0);
}

void Camera::Pan(double right, double up)
{
    const double height = HeightAt(m_distance);
    m_target = m_target - (right * height) * Right() - (up * height) * Up();
}

void Camera::Zoom(double factor, const Vec3& point)
{
    // Scaling eye and target about the point leaves its direction from the eye, so its place, unchanged.
    m_target = point + factor * (m_target - point);
    m_distance *= factor;
}

void Camera::FocusAt(double depth)
{
    if (m_perspective && depth > 0.0) {
        m_target = Eye() + depth * Forward();
        m_distance = depth;
    }
}

void Camera::Fit(const Bounds& box, double aspect)
{
    std::array<Vec3, 8> corners;
    for (unsigned i = 0; i < 8; ++i) {
        corners[i] = box.Corner(i);
    }
    if (!box.IsEmpty()) {
        Fit(corners, aspect);
    }
}

void Camera::Fit(std::span<const Vec3> points, double aspect)
{
    Bounds all;
    for (const Vec3& point : points) {
        all.Add(point);
    }
    if (all.IsEmpty()) {
        return;
    }
    // The picture's four sides, as planes through the eye (parallel: along the view), are pushed out to the
    // farthest point each: opposite ones then say where the eye stands across, and how far back it must be.
    const Vec3 center = all.Center();
    const Vec3 axes[] = {Right(), Up()};
    const double tangents[] = {TangentOfHalfView() * aspect / FitMargin, TangentOfHalfView() / FitMargin};
    double across[2];
    double back = 0.0;
    for (int i = 0; i < 2; ++i) {
        const double slope = m_perspective ? tangents[i] : 0.0;
        double sides[] = {-Bounds::Far, -Bounds::Far};
        for (const Vec3& point : points) {
            const Vec3 arm = point - center;
            const double depth = Dot(arm, Forward());
            sides[0] = std::max(sides[0], Dot(arm, axes[i]) - slope * depth);
            sides[1] = std::max(sides[1], -Dot(arm, axes[i]) - slope * depth);
        }
        across[i] = 0.5 * (sides[0] - sides[1]);
        back = std::max(back, 0.5 * (sides[0] + sides[1]) / tangents[i]);
    }
    m_distance = std::max({back, 0.05 * all.Radius(), 1e-6});
    m_target = center;
    for (int i = 0; i < 2; ++i) {
        m_target = m_target + CentredAcross(points, center, axes[i], across[i], m_distance) * axes[i];
    }
}

/// Where the eye stands across, so that both margins of the picture are alike: the side that the picture has
/// room on is not the one that asked for the distance.
double Camera::CentredAcross(std::span<const Vec3> points, const Vec3& center, const Vec3& axis, double start,
                             double back) const
{
    constexpr int Steps = 8; // of Newton's method on a convex, piecewise smooth difference
    double across = start;
    for (int step = 0; step < Steps && m_perspective; ++step) {
        double reach[] = {-Bounds::Far, -Bounds::Far};
        double depths[] = {back, back};
        for (const Vec3& point : points) {
            const Vec3 arm = point - center;
            const double depth = std::max(Dot(arm, Forward()) + back, 1e-3 * back);
            const double place = (Dot(arm, axis) - across) / depth;
            for (int side = 0; side < 2; ++side) {
                const double out = side == 0 ? place : -place;
                if (out > reach[side]) {
                    reach[side] = out;
                    depths[side] = depth;
                }
            }
        }
        across += (reach[0] - reach[1]) / (1.0 / depths[0] + 1.0 / depths[1]);
    }
    return across;
}

QMatrix4x4 Camera::View(const Vec3& origin) const
{
    const Vec3 rows[] = {Right(), Up(), -1.0 * Forward()};
    const Vec3 eye = Eye() - origin;
    QMatrix4x4 view;
    for (int row = 0; row < 3; ++row) {
        view(row, 0) = static_cast<float>(rows[row].x);
        view(row, 1) = static_cast<float>(rows[row].y);
        view(row, 2) = static_cast<float>(rows[row].z);
        view(row, 3) = static_cast<float>(-Dot(rows[row], eye));
    }
    return view;
}

QMatrix4x4 Camera::Projection(double aspect, const Bounds& bounds) const
{
    double nearest = m_distance * 0.5;
    double farthest = m_distance * 2.0;
    if (!bounds.IsEmpty()) {
        nearest = farthest = Depth(bounds.Corner(0));
        for (unsigned i = 1; i < 8; ++i) {
            nearest = std::min(nearest, Depth(bounds.Corner(i)));
            farthest = std::max(farthest, Depth(bounds.Corner(i)));
        }
    }
    const double slack = std::max(1e-3 * (farthest - nearest), 1e-6 * m_distance);
    nearest -= slack;
    farthest += slack;
    QMatrix4x4 projection;
    if (m_perspective) {
        // Inside a model the near plane is a compromise: near enough for what one looks at, far enough for
        // the depth buffer's precision at the far end.
        farthest = std::max(farthest, m_distance * 1e-3);
        nearest = std::max(nearest, std::min(farthest * 1e-3, m_distance * 0.1));
        projection.perspective(FieldOfView, static_cast<float>(aspect), static_cast<float>(nearest),
                               static_cast<float>(farthest));
    } else {
        const double half = 0.5 * HeightAt(m_distance);
        projection.ortho(static_cast<float>(-half * aspect), static_cast<float>(half * aspect),
                         static_cast<float>(-half), static_cast<float>(half), static_cast<float>(nearest),
                         static_cast<float>(farthest));
    }
    return projection;
}

double Camera::HeightAt(double depth) const
{
    return 2.0 * TangentOfHalfView() * (m_perspective ? depth : m_distance);
}

Vec3 Camera::PointInTargetPlane(double x, double y, double aspect) const
{
    return PointAtDepth(x, y, aspect, m_distance);
}

Vec3 Camera::PointAtDepth(double x, double y, double aspect, double depth) const
{
    const double half = 0.5 * HeightAt(depth);
    return Eye() + depth * Forward() + (x * half * aspect) * Right() + (y * half) * Up();
}
