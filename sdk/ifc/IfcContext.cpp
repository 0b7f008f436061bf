#include "sdk/ifc/IfcContext.h"

#include <algorithm>
#include <cmath>

#include "sdk/ifc/IfcAlignment.h"
#include "sdk/ifc/IfcUnits.h"
#include "sdk/mesh/EngineTolerances.h"

namespace cadex::ifc {
namespace {

bool IsLinear(const Entity& placement)
{
    return placement.TypeName() == "IFCLINEARPLACEMENT";
}

gp_XYZ AnyNormalTo(const gp_XYZ& z)
{
    const gp_XYZ x(1, 0, 0);
    const gp_XYZ side = x - z * x.Dot(z);
    return side.Modulus() > 1e-6 ? side : gp_XYZ(0, 1, 0);
}

} // namespace

gp_XYZ Unit(const gp_XYZ& vector, const gp_XYZ& fallback)
{
    const double length = vector.Modulus();
    return length > 1e-12 && std::isfinite(length) ? vector / length : fallback;
}

Affine Frame(const gp_XYZ& origin, const gp_XYZ& z, const gp_XYZ& x)
{
    const gp_XYZ up = Unit(z, gp_XYZ(0, 0, 1));
    const gp_XYZ flat = x - up * x.Dot(up);
    const gp_XYZ right = Unit(flat.Modulus() > 1e-9 * x.Modulus() ? flat : AnyNormalTo(up), gp_XYZ(1, 0, 0));
    const gp_XYZ front = up.Crossed(right);
    return occt::ToAffine(right, front, up, origin);
}

Context::Context(const IfcFile& ifcFile) : file(ifcFile)
{
    const ProjectUnits units = ReadProjectUnits(file);
    toMillimetres = units.toMillimetres;
    toRadians = units.toRadians;
    ReadPrecision();
    myMostSteps = 20'000'000 + 100 * file.Count() + 2 * file.TextSize();
}

/// IfcGeometricRepresentationContext: ContextIdentifier, ContextType, CoordinateSpaceDimension, Precision ...
void Context::ReadPrecision()
{
    for (const Id project : file.IdsOf(Type::IfcProject)) {
        for (const Id id : file.Get(project).Refs(7)) {
            const Entity space = file.Get(id);
            if (space.TypeName() == "IFCGEOMETRICREPRESENTATIONCONTEXT" && space.Real(3) > 0) {
                fuzziness = std::clamp(space.Real(3) * toMillimetres, tolerance::FinestPrecision,
                                       tolerance::CoarsestPrecision);
                return;
            }
        }
    }
}

void Context::Steps(std::size_t count)
{
    mySteps += count;
    if (mySteps > myMostSteps) {
        throw Unbuildable("too much work for a file of this size");
    }
}

double Context::PositiveLength(const Entity& entity, std::size_t index) const
{
    const double length = Length(entity, index);
    if (!(length > 0) || length > tolerance::LargestCoordinate) {
        throw Unbuildable("a length that is not above zero");
    }
    return length;
}

gp_XYZ Context::Point(const Entity& point) const
{
    if (!point.Is(Type::IfcCartesianPoint)) {
        throw Unbuildable("a point is missing");
    }
    double c[3] = {0, 0, 0};
    part21::Cursor list(point.Raw(0));
    list.EnterList();
    for (int i = 0; i < 3 && list.More(); ++i) {
        c[i] = list.Real();
        if (list.Failed() || std::abs(c[i] * toMillimetres) > tolerance::LargestCoordinate) {
            throw Unbuildable("a coordinate that is no number");
        }
    }
    return gp_XYZ(c[0], c[1], c[2]) * toMillimetres;
}

gp_XYZ Context::Direction(const Entity& direction, const gp_XYZ& fallback) const
{
    if (!direction.Is(Type::IfcDirection)) {
        return fallback;
    }
    const std::vector<double> ratios = direction.Reals(0);
    return Unit(gp_XYZ(!ratios.empty() ? ratios[0] : 0, ratios.size() > 1 ? ratios[1] : 0,
                       ratios.size() > 2 ? ratios[2] : 0),
                fallback);
}

Affine Context::Placement(const Entity& axes) const
{
    if (!axes) {
        return {};
    }
    const gp_XYZ origin = axes.Ref(0) ? Point(axes.Ref(0)) : gp_XYZ();
    const gp_XYZ z(0, 0, 1);
    const gp_XYZ x(1, 0, 0);
    switch (axes.Type()) {
    case Type::IfcAxis2Placement3D:
        return Frame(origin, Direction(axes.Ref(1), z), Direction(axes.Ref(2), x));
    case Type::IfcAxis2Placement2D:
        return Frame(origin, z, Direction(axes.Ref(1), x));
    case Type::IfcAxis1Placement:
        return Frame(origin, Direction(axes.Ref(1), z), x);
    default:
        return {};
    }
}

Affine Context::Operator(const Entity& op) const
{
    const bool flat = op.Is(Type::IfcCartesianTransformationOperator2D) ||
                      op.Is(Type::IfcCartesianTransformationOperator2DNonUniform);
    const bool uneven = op.Is(Type::IfcCartesianTransformationOperator2DNonUniform) ||
                        op.Is(Type::IfcCartesianTransformationOperator3DNonUniform);
    // Axis1, Axis2, LocalOrigin, Scale, then Axis3 (3D), then Scale2 and Scale3. The axes are x, y and z.
    const gp_XYZ z = flat ? gp_XYZ(0, 0, 1) : Direction(op.Ref(4), gp_XYZ(0, 0, 1));
    const bool onlyY = !op.Ref(0) && op.Ref(1);
    const gp_XYZ givenY = Direction(op.Ref(1), gp_XYZ(0, 1, 0));
    const gp_XYZ wantedX = onlyY ? givenY.Crossed(z) : Direction(op.Ref(0), gp_XYZ(1, 0, 0));
    const Affine frame = Frame(op.Ref(2) ? Point(op.Ref(2)) : gp_XYZ(), z, wantedX);
    gp_XYZ y = Column(frame, 2);
    if (op.Ref(1) && givenY.Dot(y) < 0) {
        y.Reverse(); // a mirror: the second axis is given against the right-handed one
    }
    const double scale = op.Real(3, 1);
    const std::size_t second = flat ? 4 : 5;
    const double scaleY = uneven ? op.Real(second, scale) : scale;
    const double scaleZ = uneven && !flat ? op.Real(second + 1, scale) : scale;
    const Affine result =
        occt::ToAffine(Column(frame, 1) * scale, y * scaleY, Column(frame, 3) * scaleZ, Origin(frame));
    if (std::abs(mesh::Determinant(result.linear)) < 1e-18) {
        throw Unbuildable("a transformation that flattens");
    }
    return result;
}

Affine Context::WorldPlacement(Id id)
{
    // Walk out to the first known placement, then back in; the chain may be long, so no recursion.
    std::vector<Id> chain;
    Affine outer;
    for (Id at = id; at != 0;) {
        const auto known = myWorld.find(at);
        if (known != myWorld.end()) {
            outer = known->second;
            break;
        }
        if (std::find(chain.begin(), chain.end(), at) != chain.end() || chain.size() > 10000) {
            break;
        }
        chain.push_back(at);
        const Entity placement = file.Get(at);
        at = placement.Is(Type::IfcLocalPlacement) || IsLinear(placement) ? placement.RefId(0) : 0;
    }
    std::reverse(chain.begin(), chain.end());
    for (const Id step : chain) {
        const Entity placement = file.Get(step);
        try {
            outer = placement.Is(Type::IfcGridPlacement) ? Compose(outer, GridPlacement(placement))
                    : IsLinear(placement)                ? Compose(outer, AlongCurve(placement))
                                                         : Compose(outer, Placement(placement.Ref(1)));
        } catch (const Unbuildable& reason) {
            // a damaged step of the chain counts as no displacement
            Report(internal::Report::Kind::Repaired, reason.what());
        }
        myWorld[step] = outer;
    }
    return outer;
}

/// IfcLinearPlacement: PlacementRelTo, RelativePlacement, CartesianPosition: the same place once more, which
/// counts where the curve cannot be read.
Affine Context::AlongCurve(const Entity& placement)
{
    try {
        return LinearPlacement(*this, placement.Ref(1));
    } catch (const Unbuildable&) {
        if (!placement.Ref(2)) {
            throw;
        }
        return Placement(placement.Ref(2));
    }
}

Affine Context::RelativePlacement(Id outer, Id inner)
{
    if (outer == inner) {
        return {};
    }
    const Entity placement = file.Get(inner);
    if (placement.Is(Type::IfcLocalPlacement) && placement.RefId(0) == outer) {
        try {
            return Placement(placement.Ref(1));
        } catch (const Unbuildable&) {
            return {};
        }
    }
    return Compose(Inverse(WorldPlacement(outer)), WorldPlacement(inner));
}

Affine Context::GridPlacement(const Entity& placement) const
{
    // IfcGridPlacement: (PlacementLocation, PlacementRefDirection); since IFC4X3 (PlacementRelTo,
    // PlacementLocation,
    // ...). The location is where two axes cross; only straight axes, which nearly all grids have, are
    // crossed here.
    Entity crossing = placement.Ref(0);
    crossing = crossing.Is(Type::IfcVirtualGridIntersection) ? crossing : placement.Ref(1);
    const std::vector<Id> axes = crossing.Refs(0);
    gp_XYZ points[2];
    gp_XYZ directions[2];
    for (std::size_t i = 0; i < 2; ++i) {
        const Entity curve = i < axes.size() ? file.Get(axes[i]).Ref(1) : Entity();
        const std::vector<Id> ends = curve.Is(Type::IfcPolyline) ? curve.Refs(0) : std::vector<Id>();
        if (ends.size() < 2) {
            return {};
        }
        points[i] = Point(file.Get(ends.front()));
        directions[i] = Unit(Point(file.Get(ends.back())) - points[i], gp_XYZ(1, 0, 0));
    }
    const double cross = directions[0].X() * directions[1].Y() - directions[0].Y() * directions[1].X();
    if (std::abs(cross) < 1e-9) {
        return {};
    }
    const std::vector<double> offsets = crossing.Reals(1);
    for (std::size_t i = 0; i < 2 && i < offsets.size(); ++i) {
        points[i] += gp_XYZ(-directions[i].Y(), directions[i].X(), 0) * (offsets[i] * toMillimetres);
    }
    const gp_XYZ between = points[1] - points[0];
    const double along = (between.X() * directions[1].Y() - between.Y() * directions[1].X()) / cross;
    gp_XYZ origin = points[0] + directions[0] * along;
    origin += gp_XYZ(0, 0, offsets.size() > 2 ? offsets[2] * toMillimetres : 0);
    return Frame(origin, gp_XYZ(0, 0, 1), directions[0]);
}

} // namespace cadex::ifc
