// A fragment that is cut along the planes of the other body's faces lies inside, outside or on that body as a
// whole, which a ray tells.
#include "sdk/ifc/IfcFragmentCuts.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

namespace cadex::ifc::flat {

namespace {

/// How a fragment lies to a body.
enum class Side
{
    Outside,
    Inside,
    OnSame,    ///< in a face that looks the same way
    OnOpposite ///< in a face that looks the other way
};

/// NOTE: solid angle of a triangle: Van Oosterom and Strackee, 1983.
double SolidAngle(gp_XYZ a, gp_XYZ b, gp_XYZ c, const gp_XYZ& eye)
{
    a -= eye;
    b -= eye;
    c -= eye;
    const double la = a.Modulus();
    const double lb = b.Modulus();
    const double lc = c.Modulus();
    return 2 * std::atan2(a.Dot(b.Crossed(c)), la * lb * lc + a.Dot(b) * lc + b.Dot(c) * la + c.Dot(a) * lb);
}

/// Closed bodies that do not meet each other.
class Cutter
{
public:
    Cutter(Budget& budget, const std::vector<const Fragments*>& others) : myBudget(budget)
    {
        for (const Fragments* fragments : others) {
            Other& other = myOthers.emplace_back();
            other.fragments = fragments;
            for (const Fragment& fragment : *fragments) {
                other.box.Add(fragment.points);
            }
        }
    }

    /// Calls `take(fragment, side)` for pieces that lie on one side as a whole.
    template <typename Take>
    void Cut(const Fragments& fragments, Take take) const
    {
        for (const Fragment& fragment : fragments) {
            Fragments pieces{fragment};
            for (const Other& other : myOthers) {
                if (other.box.Meets(fragment.box, Weld)) {
                    Divide(fragment, *other.fragments, pieces);
                }
            }
            for (const Fragment& piece : pieces) {
                take(piece, SideOf(piece));
            }
        }
    }

private:
    struct Other
    {
        const Fragments* fragments;
        Box box;
    };

    void Divide(const Fragment& fragment, const Fragments& other, Fragments& pieces) const
    {
        for (const Fragment& knife : other) {
            if (!knife.box.Meets(fragment.box, Weld)) {
                continue;
            }
            const std::size_t count = pieces.size();
            myBudget.Spend(count);
            for (std::size_t i = 0; i < count; ++i) {
                Polygon3 above;
                Polygon3 below;
                if (knife.box.Meets(pieces[i].box, Weld) &&
                    Split(pieces[i].points, knife.plane, above, below)) {
                    Fragment rest = pieces[i];
                    pieces[i].SetPoints(std::move(above));
                    rest.SetPoints(std::move(below));
                    pieces.push_back(std::move(rest));
                }
            }
        }
    }

    Side SideOf(const Fragment& piece) const
    {
        const gp_XYZ middle = piece.Middle();
        for (const Other& other : myOthers) {
            if (other.box.Holds(middle, Weld)) {
                const Side side = SideOf(piece, middle, *other.fragments);
                if (side != Side::Outside) {
                    return side;
                }
            }
        }
        return Side::Outside;
    }

    Side SideOf(const Fragment& piece, const gp_XYZ& middle, const Fragments& other) const
    {
        myBudget.Spend(other.size() / 4);
        bool clear = true;
        int crossed = 0;
        for (const Fragment& face : other) {
            if (face.box.Meets(piece.box, Weld) && face.plane.Holds(piece.points) && face.Covers(middle)) {
                return face.plane.normal.Dot(piece.plane.normal) > 0 ? Side::OnSame : Side::OnOpposite;
            }
            clear = clear && AddCrossing(face, middle, crossed);
        }
        const bool inside = clear ? crossed != 0 : IsWoundRound(middle, other);
        return inside ? Side::Inside : Side::Outside;
    }

    /// Counts the face if the ray along x from `eye` passes through it; false when it comes too near to the
    /// face's edge, or the face to the eye, to tell.
    static bool AddCrossing(const Fragment& face, const gp_XYZ& eye, int& crossed)
    {
        const Box& box = face.box;
        if (eye.Y() < box.low.Y() - Weld || eye.Y() > box.high.Y() + Weld || eye.Z() < box.low.Z() - Weld ||
            eye.Z() > box.high.Z() + Weld || eye.X() > box.high.X() + Weld) {
            return true;
        }
        const double slope = face.plane.normal.X();
        const double height = face.plane.Above(eye);
        if (std::abs(slope) < 1e-6 || std::abs(height) <= Weld) {
            return false;
        }
        const double distance = -height / slope;
        if (distance < 0) {
            return true;
        }
        const gp_XYZ hit = eye + gp_XYZ(distance, 0, 0);
        bool near = false;
        for (std::size_t i = 0; i < face.points.size(); ++i) {
            const gp_XYZ edge = face.points[(i + 1) % face.points.size()] - face.points[i];
            const double aside = edge.Crossed(hit - face.points[i]).Dot(face.plane.normal) / edge.Modulus();
            if (aside < -Weld) {
                return true;
            }
            near = near || aside <= Weld;
        }
        crossed += slope > 0 ? 1 : -1;
        return !near;
    }

    bool IsWoundRound(const gp_XYZ& eye, const Fragments& other) const
    {
        myBudget.Spend(10 * other.size());
        double angle = 0;
        for (const Fragment& face : other) {
            for (std::size_t i = 2; i < face.points.size(); ++i) {
                angle += SolidAngle(face.points[0], face.points[i - 1], face.points[i], eye);
            }
        }
        return std::abs(angle) > 2 * M_PI;
    }

    Budget& myBudget;
    std::vector<Other> myOthers;
};

} // namespace

Fragments Combined(Budget& budget, BooleanKind kind, const Fragments& body,
                   const std::vector<const Fragments*>& tools)
{
    Fragments result;
    const Side wanted = kind == BooleanKind::Common ? Side::Inside : Side::Outside;
    Cutter(budget, tools).Cut(body, [&](const Fragment& piece, Side side) {
        const Side on = kind == BooleanKind::Cut ? Side::OnOpposite : Side::OnSame;
        if (side == wanted || side == on) {
            result.push_back(piece);
        }
    });
    const Cutter byBody(budget, {&body});
    for (const Fragments* tool : tools) {
        byBody.Cut(*tool, [&](const Fragment& piece, Side side) {
            if (side == (kind == BooleanKind::Fuse ? Side::Outside : Side::Inside)) {
                result.push_back(piece);
                if (kind == BooleanKind::Cut) {
                    Turn(result.back());
                }
            }
        });
    }
    return result;
}

} // namespace cadex::ifc::flat
