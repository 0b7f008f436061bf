#include "apps/render/SceneModel.h"

#include "apps/geometry/ExtremePoints.h"
#include "common/encoding/CZemtarConvert.h"
#include "host/CZemtar3DObject.h"
#include "host/CZemtarCommonBasicMaterial.h"
#include "host/CZemtarDocument.h"
#include "host/CZemtarMaterial.h"

#include <algorithm>

using namespace Zemtar;

namespace {

float Channel(double value)
{
    return value >= 0.0 ? static_cast<float>(std::min(value, 1.0)) : 0.0F; // NaN gives 0
}

std::array<float, 4> ColorOf(const CZemtarColor& color, double opacity)
{
    // An opacity that is no number must not make the model vanish.
    return {Channel(color.R()), Channel(color.G()), Channel(color.B()),
            std::isnan(opacity) ? 1.0F : Channel(opacity)};
}

QString TextureFile(const CZemtarCommonBasicMaterial& material)
{
    const CZemtarTexture* texture = material.Texture(eTextureDiffuse);
    return texture ? CZemtarConvert::CZemtarStringToQString(texture->FullFilename(true)) : QString();
}

Bounds BoundsOf(const CZemtarVerticiesTable& vertices)
{
    Bounds bounds;
    const double* values = vertices.Data();
    for (std::size_t i = 0; i < vertices.Count(); ++i) {
        const Vec3 point{values[3 * i], values[3 * i + 1], values[3 * i + 2]};
        if (IsPlace(point)) {
            bounds.Add(point);
        }
    }
    return bounds;
}

/// Gives the number of triangles that the polygons fall into.
std::uint32_t TriangleCount(const CZemtarPolygonsTable& polygons)
{
    return static_cast<std::uint32_t>(polygons.IndexCount() - std::size_t{2} * polygons.Count());
}

} // namespace

Bounds Transformed(const Bounds& box, const CZemtarMatrix& matrix)
{
    Bounds result;
    for (unsigned i = 0; i < 8; ++i) {
        const Vec3 corner = box.Corner(i);
        const CZemtar3DVertex p = matrix.TransformPoint({corner.x, corner.y, corner.z});
        const Vec3 point{p.X(), p.Y(), p.Z()};
        if (!IsPlace(point)) {
            return {};
        }
        result.Add(point);
    }
    return result;
}

class SceneModel::Builder
{
public:
    explicit Builder(SceneModel& model) : m_model(model) {}

    void Run(const CZemtarDocument& document)
    {
        for (const CZemtarSceneNode* root : document.RootNodes()) {
            Walk(root);
        }
    }

private:
    struct Step
    {
        const CZemtarSceneNode* node;
        CZemtarMatrix parentToWorld;
        bool leaves; ///< comes after the node's subtree
    };

    /// Does not recurse, so that trees may be of any depth.
    void Walk(const CZemtarSceneNode* root)
    {
        std::vector<Step> pending{{root, {}, false}};
        while (!pending.empty()) {
            const Step step = pending.back();
            pending.pop_back();
            const auto count = static_cast<std::uint32_t>(m_model.m_instances.size());
            if (step.leaves) {
                m_model.m_ranges[step.node].last = count;
                continue;
            }
            m_model.m_ranges[step.node] = {count, count};
            const CZemtarMatrix toWorld = step.parentToWorld * step.node->LocalMatrix();
            if (const auto* object = dynamic_cast<const CZemtar3DObject*>(step.node)) {
                AddInstance(*object, toWorld);
            }
            pending.push_back({step.node, {}, true});
            const auto& children = step.node->ChildNodes();
            const auto first = static_cast<std::ptrdiff_t>(pending.size());
            for (const CZemtarSceneNode* child : children) {
                if (!child->IsDeleted()) {
                    pending.push_back({child, toWorld, false});
                }
            }
            // The first child is the next to be taken from the end.
            std::reverse(pending.begin() + first, pending.end());
        }
    }

    void AddInstance(const CZemtar3DObject& object, const CZemtarMatrix& toWorld)
    {
        const CZemtarGeometry* geometry = object.Geometry();
        if (!geometry || !geometry->VerticiesTable()) {
            return;
        }
        Instance instance;
        instance.node = &object;
        instance.look = LookNumber(object.Material());
        const CZemtarTextureCoordinatesTable* coordinates = object.TextureCoordinatesTable();
        const bool textured = m_model.m_looks[instance.look].texture != Look::NoTexture && coordinates &&
                              !coordinates->IsEmpty();
        instance.shape = ShapeNumber(*geometry, textured ? coordinates : nullptr);
        const Shape& shape = m_model.m_shapes[instance.shape];
        if (shape.triangles + shape.segments == 0 || shape.bounds.IsEmpty()) {
            return;
        }
        instance.bounds = Transformed(shape.bounds, toWorld);
        if (instance.bounds.IsEmpty()) {
            return;
        }
        std::copy_n(toWorld.Data(), instance.toWorld.size(), instance.toWorld.begin());
        m_model.m_extent.Add(instance.bounds);
        m_model.m_instances.push_back(instance);
    }

    std::uint32_t ShapeNumber(const CZemtarGeometry& geometry, const CZemtarTextureCoordinatesTable* table)
    {
        const auto [entry, isNew] = m_shapeNumbers.try_emplace(
            {&geometry, table}, static_cast<std::uint32_t>(m_model.m_shapes.size()));
        if (isNew) {
            Shape shape{&geometry, table, BoundsOf(*geometry.VerticiesTable())};
            shape.vertices = geometry.VerticiesTable()->Count();
            if (const CZemtarPolygonsTable* polygons = geometry.PolygonsTable()) {
                shape.triangles = TriangleCount(*polygons);
            }
            if (const CZemtarPolyLinesTable* lines = geometry.PolyLinesTable()) {
                shape.segments = lines->Count();
            }
            m_model.m_shapes.push_back(shape);
        }
        return entry->second;
    }

    std::uint32_t LookNumber(const CZemtarMaterial* material)
    {
        const auto [entry, isNew] =
            m_lookNumbers.try_emplace(material, static_cast<std::uint32_t>(m_model.m_looks.size()));
        if (isNew) {
            m_model.m_looks.push_back(LookOf(material));
        }
        return entry->second;
    }

    Look LookOf(const CZemtarMaterial* material)
    {
        Look look;
        if (!material || !material->BasicMaterial()) {
            return look;
        }
        const CZemtarCommonBasicMaterial* general = material->BasicMaterialAsGeneralMaterial();
        if (!general) {
            const CZemtarColor color = material->BasicMaterial()->DisplayColor();
            look.color = ColorOf(color, color.A());
            look.lit = false;
            return look;
        }
        const CZemtarColor& diffuse = general->RunTimeDiffuseColor();
        const CZemtarColor& emissive = general->RunTimeEmissiveColor();
        look.color =
            ColorOf({diffuse.R() + emissive.R(), diffuse.G() + emissive.G(), diffuse.B() + emissive.B(), 1.0},
                    general->RunTimeOpacity());
        look.texture = TextureNumber(TextureFile(*general));
        return look;
    }

    int TextureNumber(const QString& file)
    {
        if (file.isEmpty()) {
            return Look::NoTexture;
        }
        const auto [entry, isNew] =
            m_textureNumbers.try_emplace(file, static_cast<int>(m_model.m_textures.size()));
        if (isNew) {
            m_model.m_textures.push_back(file);
        }
        return entry->second;
    }

    using ShapeKey = std::pair<const CZemtarGeometry*, const CZemtarTextureCoordinatesTable*>;

    SceneModel& m_model;
    std::map<ShapeKey, std::uint32_t> m_shapeNumbers;
    std::map<const CZemtarMaterial*, std::uint32_t> m_lookNumbers;
    std::map<QString, int> m_textureNumbers;
};

SceneModel::SceneModel(const CZemtarDocument& document)
{
    Builder(*this).Run(document);
}

InstanceRange SceneModel::RangeOf(const CZemtarSceneNode* node) const
{
    const auto found = m_ranges.find(node);
    return found == m_ranges.end() ? InstanceRange{} : found->second;
}

Bounds SceneModel::Extent(const InstanceRange& range) const
{
    Bounds bounds;
    for (std::uint32_t i = range.first; i < range.last; ++i) {
        bounds.Add(m_instances[i].bounds);
    }
    return bounds;
}

void SceneModel::AddOutermost(std::uint32_t instance, std::vector<Vec3>& points) const
{
    constexpr std::size_t MostInstances = 20000; // beyond, boxes are near enough
    const Instance& placed = m_instances[instance];
    if (m_instances.size() > MostInstances) {
        for (unsigned corner = 0; corner < 8; ++corner) {
            points.push_back(placed.bounds.Corner(corner));
        }
        return;
    }
    m_outermost.resize(m_shapes.size());
    std::vector<Vec3>& own = m_outermost[placed.shape];
    if (own.empty()) {
        const CZemtarVerticiesTable& table = *ShapeOf(placed).geometry->VerticiesTable();
        own = ExtremePoints(table.Data(), table.Count());
    }
    for (const Vec3& p : own) {
        points.push_back(placed.ToWorld(p));
    }
}

std::vector<Vec3> SceneModel::Outermost(const InstanceRange& range) const
{
    std::vector<Vec3> points;
    for (std::uint32_t i = range.first; i < range.last; ++i) {
        AddOutermost(i, points);
    }
    return points;
}

void SceneModel::Displace(const std::vector<Vec3>& ways)
{
    m_extent = {};
    for (std::uint32_t i = 0; i < m_instances.size(); ++i) {
        Instance& instance = m_instances[i];
        const Vec3 step = (i < ways.size() ? ways[i] : Vec3()) - DisplacementOf(i);
        instance.toWorld[3] += step.x;
        instance.toWorld[7] += step.y;
        instance.toWorld[11] += step.z;
        instance.bounds.min = instance.bounds.min + step;
        instance.bounds.max = instance.bounds.max + step;
        m_extent.Add(instance.bounds);
    }
    m_ways = ways;
}
