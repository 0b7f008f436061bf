// Sets, loose curves and wireframes.
#include "sdk/step/StepBodyReader.h"

namespace cadex::step {

// Points, curves and surfaces.
void StepBodyReader::ReadSet(const StepRecords::Record& record, const Looks& looks)
{
    Cursor arguments = myRecords.Named(record);
    const std::vector<RecordId> members = arguments.References();
    Expect(arguments, record);
    for (const RecordId id : members) {
        const StepType type = myRecords.TypeOf(id);
        const bool isSurface =
            (type >= StepType::Plane && type <= StepType::SurfaceReplica) ||
            (type == StepType::Complex && myRecords.HasPart(myRecords.Get(id), "B_SPLINE_SURFACE"));
        if (type == StepType::CartesianPoint) {
            continue; // nothing to be seen
        }
        Keep(id, [&] {
            const Looks own = LooksOf(id, looks);
            isSurface ? AddPatch(id, own) : AddCurves(id, own);
        });
    }
}

void StepBodyReader::AddCurves(RecordId id, const Looks& looks)
{
    myContent->hasItems = true;
    const ModelData_Appearance& look = looks.curve.IsNull() ? looks.surface : looks.curve;
    const std::vector<CurvePiece> pieces = myGeometry.Pieces(id);
    int previous = brep::None;
    for (const CurvePiece& piece : pieces) {
        previous = AddPiece(piece, previous, look, id);
    }
    myBodyLooks.push_back(look);
}

int StepBodyReader::AddPiece(const CurvePiece& piece, int previous, const ModelData_Appearance& look,
                             RecordId record)
{
    const auto isAt = [&](int vertex, const gp_Pnt& point) {
        return vertex != brep::None &&
               myBody->vertices[static_cast<std::size_t>(vertex)].point.SquareDistance(point) < 1e-14;
    };
    const int start = isAt(previous, piece.start) ? previous : myBody->AddVertex(piece.start);
    const int end = isAt(start, piece.end) ? start : myBody->AddVertex(piece.end);
    const int edge = myBody->AddEdge({.curve = piece.curve,
                                      .first = piece.first,
                                      .last = piece.last,
                                      .start = start,
                                      .end = end,
                                      .record = record});
    myBody->curves.push_back({edge, look});
    return end;
}

// CONNECTED_EDGE_SET, or a model of several of them.
void StepBodyReader::ReadEdges(const StepRecords::Record& record, const Looks& looks)
{
    Cursor arguments = myRecords.Named(record);
    const std::vector<RecordId> members = arguments.References();
    Expect(arguments, record);
    for (const RecordId id : members) {
        if (myRecords.TypeOf(id) == StepType::EdgeSet) {
            if (myRecords.TypeOf(record) == StepType::EdgeSet) {
                throw Damaged("edges that are made of themselves", record.id);
            }
            ReadEdges(myRecords.Get(id), LooksOf(id, looks));
        } else {
            AddLooseEdge(id, looks);
        }
    }
}

// Shells of loops, or a model of several of them.
void StepBodyReader::ReadWires(const StepRecords::Record& record, const Looks& looks)
{
    Cursor arguments = myRecords.Named(record);
    const std::vector<RecordId> members = arguments.References();
    Expect(arguments, record);
    for (const RecordId id : members) {
        const StepType type = myRecords.TypeOf(id);
        if (type == StepType::WireShell && myRecords.TypeOf(record) == StepType::ShellWireframe) {
            ReadWires(myRecords.Get(id), LooksOf(id, looks));
        } else if (type == StepType::EdgeLoop) {
            const StepRecords::Record& loop = myRecords.Get(id);
            Cursor cursor = myRecords.Named(loop);
            const std::vector<RecordId> edges = cursor.References();
            for (const RecordId edge : edges) {
                AddLooseEdge(edge, LooksOf(id, looks));
            }
        } else if (type == StepType::PolyLoop) {
            const brep::Loop loop = PolyLoopOf(myRecords.Get(id));
            for (const brep::EdgeUse& use : loop.uses) {
                myBody->curves.push_back({use.edge, looks.curve.IsNull() ? looks.surface : looks.curve});
            }
        }
    }
}

void StepBodyReader::AddLooseEdge(RecordId id, const Looks& looks)
{
    myGeometry.CountStep();
    const StepRecords::Record& record = myRecords.Get(id);
    RecordId edge = id;
    if (myRecords.TypeOf(record) == StepType::OrientedEdge) {
        Cursor arguments = myRecords.Named(record);
        arguments.Skip();
        arguments.Skip();
        edge = arguments.Reference();
    }
    // An edge of several loops is one curve.
    const StepRecords::Record& element = myRecords.Get(edge);
    const std::size_t place = myRecords.PlaceOf(element);
    if (myMapDepth == 0 && myItems.Find(place) != RecordSlots::None) {
        return;
    }
    myItems.Set(place, 0);
    const Looks own = LooksOf(edge, looks);
    bool sameSense = true;
    const ModelData_Appearance& look = own.curve.IsNull() ? own.surface : own.curve;
    myBody->curves.push_back({EdgeOf(edge, sameSense), look});
    myBodyLooks.push_back(look);
}

} // namespace cadex::step
