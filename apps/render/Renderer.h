#pragma once

#include "apps/render/Camera.h"
#include "apps/render/DrawList.h"

#include <QColor>
#include <QSize>
#include <QString>
#include <QSurfaceFormat>

#include <memory>
#include <optional>

/// A plane that cuts the model: what lies before it, where `Dot(normal, point) < offset`, is left out.
struct SectionCut
{
    Vec3 normal; ///< of length one
    double offset = 0.0;
};

/// What one picture shows.
struct Frame
{
    Camera camera;
    QSize size;              ///< in device pixels
    InstanceRange selection; ///< outlined, and tinted in the highlight colour
    std::optional<SectionCut> section;
    bool edges = false;
    bool axes = true; ///< small axes in the lower left corner
    QColor backgroundTop{0xdf, 0xe7, 0xee};
    QColor backgroundBottom{0xf7, 0xf8, 0xf9};
    QColor highlight{0xff, 0x8c, 0x1a};
};

/// Gives the format to ask a context or a widget for: OpenGL 3.3 core, without samples of its own.
QSurfaceFormat RendererFormat();

/// Draws a scene model with OpenGL 3.3 core. All calls need the same current context.
///
///     Renderer renderer;
///     if (QString problem = renderer.Initialize(); !problem.isEmpty()) { ... }
///     renderer.SetModel(&model);
///     renderer.StartFull(frame);
///     while (!renderer.Continue(milliseconds)) { ... }     // may return to the event loop in between
///     renderer.Show(framebuffer, size);
///
/// A full picture is drawn in slices, so that a large model on a slow card does not block its user. While the
/// user moves the camera, `DrawQuick` gives a picture at once: the full one where the last took less than
/// `QuickLimit`, else one at half the resolution with the largest instances that fit into the time.
class Renderer
{
public:
    static constexpr double QuickLimit = 80.0; ///< milliseconds

    Renderer();
    /// Releases what is held; the context must be current then.
    ~Renderer();
    Renderer(const Renderer&) = delete;
    Renderer& operator=(const Renderer&) = delete;

    /// Takes the current context. Gives an empty text, or why it does not serve, for the user.
    QString Initialize();
    /// Uploads a model, which must outlive its use here; null: an empty space. Gives an empty text, or why
    /// the model cannot be shown.
    QString SetModel(const SceneModel* model);
    /// Takes one flag for each instance; see `DrawList::SetShown`.
    void SetShown(std::vector<bool> shown);
    /// Takes the places of the model's instances anew, after `SceneModel::Displace`.
    void UpdatePlaces();
    /// Gives points around all that is shown, for `Camera::Fit`.
    std::vector<Vec3> ShownPoints() const;
    const Bounds& ShownExtent() const;

    void StartFull(const Frame& frame);
    /// Goes on with the full picture for about that time; true when it is complete.
    bool Continue(double milliseconds);
    void DrawQuick(const Frame& frame);
    /// Copies the last complete picture into a framebuffer of that size.
    void Show(unsigned framebuffer, const QSize& size);

    struct Hit
    {
        std::uint32_t instance = 0;
        Vec3 point; ///< in the world
    };
    /// Finds what is drawn at a pixel (from the upper left) or within a few around it.
    std::optional<Hit> Pick(const Frame& frame, const QPoint& pixel);

    /// Tells whether the last quick picture lacked anything that a full one shows.
    bool IsReduced() const;
    double LastFullMilliseconds() const;
    std::uint64_t GraphicsBytes() const;
    /// Gives the triangles of the last picture.
    std::uint64_t Triangles() const;

private:
    class Implementation;
    std::unique_ptr<Implementation> m_implementation;
};
