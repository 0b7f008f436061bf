#include "sdk/occt/ShapeMesher.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <vector>

#include <BRepBndLib.hxx>
#include <BRepGProp.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepTools.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <Bnd_Box.hxx>
#include <GProp_GProps.hxx>
#include <OSD_Exception.hxx>
#include <Poly_Triangulation.hxx>
#include <Standard_ErrorHandler.hxx>
#include <Standard_Failure.hxx>
#include <TopExp.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>

#include <cadex/Base_Settings.hxx>
#include <cadex/ModelAlgo_BRepMesherParameters.hxx>

#include "sdk/occt/Deadline.h"
#include <cadex/internal/Reports.hxx>

namespace cadex::occt {

namespace {

constexpr double Degree = M_PI / 180;
constexpr double SmallestAngle = 0.5 * Degree;
constexpr double LargestAngle = 90 * Degree;
constexpr double SmallestRelativeChord = 1e-4;
constexpr double SmallestChord = 1e-5;
constexpr double LargestChord = 1e6;

// From this many faces on, threads gain more than they cost (measured; see bench/mesh_and_mass.cpp).
constexpr int ParallelFaces = 400;

// Damaged surfaces can keep the kernel refining for hours. A sound face takes milliseconds.
constexpr double SecondsForShape = 10;
constexpr double SecondsForFace = 0.25;

/// True for NaN too.
bool IsNotPositive(double value)
{
    return !(value > 0);
}

/// False when the kernel gave up on the shape as a whole.
bool TryMesh(const TopoDS_Shape& shape, const MeshTolerances& tolerances, bool parallel,
             const Handle(Deadline) & deadline)
{
    IMeshTools_Parameters parameters;
    parameters.Deflection = tolerances.chord;
    parameters.Angle = tolerances.angle;
    parameters.Relative = tolerances.relative;
    parameters.InParallel = parallel;
    try {
        OCC_CATCH_SIGNALS
        BRepMesh_IncrementalMesh mesher(shape, parameters, deadline->Start());
        return true;
    } catch (const Standard_Failure&) {
        return false;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception&) {
        return false;
    }
}

bool HasTriangles(const TopoDS_Shape& face)
{
    TopLoc_Location location;
    const Handle(Poly_Triangulation)& mesh = BRep_Tool::Triangulation(TopoDS::Face(face), location);
    return !mesh.IsNull() && mesh->NbTriangles() > 0;
}

/// Drops triangulations with points that are not finite: none leaves the engine.
void DropInfinite(const TopTools_IndexedMapOfShape& faces)
{
    constexpr double FarthestPoint = 1e18; // millimetres; as a float its square is a number still
    const BRep_Builder builder;
    for (int i = 1; i <= faces.Extent(); ++i) {
        TopLoc_Location location;
        const Handle(Poly_Triangulation) mesh = BRep_Tool::Triangulation(TopoDS::Face(faces(i)), location);
        bool finite = true;
        for (int node = 1; !mesh.IsNull() && node <= mesh->NbNodes() && finite; ++node) {
            const gp_Pnt point = mesh->Node(node);
            finite = std::abs(point.X()) < FarthestPoint && std::abs(point.Y()) < FarthestPoint &&
                     std::abs(point.Z()) < FarthestPoint;
        }
        if (!finite) {
            builder.UpdateFace(TopoDS::Face(faces(i)), Handle(Poly_Triangulation)());
        }
    }
}

/// The faces, by number, that have no triangles and should have some.
std::vector<int> FacesWithout(const TopTools_IndexedMapOfShape& faces)
{
    std::vector<int> missing;
    for (int i = 1; i <= faces.Extent(); ++i) {
        if (!HasTriangles(faces(i))) {
            missing.push_back(i);
        }
    }
    return missing;
}

/// A face of rounding noise: leaving it out leaves no gap that anybody could see.
bool IsNothing(const TopoDS_Shape& face)
{
    constexpr double NoArea = 1e-6; // square millimetres
    TopLoc_Location location;
    if (BRep_Tool::Surface(TopoDS::Face(face), location).IsNull()) {
        return false;
    }
    try {
        OCC_CATCH_SIGNALS
        GProp_GProps properties;
        BRepGProp::SurfaceProperties(face, properties, 1e-2);
        return std::abs(properties.Mass()) < NoArea;
    } catch (const Standard_Failure&) {
        return false;
    }
}

/// By a chord and an angle that are this much smaller or larger.
MeshTolerances Scaled(MeshTolerances tolerances, double factor)
{
    tolerances.chord *= factor;
    tolerances.angle = std::clamp(tolerances.angle * factor, SmallestAngle, LargestAngle);
    return tolerances;
}

/// Meshes what can be meshed of the faces that have no triangles yet.
void MeshFacesWithout(const TopoDS_Shape& shape, const TopTools_IndexedMapOfShape& faces,
                      const MeshTolerances& tolerances, const Handle(Deadline) & deadline)
{
    if (TryMesh(shape, tolerances, tolerances.parallel && faces.Extent() >= ParallelFaces, deadline)) {
        return;
    }
    // One face has stopped the whole: the rest is meshed face by face. A relative chord then refers to the
    // face.
    for (int i = 1; i <= faces.Extent() && !deadline->IsPassed(); ++i) {
        if (!HasTriangles(faces(i))) {
            TryMesh(faces(i), tolerances, false, deadline);
        }
    }
}

/// The whole shape by slightly finer tolerances, which keeps edges common to their faces; true when that has
/// left no face out. Only for shapes so small that nobody notices the time.
bool MeshAllFiner(const TopoDS_Shape& shape, const TopTools_IndexedMapOfShape& faces,
                  const MeshTolerances& tolerances, const Handle(Deadline) & deadline)
{
    constexpr int MostFaces = 500;
    for (const double factor : {0.7, 0.4}) {
        if (faces.Extent() > MostFaces || deadline->IsPassed()) {
            return false;
        }
        ForgetTriangulations(shape);
        MeshFacesWithout(shape, faces, Scaled(tolerances, factor), deadline);
        if (FacesWithout(faces).empty()) {
            return true;
        }
    }
    ForgetTriangulations(shape);
    MeshFacesWithout(shape, faces, tolerances, deadline);
    return false;
}

/// Those faces alone, by other tolerances until one works. The neighbours keep their meshes: a crack of one
/// chord is better than a hole.
void MeshAlone(const TopTools_IndexedMapOfShape& faces, const std::vector<int>& missing,
               MeshTolerances tolerances, double size, const Handle(Deadline) & deadline)
{
    tolerances.chord *= tolerances.relative ? size : 1;
    tolerances.relative = false;
    for (const int number : missing) {
        for (const double factor : {1.0, 0.3, 3.0, 0.1}) {
            if (deadline->IsPassed() || HasTriangles(faces(number))) {
                break;
            }
            ForgetTriangulations(faces(number));
            TryMesh(faces(number), Scaled(tolerances, factor), false, deadline);
        }
    }
}

} // namespace

MeshTolerances MakeTolerances(const ModelAlgo_BRepMesherParameters& parameters)
{
    const ModelAlgo_BRepMesherParameters fine(ModelAlgo_BRepMesherParameters::Fine);
    MeshTolerances result;
    result.relative = parameters.IsRelativeChordalDeflection();
    result.parallel = Base_Settings::Default()->BoolValue(Base_Settings::ConcurrentMode, true);

    const double angle = parameters.AngularDeflection();
    result.angle =
        IsNotPositive(angle) ? fine.AngularDeflection() : std::clamp(angle, SmallestAngle, LargestAngle);

    const double chord = parameters.ChordalDeflection();
    if (IsNotPositive(chord)) {
        result.relative = true;
        result.chord = fine.ChordalDeflection();
    } else if (result.relative) {
        result.chord = std::clamp(chord, SmallestRelativeChord, 1.0);
    } else {
        result.chord = std::clamp(chord, SmallestChord, LargestChord);
    }
    return result;
}

double ShapeSize(const TopoDS_Shape& shape)
{
    Bnd_Box box;
    BRepBndLib::Add(shape, box, false);
    if (box.IsVoid()) {
        return 0;
    }
    double low[3];
    double high[3];
    box.Get(low[0], low[1], low[2], high[0], high[1], high[2]);
    return std::max({high[0] - low[0], high[1] - low[1], high[2] - low[2]});
}

void MeshFaces(const TopoDS_Shape& shape, const MeshTolerances& tolerances)
{
    // A finer triangulation left by an earlier run would be kept and the result depend on history.
    ForgetTriangulations(shape);
    TopTools_IndexedMapOfShape faces;
    TopExp::MapShapes(shape, TopAbs_FACE, faces);
    const Handle(Deadline) deadline = new Deadline(SecondsForShape + SecondsForFace * faces.Extent());
    if (faces.IsEmpty()) {
        return;
    }
    MeshFacesWithout(shape, faces, tolerances, deadline);
    DropInfinite(faces);
    std::vector<int> missing = FacesWithout(faces);
    missing.erase(std::remove_if(missing.begin(), missing.end(), [&](int i) { return IsNothing(faces(i)); }),
                  missing.end());
    if (missing.empty()) {
        return;
    }
    const bool whole = MeshAllFiner(shape, faces, tolerances, deadline);
    DropInfinite(faces);
    if (whole) {
        return;
    }
    MeshAlone(faces, missing, tolerances, ShapeSize(shape), deadline);
    DropInfinite(faces);
    for (const int number : missing) {
        if (!HasTriangles(faces(number))) {
            internal::Reports::Add(internal::Report::Kind::LeftOut, deadline->IsPassed()
                                                                        ? "a face that takes too long to mesh"
                                                                        : "a face that cannot be meshed");
        }
    }
}

void ForgetTriangulations(const TopoDS_Shape& shape)
{
    BRepTools::Clean(shape);
}

} // namespace cadex::occt
