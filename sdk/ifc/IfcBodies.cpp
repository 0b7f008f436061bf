#include "sdk/ifc/IfcBodies.h"

#include <BRepBuilderAPI_GTransform.hxx>
#include <BRepBuilderAPI_Transform.hxx>
#include <TopLoc_Location.hxx>

#include "sdk/ifc/IfcAlignment.h"
#include "sdk/occt/EngineScope.h"

namespace cadex::ifc {
namespace {

bool IsCurve(Type type)
{
    switch (type) {
    case Type::IfcPolyline:
    case Type::IfcIndexedPolyCurve:
    case Type::IfcCompositeCurve:
    case Type::IfcCompositeCurveOnSurface:
    case Type::IfcBoundaryCurve:
    case Type::IfcOuterBoundaryCurve:
    case Type::Ifc2DCompositeCurve:
    case Type::IfcTrimmedCurve:
    case Type::IfcCircle:
    case Type::IfcEllipse:
    case Type::IfcBezierCurve:
    case Type::IfcRationalBezierCurve:
    case Type::IfcBSplineCurveWithKnots:
    case Type::IfcRationalBSplineCurveWithKnots:
    case Type::IfcOffsetCurve2D:
    case Type::IfcOffsetCurve3D:
    case Type::IfcSurfaceCurve:
    case Type::IfcSeamCurve:
    case Type::IfcIntersectionCurve:
        return true;
    default:
        return false;
    }
}

TopoDS_Shape MovedShape(const TopoDS_Shape& shape, const Affine& placement)
{
    if (!IsMovement(placement)) {
        gp_GTrsf general;
        general.SetVectorialPart(occt::ToMatrix(placement));
        general.SetTranslationPart(Origin(placement));
        return BRepBuilderAPI_GTransform(shape, general, true).Shape();
    }
    const gp_Trsf trsf = ToTrsf(placement);
    return std::abs(trsf.ScaleFactor() - 1) < 1e-12 ? shape.Moved(TopLoc_Location(trsf))
                                                    : BRepBuilderAPI_Transform(shape, trsf, true).Shape();
}

bool HasFacets(const Body& body)
{
    return body.kind == Body::Kind::Facets || body.kind == Body::Kind::Mesh;
}

Solid SolidOf(const Body& body)
{
    return body.kind == Body::Kind::Shape ? Solid(body.shape) : Solid(body.facets);
}

} // namespace

void Body::Move(const Affine& placement)
{
    if (IsIdentity(placement)) {
        return;
    }
    switch (kind) {
    case Kind::Shape:
        shape = MovedShape(shape, placement);
        break;
    case Kind::Facets:
    case Kind::Mesh:
        facets.Move(placement);
        break;
    case Kind::Curves:
        for (Path& curve : curves) {
            curve = Moved(curve, placement);
        }
        break;
    }
}

void BodyReader::Read(const Entity& item, std::vector<Body>& bodies)
{
    const std::size_t before = bodies.size();
    const AtWork atWork(myContext, item.Id());
    // The guard keeps a fault of the kernel to this one item.
    bool told = false;
    const bool done = occt::RunGuarded(occt::EngineUse::Geometry, [&] {
        try {
            if (!item) {
                throw Unbuildable("an item that the file does not have");
            }
            ReadItem(item, bodies);
            return true;
        } catch (const Unbuildable& reason) {
            myContext.Report(Report::Kind::LeftOut, reason.what());
            told = true;
            return false;
        }
    });
    if (!done) {
        bodies.resize(std::min(before, bodies.size()));
        if (!told) {
            myContext.Report(Report::Kind::LeftOut, "an item that the kernel cannot build");
        }
    }
    if (done && bodies.size() == before) {
        myContext.Report(Report::Kind::LeftOut, "an item of which nothing can be built");
    }
    for (std::size_t i = before; i < bodies.size(); ++i) {
        bodies[i].item = bodies[i].item != 0 ? bodies[i].item : item.Id();
        if (bodies[i].appearance.IsNull()) {
            bodies[i].appearance = myStyles.OfItem(item.Id());
        }
    }
}

void BodyReader::ReadItem(const Entity& item, std::vector<Body>& bodies)
{
    const Type type = item.Type();
    if (SolidReader::IsSolid(type)) {
        const Solid solid = mySolids.Read(item);
        Body body;
        if (solid.IsFlat()) {
            body.kind = Body::Kind::Facets;
            body.facets = solid.Facets();
        } else {
            body.shape = solid.Shape();
        }
        bodies.push_back(std::move(body));
        return;
    }
    if (IsCurve(type)) {
        Body body;
        body.kind = Body::Kind::Curves;
        AddCurve(item, body);
        bodies.push_back(std::move(body));
        return;
    }
    switch (type) {
    case Type::IfcFacetedBrep:
    case Type::IfcFacetedBrepWithVoids: {
        Body body;
        body.kind = Body::Kind::Facets;
        body.facets = ReadPolyhedron(myContext, item);
        bodies.push_back(std::move(body));
        break;
    }
    case Type::IfcTriangulatedFaceSet:
    case Type::IfcTriangulatedIrregularNetwork:
    case Type::IfcPolygonalFaceSet:
        ReadFaceSet(item, bodies);
        break;
    case Type::IfcFaceBasedSurfaceModel:
    case Type::IfcShellBasedSurfaceModel:
        for (Id shell : item.Refs(0)) {
            ReadShell(myContext.file.Get(shell), bodies);
        }
        break;
    case Type::IfcClosedShell:
    case Type::IfcOpenShell:
    case Type::IfcConnectedFaceSet:
        ReadShell(item, bodies);
        break;
    case Type::IfcGeometricSet:
    case Type::IfcGeometricCurveSet:
    case Type::IfcAnnotationFillArea:
        ReadCurveSet(item, bodies);
        break;
    case Type::IfcAnnotationCurveOccurrence:
    case Type::IfcAnnotationFillAreaOccurrence:
    case Type::IfcAnnotationSurfaceOccurrence: // styled items that IFC2X3 puts into representations
        Read(item.Ref(0), bodies);
        break;
    case Type::IfcCurveBoundedPlane:
    case Type::IfcCurveBoundedSurface:
    case Type::IfcRectangularTrimmedSurface:
    case Type::IfcFaceSurface:
    case Type::IfcAdvancedFace: {
        Body body;
        body.shape = ReadSurfaceItem(myContext, item);
        bodies.push_back(std::move(body));
        break;
    }
    default:
        ReadOther(item, bodies);
        break;
    }
}

void BodyReader::ReadOther(const Entity& item, std::vector<Body>& bodies)
{
    Body body;
    if (item.TypeName() == "IFCSECTIONEDSOLIDHORIZONTAL" || item.TypeName() == "IFCSECTIONEDSOLID") {
        body.kind = Body::Kind::Facets;
        body.facets = ReadSectionedSolid(myContext, item);
    } else if (item.TypeName() == "IFCSECTIONEDSPINE") {
        body.kind = Body::Kind::Facets;
        body.facets = ReadSectionedSpine(myContext, item);
    } else if (item.TypeName() == "IFCGRADIENTCURVE" || item.TypeName() == "IFCSEGMENTEDREFERENCECURVE") {
        body.kind = Body::Kind::Curves;
        AddCurve(item, body);
    } else {
        throw Unbuildable("an item of the type " + std::string(item.TypeName()) + ", which is not known");
    }
    bodies.push_back(std::move(body));
}

void BodyReader::ReadShell(const Entity& shell, std::vector<Body>& bodies)
{
    Body body;
    body.appearance = myStyles.OfItem(shell.Id());
    try {
        if (IsFaceted(myContext, shell)) {
            body.kind = Body::Kind::Facets;
            body.facets = ReadPolyhedron(myContext, shell);
        } else {
            body.shape = ReadAdvancedShell(myContext, shell);
        }
        bodies.push_back(std::move(body));
    } catch (const Unbuildable&) {
        // the other shells of the model stand
    }
}

void BodyReader::ReadFaceSet(const Entity& set, std::vector<Body>& bodies)
{
    Body body;
    body.kind = Body::Kind::Mesh;
    body.facets = ReadPolyhedron(myContext, set);
    const Id colours = Relations::Find(myRelations.coloursOf, set.Id());
    if (colours != 0) {
        Split(myContext.file.Get(colours), std::move(body), bodies);
        return;
    }
    bodies.push_back(std::move(body));
}

/// IfcIndexedColourMap: MappedTo, Opacity, Colours, ColourIndex: one colour for each face.
void BodyReader::Split(const Entity& map, Body&& body, std::vector<Body>& bodies)
{
    const std::vector<double> colours = map.Ref(2).Reals(0);
    const std::vector<double> indices = map.Reals(3);
    const double opacity = map.Real(1, 1);
    std::map<std::size_t, std::size_t> bodyOf; // colour -> body
    const Polyhedron& whole = body.facets;
    std::size_t face = 0;
    for (std::size_t loop = 0; loop < whole.loops.size(); loop = whole.FaceEnd(loop), ++face) {
        const double index = face < indices.size() ? indices[face] : 0;
        const bool known = index >= 1 && 3 * index <= static_cast<double>(colours.size());
        const std::size_t colour = known ? static_cast<std::size_t>(index) : 0;
        const auto [entry, fresh] = bodyOf.try_emplace(colour, bodies.size());
        if (fresh) {
            Body part;
            part.kind = Body::Kind::Mesh;
            if (known) {
                const double* rgb = &colours[3 * (colour - 1)];
                part.appearance = myStyles.OfColour(rgb[0], rgb[1], rgb[2], opacity);
            }
            part.facets.points = whole.points;
            part.facets.normals = whole.normals;
            bodies.push_back(std::move(part));
        }
        Polyhedron& part = bodies[entry->second].facets;
        for (std::size_t i = loop; i < whole.FaceEnd(loop); ++i) {
            part.BeginLoop(whole.loops[i].outer);
            for (U32 corner = 0; corner < whole.loops[i].count; ++corner) {
                part.AddCorner(whole.corners[whole.loops[i].first + corner]);
            }
        }
    }
}

void BodyReader::AddCurve(const Entity& curve, Body& body)
{
    Path path = ReadCurve(myContext, curve);
    if (!path.empty()) {
        body.curves.push_back(std::move(path));
    }
}

void BodyReader::ReadCurveSet(const Entity& set, std::vector<Body>& bodies)
{
    Body body;
    body.kind = Body::Kind::Curves;
    std::vector<Id> elements = set.Refs(0);
    if (set.Is(Type::IfcAnnotationFillArea)) // OuterBoundary, InnerBoundaries
    {
        elements.push_back(set.RefId(0));
        const std::vector<Id> inner = set.Refs(1);
        elements.insert(elements.end(), inner.begin(), inner.end());
        elements.erase(elements.begin());
    }
    for (Id id : elements) {
        const Entity element = myContext.file.Get(id);
        try {
            if (IsCurve(element.Type())) {
                AddCurve(element, body);
            } else {
                Read(element, bodies);
            }
        } catch (const Unbuildable&) {
            // one curve less
        }
    }
    if (!body.curves.empty()) {
        bodies.push_back(std::move(body));
    }
}

Affine MappingOf(const Context& context, const Entity& mappedItem)
{
    // IfcMappedItem: MappingSource, MappingTarget; IfcRepresentationMap: MappingOrigin, MappedRepresentation.
    const Affine origin = context.Placement(mappedItem.Ref(0).Ref(0));
    return Compose(context.Operator(mappedItem.Ref(1)), Inverse(origin));
}

void BodyReader::ReadFlat(const Entity& representation, const Affine& placement, std::vector<Body>& bodies,
                          int depth)
{
    for (Id id : representation.Refs(3)) {
        const Entity item = myContext.file.Get(id);
        const std::size_t before = bodies.size();
        Affine inner;
        if (item.Is(Type::IfcMappedItem)) {
            if (depth > 16) {
                continue;
            }
            try {
                myContext.Steps(100);
                inner = MappingOf(myContext, item);
                ReadFlat(item.Ref(0).Ref(1), Affine(), bodies, depth + 1);
            } catch (const Unbuildable&) {
                bodies.resize(before);
                continue;
            }
        } else if (item) {
            Read(item, bodies);
        }
        const ModelData_Appearance style =
            item.Is(Type::IfcMappedItem) ? myStyles.OfItem(id) : ModelData_Appearance();
        const Affine whole = Compose(placement, inner);
        for (std::size_t i = before; i < bodies.size(); ++i) {
            bodies[i].Move(whole);
            bodies[i].appearance = bodies[i].appearance.IsNull() ? style : bodies[i].appearance;
        }
    }
}

void CutOpenings(Context& context, std::vector<Body>& bodies, const std::vector<Body>& tools)
{
    struct Tool
    {
        Solid solid;
        Bnd_Box box;
    };
    std::vector<Tool> solids;
    for (const Body& tool : tools) {
        if (HasFacets(tool) || tool.kind == Body::Kind::Shape) {
            Solid solid = SolidOf(tool);
            const Bnd_Box box = solid.Bounds();
            solids.push_back({std::move(solid), box});
        }
    }
    for (Body& body : bodies) {
        if (body.kind == Body::Kind::Curves || (HasFacets(body) && !body.facets.closed)) {
            continue; // nothing to cut out of
        }
        const Solid whole = SolidOf(body);
        const Bnd_Box box = whole.Bounds();
        std::vector<const Solid*> meeting;
        for (const Tool& tool : solids) {
            if (!box.IsOut(tool.box)) {
                meeting.push_back(&tool.solid);
            }
        }
        const AtWork atWork(context, body.item);
        Solid cut;
        bool done = true;
        try {
            done = meeting.empty() || Combine(context, BooleanKind::Cut, whole, meeting, cut);
        } catch (const Unbuildable& reason) {
            cut = whole;
            context.Report(Report::Kind::Repaired, reason.what());
        }
        if (!done) {
            context.Report(Report::Kind::Repaired, "openings that cannot all be cut out of their element");
        }
        if (!meeting.empty()) {
            body.kind = cut.IsFlat() ? Body::Kind::Facets : Body::Kind::Shape;
            body.shape = cut.IsFlat() ? TopoDS_Shape() : cut.Shape();
            body.facets = cut.IsFlat() ? cut.Facets() : Polyhedron();
        }
    }
}

} // namespace cadex::ifc
