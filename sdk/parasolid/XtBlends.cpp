#include "sdk/parasolid/XtBlends.h"

#include <algorithm>
#include <cmath>

#include <Geom_BSplineSurface.hxx>
#include <Geom_Circle.hxx>
#include <Geom_CylindricalSurface.hxx>
#include <Geom_Line.hxx>
#include <Geom_ToroidalSurface.hxx>
#include <TColStd_Array1OfInteger.hxx>
#include <TColStd_Array1OfReal.hxx>
#include <TColStd_Array2OfReal.hxx>
#include <TColgp_Array2OfPnt.hxx>

namespace cadex::parasolid {

namespace {

/// The poles of two arcs of a parabola's degree in a row, each times its weight, and the weights.
constexpr std::size_t SectionPoles = 5;
using Section = std::array<double, 4 * SectionPoles>;

/// A section and its derivative along the spine.
struct Station
{
    double t = 0;
    Section value{};
    Section rate{};
};

/// Sections of a blend across its spine.
class SectionMaker
{
public:
    explicit SectionMaker(const Blend& blend)
        : myTube(blend.tube),
          myFirst(blend.supports[0].MakeCarrier()),
          mySecond(blend.supports[1].MakeCarrier())
    {
    }

    /// Nothing where the ball does not touch both surfaces, or from opposite sides.
    std::optional<Section> At(double t)
    {
        const auto first = ContactOf(myTube, myFirst, t);
        const auto second = ContactOf(myTube, mySecond, t);
        if (!first || !second) {
            return std::nullopt;
        }
        const gp_Pnt centre = myTube.spine->Value(t);
        const gp_Vec a = gp_Vec(centre, *first).Normalized();
        const gp_Vec b = gp_Vec(centre, *second).Normalized();
        const gp_Vec sum = a + b;
        const gp_Vec difference = b - a;
        if (!(sum.Magnitude() > 1e-3) || !(difference.Magnitude() > 1e-9)) {
            return std::nullopt;
        }
        const gp_Vec middle = sum.Normalized();
        const gp_Vec side = difference.Normalized();
        constexpr double Beyond = 0.05;
        const double half = std::atan2(difference.Magnitude(), sum.Magnitude()) + Beyond;
        const double weight = std::cos(half / 2);
        const auto at = [&](double angle, double reach) {
            return centre.XYZ() + (middle * std::cos(angle) + side * std::sin(angle)).XYZ() * reach;
        };
        const double radius = myTube.radius;
        const gp_XYZ points[SectionPoles] = {at(-half, radius), at(-half / 2, radius / weight), at(0, radius),
                                             at(half / 2, radius / weight), at(half, radius)};
        Section section{};
        for (std::size_t i = 0; i < SectionPoles; ++i) {
            const double w = i % 2 == 1 ? weight : 1;
            section[4 * i] = points[i].X() * w;
            section[4 * i + 1] = points[i].Y() * w;
            section[4 * i + 2] = points[i].Z() * w;
            section[4 * i + 3] = w;
        }
        return section;
    }

    /// With the rate by differences, one-sided at the ends of the spine.
    std::optional<Station> StationAt(double t, double step, double low, double high)
    {
        const double before = std::max(t - step, low);
        const double after = std::min(t + step, high);
        const auto value = At(t);
        const auto a = At(before);
        const auto b = At(after);
        if (!value || !a || !b) {
            return std::nullopt;
        }
        Station station{t, *value, {}};
        const double left = t - before;
        const double right = after - t;
        for (std::size_t i = 0; i < station.rate.size(); ++i) {
            const double down = left > 0 ? ((*value)[i] - (*a)[i]) / left : 0;
            const double up = right > 0 ? ((*b)[i] - (*value)[i]) / right : 0;
            station.rate[i] = (left == 0    ? up
                               : right == 0 ? down
                                            : (up * left + down * right) / (left + right));
        }
        return station;
    }

private:
    const Tube& myTube;
    Carrier myFirst;
    Carrier mySecond;
};

double OffOf(const Station& a, const Station& b, const Section& exact)
{
    double off = 0;
    for (std::size_t i = 0; i < exact.size(); ++i) {
        const double middle = (a.value[i] + b.value[i]) / 2 + (a.rate[i] - b.rate[i]) * ((b.t - a.t) / 8);
        off = std::max(off, std::abs(middle - exact[i]) * (i % 4 == 3 ? 10 : 1));
    }
    return off;
}

/// Stations so close that cubics between them follow the sections; empty where that does not go.
std::vector<Station> MakeStations(SectionMaker maker, double low, double high, double tolerance,
                                  bool isClosed)
{
    constexpr int First = 8;
    constexpr std::size_t Most = 600;
    const double step = (high - low) * 1e-5;
    const double lowest = isClosed ? low - step : low;
    const double highest = isClosed ? high + step : high;
    std::vector<Station> stations;
    for (int i = 0; i <= First; ++i) {
        const auto station = maker.StationAt(low + (high - low) * i / First, step, lowest, highest);
        if (!station) {
            return {};
        }
        stations.push_back(*station);
    }
    for (std::size_t i = 0; i + 1 < stations.size() && stations.size() < Most;) {
        const double t = (stations[i].t + stations[i + 1].t) / 2;
        const auto middle = maker.StationAt(t, step, lowest, highest);
        if (!middle) {
            return {};
        }
        if (OffOf(stations[i], stations[i + 1], middle->value) < tolerance) {
            ++i;
        } else {
            stations.insert(stations.begin() + static_cast<std::ptrdiff_t>(i) + 1, *middle);
        }
    }
    return stations;
}

/// u along the spine, v across.
Handle(Geom_Surface) MakeSurface(const std::vector<Station>& stations)
{
    const int spans = static_cast<int>(stations.size()) - 1;
    const int rows = 2 * spans + 2;
    constexpr int Columns = static_cast<int>(SectionPoles);
    TColgp_Array2OfPnt poles(1, rows, 1, Columns);
    TColStd_Array2OfReal weights(1, rows, 1, Columns);
    const auto set = [&](int row, const Station& station, double ahead) {
        for (int k = 0; k < Columns; ++k) {
            const std::size_t at = 4 * static_cast<std::size_t>(k);
            double pole[4];
            for (std::size_t i = 0; i < 4; ++i) {
                pole[i] = station.value[at + i] + station.rate[at + i] * ahead;
            }
            weights(row, k + 1) = pole[3];
            poles(row, k + 1) = gp_Pnt(pole[0] / pole[3], pole[1] / pole[3], pole[2] / pole[3]);
        }
    };
    TColStd_Array1OfReal knots(1, spans + 1);
    TColStd_Array1OfInteger counts(1, spans + 1);
    counts.Init(2);
    counts(1) = counts(spans + 1) = 4;
    set(1, stations.front(), 0);
    knots(1) = stations.front().t;
    for (int i = 0; i < spans; ++i) {
        const Station& a = stations[static_cast<std::size_t>(i)];
        const Station& b = stations[static_cast<std::size_t>(i) + 1];
        const double third = (b.t - a.t) / 3;
        set(2 * i + 2, a, third);
        set(2 * i + 3, b, -third);
        knots(i + 2) = b.t;
    }
    set(rows, stations.back(), 0);
    TColStd_Array1OfReal across(1, 3);
    TColStd_Array1OfInteger acrossCounts(1, 3);
    for (int i = 1; i <= 3; ++i) {
        across(i) = (i - 1) / 2.;
        acrossCounts(i) = i == 2 ? 2 : 3;
    }
    return new Geom_BSplineSurface(poles, weights, knots, across, counts, acrossCounts, 3, 2);
}

struct Interval
{
    double low = 0;
    double high = 0;
    bool isWhole = false; ///< all of a closed spine
};

/// The piece of the spine beside the points. On a closed one it begins behind the widest gap between them.
std::optional<Interval> PieceBeside(const Tube& tube, const std::vector<gp_Pnt>& points)
{
    std::vector<double> parameters;
    std::optional<double> last;
    for (const gp_Pnt& point : points) {
        last = tube.Nearest(point, last);
        if (!last) {
            return std::nullopt;
        }
        parameters.push_back(*last);
    }
    if (parameters.empty()) {
        return std::nullopt;
    }
    const Geom_Curve& spine = *tube.spine;
    const double first = spine.FirstParameter();
    const double end = spine.LastParameter();
    constexpr double Unbounded = 1e50;
    const bool isBounded = first > -Unbounded && end < Unbounded;
    const bool isClosed = isBounded && spine.IsClosed();
    const double period = end - first;
    if (isClosed) {
        for (double& parameter : parameters) {
            parameter -= std::floor((parameter - first) / period) * period;
        }
    }
    std::sort(parameters.begin(), parameters.end());
    Interval piece{parameters.front(), parameters.back()};
    if (isClosed) {
        double gap = parameters.front() + period - parameters.back();
        for (std::size_t i = 1; i < parameters.size(); ++i) {
            if (parameters[i] - parameters[i - 1] > gap) {
                gap = parameters[i] - parameters[i - 1];
                piece = {parameters[i], parameters[i - 1] + period};
            }
        }
        constexpr double WidestStep = 0.15; // of the way round, between points of an edge
        if (gap < WidestStep * period || !spine.IsPeriodic()) {
            return Interval{first, end, true};
        }
    }
    const double margin = 0.01 * (piece.high - piece.low);
    piece.low -= margin;
    piece.high += margin;
    if (isBounded && !isClosed) {
        piece = {std::max(piece.low, first), std::min(piece.high, end)};
    }
    return piece.high - piece.low > 1e-9 ? std::optional(piece) : std::nullopt;
}

/// Moves `value` by whole periods to where it is nearest to `near`.
double Unwrapped(double value, double near, double period)
{
    return period > 0 ? value + std::round((near - value) / period) * period : value;
}

} // namespace

std::optional<gp_Pnt> ContactOf(const Tube& tube, Carrier& support, double parameter)
{
    const gp_Pnt centre = tube.spine->Value(parameter);
    const auto foot = support.FootOf(centre);
    const double slack = 1e-3 + 1e-3 * tube.radius;
    if (!foot || !(std::abs(foot->point.Distance(centre) - tube.radius) < slack)) {
        return std::nullopt;
    }
    return foot->point;
}

Handle(Geom_Surface) MakeBlendSurface(const Blend& blend, const std::vector<gp_Pnt>& points, double tolerance)
{
    const Tube& tube = blend.tube;
    if (const auto line = Handle(Geom_Line)::DownCast(tube.spine); !line.IsNull()) {
        const gp_Ax1& axis = line->Position();
        return new Geom_CylindricalSurface(gp_Ax3(axis.Location(), axis.Direction()), tube.radius);
    }
    if (const auto circle = Handle(Geom_Circle)::DownCast(tube.spine); !circle.IsNull()) {
        return new Geom_ToroidalSurface(gp_Ax3(circle->Position()), circle->Radius(), tube.radius);
    }
    const auto piece = PieceBeside(tube, points);
    if (!piece || !blend.supports[0].IsThere() || !blend.supports[1].IsThere()) {
        return {};
    }
    const bool isClosed = piece->isWhole && tube.spine->IsPeriodic();
    const std::vector<Station> stations =
        MakeStations(SectionMaker(blend), piece->low, piece->high, tolerance, isClosed);
    return stations.empty() ? Handle(Geom_Surface)() : MakeSurface(stations);
}

/// By the area that the loops enclose in the surface's parameters, positive to the left of them. Loops that
/// wind round the surface are brought within half a period of each other.
std::optional<bool> RunsAboutNormal(const brep::Surface& surface,
                                    const std::vector<std::vector<gp_Pnt>>& loops)
{
    if (surface.geometry.IsNull()) {
        return std::nullopt;
    }
    const brep::SurfaceEvaluator evaluator(surface);
    double area = 0;
    double size = 0;
    std::optional<double> firstV;
    for (const std::vector<gp_Pnt>& loop : loops) {
        gp_Pnt2d before;
        bool hasBefore = false;
        for (std::size_t i = 0; i <= loop.size() && !loop.empty(); ++i) {
            gp_Pnt2d place = before;
            const double distance = brep::Project(evaluator, loop[i % loop.size()], place, 1e-6, hasBefore);
            if (!(distance < 1e3)) {
                return std::nullopt;
            }
            const double nearV = hasBefore ? before.Y() : firstV.value_or(place.Y());
            place.SetY(Unwrapped(place.Y(), nearV, surface.period[1]));
            if (hasBefore) {
                place.SetX(Unwrapped(place.X(), before.X(), surface.period[0]));
                const double step = place.X() - before.X();
                area -= (place.Y() + before.Y()) / 2 * step;
                size += std::abs(step) * std::abs(place.Y() - *firstV) +
                        std::abs(place.Y() - before.Y()) * std::abs(step);
            }
            firstV = firstV.value_or(place.Y());
            before = place;
            hasBefore = true;
        }
    }
    if (!(std::abs(area) > 1e-6 * size)) {
        return std::nullopt;
    }
    return (area > 0) != surface.isTurned;
}

} // namespace cadex::parasolid
