#include "apps/render/DrawList.h"

#include <array>
#include <numeric>

namespace {

/// The six planes of a view: a point is inside where normal * point + distance is not negative.
class Frustum
{
public:
    explicit Frustum(const DrawRequest& request)
    {
        // NOTE: the rows of the clip matrix added and subtracted (Gribb and Hartmann 2001).
        for (int i = 0; i < 6; ++i) {
            const double sign = i % 2 == 0 ? 1.0 : -1.0;
            std::array<double, 4> plane{};
            for (int column = 0; column < 4; ++column) {
                plane[static_cast<std::size_t>(column)] =
                    static_cast<double>(request.clip(3, column)) +
                    sign * static_cast<double>(request.clip(i / 2, column));
            }
            Plane& target = m_planes[static_cast<std::size_t>(i)];
            target.normal = {plane[0], plane[1], plane[2]};
            target.distance = plane[3] - Dot(target.normal, request.origin);
        }
    }

    bool Touches(const Vec3& center, const Vec3& half) const
    {
        return std::all_of(m_planes.begin(), m_planes.end(), [&](const Plane& plane) {
            const Vec3& n = plane.normal;
            const double reach = std::abs(n.x) * half.x + std::abs(n.y) * half.y + std::abs(n.z) * half.z;
            return Dot(n, center) + plane.distance + reach >= 0.0;
        });
    }

private:
    struct Plane
    {
        Vec3 normal;
        double distance = 0.0;
    };
    std::array<Plane, 6> m_planes;
};

bool IsMirrored(const Instance& instance)
{
    const auto& m = instance.toWorld;
    return Dot({m[0], m[1], m[2]}, Cross({m[4], m[5], m[6]}, {m[8], m[9], m[10]})) < 0.0;
}

} // namespace

DrawList::DrawList(const SceneModel& model) : m_model(&model), m_order(model.Instances().size())
{
    const auto& instances = model.Instances();
    std::iota(m_order.begin(), m_order.end(), 0U);
    // Shape, then texture: what one instanced draw can hold together stands together.
    std::sort(m_order.begin(), m_order.end(), [&](std::uint32_t a, std::uint32_t b) {
        const auto key = [&](std::uint32_t i) {
            const Look& look = model.LookOf(instances[i]);
            return std::make_tuple(instances[i].shape, look.texture, look.lit, i);
        };
        return key(a) < key(b);
    });
    m_mirrored.reserve(instances.size());
    for (const Instance& instance : instances) {
        m_mirrored.push_back(IsMirrored(instance));
    }
}

Bounds DrawList::ShownExtent() const
{
    Bounds bounds;
    for (const std::uint32_t i : m_order) {
        if (IsShown(i)) {
            bounds.Add(m_model->Instances()[i].bounds);
        }
    }
    return bounds;
}

void DrawList::Build(const DrawRequest& request)
{
    m_ids.clear();
    m_commands.clear();
    m_triangles = 0;
    m_reduced = false;
    if (!m_model) {
        return;
    }
    CollectVisible(request);
    if (request.budget != 0) {
        KeepLargest(request.budget);
    }
    AddRuns(m_opaque, DrawCommand::PassOpaque);
    AddRuns(m_opaque, DrawCommand::PassLines);
    if (request.edges) {
        AddRuns(m_opaque, DrawCommand::PassTangents);
        AddRuns(m_opaque, DrawCommand::PassEdges);
    }
    std::sort(m_transparent.begin(), m_transparent.end(),
              [](const Visible& a, const Visible& b) { return a.depth > b.depth; });
    AddTransparent(request.edges);
}

void DrawList::CollectVisible(const DrawRequest& request)
{
    m_opaque.clear();
    m_transparent.clear();
    const Frustum frustum(request);
    const auto& instances = m_model->Instances();
    for (const std::uint32_t i : m_order) {
        if (!IsShown(i)) {
            continue;
        }
        const Bounds& bounds = instances[i].bounds;
        const Vec3 center = bounds.Center();
        const Vec3 half = 0.5 * bounds.Size();
        if (!frustum.Touches(center, half)) {
            continue;
        }
        const double radius = Length(half);
        const double depth = Dot(center - request.eye, request.forward);
        const double nearest = std::max(depth - radius, 1e-9);
        const double pixels = radius * (request.pixelsPerMetre + request.pixelsPerRadian / nearest);
        if (pixels < request.smallest) {
            m_reduced = true;
            continue;
        }
        auto& list = m_model->LookOf(instances[i]).IsTransparent() ? m_transparent : m_opaque;
        list.push_back({i, static_cast<float>(pixels), static_cast<float>(depth)});
    }
}

void DrawList::KeepLargest(std::uint64_t budget)
{
    const auto trianglesOf = [&](std::uint32_t i) {
        const Shape& shape = m_model->ShapeOf(m_model->Instances()[i]);
        return std::uint64_t{shape.triangles} + shape.segments;
    };
    m_bySize.assign(m_opaque.begin(), m_opaque.end());
    m_bySize.insert(m_bySize.end(), m_transparent.begin(), m_transparent.end());
    std::sort(m_bySize.begin(), m_bySize.end(),
              [](const Visible& a, const Visible& b) { return a.radius > b.radius; });
    m_chosen.assign(m_model->Instances().size(), false);
    std::uint64_t sum = 0;
    for (const Visible& item : m_bySize) {
        // One that alone is too large is passed over for smaller ones, but never the very largest.
        const std::uint64_t cost = trianglesOf(item.instance);
        if (sum == 0 || sum + cost <= budget) {
            sum += cost;
            m_chosen[item.instance] = true;
        } else {
            m_reduced = true;
        }
    }
    const auto isLeftOut = [&](const Visible& item) { return !m_chosen[item.instance]; };
    std::erase_if(m_opaque, isLeftOut);
    std::erase_if(m_transparent, isLeftOut);
}

void DrawList::AddTransparent(bool edges)
{
    // Each instance is finished, sides and edges, before the next nearer one is blended over it.
    for (const Visible& item : m_transparent) {
        const std::span<const Visible> run(&item, 1);
        AddRuns(run, DrawCommand::PassTransparentFar);
        AddRuns(run, DrawCommand::PassTransparentNear);
        AddRuns(run, DrawCommand::PassLines);
        if (edges) {
            AddRuns(run, DrawCommand::PassTangents);
            AddRuns(run, DrawCommand::PassEdges);
        }
    }
}

void DrawList::AddRuns(std::span<const Visible> items, DrawCommand::Pass pass)
{
    for (const Visible& item : items) {
        const Instance& instance = m_model->Instances()[item.instance];
        const Shape& shape = m_model->ShapeOf(instance);
        const std::uint32_t size = pass == DrawCommand::PassLines ? shape.segments : shape.triangles;
        if (size == 0) {
            continue;
        }
        const Look& look = m_model->LookOf(instance);
        DrawCommand* last = m_commands.empty() ? nullptr : &m_commands.back();
        const bool mirrored = m_mirrored[item.instance];
        const bool fits = last && last->pass == pass && last->shape == instance.shape &&
                          last->texture == look.texture && last->lit == look.lit &&
                          (pass < DrawCommand::PassTransparentFar || last->mirrored == mirrored);
        if (!fits) {
            const auto first = static_cast<std::uint32_t>(m_ids.size());
            m_commands.push_back({pass, mirrored, look.lit, look.texture, instance.shape, first, 0});
            last = &m_commands.back();
        }
        ++last->count;
        m_ids.push_back(item.instance);
        m_triangles += size;
    }
}
