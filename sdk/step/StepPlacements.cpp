#include "sdk/step/StepPlacements.h"

#include <array>
#include <cmath>
#include <utility>

#include "sdk/step/StepUnits.h"

namespace cadex::step {

namespace {

using Vector = std::array<double, 3>;

// Axes as columns, and the origin.
struct Frame
{
    std::array<Vector, 3> axes;
    Vector origin;
};

Vector Cross(const Vector& a, const Vector& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

double Dot(const Vector& a, const Vector& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

bool Normalise(Vector& v)
{
    const double length = std::sqrt(Dot(v, v));
    for (double& component : v) {
        component /= length;
    }
    return length > 0.0 && std::isfinite(length);
}

bool ReadTriple(const ClearText& text, RecordId id, std::string_view type, Vector& value)
{
    bool found = false;
    Cursor arguments = text.Arguments(id, type, found);
    arguments.Skip();
    return found && arguments.Reals(value.data(), 3);
}

bool ReadFrame(const ClearText& text, RecordId id, double unit, Frame& frame)
{
    bool found = false;
    Cursor arguments = text.Arguments(id, "AXIS2_PLACEMENT_3D", found);
    arguments.Skip();
    if (!found || !ReadTriple(text, arguments.Reference(), "CARTESIAN_POINT", frame.origin)) {
        return false;
    }
    for (double& coordinate : frame.origin) {
        coordinate *= unit;
    }
    // NOTE: ISO 10303-42, build_axes: what is omitted is the z axis, and the x axis unless it is along z.
    Vector z = {0, 0, 1};
    if (const RecordId axis = arguments.Reference(); axis != 0 && !ReadTriple(text, axis, "DIRECTION", z)) {
        return false;
    }
    if (!Normalise(z)) {
        return false;
    }
    Vector x = std::abs(z[0]) < 1.0 ? Vector{1, 0, 0} : Vector{0, 1, 0};
    if (const RecordId reference = arguments.Reference();
        reference != 0 && !ReadTriple(text, reference, "DIRECTION", x)) {
        return false;
    }
    const double along = Dot(x, z);
    for (std::size_t i = 0; i < 3; ++i) {
        x[i] -= along * z[i];
    }
    if (!Normalise(x)) {
        return false;
    }
    frame.axes = {x, Cross(z, x), z};
    return true;
}

double ReadUnit(const ClearText& text, RecordId representation)
{
    const ClearText::Record* record = text.Find(representation);
    if (record == nullptr) {
        return 0.0;
    }
    Cursor arguments = text.Arguments(*record);
    arguments.Skip();
    arguments.Skip();
    return ContextLengthFactor(text, arguments.Reference());
}

} // namespace

double StepPlacements::UnitOf(RecordId representation)
{
    const auto [unit, isNew] = myUnits.try_emplace(representation);
    if (isNew) {
        unit->second = ReadUnit(myText, representation);
    }
    return unit->second;
}

std::optional<ModelData_Transformation> StepPlacements::Read(const StepInstance& instance)
{
    bool found = false;
    Cursor relation = myText.Arguments(instance.relation, "REPRESENTATION_RELATIONSHIP", found);
    relation.Skip();
    relation.Skip();
    RecordId first = relation.Reference();
    RecordId second = relation.Reference();
    Cursor operation =
        myText.Arguments(instance.relation, "REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION", found);
    Cursor items = myText.Arguments(operation.Reference(), "ITEM_DEFINED_TRANSFORMATION", found);
    if (!found) {
        return std::nullopt;
    }
    items.Skip();
    items.Skip();
    RecordId from = items.Reference();
    RecordId to = items.Reference();
    std::size_t firstProduct = 0;
    std::size_t secondProduct = 0;
    if (myStructure.ProductOfRepresentation(first, firstProduct) &&
        myStructure.ProductOfRepresentation(second, secondProduct) && firstProduct == instance.parent &&
        secondProduct == instance.child) {
        std::swap(first, second);
        std::swap(from, to);
    }
    const double firstUnit = UnitOf(first);
    const double secondUnit = UnitOf(second);
    Frame a{};
    Frame b{};
    if (!(firstUnit > 0.0) || !(secondUnit > 0.0) || !ReadFrame(myText, from, firstUnit, a) ||
        !ReadFrame(myText, to, secondUnit, b)) {
        return std::nullopt;
    }
    // b * inverse(a): the inverse of a rotation is its transpose.
    std::array<Vector, 3> r{};
    Vector t{};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            for (std::size_t k = 0; k < 3; ++k) {
                r[row][column] += b.axes[k][row] * a.axes[k][column];
            }
        }
        t[row] = b.origin[row] - Dot(r[row], a.origin);
    }
    ModelData_Transformation placement;
    placement.SetRotationPart(r[0][0], r[0][1], r[0][2], r[1][0], r[1][1], r[1][2], r[2][0], r[2][1],
                              r[2][2]);
    placement.SetTranslationPart(t[0], t[1], t[2]);
    return placement;
}

std::optional<std::vector<ModelData_Transformation>> StepPlacements::ReadAll()
{
    std::vector<ModelData_Transformation> placements;
    placements.reserve(myStructure.instances.size());
    for (const StepInstance& instance : myStructure.instances) {
        const std::optional<ModelData_Transformation> placement = Read(instance);
        if (!placement) {
            return std::nullopt;
        }
        placements.push_back(*placement);
    }
    return placements;
}

} // namespace cadex::step
