#include "sdk/step/StepFacets.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include <cadex/internal/Progress.hxx>

#include "sdk/mesh/EngineTolerances.h"
#include "sdk/mesh/Polygons.h"
#include "sdk/occt/FacetedBRep.h"
#include "sdk/step/StepPlacements.h"
#include "sdk/step/StepUnits.h"
#include "sdk/text/PlainText.h"

namespace cadex::step {

using mesh::PolygonNormal;
using occt::FacetCurve;
using occt::FacetedBRep;
using occt::FacetGroup;
namespace {

// Below this many faces a body of triangles with edges is as likely a designed polyhedron: it keeps its exact
// shape.
constexpr std::size_t ManyFaces = 1000;

const void* IdentityOf(const ModelData_Appearance& appearance)
{
    return appearance.Impl();
}

double Dot(const ModelData_Point& a, const ModelData_Point& b)
{
    return a.X() * b.X() + a.Y() * b.Y() + a.Z() * b.Z();
}

bool IsBody(std::string_view type)
{
    return type == "FACETED_BREP" || type == "MANIFOLD_SOLID_BREP" || type == "BREP_WITH_VOIDS" ||
           type == "SHELL_BASED_SURFACE_MODEL";
}

// Reads the bodies of the products, one after the other.
class BodyReader
{
public:
    BodyReader(const ClearText& text, const StepStyles& styles)
        : myText(text), myStyles(styles), myPlaces(text.Count())
    {
    }

    // False when the product has anything but facets.
    bool Read(const StepProduct& product, const ModelData_Appearance& whole, StepBody& body)
    {
        myBody = std::make_unique<FacetedBRep>();
        myWhole = whole;
        myLooks.clear();
        mySolid = true;
        myIsNamed = HasDistinctNames(product);
        for (const RecordId representation : product.representations) {
            if (!ReadRepresentation(representation)) {
                return false;
            }
        }
        if (myBody->groups.empty() && myBody->curves.empty()) {
            return true;
        }
        Finish(body);
        return true;
    }

private:
    struct Place
    {
        std::uint32_t group = 0; // counted from 1 over all bodies
        std::uint32_t index = 0;
    };

    // Whether names tell the bodies of the product apart.
    bool HasDistinctNames(const StepProduct& product) const
    {
        std::optional<std::string_view> first;
        for (const RecordId id : product.representations) {
            const ClearText::Record* record = myText.Find(id);
            Cursor arguments = record != nullptr ? myText.Arguments(*record) : Cursor();
            arguments.Skip();
            for (const RecordId item : arguments.References()) {
                const ClearText::Record* body = myText.Find(item);
                if (body == nullptr || !IsBody(myText.TypeName(*body))) {
                    continue;
                }
                const std::string_view name = myText.Arguments(*body).String();
                if (first && *first != name) {
                    return true;
                }
                first = name;
            }
        }
        return false;
    }

    bool ReadRepresentation(RecordId id)
    {
        const ClearText::Record* record = myText.Find(id);
        if (record == nullptr) {
            return false;
        }
        Cursor arguments = myText.Arguments(*record);
        arguments.Skip();
        const std::vector<RecordId> items = arguments.References();
        myUnit = ContextLengthFactor(myText, arguments.Reference());
        for (const RecordId item : items) {
            if (!(myUnit > 0.0) || !ReadItem(item)) {
                return false;
            }
        }
        return true;
    }

    bool ReadItem(RecordId id)
    {
        const ClearText::Record* record = myText.Find(id);
        if (record == nullptr) {
            return false;
        }
        const std::string_view type = myText.TypeName(*record);
        Cursor arguments = myText.Arguments(*record);
        const std::string_view name = arguments.String();
        myName = myIsNamed && !text::IsBlankText(name) ? DecodeString(name) : Base_UTF16String();
        if (type == "AXIS2_PLACEMENT_3D") {
            return true;
        }
        const StepStyle* style = StyleOf(id);
        if (type == "GEOMETRIC_CURVE_SET" || type == "GEOMETRIC_SET") {
            return ReadCurves(arguments, style);
        }
        const ModelData_Appearance look =
            style != nullptr && !style->surface.IsNull() ? style->surface : myWhole;
        if (type == "FACETED_BREP" || type == "MANIFOLD_SOLID_BREP") {
            return ReadSolid(arguments.Reference(), {}, look);
        }
        std::vector<RecordId> shells;
        if (type == "BREP_WITH_VOIDS") {
            const RecordId outer = arguments.Reference();
            arguments.References(shells);
            return ReadSolid(outer, shells, look);
        }
        if (type == "SHELL_BASED_SURFACE_MODEL") {
            mySolid = false;
            arguments.References(shells);
            myLooks.push_back(look);
            for (const RecordId shell : shells) {
                if (!ReadShell(shell, look, false)) {
                    return false;
                }
            }
            return true;
        }
        return false;
    }

    bool ReadSolid(RecordId outer, const std::vector<RecordId>& voids, const ModelData_Appearance& look)
    {
        myLooks.push_back(look);
        std::vector<std::size_t> starts;
        for (const FacetGroup& group : myBody->groups) {
            starts.push_back(group.indices.size());
        }
        if (!ReadShell(outer, look, false)) {
            return false;
        }
        for (const RecordId shell : voids) {
            if (!ReadShell(shell, look, false)) {
                return false;
            }
        }
        // A solid has its material inside: one that is inside out in the file is turned.
        starts.resize(myBody->groups.size(), 0);
        if (Volume(starts) < 0.0) {
            for (std::size_t g = 0; g < starts.size(); ++g) {
                std::vector<U32>& indices = myBody->groups[g].indices;
                for (std::size_t i = starts[g]; i + 2 < indices.size(); i += 3) {
                    std::swap(indices[i + 1], indices[i + 2]);
                }
            }
        }
        return true;
    }

    // Six times the signed volume of the triangles behind the starts.
    double Volume(const std::vector<std::size_t>& starts) const
    {
        double volume = 0.0;
        for (std::size_t g = 0; g < starts.size(); ++g) {
            const FacetGroup& group = myBody->groups[g];
            for (std::size_t i = starts[g]; i + 2 < group.indices.size(); i += 3) {
                const ModelData_Point& a = group.points[group.indices[i]];
                const ModelData_Point& b = group.points[group.indices[i + 1]];
                const ModelData_Point& c = group.points[group.indices[i + 2]];
                volume += a.X() * (b.Y() * c.Z() - b.Z() * c.Y()) + a.Y() * (b.Z() * c.X() - b.X() * c.Z()) +
                          a.Z() * (b.X() * c.Y() - b.Y() * c.X());
            }
        }
        return volume;
    }

    bool ReadShell(RecordId id, ModelData_Appearance look, bool reversed)
    {
        const ClearText::Record* record = myText.Find(id);
        if (record == nullptr) {
            return false;
        }
        const std::string_view type = myText.TypeName(*record);
        Cursor arguments = myText.Arguments(*record);
        arguments.Skip();
        if ((type == "ORIENTED_CLOSED_SHELL" || type == "ORIENTED_OPEN_SHELL") && !reversed) {
            arguments.Skip();
            const RecordId shell = arguments.Reference();
            const ClearText::Record* oriented = myText.Find(shell);
            // One step: an oriented shell is not made of another.
            return oriented != nullptr && EndsWith(myText.TypeName(*oriented), "_SHELL") &&
                   myText.TypeName(*oriented).substr(0, 8) != "ORIENTED" &&
                   ReadShell(shell, look, arguments.Enumerator() == "F");
        }
        if (type != "CLOSED_SHELL" && type != "OPEN_SHELL") {
            return false;
        }
        if (const StepStyle* style = StyleOf(id); style != nullptr && !style->surface.IsNull()) {
            look = style->surface;
        }
        if (!arguments.EnterList()) {
            return false;
        }
        while (arguments.More() && !arguments.Failed()) {
            if (!ReadFace(arguments.Reference(), look, reversed)) {
                return false;
            }
        }
        return !arguments.Failed();
    }

    bool ReadFace(RecordId id, ModelData_Appearance look, bool reversed)
    {
        const ClearText::Record* record = myText.Find(id);
        if (record == nullptr) {
            return false;
        }
        const std::string_view type = myText.TypeName(*record);
        const bool hasSurface = type == "FACE_SURFACE" || type == "ADVANCED_FACE";
        if (!hasSurface && type != "FACE") {
            return false;
        }
        if (const StepStyle* style = StyleOf(id); style != nullptr && !style->surface.IsNull()) {
            look = style->surface;
        }
        Cursor arguments = myText.Arguments(*record);
        arguments.Skip();
        Cursor bounds = arguments;
        arguments.Skip();
        if (!bounds.EnterList() || !ReadBound(bounds.Reference()) || bounds.More()) {
            return false; // a face with holes is described
        }
        if (hasSurface) {
            ModelData_Point normal;
            if (!ReadPlaneNormal(arguments.Reference(), normal)) {
                return false;
            }
            const double along = Dot(PolygonNormal(myPolygon), normal);
            const bool sameSense = arguments.Enumerator() != "F";
            // The plane decides where the loop runs the other way.
            if ((along > 0.0 && !sameSense) || (along < 0.0 && sameSense)) {
                ReverseLoop();
            }
        }
        if (reversed) {
            ReverseLoop();
        }
        return AddFacets(look);
    }

    void ReverseLoop()
    {
        std::reverse(myLoop.begin(), myLoop.end());
        std::reverse(myPolygon.begin(), myPolygon.end());
    }

    // Fills the loop with its points, in order.
    bool ReadBound(RecordId id)
    {
        const ClearText::Record* bound = myText.Find(id);
        if (bound == nullptr ||
            (!myText.Is(*bound, "FACE_OUTER_BOUND") && !myText.Is(*bound, "FACE_BOUND"))) {
            return false;
        }
        Cursor arguments = myText.Arguments(*bound);
        arguments.Skip();
        const ClearText::Record* loop = myText.Find(arguments.Reference());
        const bool reversed = arguments.Enumerator() == "F";
        if (loop == nullptr) {
            return false;
        }
        Cursor members = myText.Arguments(*loop);
        members.Skip();
        members.References(myMembers);
        myLoop.clear();
        if (myText.Is(*loop, "EDGE_LOOP")) {
            if (myMembers.size() != 3) {
                return false;
            }
            for (const RecordId edge : myMembers) {
                const ClearText::Record* start = StartOfEdge(edge);
                if (start == nullptr) {
                    return false;
                }
                myLoop.push_back(start);
            }
        } else if (myText.Is(*loop, "POLY_LOOP")) {
            for (const RecordId point : myMembers) {
                myLoop.push_back(myText.Find(point));
            }
        } else {
            return false;
        }
        return ReadLoopPoints(reversed);
    }

    bool ReadLoopPoints(bool reversed)
    {
        myPolygon.clear();
        for (const ClearText::Record* point : myLoop) {
            ModelData_Point position;
            if (point == nullptr || !ReadPoint(*point, position)) {
                return false;
            }
            myPolygon.push_back(position);
        }
        if (reversed) {
            ReverseLoop();
        }
        return true;
    }

    bool ReadPoint(const ClearText::Record& record, ModelData_Point& position) const
    {
        double c[3] = {0, 0, 0};
        Cursor arguments = myText.Arguments(record);
        arguments.Skip();
        if (!myText.Is(record, "CARTESIAN_POINT") || !arguments.Reals(c, 3)) {
            return false;
        }
        position = ModelData_Point(c[0] * myUnit, c[1] * myUnit, c[2] * myUnit);
        return std::all_of(std::begin(c), std::end(c), [this](double coordinate) {
            return std::abs(coordinate * myUnit) <= tolerance::LargestCoordinate;
        });
    }

    // The point at which an oriented edge begins; null when the edge is not straight.
    const ClearText::Record* StartOfEdge(RecordId id) const
    {
        bool found = false;
        Cursor oriented = myText.Arguments(id, "ORIENTED_EDGE", found);
        oriented.Skip();
        oriented.Skip();
        oriented.Skip();
        const RecordId edge = oriented.Reference();
        const bool forward = oriented.Enumerator() != "F";
        Cursor arguments = myText.Arguments(edge, "EDGE_CURVE", found);
        arguments.Skip();
        const RecordId first = arguments.Reference();
        const RecordId last = arguments.Reference();
        const ClearText::Record* curve = myText.Find(arguments.Reference());
        if (!found || curve == nullptr || !myText.Is(*curve, "LINE")) {
            return nullptr;
        }
        Cursor vertex = myText.Arguments(forward ? first : last, "VERTEX_POINT", found);
        vertex.Skip();
        return found ? myText.Find(vertex.Reference()) : nullptr;
    }

    bool ReadPlaneNormal(RecordId id, ModelData_Point& normal) const
    {
        bool found = false;
        Cursor plane = myText.Arguments(id, "PLANE", found);
        plane.Skip();
        Cursor axes = myText.Arguments(plane.Reference(), "AXIS2_PLACEMENT_3D", found);
        axes.Skip();
        axes.Skip();
        const RecordId axis = axes.Reference();
        if (!found || axis == 0) {
            normal = ModelData_Point(0, 0, 1);
            return found;
        }
        double c[3] = {0, 0, 0};
        Cursor direction = myText.Arguments(axis, "DIRECTION", found);
        direction.Skip();
        found = found && direction.Reals(c, 3);
        normal = ModelData_Point(c[0], c[1], c[2]);
        return found;
    }

    bool AddFacets(const ModelData_Appearance& look)
    {
        if (myPolygon.size() < 3) {
            return true;
        }
        const ModelData_Point normal = PolygonNormal(myPolygon);
        if (!(Dot(normal, normal) > 0.0)) {
            return true; // without area
        }
        std::size_t groupNumber = 0;
        FacetGroup& group = GroupOf(look, groupNumber);
        const auto add = [&](std::size_t corner) {
            group.indices.push_back(IndexOf(*myLoop[corner], myPolygon[corner], group, groupNumber));
        };
        if (myPolygon.size() == 3) {
            for (std::size_t corner = 0; corner < 3; ++corner) {
                add(corner);
            }
            return true;
        }
        if (!myCutter.Cut(myPolygon, myCorners)) {
            return false;
        }
        for (const std::size_t corner : myCorners) {
            add(corner);
        }
        return true;
    }

    FacetGroup& GroupOf(const ModelData_Appearance& look, std::size_t& number)
    {
        for (number = 0; number < myBody->groups.size(); ++number) {
            FacetGroup& group = myBody->groups[number];
            if (IdentityOf(group.appearance) == IdentityOf(look) && group.name == myName) {
                return group;
            }
        }
        myBody->groups.emplace_back();
        myBody->groups.back().appearance = look;
        myBody->groups.back().name = myName;
        myGroupStamps.resize(myBody->groups.size());
        myGroupStamps[number] = ++myStamp;
        return myBody->groups.back();
    }

    // One point of the group for each point of the file.
    U32 IndexOf(const ClearText::Record& record, const ModelData_Point& position, FacetGroup& group,
                std::size_t number)
    {
        Place& place = myPlaces[static_cast<std::size_t>(&record - myText.Records().data())];
        if (place.group != myGroupStamps[number]) {
            place.group = myGroupStamps[number];
            place.index = static_cast<std::uint32_t>(group.points.size());
            group.points.push_back(position);
        }
        return place.index;
    }

    bool ReadCurves(Cursor& arguments, const StepStyle* setStyle)
    {
        const std::vector<RecordId> members = arguments.References();
        for (const RecordId id : members) {
            bool found = false;
            Cursor polyline = myText.Arguments(id, "POLYLINE", found);
            polyline.Skip();
            if (!found) {
                return false;
            }
            polyline.References(myMembers);
            FacetCurve curve;
            for (const RecordId point : myMembers) {
                const ClearText::Record* record = myText.Find(point);
                ModelData_Point position;
                if (record == nullptr || !ReadPoint(*record, position)) {
                    return false;
                }
                curve.points.push_back(position);
            }
            curve.appearance = myWhole;
            for (const StepStyle* style : {setStyle, StyleOf(id)}) {
                if (style != nullptr) {
                    curve.appearance = style->curve.IsNull() ? style->surface : style->curve;
                }
            }
            myLooks.push_back(curve.appearance);
            if (curve.points.size() > 1) {
                myBody->curves.push_back(std::move(curve));
            }
        }
        return true;
    }

    const StepStyle* StyleOf(RecordId id) const
    {
        const auto found = myStyles.items.find(id);
        return found != myStyles.items.end() ? &found->second : nullptr;
    }

    // The look of the body as a whole: that of everything when all look alike, else that of its solids when
    // they do.
    ModelData_Appearance LookOfAll() const
    {
        std::optional<ModelData_Appearance> common;
        bool same = true;
        const auto compare = [&](const ModelData_Appearance& look) {
            same = same && (!common || IdentityOf(*common) == IdentityOf(look));
            common = common ? common : std::optional(look);
        };
        for (const FacetGroup& group : myBody->groups) {
            compare(group.appearance);
        }
        for (const FacetCurve& curve : myBody->curves) {
            compare(curve.appearance);
        }
        if (!same) {
            same = true;
            common.reset();
            for (const ModelData_Appearance& look : myLooks) {
                compare(look);
            }
        }
        return same && common ? *common : myWhole;
    }

    void Finish(StepBody& body)
    {
        body.appearance = LookOfAll();
        myBody->closed = mySolid && !myBody->groups.empty();
        std::stable_partition(myBody->groups.begin(), myBody->groups.end(), [&](const FacetGroup& group) {
            return IdentityOf(group.appearance) == IdentityOf(body.appearance);
        });
        for (FacetGroup& group : myBody->groups) {
            group.points.shrink_to_fit();
            group.indices.shrink_to_fit();
        }
        body.representation = internal::MakeHandle<ModelData_BRepRepresentation>(myBody.release());
    }

    const ClearText& myText;
    const StepStyles& myStyles;
    std::unique_ptr<FacetedBRep> myBody;
    ModelData_Appearance myWhole;
    bool myIsNamed = false;                    // the bodies of the product
    Base_UTF16String myName;                   // of the body at hand
    std::vector<ModelData_Appearance> myLooks; // of the solids, shells and curves of the body
    bool mySolid = true;
    double myUnit = 1.0;
    std::vector<Place> myPlaces; // by the place of the point's record
    std::vector<std::uint32_t> myGroupStamps;
    std::uint32_t myStamp = 0;
    std::vector<RecordId> myMembers;
    std::vector<const ClearText::Record*> myLoop;
    std::vector<ModelData_Point> myPolygon;
    std::vector<std::size_t> myCorners;
    mesh::PolygonCutter myCutter;
};

} // namespace

bool StepFacets::Read(const ClearText& text, const StepContent& content)
{
    const StepStructure& structure = content.structure;
    const bool polygons = text.CountOf("POLY_LOOP") + text.CountOf("POLYLINE") > 0;
    if (structure.products.empty() || (!polygons && text.CountOf("ADVANCED_FACE") < ManyFaces)) {
        return false;
    }
    std::optional<std::vector<ModelData_Transformation>> placements =
        StepPlacements(text, structure).ReadAll();
    if (!placements) {
        return false;
    }
    myPlacements = std::move(*placements);
    BodyReader reader(text, content.styles);
    myBodies.resize(structure.products.size());
    bool any = false;
    for (std::size_t number = 0; number < structure.products.size(); ++number) {
        if (!internal::Progress::GoesOn(number, structure.products.size())) {
            return false;
        }
        const auto style = content.styles.products.find(number);
        const ModelData_Appearance whole =
            style != content.styles.products.end() ? style->second.surface : ModelData_Appearance();
        if (!reader.Read(structure.products[number], whole, myBodies[number])) {
            return false;
        }
        any = any || !myBodies[number].representation.IsNull();
    }
    return any;
}

} // namespace cadex::step
