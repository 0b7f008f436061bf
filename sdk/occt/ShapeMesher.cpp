#include "sdk/occt/ShapeMesher.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <new>

#include <BRepBndLib.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepTools.hxx>
#include <BRep_Tool.hxx>
#include <Bnd_Box.hxx>
#include <Message_ProgressIndicator.hxx>
#include <OSD_Exception.hxx>
#include <Standard_ErrorHandler.hxx>
#include <Standard_Failure.hxx>
#include <TopExp.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>

#include <cadex/Base_Settings.hxx>
#include <cadex/ModelAlgo_BRepMesherParameters.hxx>

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

/// Breaks the kernel off when the process has used that much processor time.
class Deadline : public Message_ProgressIndicator
{
public:
    explicit Deadline(double seconds)
        : myEnd(std::clock() + static_cast<std::clock_t>(seconds * CLOCKS_PER_SEC))
    {
    }

    bool IsPassed() const { return std::clock() > myEnd; }

protected:
    Standard_Boolean UserBreak() override { return IsPassed(); }
    void Show(const Message_ProgressScope&, const Standard_Boolean) override {}

private:
    const std::clock_t myEnd;
};

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
    if (faces.IsEmpty() ||
        TryMesh(shape, tolerances, tolerances.parallel && faces.Extent() >= ParallelFaces, deadline)) {
        return;
    }
    // One face has stopped the whole: the rest is meshed face by face. A relative chord then refers to the
    // face.
    for (int i = 1; i <= faces.Extent() && !deadline->IsPassed(); ++i) {
        TopLoc_Location location;
        if (BRep_Tool::Triangulation(TopoDS::Face(faces(i)), location).IsNull()) {
            TryMesh(faces(i), tolerances, false, deadline);
        }
    }
}

void ForgetTriangulations(const TopoDS_Shape& shape)
{
    BRepTools::Clean(shape);
}

} // namespace cadex::occt
