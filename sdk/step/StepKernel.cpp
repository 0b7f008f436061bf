#include "sdk/step/StepKernel.h"

#include <istream>
#include <unordered_map>

#include <BRep_Builder.hxx>
#include <Interface_InterfaceModel.hxx>
#include <STEPControl_Reader.hxx>
#include <StepBasic_ProductDefinition.hxx>
#include <StepData_StepModel.hxx>
#include <StepRepr_Representation.hxx>
#include <StepRepr_RepresentationItem.hxx>
#include <TCollection_HAsciiString.hxx>
#include <TopTools_MapOfShape.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Iterator.hxx>
#include <TransferBRep.hxx>
#include <Transfer_Binder.hxx>
#include <Transfer_TransientProcess.hxx>
#include <XSControl_TransferReader.hxx>
#include <XSControl_WorkSession.hxx>

#include "sdk/occt/EngineScope.h"
#include "sdk/occt/OcctBRep.h"
#include "sdk/occt/Placements.h"
#include "sdk/occt/ShapeLooks.h"
#include "sdk/step/StepExcerpt.h"
#include "sdk/step/StepPlacements.h"
#include "sdk/step/StepSubset.h"

namespace cadex::step {

using occt::OcctBRep;
using occt::SetEngineSetting;
using occt::ShapeLooks;
using occt::ToTransformation;
namespace {

// The time that the kernel takes for assemblies grows with the square of the number of instances. From this
// many on it is felt: then the kernel gets the products alone, and the text tells where they stand.
constexpr std::size_t ManyInstances = 300;

int ShapeRepresentationMode(STEP_ReaderParameters::BRepRepresentationType preferred)
{
    // NOTE: values of "read.step.shape.repr": 1 all, 2 advanced B-rep, 3 manifold surface, 4 geometrically
    // bounded surface, 6 edge-based wireframe. Sheet bodies made of faces are the manifold ones to the
    // kernel.
    switch (preferred) {
    case STEP_ReaderParameters::AdvancedBRep:
        return 2;
    case STEP_ReaderParameters::ManifoldSurface:
    case STEP_ReaderParameters::NonManifoldSurface:
        return 3;
    case STEP_ReaderParameters::EdgeBasedWireframe:
        return 6;
    default:
        return 1;
    }
}

ModelData_BRepRepresentation MakeBody(const TopoDS_Shape& shape, const ShapeLooks& looks,
                                      const ModelData_Appearance& whole, ModelData_Appearance& appearance)
{
    TopoDS_Shape own = shape;
    if (!shape.Location().IsIdentity()) {
        TopoDS_Compound holder;
        const BRep_Builder builder;
        builder.MakeCompound(holder);
        builder.Add(holder, shape);
        own = holder;
    }
    auto* body = new OcctBRep(own);
    auto representation = internal::MakeHandle<ModelData_BRepRepresentation>(body);
    looks.Apply(*body, whole);
    appearance = body->appearance;
    return representation;
}

} // namespace

struct StepKernel::State
{
    STEPControl_Reader reader;
    std::unordered_map<RecordId, Handle(Standard_Transient)> entities;
    Handle(Transfer_TransientProcess) process;
    const StepContent* content = nullptr;
    std::vector<ModelData_Transformation> placements; ///< of the instances; empty when the kernel places them
    ShapeLooks looks;

    TopoDS_Shape ShapeOf(const Handle(Standard_Transient) & entity) const
    {
        const int index = entity.IsNull() || process.IsNull() ? 0 : process->MapIndex(entity);
        return index > 0 ? TransferBRep::ShapeResult(process->MapItem(index)) : TopoDS_Shape();
    }

    TopoDS_Shape ShapeOf(RecordId id) const
    {
        const auto found = entities.find(id);
        return found != entities.end() ? ShapeOf(found->second) : TopoDS_Shape();
    }

    bool TransferShapes()
    {
        reader.TransferRoots();
        process = reader.WS()->TransferReader()->TransientProcess();
        return !process.IsNull() && reader.NbShapes() > 0;
    }

    // The records that the model is built from; the kernel numbers them anew.
    void FindEntities()
    {
        std::unordered_map<RecordId, bool> wanted;
        for (const StepProduct& product : content->structure.products) {
            wanted.emplace(product.definition, true);
        }
        for (const StepInstance& instance : content->structure.instances) {
            wanted.emplace(instance.usage, true);
        }
        for (const auto& item : content->styles.items) {
            wanted.emplace(item.first, true);
        }
        const Handle(StepData_StepModel) model = Handle(StepData_StepModel)::DownCast(reader.WS()->Model());
        for (int i = 1; !model.IsNull() && i <= model->NbEntities(); ++i) {
            const Handle(Standard_Transient)& entity = model->Value(i);
            const auto id = static_cast<RecordId>(model->IdentLabel(entity));
            if (wanted.count(id) != 0) {
                entities.emplace(id, entity);
            }
        }
    }
};

StepKernel::StepKernel() : myState(std::make_unique<State>()) {}
StepKernel::~StepKernel() = default;

bool StepKernel::Read(const ClearText& text, const StepContent& content)
{
    myState->content = &content;
    StepPlacements placements(text, content.structure);
    if (content.structure.instances.size() >= ManyInstances && placements.AssembliesHoldAxesOnly()) {
        myState->placements = placements.ReadAll().value_or(std::vector<ModelData_Transformation>());
    }
    const bool isWhole = myState->placements.empty();
    ClearText subset;
    if (!isWhole && !subset.Load(WithoutInstances(text, content.structure))) {
        return false;
    }
    StepExcerpt excerpt(isWhole ? text : subset);
    std::istream stream(&excerpt);
    if (myState->reader.ReadStream("file.stp", stream) != IFSelect_RetDone || excerpt.IsMalformed()) {
        return false;
    }
    const Handle(Interface_InterfaceModel) model = myState->reader.WS()->Model();
    for (int i = 1; i <= model->NbEntities(); ++i) {
        if (model->IsErrorEntity(i)) {
            return false;
        }
    }
    if (model->NbEntities() == 0) {
        return false;
    }
    myState->FindEntities();
    return true;
}

bool StepKernel::Transfer(STEP_ReaderParameters::BRepRepresentationType preferred)
{
    const int mode = ShapeRepresentationMode(preferred);
    SetEngineSetting("read.step.shape.repr", mode);
    if (!myState->TransferShapes() && mode != 1) {
        // Preferred is not demanded: a file without such a representation is read as it is.
        SetEngineSetting("read.step.shape.repr", 1);
        myState->reader.ClearShapes();
        myState->reader.WS()->InitTransferReader(4);
        myState->TransferShapes();
    }
    if (myState->process.IsNull()) {
        return false;
    }
    for (const auto& [item, style] : myState->content->styles.items) {
        myState->looks.Set(myState->ShapeOf(item), style.surface, style.curve);
    }
    return true;
}

StepBody StepKernel::Body(std::size_t number)
{
    StepBody body;
    const StepProduct& product = myState->content->structure.products[number];
    TopoDS_Shape shape = myState->ShapeOf(product.definition);
    if (!shape.IsNull() && !product.instances.empty()) {
        // The kernel gives one compound of what is assembled and of what is the product's own.
        TopTools_MapOfShape placed;
        for (const std::size_t instance : product.instances) {
            const TopoDS_Shape member =
                myState->ShapeOf(myState->content->structure.instances[instance].usage);
            if (!member.IsNull()) {
                placed.Add(member);
            }
        }
        TopoDS_Compound own;
        const BRep_Builder builder;
        builder.MakeCompound(own);
        for (TopoDS_Iterator members(shape); members.More(); members.Next()) {
            if (!placed.Contains(members.Value())) {
                builder.Add(own, members.Value());
            }
        }
        shape = own.NbChildren() > 0 ? TopoDS_Shape(own) : TopoDS_Shape();
    }
    if (shape.IsNull() || (shape.ShapeType() == TopAbs_COMPOUND && shape.NbChildren() == 0)) {
        return body;
    }
    ModelData_Appearance whole;
    const auto style = myState->content->styles.products.find(number);
    if (style != myState->content->styles.products.end()) {
        whole = style->second.surface;
    }
    body.representation = MakeBody(shape, myState->looks, whole, body.appearance);
    return body;
}

ModelData_Transformation StepKernel::Placement(std::size_t number)
{
    if (!myState->placements.empty()) {
        return myState->placements[number];
    }
    const TopoDS_Shape shape = myState->ShapeOf(myState->content->structure.instances[number].usage);
    return shape.IsNull() ? ModelData_Transformation() : ToTransformation(shape.Location().Transformation());
}

std::vector<StepBody> StepKernel::LooseBodies()
{
    std::vector<StepBody> bodies;
    STEPControl_Reader& reader = myState->reader;
    const int count = reader.NbRootsForTransfer();
    for (int i = 1; i <= count; ++i) {
        const Handle(Standard_Transient) root = reader.RootForTransfer(i);
        if (root.IsNull() || root->IsKind(STANDARD_TYPE(StepBasic_ProductDefinition))) {
            continue;
        }
        const TopoDS_Shape shape = myState->ShapeOf(root);
        if (shape.IsNull()) {
            continue;
        }
        StepBody body;
        body.representation = MakeBody(shape, myState->looks, ModelData_Appearance(), body.appearance);
        Handle(TCollection_HAsciiString) name;
        if (const auto item = Handle(StepRepr_RepresentationItem)::DownCast(root); !item.IsNull()) {
            name = item->Name();
        } else if (const auto whole = Handle(StepRepr_Representation)::DownCast(root); !whole.IsNull()) {
            name = whole->Name();
        }
        if (!name.IsNull()) {
            body.name = DecodeString({name->ToCString(), static_cast<std::size_t>(name->Length())});
        }
        bodies.push_back(std::move(body));
    }
    return bodies;
}

} // namespace cadex::step
