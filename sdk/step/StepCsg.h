// Solids that are built from others: primitives, sweeps, half spaces, and what booleans make of them.
//
//     StepCsg csg(geometry, describe);
//     TopoDS_Shape shape = csg.Shape(id);
//
// The kernel's operations carry them; what it refuses is reported as any other item that is left out.
#pragma once

#include <functional>

#include <TopoDS_Face.hxx>
#include <TopoDS_Shape.hxx>
#include <TopoDS_Wire.hxx>

#include "sdk/brep/Description.h"
#include "sdk/step/StepGeometryReader.h"

namespace cadex::step {

class StepCsg
{
public:
    /// What the item with the number describes, when it is no solid of these kinds.
    using Describe = std::function<brep::Description(RecordId)>;

    StepCsg(StepGeometryReader& geometry, Describe describe)
        : myGeometry(geometry), myRecords(geometry.Records()), myDescribe(std::move(describe))
    {
    }

    /// Never null; throws Damaged, Unsupported or the kernel's exceptions.
    TopoDS_Shape Shape(RecordId id);

private:
    TopoDS_Shape ShapeAt(RecordId id, int depth);
    TopoDS_Shape BooleanOf(const StepRecords::Record& record, int depth);
    TopoDS_Shape Primitive(const StepRecords::Record& record, std::string_view name);
    TopoDS_Shape Sweep(const StepRecords::Record& record, std::string_view name);
    TopoDS_Shape Disk(const StepRecords::Record& record);
    TopoDS_Shape HalfSpace(const StepRecords::Record& record, const TopoDS_Shape& other);
    TopoDS_Face AreaOf(RecordId id);
    TopoDS_Shape Described(RecordId id);
    double Positive(Cursor& cursor, const StepRecords::Record& record);

    StepGeometryReader& myGeometry;
    const StepRecords& myRecords;
    Describe myDescribe;
};

} // namespace cadex::step
