#include "sdk/mesh/PlacedParts.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <cadex/ModelData_Assembly.hxx>
#include <cadex/ModelData_Instance.hxx>

namespace cadex::mesh {

namespace {

class Walk : public ModelData_Model::ElementVisitor
{
public:
    explicit Walk(const std::function<void(const PlacedPart&)>& visit) : myVisit(visit) {}

    void operator()(const ModelData_Part& part) override
    {
        const Level& level = myLevels.back();
        const ModelData_Appearance own = part.Appearance();
        myVisit({part, level.placement, level.name.IsEmpty() ? part.Name() : level.name,
                 own.IsNull() ? level.appearance : own});
    }
    bool VisitEnter(const ModelData_Assembly& assembly) override
    {
        Push(assembly);
        myLevels.back().name.Clear();
        return true;
    }
    void VisitLeave(const ModelData_Assembly&) override { myLevels.pop_back(); }
    bool VisitEnter(const ModelData_Instance& instance) override
    {
        Push(instance);
        Level& level = myLevels.back();
        level.name = instance.Name();
        if (instance.HasTransformation()) {
            level.placement = Compose(level.placement, AffineOf(instance.Transformation()));
        }
        return true;
    }
    void VisitLeave(const ModelData_Instance&) override { myLevels.pop_back(); }

private:
    struct Level
    {
        Affine placement;
        Base_UTF16String name;
        ModelData_Appearance appearance;
    };

    void Push(const ModelData_SceneGraphElement& element)
    {
        myLevels.push_back(Level(myLevels.back()));
        const ModelData_Appearance own = element.Appearance();
        if (!own.IsNull()) {
            myLevels.back().appearance = own;
        }
    }

    const std::function<void(const PlacedPart&)>& myVisit;
    std::vector<Level> myLevels{Level()};
};

} // namespace

Affine Compose(const Affine& outer, const Affine& inner)
{
    Affine result;
    result.linear = Multiply(outer.linear, inner.linear);
    result.translation = Multiply(outer.linear, inner.translation);
    for (std::size_t i = 0; i < 3; ++i) {
        result.translation[i] += outer.translation[i];
    }
    return result;
}

ModelData_Point Apply(const Affine& affine, const ModelData_Point& point)
{
    const Vector3 turned = Multiply(affine.linear, Vector3{point.X(), point.Y(), point.Z()});
    return {turned[0] + affine.translation[0], turned[1] + affine.translation[1],
            turned[2] + affine.translation[2]};
}

Affine Inverse(const Affine& affine)
{
    // A rotation's inverse is its transpose, to the last digit.
    const bool isRigid = IsMovement(affine) && std::abs(Determinant(affine.linear) - 1) < 1e-12;
    Affine inverse;
    inverse.linear = isRigid ? Transposed(affine.linear) : Inverse(affine.linear);
    inverse.translation = Multiply(inverse.linear, affine.translation);
    for (double& value : inverse.translation) {
        value = -value;
    }
    return inverse;
}

bool IsFinite(const Affine& affine)
{
    const auto isFinite = [](double value) { return std::isfinite(value); };
    return std::all_of(affine.linear.begin(), affine.linear.end(), isFinite) &&
           std::all_of(affine.translation.begin(), affine.translation.end(), isFinite);
}

bool IsSimilarity(const Affine& affine)
{
    const double scale = std::cbrt(std::abs(Determinant(affine.linear)));
    if (!IsFinite(affine) || !(scale > 0)) {
        return false;
    }
    for (std::size_t a = 0; a < 3; ++a) {
        for (std::size_t b = a; b < 3; ++b) {
            const auto& m = affine.linear;
            const double product = m[a] * m[b] + m[3 + a] * m[3 + b] + m[6 + a] * m[6 + b];
            if (!(std::abs(product / (scale * scale) - (a == b ? 1 : 0)) < 1e-9)) {
                return false;
            }
        }
    }
    return true;
}

bool IsMovement(const Affine& affine)
{
    return IsSimilarity(affine) && Determinant(affine.linear) > 0;
}

bool IsIdentity(const Affine& affine)
{
    return affine.linear == Identity3 && affine.translation == Vector3{};
}

void ForEachPlacedPart(const ModelData_Model& model, const std::function<void(const PlacedPart&)>& visit)
{
    Walk walk(visit);
    model.Accept(walk);
}

void ForEachPlacedPart(const ModelData_SceneGraphElement& element,
                       const std::function<void(const PlacedPart&)>& visit)
{
    Walk walk(visit);
    element.Accept(walk);
}

} // namespace cadex::mesh
