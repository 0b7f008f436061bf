// Representations, their items and the looks; faces and edges are in StepBodyReaderFaces.cpp, curves and
// wires in StepBodyReaderCurves.cpp.
#include "sdk/step/StepBodyReader.h"

#include <algorithm>
#include <string>

#include <Standard_Failure.hxx>

#include <cadex/internal/Reports.hxx>

#include "sdk/step/StepCsg.h"
#include "sdk/step/StepPlacedBody.h"
#include "sdk/step/StepTessellated.h"

namespace cadex::step {

namespace {

using internal::Report;
using internal::Reports;

constexpr int MaximalNesting = 32;

bool IsSame(const ModelData_Appearance& a, const ModelData_Appearance& b)
{
    return a.Impl() == b.Impl();
}

void ReportLeftOut(const std::string& what, RecordId record)
{
    Reports::Add(Report::Kind::LeftOut, what, record);
}

// Items that stand for a place or a text, and have no shape to be missed.
bool IsSilent(std::string_view name)
{
    return name.empty() || name.find("PLACEMENT") != std::string_view::npos ||
           name.find("POINT") != std::string_view::npos ||
           name.find("ANNOTATION") != std::string_view::npos || EndsWith(name, "_ITEM") ||
           name == "PLANAR_BOX" || name == "PLANAR_EXTENT";
}

} // namespace

struct StepBodyReader::Sizes
{
    std::size_t vertices, edges, surfaces, faces, shells, solids, sheets, curves, kernelShapes;
    std::size_t facets, polylines, bodyLooks;
};

StepBodyReader::StepBodyReader(const StepRecords& records, const StepStyles& styles)
    : myRecords(records),
      myStyles(styles),
      myGeometry(records),
      myVertices(records.Text().Count()),
      myEdges(records.Text().Count()),
      mySurfaces(records.Text().Count()),
      myItems(records.Text().Count())
{
}

StepBodyContent StepBodyReader::Read(const std::vector<RecordId>& representations,
                                     const ModelData_Appearance& whole,
                                     const std::vector<RecordId>& placedElsewhere)
{
    StepBodyContent content;
    Start(content, whole);
    myPlacedElsewhere = placedElsewhere;
    // Tessellations come last: by then it is known which bodies are there exactly.
    for (const bool isTessellated : {false, true}) {
        for (const RecordId representation : representations) {
            const StepRecords::Record* record = myRecords.Text().Find(representation);
            const bool isLate =
                record != nullptr && myRecords.Text().Is(*record, "TESSELLATED_SHAPE_REPRESENTATION");
            if (isLate == isTessellated) {
                Keep(representation, [&] { ReadRepresentation(representation, {whole, {}}); });
            }
        }
    }
    Finish();
    return content;
}

StepBodyContent StepBodyReader::ReadItems(const std::vector<RecordId>& items)
{
    StepBodyContent content;
    Start(content, {});
    for (const RecordId item : items) {
        myGeometry.StartItem();
        Keep(item, [&] { ReadItem(item, {}); });
    }
    Finish();
    return content;
}

void StepBodyReader::Start(StepBodyContent& content, const ModelData_Appearance& whole)
{
    myContent = &content;
    myBody = &content.description;
    myWhole = whole;
    myPlacedElsewhere.clear();
    myBodyLooks.clear();
    myItems.Forget();
    ForgetShared();
}

void StepBodyReader::ForgetShared()
{
    myVertices.Forget();
    myEdges.Forget();
    mySurfaces.Forget();
    myLines.clear();
    myBases.clear();
}

StepBodyReader::Sizes StepBodyReader::SizesNow() const
{
    return {myBody->vertices.size(),  myBody->edges.size(),        myBody->surfaces.size(),
            myBody->faces.size(),     myBody->shells.size(),       myBody->solids.size(),
            myBody->sheets.size(),    myBody->curves.size(),       myBody->kernelShapes.size(),
            myContent->facets.size(), myContent->polylines.size(), myBodyLooks.size()};
}

void StepBodyReader::Keep(RecordId item, const std::function<void()>& work)
{
    const Sizes sizes = SizesNow();
    StepBodyContent* const content = myContent;
    if (!Succeeds(item, work)) {
        myContent = content;
        myContent->hasItems = true;
        myBody = &content->description;
        Restore(sizes);
    }
}

bool StepBodyReader::Succeeds(RecordId item, const std::function<void()>& work)
{
    try {
        work();
        return true;
    } catch (const Damaged& damage) {
        ReportLeftOut(damage.what(), damage.record != 0 ? damage.record : item);
    } catch (const Unsupported& gap) {
        ReportLeftOut(gap.what(), gap.record != 0 ? gap.record : item);
    } catch (const Standard_Failure& failure) {
        ReportLeftOut(std::string("geometry that the kernel refuses, ") + failure.DynamicType()->Name(),
                      item);
    }
    return false;
}

void StepBodyReader::Restore(const Sizes& sizes)
{
    brep::Description& body = *myBody;
    body.vertices.resize(sizes.vertices);
    body.edges.resize(sizes.edges);
    body.surfaces.resize(sizes.surfaces);
    body.faces.resize(sizes.faces);
    body.shells.resize(sizes.shells);
    body.solids.resize(sizes.solids);
    body.sheets.resize(sizes.sheets);
    body.curves.resize(sizes.curves);
    body.kernelShapes.resize(sizes.kernelShapes);
    myContent->facets.resize(sizes.facets);
    myContent->polylines.resize(sizes.polylines);
    myBodyLooks.resize(sizes.bodyLooks);
    ForgetShared(); // some of what is remembered is gone
}

// NAME, items, context.
void StepBodyReader::ReadRepresentation(RecordId id, const Looks& looks)
{
    const StepRecords::Record& record = myRecords.Get(id);
    bool isComplex = false;
    Cursor arguments = myRecords.Part(record, "REPRESENTATION", isComplex);
    if (isComplex) {
        arguments.Skip();
    } else {
        arguments = myRecords.Named(record);
    }
    std::vector<RecordId> items = arguments.References();
    const StepScale scale = ContextScale(myRecords.Text(), arguments.Reference());
    if (!(scale == myGeometry.Units())) {
        ForgetShared();
        myGeometry.SetUnits(scale);
    }
    std::stable_partition(items.begin(), items.end(), [&](RecordId item) {
        const StepType type = myRecords.TypeOf(item);
        return type < StepType::TriangulatedFace || type > StepType::TessellatedSet;
    });
    for (const RecordId item : items) {
        if (myMapDepth == 0) {
            myGeometry.StartItem();
        }
        myGeometry.CountStep();
        if (const StepRecords::Record* found = myRecords.Text().Find(item); found == nullptr) {
            myContent->hasItems = true;
            ReportLeftOut("an item that is not there", item);
        } else if (const std::size_t place = myRecords.PlaceOf(*found);
                   myMapDepth > 0 || myItems.Find(place) == RecordSlots::None) {
            myItems.Set(place, 0);
            Keep(item, [&] { ReadItem(item, looks); });
        }
    }
}

StepBodyReader::Looks StepBodyReader::LooksOf(RecordId id, Looks inherited) const
{
    const auto found = myStyles.items.find(id);
    if (found != myStyles.items.end()) {
        const StepStyle& style = found->second;
        inherited.surface = style.surface.IsNull() ? inherited.surface : style.surface;
        inherited.curve = style.curve.IsNull() ? inherited.curve : style.curve;
    }
    return inherited;
}

void StepBodyReader::ReadItem(RecordId id, const Looks& inherited)
{
    const StepRecords::Record& record = myRecords.Get(id);
    const Sizes before = SizesNow();
    ReadByType(record, LooksOf(id, inherited));
    const Base_UTF16String label = myRecords.LabelOf(record);
    ForEachName(before, [&](Base_UTF16String& name) { name = name.IsEmpty() ? label : name; });
}

/// Visits the names of the solids, sheets, kernel shapes and facets behind the first ones.
template <typename Visit>
void StepBodyReader::ForEachName(const Sizes& first, const Visit& visit)
{
    for (std::size_t i = first.solids; i < myBody->solids.size(); ++i) {
        visit(myBody->solids[i].name);
    }
    for (std::size_t i = first.sheets; i < myBody->sheets.size(); ++i) {
        visit(myBody->shells[static_cast<std::size_t>(myBody->sheets[i])].name);
    }
    for (std::size_t i = first.kernelShapes; i < myBody->kernelShapes.size(); ++i) {
        visit(myBody->kernelShapes[i].name);
    }
    for (std::size_t i = first.facets; i < myContent->facets.size(); ++i) {
        visit(myContent->facets[i].name);
    }
}

void StepBodyReader::ReadByType(const StepRecords::Record& record, const Looks& looks)
{
    const RecordId id = record.id;
    const StepType type = myRecords.TypeOf(record);
    myContent->hasItems = myContent->hasItems || (type != StepType::Other && type != StepType::Complex &&
                                                  type > StepType::TransformationOperator);
    switch (type) {
    case StepType::Solid:
    case StepType::SolidWithVoids:
        ReadSolid(record, type == StepType::SolidWithVoids, looks);
        break;
    case StepType::ShellModel:
    case StepType::FaceModel:
        ReadShells(record, looks);
        break;
    case StepType::Shell:
    case StepType::ClosedShell:
    case StepType::OrientedShell:
        AddSheet(id, looks);
        break;
    case StepType::AdvancedFace:
    case StepType::Face:
    case StepType::OrientedFace:
        AddSheetOfFace(id, looks);
        break;
    case StepType::GeometricSet:
        ReadSet(record, looks);
        break;
    case StepType::EdgeWireframe:
    case StepType::EdgeSet:
        ReadEdges(record, looks);
        break;
    case StepType::ShellWireframe:
    case StepType::WireShell:
        ReadWires(record, looks);
        break;
    case StepType::MappedItem:
        ReadMapped(record, looks);
        break;
    case StepType::Csg:
        ReadKernelShape(record, looks);
        break;
    case StepType::Complex:
        ReadComplex(record, looks);
        break;
    default:
        ReadOther(record, type, looks);
    }
}

void StepBodyReader::ReadComplex(const StepRecords::Record& record, const Looks& looks)
{
    if (myRecords.HasPart(record, "MANIFOLD_SOLID_BREP")) {
        myContent->hasItems = true;
        ReadSolid(record, myRecords.HasPart(record, "BREP_WITH_VOIDS"), looks);
    } else if (myRecords.HasPart(record, "TESSELLATED_ITEM")) {
        ReadTessellated(record, looks);
    } else if (myRecords.HasPart(record, "B_SPLINE_SURFACE")) {
        AddPatch(record.id, looks);
    } else if (myRecords.HasPart(record, "B_SPLINE_CURVE")) {
        AddCurves(record.id, looks);
    }
}

void StepBodyReader::ReadOther(const StepRecords::Record& record, StepType type, const Looks& looks)
{
    if (type >= StepType::TriangulatedFace && type <= StepType::TessellatedSet) {
        ReadTessellated(record, looks);
    } else if (type >= StepType::SurfaceWithKnots && type <= StepType::SurfaceReplica) {
        AddPatch(record.id, looks);
    } else if ((type >= StepType::Polyline && type <= StepType::CompositeCurve) ||
               type == StepType::SurfaceCurve || type == StepType::EdgeCurve) {
        AddCurves(record.id, looks);
    } else if (type == StepType::Other && !IsSilent(myRecords.NameOf(record))) {
        Reports::Add(Report::Kind::Noted, "an item of a kind that is not read, " + myRecords.NameOf(record),
                     record.id);
    }
}

// Name, outer shell [, shells of cavities].
void StepBodyReader::ReadSolid(const StepRecords::Record& record, bool hasVoids, const Looks& looks)
{
    RecordId outer = 0;
    std::vector<RecordId> voids;
    bool isComplex = false;
    Cursor arguments = myRecords.Part(record, "MANIFOLD_SOLID_BREP", isComplex);
    if (record.type == 0) {
        outer = arguments.Reference();
        arguments = myRecords.Part(record, "BREP_WITH_VOIDS", isComplex);
    } else {
        arguments = myRecords.Named(record);
        outer = arguments.Reference();
    }
    if (hasVoids) {
        arguments.References(voids);
    }
    myBodyLooks.push_back(looks.surface);
    bool whole = true;
    brep::Solid solid{.outer = AddShell(outer, true, looks, whole)};
    for (const RecordId shell : voids) {
        solid.voids.push_back(AddShell(shell, true, looks, whole));
    }
    if (whole) {
        for (const int shell : solid.voids) {
            myBody->shells[static_cast<std::size_t>(shell)].closed = true;
        }
        myBody->shells[static_cast<std::size_t>(solid.outer)].closed = true;
        myBody->solids.push_back(std::move(solid));
        return;
    }
    solid.voids.push_back(solid.outer);
    for (const int shell : solid.voids) {
        myBody->shells[static_cast<std::size_t>(shell)].closed = false;
        myBody->sheets.push_back(shell);
    }
}

void StepBodyReader::ReadShells(const StepRecords::Record& record, const Looks& looks)
{
    Cursor arguments = myRecords.Named(record);
    const std::vector<RecordId> shells = arguments.References();
    Expect(arguments, record);
    for (const RecordId shell : shells) {
        Keep(shell, [&] { AddSheet(shell, looks); });
    }
}

void StepBodyReader::AddSheet(RecordId id, const Looks& looks)
{
    myBodyLooks.push_back(looks.surface);
    bool whole = true;
    const int number = AddShell(id, true, looks, whole);
    brep::Shell& shell = myBody->shells[static_cast<std::size_t>(number)];
    shell.closed = shell.closed && whole;
    shell.name = myRecords.LabelOf(myRecords.Get(id));
    myBody->sheets.push_back(number);
}

void StepBodyReader::AddSheetOfFace(RecordId id, const Looks& looks)
{
    bool forward = true;
    const int face = FaceOf(id, looks, forward);
    myBodyLooks.push_back(myBody->faces[static_cast<std::size_t>(face)].appearance);
    myBody->sheets.push_back(myBody->AddShell({.faces = {{face, forward}}}));
}

void StepBodyReader::AddPatch(RecordId id, const Looks& looks)
{
    myContent->hasItems = true;
    const StepRecords::Record& record = myRecords.Get(id);
    brep::Face face;
    if (myRecords.TypeOf(record) == StepType::BoundedSurface) {
        face = MakeBoundedFace(record);
    } else {
        const SurfacePatch patch = myGeometry.Patch(id);
        face.surface = AddSurface({patch.surface, {}, {}, patch.flipped});
        face.sameSense = !patch.flipped;
    }
    face.appearance = looks.surface;
    face.record = id;
    myBodyLooks.push_back(looks.surface);
    const int number = myBody->AddFace(std::move(face));
    myBody->sheets.push_back(myBody->AddShell({.faces = {{number, true}}}));
}

// MAPPED_ITEM: name, map of an origin and a representation, target.
void StepBodyReader::ReadMapped(const StepRecords::Record& record, const Looks& looks)
{
    Cursor arguments = myRecords.Named(record);
    const StepRecords::Record& map = myRecords.Get(arguments.Reference());
    const RecordId target = arguments.Reference();
    Cursor source = myRecords.Text().Arguments(map);
    const RecordId origin = source.Reference();
    const RecordId representation = source.Reference();
    Expect(arguments, record);
    if (std::find(myPlacedElsewhere.begin(), myPlacedElsewhere.end(), representation) !=
        myPlacedElsewhere.end()) {
        return;
    }
    if (myMapDepth >= MaximalNesting) {
        throw Damaged("a representation that is mapped into itself", record.id);
    }
    const StepScale units = myGeometry.Units();
    const gp_Trsf to = TransformationTo(myGeometry, target);
    StepBodyContent* const outer = myContent;
    StepBodyContent mapped;
    const auto enter = [&](StepBodyContent& content) {
        myContent = &content;
        myBody = &content.description;
        ForgetShared();
    };
    enter(mapped);
    ++myMapDepth;
    const auto leave = [&] {
        --myMapDepth;
        enter(*outer);
    };
    gp_Trsf from;
    try {
        ReadRepresentation(representation, looks);
        from = TransformationTo(myGeometry, origin); // in the units of the mapped representation
    } catch (...) {
        leave();
        myGeometry.SetUnits(units);
        throw;
    }
    leave();
    myGeometry.SetUnits(units);
    AppendPlaced(mapped, to * from.Inverted(), *outer);
}

void StepBodyReader::ReadKernelShape(const StepRecords::Record& record, const Looks& looks)
{
    StepCsg csg(myGeometry, [this, &looks](RecordId id) { return DescriptionOf(id, looks); });
    myBody->kernelShapes.push_back({csg.Shape(record.id), looks.surface});
    myBodyLooks.push_back(looks.surface);
}

// An item by itself, as an operand of something else.
brep::Description StepBodyReader::DescriptionOf(RecordId id, const Looks& looks)
{
    StepBodyContent* const outer = myContent;
    StepBodyContent content;
    const auto enter = [&](StepBodyContent& entered) {
        myContent = &entered;
        myBody = &entered.description;
        ForgetShared();
    };
    enter(content);
    try {
        ReadItem(id, looks);
    } catch (...) {
        enter(*outer);
        throw;
    }
    enter(*outer);
    return std::move(content.description);
}

void StepBodyReader::ReadTessellated(const StepRecords::Record& record, const Looks& looks)
{
    myContent->hasItems = true;
    StepTessellated reader(myGeometry, myStyles);
    if (IsShown(reader.LinkOf(record))) {
        return; // of one body in two forms the exact one is shown
    }
    reader.Read(record, looks.surface, looks.curve);
    if (reader.Facets().empty() && reader.Polylines().empty()) {
        throw Damaged("a tessellation without triangles", record.id);
    }
    myContent->facetsAreClosed = myContent->facetsAreClosed && (reader.Facets().empty() || reader.IsSolid());
    for (occt::FacetGroup& group : reader.Facets()) {
        myBodyLooks.push_back(group.appearance);
        myContent->facets.push_back(std::move(group));
    }
    for (occt::FacetCurve& curve : reader.Polylines()) {
        myBodyLooks.push_back(curve.appearance);
        myContent->polylines.push_back(std::move(curve));
    }
}

// Whether the content has faces of the solid or shell, or the face.
bool StepBodyReader::IsShown(RecordId exact) const
{
    for (int depth = 0; depth < MaximalNesting; ++depth) {
        const StepRecords::Record* record = myRecords.Text().Find(exact);
        if (record == nullptr) {
            return false;
        }
        Cursor arguments = myRecords.Named(*record);
        switch (myRecords.TypeOf(*record)) {
        case StepType::Solid:
        case StepType::SolidWithVoids:
            exact = arguments.Reference();
            break;
        case StepType::OrientedShell:
            arguments.Skip();
            exact = arguments.Reference();
            break;
        case StepType::Shell:
        case StepType::ClosedShell: {
            const std::vector<RecordId> faces = arguments.References();
            exact = faces.empty() ? 0 : faces.front();
            break;
        }
        default:
            return std::any_of(myBody->faces.begin(), myBody->faces.end(),
                               [&](const brep::Face& face) { return face.record == exact; });
        }
    }
    return false;
}

void StepBodyReader::Finish()
{
    FindCommonLook();
    DropCommonName();
}

// A name that all have tells nothing apart: they are shown as one, under the name of the part.
void StepBodyReader::DropCommonName()
{
    const Base_UTF16String* first = nullptr;
    bool differ = false;
    ForEachName({}, [&](Base_UTF16String& name) {
        differ = differ || (first != nullptr && name != *first);
        first = first == nullptr ? &name : first;
    });
    if (!differ) {
        ForEachName({}, [](Base_UTF16String& name) { name.Clear(); });
    }
}

// The look of the whole: that of everything when all look alike, else that of its solids and sheets when they
// do. What looks like the whole has no look of its own.
void StepBodyReader::FindCommonLook()
{
    bool any = false;
    bool same = true;
    ModelData_Appearance common;
    const auto compare = [&](const ModelData_Appearance& look) {
        same = same && (!any || IsSame(common, look));
        common = any ? common : look;
        any = true;
    };
    const auto forEachLeaf = [&](const auto& visit) {
        for (auto& face : myBody->faces) {
            visit(face.appearance);
        }
        for (auto& curve : myBody->curves) {
            visit(curve.appearance);
        }
        for (auto& shape : myBody->kernelShapes) {
            visit(shape.appearance);
        }
        for (auto& group : myContent->facets) {
            visit(group.appearance);
        }
        for (auto& curve : myContent->polylines) {
            visit(curve.appearance);
        }
    };
    forEachLeaf(compare);
    if (!same) {
        same = true;
        any = false;
        std::for_each(myBodyLooks.begin(), myBodyLooks.end(), compare);
    }
    myBody->appearance = same && any ? common : myWhole;
    if (myContent->facets.empty() && myContent->polylines.empty()) {
        forEachLeaf([&](ModelData_Appearance& look) {
            look = IsSame(look, myBody->appearance) ? ModelData_Appearance() : look;
        });
    }
}

} // namespace cadex::step
