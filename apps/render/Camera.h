#pragma once

#include "apps/geometry/Vector.h"

#include <QMatrix4x4>
#include <QString>

#include <span>

/// The directions from which a model is usually looked at. Z points up, the front is seen along +Y.
enum class StandardView
{
    Iso,
    Front,
    Back,
    Left,
    Right,
    Top,
    Bottom
};

/// Finds a standard view by its name, in any letter case: iso, front, back, left, right, top, bottom. False,
/// with `view` untouched, for another name.
bool ParseStandardView(const QString& name, StandardView& view);
/// Gives the names that `ParseStandardView` takes, separated by blanks, for a usage text.
QString StandardViewNames();

/// A turntable camera: it looks at a target from a distance, z always points up on the screen, and it shows
/// in perspective or in parallel. Lengths are metres, angles degrees, pixels have their origin at the upper
/// left.
///
///     Camera camera;
///     camera.SetStandardView(StandardView::Iso);
///     camera.Fit(model.Extent(), 4.0 / 3.0);
///     const QMatrix4x4 m = camera.Projection(aspect, model.Extent()) * camera.View(origin);
class Camera
{
public:
    static constexpr double FieldOfView = 30.0; ///< of the picture's height

    void SetStandardView(StandardView view);
    void SetPerspective(bool on) { m_perspective = on; }
    bool IsPerspective() const { return m_perspective; }

    /// Turns around a point: `yaw` around the vertical, `pitch` up (positive) or down, stopping at the poles.
    void Orbit(double yaw, double pitch, const Vec3& pivot);
    /// Moves across the picture, by parts of its height; what lies in the target's plane follows exactly.
    void Pan(double right, double up);
    /// Comes nearer (factor below 1) or goes away; `point` keeps its place in the picture.
    void Zoom(double factor, const Vec3& point);
    /// Puts the target at that depth, which moves no pixel: panning then follows what lies there. In
    /// parallel, and at or below zero, nothing happens.
    void FocusAt(double depth);
    /// Brings all points as large as possible into a picture of that width to height, centred, from the
    /// direction in which the camera looks now. Without a point nothing changes.
    void Fit(std::span<const Vec3> points, double aspect);
    /// The same for a box' corners.
    void Fit(const Bounds& box, double aspect);

    /// The transform from the world, less `origin`, to the eye: x right, y up, looking along -z. Subtracting
    /// an origin near the model keeps single precision exact far away from zero.
    QMatrix4x4 View(const Vec3& origin) const;
    /// The transform from the eye to clip space, whose near and far planes enclose the bounds tightly.
    QMatrix4x4 Projection(double aspect, const Bounds& bounds) const;

    /// Gives the point in the plane through the target, square to the view, at a place of the picture: x and
    /// y from -1 (left, bottom) to 1.
    Vec3 PointInTargetPlane(double x, double y, double aspect) const;
    /// Gives the point at that place and a distance from the eye along the view.
    Vec3 PointAtDepth(double x, double y, double aspect, double depth) const;
    /// Gives how far along the view a point lies; at or below zero it is behind the eye.
    double Depth(const Vec3& point) const { return Dot(point - Eye(), Forward()); }
    /// Gives the height of the picture at that depth.
    double HeightAt(double depth) const;

    Vec3 Eye() const { return m_target - m_distance * Forward(); }
    const Vec3& Target() const { return m_target; }
    double Distance() const { return m_distance; }
    Vec3 Forward() const;
    Vec3 Right() const;
    Vec3 Up() const;

private:
    double CentredAcross(std::span<const Vec3> points, const Vec3& center, const Vec3& axis, double start,
                         double back) const;

    Vec3 m_target;
    double m_distance = 1.0;
    double m_yaw = -45.0;
    double m_pitch = -35.264389682754654; ///< the view along a cube's diagonal
    bool m_perspective = true;
};
