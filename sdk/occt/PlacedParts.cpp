#include "sdk/occt/PlacedParts.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <cadex/ModelData_Assembly.hxx>
#include <cadex/ModelData_Instance.hxx>

namespace cadex::occt {

namespace {

// Sine of the angle below which two axes of a matrix, or an axis and the plane of the others, count as
// dependent.
constexpr double kSmallestSine = 1e-9;

double Length(const Affine& affine, std::size_t column)
{
    return std::hypot(affine.m[0][column], affine.m[1][column], affine.m[2][column]);
}

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
            level.placement = level.placement * Affine::Of(instance.Transformation());
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

Affine Affine::Of(const ModelData_Transformation& transformation)
{
    Affine result;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 4; ++column) {
            result.m[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)] =
                transformation.Data(row, column);
        }
    }
    return result;
}

Affine Affine::operator*(const Affine& inner) const
{
    Affine result;
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 4; ++column) {
            double sum = column == 3 ? m[row][3] : 0;
            for (std::size_t k = 0; k < 3; ++k) {
                sum += m[row][k] * inner.m[k][column];
            }
            result.m[row][column] = sum;
        }
    }
    return result;
}

ModelData_Point Affine::operator()(const ModelData_Point& point) const
{
    const auto row = [&](std::size_t i) {
        return m[i][0] * point.X() + m[i][1] * point.Y() + m[i][2] * point.Z() + m[i][3];
    };
    return {row(0), row(1), row(2)};
}

double Affine::Determinant() const
{
    return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) -
           m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
           m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
}

bool Affine::IsRegular() const
{
    for (const auto& row : m) {
        if (!std::all_of(row.begin(), row.end(), [](double value) { return std::isfinite(value); })) {
            return false;
        }
    }
    return std::abs(Determinant()) > kSmallestSine * Length(*this, 0) * Length(*this, 1) * Length(*this, 2);
}

bool Affine::IsSimilarity() const
{
    if (!IsRegular()) {
        return false;
    }
    const double scale = std::cbrt(std::abs(Determinant()));
    for (std::size_t a = 0; a < 3; ++a) {
        for (std::size_t b = a; b < 3; ++b) {
            const double product = m[0][a] * m[0][b] + m[1][a] * m[1][b] + m[2][a] * m[2][b];
            if (std::abs(product / (scale * scale) - (a == b ? 1 : 0)) > 1e-9) {
                return false;
            }
        }
    }
    return true;
}

bool Affine::IsIdentity() const
{
    return m == Affine().m;
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

} // namespace cadex::occt
