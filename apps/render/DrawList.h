#pragma once

#include "apps/render/SceneModel.h"

#include <QMatrix4x4>

#include <cstdint>
#include <span>
#include <vector>

/// What a picture shows beside the model itself.
struct DrawRequest
{
    QMatrix4x4 clip;              ///< from the world, less the model's origin, to clip space
    Vec3 origin;                  ///< subtracted from the world
    Vec3 eye;                     ///< in the world
    Vec3 forward;                 ///< the direction of the view
    double pixelsPerRadian = 0.0; ///< of perspective; 0 in parallel
    double pixelsPerMetre = 0.0;  ///< of parallel; 0 in perspective
    double smallest = 0.0;        ///< instances of a smaller radius, in pixels, are left out
    std::uint64_t budget = 0;     ///< triangles to draw, the largest instances first; 0: all
    bool edges = false;
};

/// One instanced draw: `count` instances of a shape, whose numbers lie in the list's ids from `first` on.
struct DrawCommand
{
    enum Pass : std::uint8_t
    {
        PassOpaque,
        PassLines,           ///< line segments of the shape
        PassEdges,           ///< feature edges
        PassTangents,        ///< edges at which surfaces go on smoothly
        PassTransparentFar,  ///< the sides that look away
        PassTransparentNear, ///< the sides that face the eye
    };
    Pass pass = PassOpaque;
    bool mirrored = false;
    bool lit = true;
    int texture = Look::NoTexture;
    std::uint32_t shape = 0;
    std::uint32_t first = 0;
    std::uint32_t count = 0;
};

/// Decides what of a model is drawn for one picture, and in which order: instances outside the view, or too
/// small to see, are left out; opaque ones are gathered by shape, so that each shape is one instanced draw;
/// transparent ones follow from back to front, first their far then their near sides.
///
///     DrawList list(model);
///     list.SetShown(shown);                  // hidden and isolated nodes
///     list.Build(request);
///     for (const DrawCommand& command : list.Commands()) { ... }
///
/// Knows nothing of OpenGL. Building keeps its memory from one picture to the next.
class DrawList
{
public:
    DrawList() = default;
    /// The model must outlive the list.
    explicit DrawList(const SceneModel& model);

    /// Takes one flag for each instance; instances without a flag, and all at first, are shown.
    void SetShown(std::vector<bool> shown) { m_shown = std::move(shown); }
    bool IsShown(std::uint32_t instance) const { return instance >= m_shown.size() || m_shown[instance]; }
    /// Gives the box around all that is shown.
    Bounds ShownExtent() const;

    void Build(const DrawRequest& request);
    const std::vector<DrawCommand>& Commands() const { return m_commands; }
    /// Gives the instance numbers that the commands refer to.
    const std::vector<std::uint32_t>& Ids() const { return m_ids; }
    /// Gives the triangles of all commands together.
    std::uint64_t Triangles() const { return m_triangles; }
    /// Tells whether instances were left out that a full picture shows.
    bool IsReduced() const { return m_reduced; }

private:
    struct Visible
    {
        std::uint32_t instance;
        float radius; ///< in pixels
        float depth;  ///< of the centre
    };

    void CollectVisible(const DrawRequest& request);
    void KeepLargest(std::uint64_t budget);
    void AddTransparent(bool edges);
    void AddRuns(std::span<const Visible> items, DrawCommand::Pass pass);

    const SceneModel* m_model = nullptr;
    std::vector<std::uint32_t> m_order; ///< all instances by shape, look
    std::vector<bool> m_mirrored;
    std::vector<bool> m_shown;

    std::vector<Visible> m_opaque; ///< in m_order
    std::vector<Visible> m_transparent;
    std::vector<Visible> m_bySize;
    std::vector<bool> m_chosen;
    std::vector<std::uint32_t> m_ids;
    std::vector<DrawCommand> m_commands;
    std::uint64_t m_triangles = 0;
    bool m_reduced = false;
};
