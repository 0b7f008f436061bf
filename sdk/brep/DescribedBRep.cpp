#include "sdk/brep/DescribedBRep.h"

#include <algorithm>
#include <utility>
#include <vector>

#include <BRep_Builder.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Compound.hxx>

#include <cadex/Base_Settings.hxx>

#include "sdk/brep/BodyTessellation.h"
#include "sdk/brep/ShapeBuilder.h"
#include "sdk/occt/MeshExtraction.h"
#include "sdk/occt/PolySets.h"

namespace cadex::brep {

namespace {

using mesh::FaceTriangles;
using mesh::TriangleTables;
using occt::SetLabels;

/// A face where a shell uses it, and the group that takes its triangles.
struct PlacedFace
{
    std::size_t face;
    bool isTurned;
    std::size_t group;
};

const ModelData_Appearance& AppearanceOr(const ModelData_Appearance& own, const ModelData_Appearance& other)
{
    return own.IsNull() ? other : own;
}

bool IsParallel()
{
    return Base_Settings::Default()->BoolValue(Base_Settings::ConcurrentMode, true);
}

class FaceCollector
{
public:
    FaceCollector(const Description& description, bool mergeFaceSets)
        : myDescription(description), myIsMerged(mergeFaceSets), myGroups(description.appearance)
    {
    }

    /// Of the solids, then of the sheets; sorted by groups. A solid has its material inside: shells that are
    /// inside out are turned.
    std::vector<PlacedFace> Collect(const BodyTessellation& body)
    {
        for (const Solid& solid : myDescription.solids) {
            AddShellAround(solid.outer, body, false, solid.name);
            for (const int shell : solid.voids) {
                AddShellAround(shell, body, true, solid.name);
            }
        }
        for (const int sheet : myDescription.sheets) {
            const bool isThere = sheet >= 0 && static_cast<std::size_t>(sheet) < myDescription.shells.size();
            AddShell(sheet, isThere ? myDescription.shells[static_cast<std::size_t>(sheet)].name
                                    : Base_UTF16String());
        }
        std::stable_sort(myFaces.begin(), myFaces.end(),
                         [](const PlacedFace& a, const PlacedFace& b) { return a.group < b.group; });
        return std::move(myFaces);
    }

    std::size_t GroupOf(const ModelData_Appearance& own, const Base_UTF16String& name)
    {
        const ModelData_Appearance& appearance = AppearanceOr(own, myDescription.appearance);
        return myIsMerged ? myGroups.NumberOf(appearance, name) : myGroups.Append(appearance, name);
    }
    const std::vector<occt::SetLabel>& Labels() const { return myGroups.All(); }

private:
    void AddShellAround(int number, const BodyTessellation& body, bool isVoid, const Base_UTF16String& name)
    {
        const std::size_t first = myFaces.size();
        AddShell(number, name);
        gp_XYZ origin;
        bool hasOrigin = false;
        double volume = 0;
        for (std::size_t i = first; i < myFaces.size(); ++i) {
            const FaceTriangles& face = body.TrianglesOf(myFaces[i].face);
            if (face.triangles.empty()) {
                return; // open: its volume tells nothing
            }
            if (!hasOrigin) {
                origin = PointOf(face, face.triangles.front()[0]);
                hasOrigin = true;
            }
            double own = 0;
            for (const mesh::NodeTriangle& triangle : face.triangles) {
                const gp_XYZ a = PointOf(face, triangle[0]) - origin;
                const gp_XYZ b = PointOf(face, triangle[1]) - origin;
                own += a.Crossed(b).Dot(PointOf(face, triangle[2]) - origin);
            }
            volume += myFaces[i].isTurned ? -own : own;
        }
        if (isVoid ? volume > 0 : volume < 0) {
            for (std::size_t i = first; i < myFaces.size(); ++i) {
                myFaces[i].isTurned = !myFaces[i].isTurned;
            }
        }
    }

    static gp_XYZ PointOf(const FaceTriangles& face, int number)
    {
        const auto node = static_cast<std::size_t>(number);
        const ModelData_Point& point = face.points[face.pointOf.empty() ? node : face.pointOf[node]];
        return {point.X(), point.Y(), point.Z()};
    }

    void AddShell(int number, const Base_UTF16String& name)
    {
        const auto shell = static_cast<std::size_t>(number);
        if (number < 0 || shell >= myDescription.shells.size()) {
            return;
        }
        for (const FaceUse& use : myDescription.shells[shell].faces) {
            const auto face = static_cast<std::size_t>(use.face);
            if (use.face >= 0 && face < myDescription.faces.size()) {
                myFaces.push_back({face, !use.forward, GroupOf(myDescription.faces[face].appearance, name)});
            }
        }
    }

    const Description& myDescription;
    const bool myIsMerged;
    SetLabels myGroups;
    std::vector<PlacedFace> myFaces;
};

std::vector<TriangleTables> Assembled(const BodyTessellation& body, const std::vector<PlacedFace>& faces,
                                      std::size_t groupCount)
{
    mesh::TriangleAssembly assembly(groupCount);
    for (auto first = faces.begin(); first != faces.end();) {
        const auto last = std::find_if(first, faces.end(),
                                       [&](const PlacedFace& face) { return face.group != first->group; });
        std::size_t triangles = 0;
        std::size_t points = 0;
        for (auto it = first; it != last; ++it) {
            triangles += body.TrianglesOf(it->face).triangles.size();
            points += body.TrianglesOf(it->face).points.size();
        }
        assembly.Reserve(first->group, triangles, points);
        for (; first != last; ++first) {
            assembly.Add(first->group, body.TrianglesOf(first->face), first->isTurned);
        }
    }
    return assembly.Take();
}

void Append(TriangleTables&& from, TriangleTables& to)
{
    const auto point = static_cast<U32>(to.points.size());
    const auto normal = static_cast<U32>(to.normals.size());
    to.points.insert(to.points.end(), from.points.begin(), from.points.end());
    to.normals.insert(to.normals.end(), from.normals.begin(), from.normals.end());
    for (const U32 index : from.pointIndices) {
        to.pointIndices.push_back(point + index);
    }
    for (const U32 index : from.normalIndices) {
        to.normalIndices.push_back(normal + index);
    }
}

/// What the description holds as the kernel made it goes through the kernel's mesher.
void AddKernelShapes(const Description& description, const occt::MeshTolerances& tolerances,
                     FaceCollector& collector, std::vector<TriangleTables>& tables)
{
    for (const KernelShape& item : description.kernelShapes) {
        occt::MeshFaces(item.shape, tolerances);
        std::vector<occt::GroupedFace> faces;
        for (TopExp_Explorer it(item.shape, TopAbs_FACE); it.More(); it.Next()) {
            faces.push_back({TopoDS::Face(it.Current()), collector.GroupOf(item.appearance, item.name)});
        }
        std::vector<TriangleTables> own = ExtractTriangles(faces, collector.Labels().size());
        occt::ForgetTriangulations(item.shape);
        tables.resize(own.size());
        for (std::size_t group = 0; group < own.size(); ++group) {
            Append(std::move(own[group]), tables[group]);
        }
    }
}

void AddCurves(const Description& description, const BodyTessellation& body, const Base_UTF16String& name,
               ModelData_PolyRepresentation& result)
{
    SetLabels groups(description.appearance);
    std::vector<std::vector<occt::Polyline>> curves(1);
    for (const LooseCurve& curve : description.curves) {
        const std::size_t group = groups.NumberOf(AppearanceOr(curve.appearance, description.appearance));
        curves.resize(groups.All().size());
        curves[group].push_back(body.PolylineOf(curve));
    }
    occt::AddPolylineSets(std::move(curves), groups.All(), name, result);
}

} // namespace

ModelData_PolyRepresentation DescribedBRep::Mesh(const occt::MeshTolerances& tolerances, bool mergeFaceSets,
                                                 const Base_UTF16String& partName) const
{
    const BodyTessellation body(Resolved(), tolerances);
    FaceCollector collector(myDescription, mergeFaceSets);
    const std::vector<PlacedFace> faces = collector.Collect(body);
    std::vector<TriangleTables> tables = Assembled(body, faces, collector.Labels().size());
    AddKernelShapes(myDescription, tolerances, collector, tables);
    ModelData_PolyRepresentation result{initialized()};
    occt::AddTriangleSets(std::move(tables), collector.Labels(), partName, result);
    AddCurves(myDescription, body, partName, result);
    return occt::NullIfEmpty(result);
}

const ResolvedBody& DescribedBRep::Resolved() const
{
    if (!myResolved) {
        myResolved = ResolveBody(myDescription, IsParallel());
    }
    return *myResolved;
}

TopoDS_Shape DescribedBRep::KernelShape() const
{
    if (!myShape) {
        const std::vector<ShellSide> sides = Integrals() ? Integrals()->sides : std::vector<ShellSide>();
        myShape = BuildShape(Resolved(), sides).shape;
    }
    // Triangles and integrals come before it in an import: nobody is likely to need the faces again.
    myResolved.reset();
    return *myShape;
}

const std::optional<BodyIntegrals>& DescribedBRep::Integrals() const
{
    if (!myAreIntegralsKnown) {
        myIntegrals = IntegrateBody(Resolved(), IsParallel());
        myAreIntegralsKnown = true;
    }
    return myIntegrals;
}

std::optional<occt::MassProperties> DescribedBRep::IntegrateMass() const
{
    if (Integrals()) {
        return Integrals()->mass;
    }
    const TopoDS_Shape shape = KernelShape();
    return shape.IsNull() ? std::nullopt : occt::ComputeMass(shape);
}

double DescribedBRep::Area() const
{
    if (Integrals()) {
        return Integrals()->area;
    }
    const TopoDS_Shape shape = KernelShape();
    return shape.IsNull() ? 0 : occt::ComputeArea(shape);
}

} // namespace cadex::brep
