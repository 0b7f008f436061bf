#include "sdk/brep/BodyTessellation.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include <cadex/internal/Progress.hxx>
#include <cadex/internal/Reports.hxx>

#include "sdk/brep/FaceEdges.h"
#include "sdk/brep/KernelFaces.h"
#include "sdk/brep/KernelTasks.h"
#include "sdk/brep/SliverFace.h"
#include "sdk/brep/Tolerances.h"

namespace cadex::brep {

namespace {

using internal::Report;
using internal::Reports;
using mesh::FaceTriangles;

ModelData_Point ToPoint(const gp_Pnt& point)
{
    return {point.X(), point.Y(), point.Z()};
}

bool IsFinite(const ModelData_Point& point)
{
    return std::isfinite(point.X()) && std::isfinite(point.Y()) && std::isfinite(point.Z());
}

bool IsFinite(const FaceTriangles& face)
{
    return std::all_of(face.points.begin(), face.points.end(),
                       [](const ModelData_Point& point) { return IsFinite(point); });
}

FaceTriangles Converted(FaceMesh&& mesh, const EdgeDiscretisation& edges)
{
    FaceTriangles result;
    result.normals = std::move(mesh.normals);
    result.triangles = std::move(mesh.triangles);
    std::vector<U32> ownPoints(mesh.ownPoints.size(), mesh::NoIndex);
    bool isRepeated = false;
    for (const int point : mesh.points) {
        const auto next = static_cast<U32>(result.points.size());
        if (point >= 0) {
            result.points.push_back(ToPoint(edges.Point(point)));
            result.shared.push_back(static_cast<U32>(point));
            result.pointOf.push_back(next);
            continue;
        }
        const auto own = static_cast<std::size_t>(-1 - point);
        if (ownPoints[own] == mesh::NoIndex) {
            ownPoints[own] = next;
            result.points.push_back(ToPoint(mesh.ownPoints[own]));
            result.shared.push_back(mesh::NoIndex);
        } else {
            isRepeated = true;
        }
        result.pointOf.push_back(ownPoints[own]);
    }
    if (!isRepeated) {
        result.pointOf.clear();
    }
    return result;
}

/// Between two edges from the same vertex to the same, each as one line.
bool EnclosesNothing(const Body& body, const Face& face, const EdgeDiscretisation& edges)
{
    if (face.loops.size() != 1 || face.loops[0].uses.size() != 2) {
        return false;
    }
    const auto edgeOf = [&](const EdgeUse& use) -> const BodyEdge* {
        const auto number = static_cast<std::size_t>(use.edge);
        return use.edge >= 0 && number < body.edges.size() ? &body.edges[number] : nullptr;
    };
    const auto isLine = [&](const EdgeUse& use) {
        const BodyEdge* edge = edgeOf(use);
        return edge != nullptr && edge->isUsable &&
               (edge->kind == CurveKind::Line || edges.Of(use.edge).parameters.size() == 2);
    };
    const std::vector<EdgeUse>& uses = face.loops[0].uses;
    if (!std::all_of(uses.begin(), uses.end(), isLine)) {
        return false;
    }
    const BodyEdge &a = *edgeOf(uses[0]), &b = *edgeOf(uses[1]);
    return std::minmax(a.start, a.end) == std::minmax(b.start, b.end);
}

} // namespace

BodyTessellation::BodyTessellation(const ResolvedBody& resolved, const occt::MeshTolerances& tolerances)
    : myBody(resolved.body),
      myResolved(resolved.faces),
      myTolerances(tolerances),
      mySize(SizeOf(myBody)),
      myEdges(myBody, tolerances, mySize),
      myFaces(resolved.faces.size())
{
    DivideEdges(myResolved, myEdges);
    MeshFaces();
}

void BodyTessellation::MeshFaces()
{
    ForEach(myFaces.size(), myTolerances.parallel, [&](std::size_t face) {
        if (internal::Progress::GoesOn(face, myFaces.size())) {
            MeshFace(face);
        }
    });
    for (std::size_t face = 0; face < myFaces.size() && internal::Progress::GoesOn(); ++face) {
        if (!myResolved[face].strayEdges.empty()) {
            Reports::Add(Report::Kind::Repaired, "an edge that runs against its loop",
                         myBody.description->faces[face].record);
        }
        if (!myFaces[face].triangles.empty() ||
            EnclosesNothing(myBody, myBody.description->faces[face], myEdges) || TakeFileTriangles(face)) {
            continue;
        }
        if (!Try([&] {
                myFaces[face] = MeshWithKernel(myBody, static_cast<int>(face), myResolved[face], myEdges);
            })) {
            myFaces[face].Clear();
        }
        if (!IsFinite(myFaces[face])) {
            myFaces[face].Clear();
        }
        if (myFaces[face].triangles.empty() && !StitchFace(face) && !SlipFace(face)) {
            const ResolveStatus status = myResolved[face].status;
            Reports::Add(Report::Kind::LeftOut,
                         std::string("a face that cannot be meshed: ") +
                             (status != ResolveStatus::Done ? TextOf(status) : "its loops cross"),
                         myBody.description->faces[face].record);
        }
    }
}

bool BodyTessellation::TakeFileTriangles(std::size_t face)
{
    const Face& described = myBody.description->faces[face];
    if (!described.fileTriangles || !Try([&] { myFaces[face] = described.fileTriangles(); }) ||
        !IsFinite(myFaces[face])) {
        myFaces[face].Clear();
    }
    if (myFaces[face].triangles.empty()) {
        return false;
    }
    Reports::Add(Report::Kind::Repaired, "a face that cannot be meshed is shown as the file's own triangles",
                 described.record);
    return true;
}

bool BodyTessellation::StitchFace(std::size_t face)
{
    Try([&] {
        const double width = tolerance::SliverShare * mySize;
        myFaces[face] = Converted(StitchSliver(myEdges, myResolved[face], width), myEdges);
    });
    if (myFaces[face].triangles.empty()) {
        return false;
    }
    Reports::Add(Report::Kind::Repaired, "a thin face whose loops cross is stitched together",
                 myBody.description->faces[face].record);
    return true;
}

bool BodyTessellation::SlipFace(std::size_t face)
{
    Try([&] {
        const double slip = tolerance::SlipShare * mySize;
        myFaces[face] = Converted(TessellateFace(myBody, myEdges, myResolved[face], slip), myEdges);
    });
    if (!IsFinite(myFaces[face])) {
        myFaces[face].Clear();
    }
    if (myFaces[face].triangles.empty()) {
        return false;
    }
    Reports::Add(Report::Kind::Repaired, "corners where the loops of a face cross are cut off",
                 myBody.description->faces[face].record);
    return true;
}

void BodyTessellation::MeshFace(std::size_t face)
{
    Try([&] { myFaces[face] = Converted(TessellateFace(myBody, myEdges, myResolved[face]), myEdges); });
    if (!IsFinite(myFaces[face])) {
        myFaces[face].Clear();
    }
}

std::vector<ModelData_Point> BodyTessellation::PolylineOf(const LooseCurve& curve) const
{
    std::vector<ModelData_Point> result;
    const auto number = static_cast<std::size_t>(curve.edge);
    if (curve.edge < 0 || number >= myBody.edges.size() || !myBody.edges[number].isUsable) {
        return result;
    }
    const BodyEdge& edge = myBody.edges[number];
    Try([&] {
        for (const double parameter : DivideCurve(edge, myTolerances, mySize).parameters) {
            result.push_back(ToPoint(edge.Value(parameter)));
        }
    });
    return result;
}

} // namespace cadex::brep
