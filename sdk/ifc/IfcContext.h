// What every conversion needs: the file, its units, placements, and a bound on the work that hostile files
// can cause.
#pragma once

#include <map>
#include <memory>
#include <stdexcept>
#include <vector>

#include <gp_Ax2.hxx>
#include <gp_Ax3.hxx>
#include <gp_Mat.hxx>
#include <gp_Pnt.hxx>
#include <gp_Trsf.hxx>
#include <gp_XYZ.hxx>

#include <cadex/ModelData_Transformation.hxx>
#include <cadex/internal/Reports.hxx>

#include "sdk/ifc/IfcFile.h"
#include "sdk/occt/Placements.h"

namespace cadex::ifc {

using internal::Report;
using internal::Reports;

using mesh::Affine;
using occt::Apply;
using occt::Column;
using occt::Origin;
using occt::ToAxes;
using occt::ToTrsf;
using occt::Turned;

/// The frame with this origin, z axis and (about) x axis; unusable directions are replaced by usual ones.
Affine Frame(const gp_XYZ& origin, const gp_XYZ& z, const gp_XYZ& x);
/// The vector with length 1, or the fallback when it has none.
gp_XYZ Unit(const gp_XYZ& vector, const gp_XYZ& fallback);

/// Thrown when one item asks for something that cannot be built; the item is then left out.
class Unbuildable : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

class Alignment;

class Context
{
public:
    explicit Context(const IfcFile& file);

    const IfcFile& file;
    double toMillimetres = 1000; ///< of the project's length unit; metres when there is none
    double toRadians = 1;        ///< of the project's unit of plane angles
    double precision = 1e-3;     ///< millimetres below which the ends of curves coincide
    double fuzziness = 1e-3;     ///< millimetres below which the file means the same place; 1e-5 to 0.1
    std::map<Id, std::shared_ptr<const Alignment>> alignments; ///< see IfcAlignment.h
    Id atWork = 0;                                             ///< the item that reports name

    /// Bounds the work of references that fan out: throws Unbuildable once the file has caused more steps
    /// than any honest file of its size.
    void Step() { Steps(1); }
    void Steps(std::size_t count);

    /// Tells the host's programs what became of the item at work.
    void Report(internal::Report::Kind kind, const char* text) const { Reports::Add(kind, text, atWork); }

    double Length(const Entity& entity, std::size_t index, double fallback = 0) const
    {
        return entity.IsSet(index) ? entity.Real(index) * toMillimetres : fallback;
    }
    /// A length that must be above zero; Unbuildable otherwise.
    double PositiveLength(const Entity& entity, std::size_t index) const;
    gp_XYZ Point(const Entity& point) const;
    gp_XYZ Direction(const Entity& direction, const gp_XYZ& fallback) const;

    /// IfcAxis2Placement2D and 3D and IfcAxis1Placement; identity for a null entity.
    Affine Placement(const Entity& axes) const;
    /// IfcCartesianTransformationOperator in all its forms.
    Affine Operator(const Entity& transformation) const;
    /// World placement of an IfcLocalPlacement or IfcGridPlacement chain; a chain that bites its tail ends
    /// there.
    Affine WorldPlacement(Id placement);
    /// From the coordinates of `outer` to those of `inner`; exact where one stands directly in the other.
    Affine RelativePlacement(Id outer, Id inner);

private:
    void ReadPrecision();
    Affine GridPlacement(const Entity& placement) const;
    Affine AlongCurve(const Entity& placement);

    std::map<Id, Affine> myWorld;
    std::size_t mySteps = 0;
    std::size_t myMostSteps = 0;
};

/// Names an item as the one at work while it lives.
class AtWork
{
public:
    AtWork(Context& context, Id item) : myContext(context), myOuter(context.atWork)
    {
        myContext.atWork = item;
    }
    ~AtWork() { myContext.atWork = myOuter; }
    AtWork(const AtWork&) = delete;
    AtWork& operator=(const AtWork&) = delete;

private:
    Context& myContext;
    const Id myOuter;
};

/// Nesting deeper than this is no drawing but an attack on the stack.
constexpr int MaxNesting = 200;

/// Counts one level of nesting while it lives; Unbuildable when there are too many.
class Nesting
{
public:
    explicit Nesting(int& depth) : myDepth(depth)
    {
        if (++myDepth > MaxNesting) {
            --myDepth;
            throw Unbuildable("nested too deep");
        }
    }
    ~Nesting() { --myDepth; }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;

private:
    int& myDepth;
};

} // namespace cadex::ifc
