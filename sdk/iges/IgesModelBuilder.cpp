#include "sdk/iges/IgesModelBuilder.h"

#include <algorithm>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include <BRep_Builder.hxx>
#include <IGESBasic_Group.hxx>
#include <IGESBasic_SingularSubfigure.hxx>
#include <IGESBasic_SubfigureDef.hxx>
#include <IGESControl_Reader.hxx>
#include <IGESData_IGESEntity.hxx>
#include <IGESData_IGESModel.hxx>
#include <IGESData_NameEntity.hxx>
#include <IGESGeom_TrimmedSurface.hxx>
#include <IGESGraph_Color.hxx>
#include <IGESSolid_Face.hxx>
#include <IGESSolid_ManifoldSolid.hxx>
#include <Interface_EntityIterator.hxx>
#include <Interface_Graph.hxx>
#include <Interface_HGraph.hxx>
#include <TCollection_HAsciiString.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Iterator.hxx>
#include <TransferBRep.hxx>
#include <Transfer_Binder.hxx>
#include <Transfer_TransientProcess.hxx>
#include <XSControl_TransferReader.hxx>
#include <XSControl_WorkSession.hxx>
#include <gp_GTrsf.hxx>

#include <cadex/ModelData_Assembly.hxx>
#include <cadex/ModelData_Instance.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/internal/Progress.hxx>
#include <cadex/internal/Reports.hxx>

#include "sdk/brep/ShapeDescription.h"
#include "sdk/model/AppearanceCache.h"
#include "sdk/occt/OcctBRep.h"
#include "sdk/occt/ShapeLooks.h"
#include "sdk/text/PlainText.h"
#include "sdk/text/TimeStamps.h"

namespace cadex::iges {

using internal::AppearanceCache;
using internal::Colour;
using internal::Report;
using internal::Reports;
using occt::OcctBRep;
using occt::ShapeLooks;
using text::DecodePlainString;
using text::ParseIgesTime;
namespace {

using Entity = Handle(IGESData_IGESEntity);

// Groups and subfigures nest a few deep; what goes deeper is refused.
constexpr int MaximalDepth = 200;

// NOTE: IGES 5.3, 2.2.4.4.13, colour numbers 1 to 8.
constexpr Colour NumberedColours[] = {{0, 0, 0, 1}, {1, 0, 0, 1}, {0, 1, 0, 1}, {0, 0, 1, 1},
                                      {1, 1, 0, 1}, {1, 0, 1, 1}, {0, 1, 1, 1}, {1, 1, 1, 1}};

Base_UTF16String Decode(const Handle(TCollection_HAsciiString) & text)
{
    return text.IsNull() ? Base_UTF16String()
                         : DecodePlainString({text->ToCString(), static_cast<std::size_t>(text->Length())});
}

Base_UTF16String NameOf(const Entity& entity)
{
    const auto subfigure = Handle(IGESBasic_SubfigureDef)::DownCast(entity);
    if (entity->NbTypedProperties(STANDARD_TYPE(IGESData_NameEntity)) > 0) {
        const auto name = Handle(IGESData_NameEntity)::DownCast(
            entity->TypedProperty(STANDARD_TYPE(IGESData_NameEntity), 1));
        if (!name.IsNull()) {
            return Decode(name->Value());
        }
    }
    return subfigure.IsNull() ? Base_UTF16String() : Decode(subfigure->Name());
}

std::optional<Colour> ColourOf(const Entity& entity)
{
    if (entity->DefColor() == IGESData_DefValue) {
        const int number = entity->RankColor();
        return number >= 1 && number <= 8 ? std::optional(NumberedColours[number - 1]) : std::nullopt;
    }
    if (entity->DefColor() == IGESData_DefReference) {
        const auto definition = Handle(IGESGraph_Color)::DownCast(entity->Color());
        if (!definition.IsNull()) {
            double percent[3] = {0, 0, 0};
            definition->RGBIntensity(percent[0], percent[1], percent[2]);
            float component[3];
            for (int i = 0; i < 3; ++i) {
                component[i] =
                    percent[i] > 0.0 ? static_cast<float>(std::min(percent[i] / 100.0, 1.0)) : 0.0F;
            }
            return Colour{component[0], component[1], component[2], 1.0F};
        }
    }
    return std::nullopt;
}

// The colour of a face, else that of the surface it lies on.
std::optional<Colour> ColourOfFaceOr(const Entity& entity)
{
    std::optional<Colour> colour = ColourOf(entity);
    if (!colour) {
        const auto trimmed = Handle(IGESGeom_TrimmedSurface)::DownCast(entity);
        const auto face = Handle(IGESSolid_Face)::DownCast(entity);
        const Entity surface = !trimmed.IsNull() ? trimmed->Surface()
                               : !face.IsNull()  ? face->Surface()
                                                 : Entity();
        colour = surface.IsNull() ? std::nullopt : ColourOf(surface);
    }
    return colour;
}

class Builder
{
public:
    Builder(IGESControl_Reader& reader, const Findings& findings, const Base_UTF16String& fileName)
        : myReader(reader),
          myUnusable(findings.unusable),
          myModel(Handle(IGESData_IGESModel)::DownCast(reader.WS()->Model())),
          myFileName(fileName)
    {
    }

    bool Run(ModelData_Model& model)
    {
        if (myModel.IsNull()) {
            return false;
        }
        for (int i = 1; i <= myModel->NbEntities(); ++i) {
            if (myModel->IsErrorEntity(i)) {
                Tell(myModel->Entity(i), "that cannot be read");
            }
        }
        Content content;
        const int count = myReader.NbRootsForTransfer();
        for (int i = 1; i <= count; ++i) {
            if (!Sort(Handle(IGESData_IGESEntity)::DownCast(myReader.RootForTransfer(i)), content, 0)) {
                return false;
            }
        }
        TransferAll(content);
        for (const auto& definition : myDefinitions) {
            TransferAll(definition.second);
        }
        if (internal::Progress::IsCancelled()) {
            return false;
        }
        ReadColours();
        ModelData_SceneGraphElement root = MakeElement(content, myFileName);
        if (root.IsNull()) {
            return false;
        }
        if (root.Name().IsEmpty()) {
            root.SetName(myFileName);
        }
        AddHeader(root);
        model.AddRoot(root);
        return true;
    }

private:
    struct Child;
    // What a part or an assembly is made of.
    struct Content
    {
        std::vector<Entity> geometry;
        std::vector<Child> children;
    };
    struct Child
    {
        Base_UTF16String name;
        std::vector<Content> content; // one; none for an instance of a subfigure
        Handle(IGESBasic_SubfigureDef) definition;
        ModelData_Transformation placement;
    };

    static bool IsNamedGroup(const Entity& entity)
    {
        return entity->IsKind(STANDARD_TYPE(IGESBasic_Group)) && !NameOf(entity).IsEmpty();
    }

    // The entity, or one that it is made of, has numbers that nothing can be built with.
    bool IsBad(const Entity& entity) const
    {
        if (myUnusable.empty() || entity.IsNull()) {
            return false;
        }
        const auto known = myBad.find(entity.get());
        if (known != myBad.end()) {
            return known->second;
        }
        const Interface_Graph& graph = myReader.WS()->HGraph()->Graph();
        std::set<const void*> seen{entity.get()};
        std::vector<Entity> open{entity};
        bool bad = false;
        while (!open.empty() && !bad) {
            const Entity next = open.back();
            open.pop_back();
            bad = myUnusable.count(myModel->DNum(next)) != 0;
            for (Interface_EntityIterator shared = graph.Shareds(next); shared.More(); shared.Next()) {
                const Entity inner = Handle(IGESData_IGESEntity)::DownCast(shared.Value());
                if (!inner.IsNull() && seen.insert(inner.get()).second) {
                    open.push_back(inner);
                }
            }
        }
        myBad.emplace(entity.get(), bad);
        return bad;
    }

    void Tell(const Entity& entity, const char* what) const
    {
        Reports::Add(Report::Kind::LeftOut,
                     "an entity of type " + std::to_string(entity->TypeNumber()) + ' ' + what,
                     static_cast<std::uint64_t>(std::max(0, myModel->DNum(entity))));
    }

    // The file as a whole; false, for the caller to hand on.
    bool Refuse(const Entity& entity, const char* what) const
    {
        Reports::Add(Report::Kind::Refused,
                     "an entity of type " + std::to_string(entity->TypeNumber()) + ' ' + what,
                     static_cast<std::uint64_t>(std::max(0, myModel->DNum(entity))));
        return false;
    }

    void AddGeometry(const Entity& entity, Content& content) const
    {
        if (IsBad(entity)) {
            Tell(entity, "with numbers that are none or beyond all range");
        } else {
            content.geometry.push_back(entity);
        }
    }

    // True when the entity must be looked into: something below it is a part of its own.
    bool HasStructure(const Entity& entity, int depth) const
    {
        if (entity.IsNull() || depth > MaximalDepth) {
            return !entity.IsNull();
        }
        if (entity->IsKind(STANDARD_TYPE(IGESSolid_ManifoldSolid)) ||
            entity->IsKind(STANDARD_TYPE(IGESBasic_SingularSubfigure))) {
            return true;
        }
        const auto group = Handle(IGESBasic_Group)::DownCast(entity);
        if (group.IsNull() || IsBad(entity)) {
            return !group.IsNull(); // the sound members of a group stand
        }
        for (int i = 1; i <= group->NbEntities(); ++i) {
            if (const Entity member = group->Entity(i); !member.IsNull()) {
                if (IsNamedGroup(member) || HasStructure(member, depth + 1)) {
                    return true;
                }
            }
        }
        return false;
    }

    // Puts an entity where it belongs; false when groups or subfigures contain themselves.
    bool Sort(const Entity& entity, Content& content, int depth)
    {
        if (entity.IsNull()) {
            return true;
        }
        if (depth > MaximalDepth) {
            return Refuse(entity, "is nested too deep");
        }
        const auto use = Handle(IGESBasic_SingularSubfigure)::DownCast(entity);
        if (!use.IsNull()) {
            Child child;
            child.name = NameOf(entity);
            child.definition = use->Subfigure();
            child.placement = PlacementOf(use);
            if (!child.definition.IsNull()) {
                content.children.push_back(std::move(child));
                return Define(content.children.back().definition, depth + 1);
            }
            return true;
        }
        const auto group = Handle(IGESBasic_Group)::DownCast(entity);
        const bool named = IsNamedGroup(entity);
        if (named || entity->IsKind(STANDARD_TYPE(IGESSolid_ManifoldSolid))) {
            Child child;
            child.name = NameOf(entity);
            child.content.emplace_back();
            if (!group.IsNull() && HasStructure(entity, 0)) {
                if (!SortMembers(group, child.content.front(), depth)) {
                    return false;
                }
            } else {
                AddGeometry(entity, child.content.front());
            }
            content.children.push_back(std::move(child));
            return true;
        }
        if (!group.IsNull() && HasStructure(entity, 0)) {
            return SortMembers(group, content, depth);
        }
        AddGeometry(entity, content);
        return true;
    }

    bool SortMembers(const Handle(IGESBasic_Group) & group, Content& content, int depth)
    {
        for (int i = 1; i <= group->NbEntities(); ++i) {
            if (!Sort(group->Entity(i), content, depth + 1)) {
                return false;
            }
        }
        return true;
    }

    bool Define(const Handle(IGESBasic_SubfigureDef) & definition, int depth)
    {
        if (myOpen.count(definition.get()) != 0) {
            return Refuse(definition, "contains itself");
        }
        if (myDefinitions.count(definition.get()) != 0) {
            return true;
        }
        myOpen.insert(definition.get());
        Content content;
        for (int i = 1; i <= definition->NbEntities(); ++i) {
            if (!Sort(definition->AssociatedEntity(i), content, depth)) {
                return false;
            }
        }
        myOpen.erase(definition.get());
        myDefinitions.emplace(definition.get(), std::move(content));
        return true;
    }

    // NOTE: IGES 5.3, 4.78: the subfigure is scaled, then translated, then goes through the instance's
    // matrix.
    ModelData_Transformation PlacementOf(const Handle(IGESBasic_SingularSubfigure) & use) const
    {
        const gp_GTrsf matrix = use->CompoundLocation();
        const double scale = use->HasScaleFactor() ? use->ScaleFactor() : 1.0;
        const double unit = myModel->GlobalSection().UnitValue();
        gp_XYZ translation = use->Translation();
        matrix.Transforms(translation);
        const auto m = [&](int row, int column) { return scale * matrix.Value(row, column); };
        ModelData_Transformation placement;
        placement.SetRotationPart(m(1, 1), m(1, 2), m(1, 3), m(2, 1), m(2, 2), m(2, 3), m(3, 1), m(3, 2),
                                  m(3, 3));
        placement.SetTranslationPart(unit * translation.X(), unit * translation.Y(), unit * translation.Z());
        return placement;
    }

    TopoDS_Shape ShapeOf(const Entity& entity) const
    {
        const Handle(Transfer_TransientProcess) process = myReader.WS()->TransferReader()->TransientProcess();
        const int index = process.IsNull() ? 0 : process->MapIndex(entity);
        return index > 0 ? TransferBRep::ShapeResult(process->MapItem(index)) : TopoDS_Shape();
    }

    // NOTE: IGES 5.3, 3: geometry has the numbers from 100 on, but for the matrix (124); solids follow.
    static bool HasShape(const Entity& entity)
    {
        constexpr int Matrix = 124;
        const int type = entity->TypeNumber();
        return type >= 100 && type < 200 && type != Matrix;
    }

    void TransferAll(const Content& content)
    {
        for (const Entity& entity : content.geometry) {
            if (!internal::Progress::GoesOn(myTransferred++,
                                            static_cast<std::size_t>(myModel->NbEntities()))) {
                return;
            }
            myReader.TransferEntity(entity);
            if (HasShape(entity) && ShapeOf(entity).IsNull()) {
                Tell(entity, "that cannot be built");
            }
        }
        for (const Child& child : content.children) {
            for (const Content& inner : child.content) {
                TransferAll(inner);
            }
        }
    }

    void ReadColours()
    {
        AppearanceCache appearances;
        for (int i = 1; i <= myModel->NbEntities(); ++i) {
            const Entity entity = myModel->Entity(i);
            if (const std::optional<Colour> colour =
                    entity.IsNull() ? std::nullopt : ColourOfFaceOr(entity)) {
                const ModelData_Appearance appearance = appearances.Of(colour);
                myLooks.Set(ShapeOf(entity), appearance, appearance);
            }
        }
    }

    TopoDS_Shape MakeShape(const std::vector<Entity>& geometry) const
    {
        TopoDS_Compound all;
        const BRep_Builder builder;
        builder.MakeCompound(all);
        for (const Entity& entity : geometry) {
            const TopoDS_Shape shape = ShapeOf(entity);
            if (!shape.IsNull()) {
                builder.Add(all, shape);
            }
        }
        if (all.NbChildren() == 1) {
            const TopoDS_Shape only = TopoDS_Iterator(all).Value();
            if (only.Location().IsIdentity()) {
                return only;
            }
        }
        return all.NbChildren() > 0 ? TopoDS_Shape(all) : TopoDS_Shape();
    }

    ModelData_Part MakePart(const std::vector<Entity>& geometry, const Base_UTF16String& name)
    {
        const TopoDS_Shape shape = MakeShape(geometry);
        if (shape.IsNull()) {
            return {};
        }
        OcctBRep body(shape);
        myLooks.Apply(body, ModelData_Appearance());
        ModelData_Part part(internal::MakeHandle<ModelData_BRepRepresentation>(brep::MakeShapeBRep(body)),
                            name);
        if (!body.appearance.IsNull()) {
            part.SetAppearance(body.appearance);
        }
        return part;
    }

    ModelData_SceneGraphElement MakeElement(const Content& content, const Base_UTF16String& name)
    {
        if (content.children.empty()) {
            return MakePart(content.geometry, name);
        }
        ModelData_Assembly assembly(name);
        ModelData_SceneGraphElement last;
        bool placed = false;
        const auto add = [&](const ModelData_SceneGraphElement& element, const Child* child) {
            if (element.IsNull()) {
                return;
            }
            const bool named = child != nullptr && !child->name.IsEmpty();
            ModelData_Instance instance(element, named ? child->name : element.Name());
            if (child != nullptr && !child->placement.IsIdentity()) {
                instance.SetTransformation(child->placement);
                placed = true;
            }
            assembly.AddInstance(instance);
            last = element;
        };
        if (!content.geometry.empty()) {
            add(MakePart(content.geometry, name), nullptr);
        }
        for (const Child& child : content.children) {
            add(child.definition.IsNull() ? MakeElement(child.content.front(), child.name)
                                          : Defined(child.definition),
                &child);
        }
        if (assembly.NumberOfInstances() == 0) {
            return {};
        }
        // A group around one unplaced thing is that thing.
        if (assembly.NumberOfInstances() == 1 && !placed) {
            if (last.Name().IsEmpty()) {
                last.SetName(name);
            }
            if (last.Name() == name || &name == &myFileName) {
                return last;
            }
        }
        return assembly;
    }

    ModelData_SceneGraphElement Defined(const Handle(IGESBasic_SubfigureDef) & definition)
    {
        const auto made = myElements.find(definition.get());
        if (made != myElements.end()) {
            return made->second;
        }
        ModelData_SceneGraphElement element =
            MakeElement(myDefinitions[definition.get()], NameOf(definition));
        myElements.emplace(definition.get(), element);
        return element;
    }

    void AddHeader(ModelData_SceneGraphElement& root) const
    {
        const IGESData_GlobalSection& global = myModel->GlobalSection();
        ModelData_PropertyTable table{initialized()};
        const auto add = [&table](const char* name, const Handle(TCollection_HAsciiString) & value) {
            if (const Base_UTF16String text = Decode(value); !text.IsEmpty()) {
                table.Add(name, text);
            }
        };
        const Handle(TCollection_HAsciiString) date = global.Date();
        if (const auto time = date.IsNull() ? std::nullopt : ParseIgesTime(date->ToCString())) {
            table.Add("Time Stamp", ModelData_PropertyTable::TimeType(*time));
        } else {
            add("Time Stamp", date);
        }
        add("Author", global.AuthorName());
        add("Organization", global.CompanyName());
        add("Preprocessor", global.InterfaceVersion());
        add("Originating System", global.SystemId());
        add("Product ID", global.SendName());
        root.AddProperties(table);
    }

    IGESControl_Reader& myReader;
    const std::set<int>& myUnusable;                     ///< directory numbers
    mutable std::unordered_map<const void*, bool> myBad; ///< entities that need an unusable one
    const Handle(IGESData_IGESModel) myModel;
    const Base_UTF16String& myFileName;
    std::set<const void*> myOpen;
    std::unordered_map<const void*, Content> myDefinitions;
    std::unordered_map<const void*, ModelData_SceneGraphElement> myElements;
    ShapeLooks myLooks;
    std::size_t myTransferred = 0; ///< entities
};

} // namespace

bool BuildIgesModel(IGESControl_Reader& reader, const Findings& findings, const Base_UTF16String& fileName,
                    ModelData_Model& model)
{
    return Builder(reader, findings, fileName).Run(model);
}

} // namespace cadex::iges
