#include "sdk/acis/AcisGeometry.h"

#include <algorithm>
#include <cmath>

#include <GeomConvert.hxx>
#include <Geom_BSplineCurve.hxx>
#include <Geom_ConicalSurface.hxx>
#include <Geom_CylindricalSurface.hxx>
#include <Geom_Line.hxx>
#include <Geom_Plane.hxx>
#include <Geom_RectangularTrimmedSurface.hxx>
#include <Geom_SphericalSurface.hxx>
#include <Geom_SurfaceOfLinearExtrusion.hxx>
#include <Geom_ToroidalSurface.hxx>
#include <Standard_Failure.hxx>
#include <TColStd_Array1OfInteger.hxx>
#include <TColStd_Array1OfReal.hxx>
#include <TColStd_Array2OfReal.hxx>
#include <TColgp_Array1OfPnt.hxx>
#include <TColgp_Array2OfPnt.hxx>

#include "sdk/brep/Conics.h"

namespace cadex::acis {

namespace {

constexpr int HighestDegree = 25; // of the kernel
using brep::AxesOf;
using brep::FarAway;
using brep::IsDirection;
using brep::IsSound;
using brep::MakeEllipse;
using brep::RoundWithin;

gp_XYZ ReadTriple(Fields& fields)
{
    const double x = fields.Number();
    const double y = fields.Number();
    const double z = fields.Number();
    return {x, y, z};
}

struct Knots
{
    std::vector<double> values;
    std::vector<int> multiplicities;
    int poles = 0;
};

/// Pairs of knot and multiplicity. The file leaves the first and the last knot of the usual vector out.
/// False when they do not rise, or there are too many alike or more than fields.
bool ReadKnots(Fields& fields, int count, int degree, Knots& knots)
{
    if (count < 2 || static_cast<std::size_t>(count) > fields.Left() / 2 || degree < 1 ||
        degree > HighestDegree) {
        return false;
    }
    std::int64_t sum = 2;
    for (int i = 0; i < count; ++i) {
        const double value = fields.Number();
        const int multiplicity = fields.Count() + (i == 0 || i == count - 1 ? 1 : 0);
        const int most = i == 0 || i == count - 1 ? degree + 1 : degree;
        if (!std::isfinite(value) || (i > 0 && !(value > knots.values.back())) || multiplicity < 1 ||
            multiplicity > most) {
            return false;
        }
        knots.values.push_back(value);
        knots.multiplicities.push_back(multiplicity);
        sum += multiplicity;
    }
    knots.poles = static_cast<int>(sum - 2) - degree - 1;
    return knots.poles > degree;
}

void Copy(const Knots& knots, TColStd_Array1OfReal& values, TColStd_Array1OfInteger& multiplicities)
{
    for (int i = 1; i <= values.Length(); ++i) {
        values(i) = knots.values[static_cast<std::size_t>(i) - 1];
        multiplicities(i) = knots.multiplicities[static_cast<std::size_t>(i) - 1];
    }
}

/// Moves on to the spline in a block, behind "nubs" or "nurbs": whole numbers (one degree for a curve, two
/// for a surface) and a word. Blocks inside of the block are passed over. False when there is none.
bool FindSpline(Fields& fields, std::size_t degrees, bool& isRational)
{
    std::size_t depth = 0;
    while (!fields.AtEnd()) {
        const std::string_view word = fields.Next();
        depth += word == "{" ? 1U : 0U;
        depth -= word == "}" && depth > 0 ? 1U : 0U;
        if (depth > 0 || (word != "nubs" && word != "nurbs")) {
            continue;
        }
        Fields ahead = fields;
        bool isIt = true;
        for (std::size_t i = 0; i < degrees; ++i) {
            isIt = isIt && ahead.Count() > 0;
        }
        if (isIt && !ahead.IsNumber()) {
            isRational = word == "nurbs";
            return true;
        }
    }
    return false;
}

void SkipWords(Fields& fields)
{
    while (!fields.AtEnd() && !fields.IsNumber()) {
        fields.Skip(1);
    }
}

/// False when the pole makes no sense.
bool ReadPole(Fields& fields, bool isRational, double scale, gp_Pnt& pole, double& weight)
{
    const gp_XYZ place = ReadTriple(fields) * scale;
    weight = isRational ? fields.Number() : 1;
    pole = gp_Pnt(place);
    return IsSound(place) && weight > 1e-12 && weight < 1e12;
}

Handle(Geom_Curve) MakeSplineCurve(Fields block, double scale)
{
    bool isRational = false;
    if (!FindSpline(block, 1, isRational)) {
        return {};
    }
    const int degree = block.Count();
    SkipWords(block);
    const int count = block.Count();
    Knots knots;
    if (!ReadKnots(block, count, degree, knots) ||
        static_cast<std::size_t>(knots.poles) > block.Left() / (isRational ? 4 : 3)) {
        return {};
    }
    TColgp_Array1OfPnt poles(1, knots.poles);
    TColStd_Array1OfReal weights(1, knots.poles);
    for (int i = 1; i <= knots.poles; ++i) {
        if (!ReadPole(block, isRational, scale, poles(i), weights(i))) {
            return {};
        }
    }
    TColStd_Array1OfReal values(1, count);
    TColStd_Array1OfInteger multiplicities(1, count);
    Copy(knots, values, multiplicities);
    if (isRational) {
        return new Geom_BSplineCurve(poles, weights, values, multiplicities, degree);
    }
    return new Geom_BSplineCurve(poles, values, multiplicities, degree);
}

Handle(Geom_Surface) MakeSplineSurface(Fields block, double scale)
{
    bool isRational = false;
    if (!FindSpline(block, 2, isRational)) {
        return {};
    }
    const int uDegree = block.Count();
    const int vDegree = block.Count();
    SkipWords(block);
    const int uCount = block.Count();
    const int vCount = block.Count();
    Knots u;
    Knots v;
    if (!ReadKnots(block, uCount, uDegree, u) || !ReadKnots(block, vCount, vDegree, v) ||
        static_cast<std::size_t>(u.poles) * static_cast<std::size_t>(v.poles) >
            block.Left() / (isRational ? 4 : 3)) {
        return {};
    }
    TColgp_Array2OfPnt poles(1, u.poles, 1, v.poles);
    TColStd_Array2OfReal weights(1, u.poles, 1, v.poles);
    for (int k = 1; k <= v.poles; ++k) {
        for (int i = 1; i <= u.poles; ++i) {
            if (!ReadPole(block, isRational, scale, poles(i, k), weights(i, k))) {
                return {};
            }
        }
    }
    TColStd_Array1OfReal uValues(1, uCount);
    TColStd_Array1OfInteger uMultiplicities(1, uCount);
    Copy(u, uValues, uMultiplicities);
    TColStd_Array1OfReal vValues(1, vCount);
    TColStd_Array1OfInteger vMultiplicities(1, vCount);
    Copy(v, vValues, vMultiplicities);
    if (isRational) {
        return new Geom_BSplineSurface(poles, weights, uValues, vValues, uMultiplicities, vMultiplicities,
                                       uDegree, vDegree);
    }
    return new Geom_BSplineSurface(poles, uValues, vValues, uMultiplicities, vMultiplicities, uDegree,
                                   vDegree);
}

/// The block that a spline record consists of, behind its sense.
Fields BlockOf(const Records& records, Fields& fields, bool& isReversed)
{
    isReversed = fields.IsReversed();
    while (!fields.AtEnd() && fields.Peek() != "{") {
        fields.Skip(1);
    }
    return fields.AtEnd() ? fields : records.Block(fields.Position());
}

} // namespace

const Curve& GeometryReader::CurveOf(int record)
{
    const auto [place, isNew] = myCurves.try_emplace(record);
    if (isNew && record != None) {
        try {
            place->second = ReadCurve(static_cast<std::size_t>(record));
        } catch (const Standard_Failure&) {
            place->second = {};
        }
    }
    return place->second;
}

const Surface& GeometryReader::SurfaceOf(int record)
{
    const auto [place, isNew] = mySurfaces.try_emplace(record);
    if (isNew && record != None) {
        try {
            place->second = ReadSurface(static_cast<std::size_t>(record));
        } catch (const Standard_Failure&) {
            place->second = {};
        }
    }
    return place->second;
}

std::optional<gp_Pnt> GeometryReader::PointOf(int record) const
{
    if (record == None || myRecords.Type(static_cast<std::size_t>(record)) != "point") {
        return std::nullopt;
    }
    Fields fields = myRecords.Own(static_cast<std::size_t>(record));
    const gp_XYZ place = ReadTriple(fields) * myScale;
    return IsSound(place) ? std::optional<gp_Pnt>(place) : std::nullopt;
}

Curve GeometryReader::ReadCurve(std::size_t record)
{
    const Fields fields = myRecords.Own(record);
    const std::string_view type = myRecords.Type(record);
    if (type == "straight-curve") {
        return ReadStraight(fields);
    }
    if (type == "ellipse-curve") {
        return ReadEllipse(fields);
    }
    return type == "intcurve-curve" ? ReadSplineCurve(fields) : Curve();
}

Surface GeometryReader::ReadSurface(std::size_t record)
{
    const Fields fields = myRecords.Own(record);
    const std::string_view type = myRecords.Type(record);
    if (type == "plane-surface") {
        return ReadPlane(fields);
    }
    if (type == "cone-surface") {
        return ReadCone(fields);
    }
    if (type == "sphere-surface") {
        return ReadSphere(fields);
    }
    if (type == "torus-surface") {
        return ReadTorus(fields);
    }
    return type == "spline-surface" ? ReadSplineSurface(fields) : Surface();
}

Curve GeometryReader::ReadStraight(Fields fields) const
{
    const gp_XYZ origin = ReadTriple(fields) * myScale;
    const gp_XYZ direction = ReadTriple(fields);
    if (!IsSound(origin) || !IsDirection(direction)) {
        return {};
    }
    return {new Geom_Line(gp_Pnt(origin), gp_Dir(direction)), direction.Modulus() * myScale};
}

/// The parameter is the angle from the axis that the file gives.
Curve GeometryReader::ReadEllipse(Fields fields) const
{
    const gp_XYZ centre = ReadTriple(fields) * myScale;
    const gp_XYZ normal = ReadTriple(fields);
    const gp_XYZ major = ReadTriple(fields) * myScale;
    const double ratio = fields.Number();
    const auto axes = AxesOf(centre, normal, major);
    if (!axes || !IsDirection(major) || !(ratio > 1e-9) || !(ratio < 1e9)) {
        return {};
    }
    return {MakeEllipse(*axes, major.Modulus(), ratio), 1};
}

Curve GeometryReader::ReadSplineCurve(Fields fields)
{
    bool isReversed = false;
    const Fields block = BlockOf(myRecords, fields, isReversed);
    const auto [place, isNew] = mySplineCurves.try_emplace(block.Position());
    if (isNew) {
        place->second = MakeSplineCurve(block, myScale);
    }
    return {place->second, isReversed ? -1. : 1.};
}

Surface GeometryReader::ReadPlane(Fields fields) const
{
    const gp_XYZ origin = ReadTriple(fields) * myScale;
    const gp_XYZ normal = ReadTriple(fields);
    const gp_XYZ x = ReadTriple(fields);
    const auto axes = AxesOf(origin, normal, x);
    return axes ? Surface{new Geom_Plane(*axes), {}, false} : Surface();
}

/// Cylinders and cones over circles and ellipses. The cosine is negative where the normal points inwards.
Surface GeometryReader::ReadCone(Fields fields) const
{
    const gp_XYZ origin = ReadTriple(fields) * myScale;
    const gp_XYZ normal = ReadTriple(fields);
    const gp_XYZ major = ReadTriple(fields) * myScale;
    const double ratio = fields.Number();
    while (!fields.AtEnd() && !fields.IsNumber()) {
        const std::string_view word = fields.Next();
        if (word == "F" || word == "true") {
            fields.Skip(1); // a bound
        }
    }
    const double sine = fields.Number();
    const double cosine = fields.Number();
    const auto axes = AxesOf(origin, normal, major);
    const double radius = major.Modulus();
    if (!axes || !IsSound(major) || !(ratio > 1e-9) || !(ratio < 1e9) || !(std::hypot(sine, cosine) > 0.5) ||
        !(std::abs(cosine) > 1e-9) || !(std::abs(sine) < 2)) {
        return {};
    }
    const bool isReversed = cosine < 0;
    const double angle = std::atan(sine / cosine);
    const bool isRound = std::abs(ratio - 1) < RoundWithin;
    if (std::abs(sine) < 1e-11) {
        if (!(radius > 1e-12)) {
            return {};
        }
        if (isRound) {
            return {new Geom_CylindricalSurface(*axes, radius), {}, isReversed};
        }
        return {new Geom_SurfaceOfLinearExtrusion(MakeEllipse(*axes, radius, ratio), axes->Direction()),
                {},
                isReversed};
    }
    if (isRound) {
        return {new Geom_ConicalSurface(*axes, angle, radius), {}, isReversed};
    }
    return {{}, EllipticCone{*axes, radius, ratio, angle}, isReversed};
}

Surface GeometryReader::ReadSphere(Fields fields) const
{
    const gp_XYZ centre = ReadTriple(fields) * myScale;
    const double radius = fields.Number() * myScale;
    const gp_XYZ x = ReadTriple(fields);
    const gp_XYZ pole = ReadTriple(fields);
    const auto axes = AxesOf(centre, IsDirection(pole) ? pole : gp_XYZ(0, 0, 1), x);
    if (!axes || !(std::abs(radius) > 1e-12) || !(std::abs(radius) < FarAway)) {
        return {};
    }
    return {new Geom_SphericalSurface(*axes, std::abs(radius)), {}, radius < 0};
}

/// Tori that touch or cross themselves stand for their outer part alone.
Surface GeometryReader::ReadTorus(Fields fields) const
{
    const gp_XYZ centre = ReadTriple(fields) * myScale;
    const gp_XYZ normal = ReadTriple(fields);
    const double major = fields.Number() * myScale;
    const double minor = fields.Number() * myScale;
    const auto axes = AxesOf(centre, normal, ReadTriple(fields));
    if (!axes || !(major > 0) || !(major < FarAway) || !(std::abs(minor) > 1e-12) ||
        !(std::abs(minor) < FarAway)) {
        return {};
    }
    return {new Geom_ToroidalSurface(*axes, major, std::abs(minor)), {}, minor < 0};
}

Surface GeometryReader::ReadSplineSurface(Fields fields)
{
    bool isReversed = false;
    const Fields block = BlockOf(myRecords, fields, isReversed);
    const auto [place, isNew] = mySplineSurfaces.try_emplace(block.Position());
    if (isNew) {
        place->second = MakeSplineSurface(block, myScale);
    }
    return {place->second, {}, isReversed};
}

Handle(Geom_Surface) MakeSurface(const EllipticCone& cone, double lowest, double highest)
{
    const double slope = std::tan(cone.angle);
    const double apex = -cone.radius / slope;
    const double margin = 0.01 * (highest - lowest);
    lowest -= margin;
    highest += margin;
    (slope > 0 ? lowest : highest) = slope > 0 ? std::max(lowest, apex) : std::min(highest, apex);
    if (!(highest - lowest > 1e-9)) {
        return {};
    }
    const double toLength = 1 / std::cos(cone.angle);
    const Handle(Geom_Surface) round = new Geom_ConicalSurface(gp_Ax3(), cone.angle, cone.radius);
    const Handle(Geom_BSplineSurface) spline = GeomConvert::SurfaceToBSplineSurface(
        new Geom_RectangularTrimmedSurface(round, 0, 2 * M_PI, lowest * toLength, highest * toLength));
    gp_Trsf toPlace;
    toPlace.SetTransformation(cone.axes, gp_Ax3());
    for (int i = 1; i <= spline->NbUPoles(); ++i) {
        for (int k = 1; k <= spline->NbVPoles(); ++k) {
            gp_Pnt pole = spline->Pole(i, k);
            pole.SetY(pole.Y() * cone.ratio);
            spline->SetPole(i, k, pole.Transformed(toPlace));
        }
    }
    return Handle(Geom_Surface)(spline);
}

} // namespace cadex::acis
