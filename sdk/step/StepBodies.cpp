#include "sdk/step/StepBodies.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include <Geom_Plane.hxx>
#include <Standard_Failure.hxx>

#include <cadex/internal/Progress.hxx>
#include <cadex/internal/Reports.hxx>

#include "sdk/brep/DescribedBRep.h"
#include "sdk/occt/Placements.h"
#include "sdk/step/StepPlacedBody.h"
#include "sdk/step/StepPlacements.h"

namespace cadex::step {

namespace {

using internal::Report;
using internal::Reports;

/// The type of representation that is preferred; empty when all are taken.
std::string_view PreferredType(STEP_ReaderParameters::BRepRepresentationType preferred)
{
    switch (preferred) {
    case STEP_ReaderParameters::AdvancedBRep:
        return "ADVANCED_BREP_SHAPE_REPRESENTATION";
    case STEP_ReaderParameters::ManifoldSurface:
        return "MANIFOLD_SURFACE_SHAPE_REPRESENTATION";
    case STEP_ReaderParameters::NonManifoldSurface:
        return "NON_MANIFOLD_SURFACE_SHAPE_REPRESENTATION";
    case STEP_ReaderParameters::EdgeBasedWireframe:
        return "EDGE_BASED_WIREFRAME_SHAPE_REPRESENTATION";
    default:
        return {};
    }
}

/// Triangles as planes and polylines as edges, for a product that has both these and curved faces.
void MakeFaces(StepBodyContent& content)
{
    brep::Description& body = content.description;
    for (const occt::FacetGroup& group : content.facets) {
        const int base = static_cast<int>(body.vertices.size());
        for (const ModelData_Point& point : group.points) {
            body.AddVertex({point.X(), point.Y(), point.Z()});
        }
        std::unordered_map<std::uint64_t, int> lines;
        brep::Shell sheet{.name = group.name};
        for (std::size_t i = 0; i + 2 < group.indices.size(); i += 3) {
            const U32* corners = group.indices.data() + i;
            gp_XYZ points[3];
            brep::Loop loop;
            for (std::size_t k = 0; k < 3; ++k) {
                const U32 from = corners[k];
                const U32 to = corners[(k + 1) % 3];
                points[k] = body.vertices[static_cast<std::size_t>(base) + from].point.XYZ();
                const auto [line, isNew] = lines.try_emplace(
                    std::uint64_t{std::min(from, to)} << 32U | std::max(from, to), brep::None);
                if (isNew) {
                    line->second = body.AddLine(base + static_cast<int>(from), base + static_cast<int>(to));
                }
                const bool forward =
                    body.edges[static_cast<std::size_t>(line->second)].start == base + static_cast<int>(from);
                loop.uses.push_back({.edge = line->second, .forward = forward});
            }
            const gp_XYZ normal = (points[1] - points[0]).Crossed(points[2] - points[0]);
            if (!(normal.Modulus() > gp::Resolution())) {
                continue;
            }
            brep::Face face;
            face.surface = body.AddSurface(new Geom_Plane(gp_Pnt(points[0]), gp_Dir(normal)));
            face.loops.push_back(std::move(loop));
            face.appearance = group.appearance;
            sheet.faces.push_back({body.AddFace(std::move(face)), true});
        }
        body.sheets.push_back(body.AddShell(std::move(sheet)));
    }
    for (const occt::FacetCurve& curve : content.polylines) {
        int previous = brep::None;
        for (const ModelData_Point& point : curve.points) {
            const int vertex = body.AddVertex({point.X(), point.Y(), point.Z()});
            if (previous != brep::None) {
                body.curves.push_back({body.AddLine(previous, vertex), curve.appearance});
            }
            previous = vertex;
        }
    }
}

StepBody MakeBody(StepBodyContent content)
{
    StepBody body;
    if (content.IsEmpty()) {
        return body;
    }
    body.appearance = content.description.appearance;
    if (content.description.IsEmpty()) {
        auto* facets = new occt::FacetedBRep;
        facets->groups = std::move(content.facets);
        facets->curves = std::move(content.polylines);
        facets->closed = content.facetsAreClosed && !facets->groups.empty();
        std::stable_partition(facets->groups.begin(), facets->groups.end(), [&](const auto& group) {
            return group.appearance.Impl() == body.appearance.Impl();
        });
        body.representation = internal::MakeHandle<ModelData_BRepRepresentation>(facets);
        return body;
    }
    MakeFaces(content);
    body.representation = internal::MakeHandle<ModelData_BRepRepresentation>(
        new brep::DescribedBRep(std::move(content.description)));
    return body;
}

} // namespace

class StepBodies::Reading
{
public:
    Reading(const ClearText& text, const StepContent& content, StepBodies& result)
        : myText(text),
          myContent(content),
          myStructure(content.structure),
          myResult(result),
          myRecords(text),
          myReader(myRecords, content.styles)
    {
    }

    void ReadProducts(STEP_ReaderParameters::BRepRepresentationType preferred)
    {
        const std::string_view type = PreferredType(preferred);
        myResult.myBodies.resize(myStructure.products.size());
        const std::size_t count = myStructure.products.size();
        for (std::size_t number = 0; number < count && internal::Progress::GoesOn(number, count); ++number) {
            const internal::ProgressRange step(number, count);
            const StepProduct& product = myStructure.products[number];
            std::vector<RecordId> some;
            for (const RecordId id : product.representations) {
                const ClearText::Record* record = myText.Find(id);
                if (!type.empty() && record != nullptr && myText.Is(*record, type)) {
                    some.push_back(id);
                }
            }
            StepBodyContent body = ReadProduct(number, some.empty() ? product.representations : some);
            if (body.IsEmpty() && !some.empty()) {
                // Preferred is not demanded.
                body = ReadProduct(number, product.representations);
            }
            myResult.myHasItems = myResult.myHasItems || body.hasItems;
            myHasBodies = myHasBodies || !body.IsEmpty();
            myResult.myBodies[number] = MakeBody(std::move(body));
        }
    }

    /// Representations that no product owns, because the file has none or the record that says so is lost;
    /// when nothing at all has come so far, items without a representation.
    void ReadLoose()
    {
        const std::unordered_set<RecordId> owned = OwnedRepresentations();
        for (const ClearText::Record& record : myText.Records()) {
            if (myRecords.TypeOf(record) == StepType::ShapeRepresentation && owned.count(record.id) == 0) {
                AddLoose(myReader.Read({record.id}, {}), record);
            }
        }
        for (const ClearText::Record& record : myText.Records()) {
            const StepType type = myRecords.TypeOf(record);
            if (type >= StepType::Solid && type <= StepType::ShellWireframe) {
                myResult.myHasItems = true;
                if (!myHasBodies && myStructure.products.empty()) {
                    AddLoose(myReader.ReadItems({record.id}), record);
                }
            }
        }
    }

    void ReadPlacements()
    {
        FindMappedItems();
        StepPlacements placements(myText, myStructure);
        for (const StepInstance& instance : myStructure.instances) {
            std::optional<ModelData_Transformation> placement = placements.Read(instance);
            if (!placement) {
                try {
                    placement = OtherPlacement(instance);
                } catch (const Damaged&) {
                } catch (const Unsupported&) {
                } catch (const Standard_Failure&) {
                }
                if (!placement) {
                    Reports::Add(Report::Kind::LeftOut, "the placement of an instance", instance.usage);
                }
            }
            myResult.myPlacements.push_back(placement.value_or(ModelData_Transformation()));
        }
    }

private:
    StepBodyContent ReadProduct(std::size_t number, const std::vector<RecordId>& representations)
    {
        const auto style = myContent.styles.products.find(number);
        const ModelData_Appearance whole =
            style != myContent.styles.products.end() ? style->second.surface : ModelData_Appearance();
        std::vector<RecordId> placedElsewhere;
        for (const std::size_t instance : myStructure.products[number].instances) {
            const StepProduct& child = myStructure.products[myStructure.instances[instance].child];
            placedElsewhere.insert(placedElsewhere.end(), child.representations.begin(),
                                   child.representations.end());
        }
        return myReader.Read(representations, whole, placedElsewhere);
    }

    void AddLoose(StepBodyContent content, const ClearText::Record& record)
    {
        if (content.IsEmpty()) {
            return;
        }
        myHasBodies = true;
        myResult.myHasItems = true;
        StepBody body = MakeBody(std::move(content));
        Cursor arguments = myText.Arguments(record);
        body.name = DecodeString(arguments.String());
        myResult.myLooseBodies.push_back(std::move(body));
    }

    std::unordered_set<RecordId> OwnedRepresentations() const
    {
        std::unordered_set<RecordId> owned;
        for (const StepProduct& product : myStructure.products) {
            owned.insert(product.representations.begin(), product.representations.end());
        }
        for (const auto& representation : myStructure.instanceOfRepresentation) {
            owned.insert(representation.first);
        }
        for (const ClearText::Record& map : myText.OfType("REPRESENTATION_MAP")) {
            Cursor arguments = myText.Arguments(map);
            arguments.Skip();
            owned.insert(arguments.Reference());
        }
        return owned;
    }

    // Which mapped items of a product stand for instances: by the parent and by the representation mapped.
    void FindMappedItems()
    {
        for (std::size_t number = 0; number < myStructure.products.size(); ++number) {
            if (myStructure.products[number].instances.empty()) {
                continue;
            }
            for (const RecordId representation : myStructure.products[number].representations) {
                const ClearText::Record* record = myText.Find(representation);
                if (record == nullptr) {
                    continue;
                }
                Cursor arguments = myRecords.Named(*record);
                const std::vector<RecordId> items = arguments.References();
                for (const RecordId item : items) {
                    AddMappedItem(number, representation, item);
                }
            }
        }
    }

    struct Mapped
    {
        RecordId item;
        RecordId into; ///< representation in which it stands
        RecordId of;   ///< representation that it places
    };

    void AddMappedItem(std::size_t parent, RecordId representation, RecordId item)
    {
        const ClearText::Record* record = myText.Find(item);
        if (record == nullptr || myRecords.TypeOf(*record) != StepType::MappedItem) {
            return;
        }
        Cursor arguments = myRecords.Named(*record);
        bool found = false;
        Cursor map = myText.Arguments(arguments.Reference(), "REPRESENTATION_MAP", found);
        map.Skip();
        const RecordId mapped = map.Reference();
        std::size_t child = 0;
        if (found && myStructure.ProductOfRepresentation(mapped, child)) {
            myMapped[{parent, child}].push_back({item, representation, mapped});
        }
    }

    void UseUnitsOf(RecordId representation)
    {
        Cursor arguments = myRecords.Named(myRecords.Get(representation));
        arguments.Skip();
        myGeometry.SetUnits(ContextScale(myText, arguments.Reference()));
    }

    // By a mapped item, by an operator, or where the product itself stands.
    std::optional<ModelData_Transformation> OtherPlacement(const StepInstance& instance)
    {
        bool found = false;
        Cursor relation =
            myText.Arguments(instance.relation, "REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION", found);
        if (found) {
            const RecordId operation = relation.Reference();
            Cursor ends = myText.Arguments(instance.relation, "REPRESENTATION_RELATIONSHIP", found);
            ends.Skip();
            ends.Skip();
            ends.Skip();
            UseUnitsOf(ends.Reference());
            return occt::ToTransformation(myGeometry.Operator(operation));
        }
        const auto mapped = myMapped.find({instance.parent, instance.child});
        if (mapped != myMapped.end() && !mapped->second.empty()) {
            const Mapped use = mapped->second.front();
            mapped->second.erase(mapped->second.begin());
            Cursor arguments = myRecords.Named(myRecords.Get(use.item));
            Cursor map = myText.Arguments(myRecords.Get(arguments.Reference()));
            UseUnitsOf(use.into);
            const gp_Trsf to = TransformationTo(myGeometry, arguments.Reference());
            UseUnitsOf(use.of);
            const gp_Trsf from = TransformationTo(myGeometry, map.Reference());
            return occt::ToTransformation(to * from.Inverted());
        }
        return ModelData_Transformation();
    }

    struct PairHash
    {
        std::size_t operator()(const std::pair<std::size_t, std::size_t>& pair) const
        {
            return pair.first * 1'000'003U ^ pair.second;
        }
    };

    const ClearText& myText;
    const StepContent& myContent;
    const StepStructure& myStructure;
    StepBodies& myResult;
    StepRecords myRecords;
    StepBodyReader myReader;
    StepGeometryReader myGeometry{myRecords};
    std::unordered_map<std::pair<std::size_t, std::size_t>, std::vector<Mapped>, PairHash> myMapped;
    bool myHasBodies = false;
};

void StepBodies::Read(const ClearText& text, const StepContent& content,
                      STEP_ReaderParameters::BRepRepresentationType preferred)
{
    Reading reading(text, content, *this);
    reading.ReadProducts(preferred);
    reading.ReadLoose();
    reading.ReadPlacements();
}

} // namespace cadex::step
