#include "sdk/model/Elements.h"

#include <unordered_set>

namespace cadex {

namespace {

template <typename Impl>
ModelData_BaseObject Named(const Base_UTF16String& name)
{
    auto handle = internal::MakeHandle<ModelData_BaseObject>(new Impl);
    handle.SetName(name);
    return handle;
}

/// The object of a handle of a known class, made on first use.
template <typename Impl, typename Handle>
Impl& Ensure(Handle& handle)
{
    if (handle.IsNull()) {
        handle.SetImpl(new Impl);
    }
    return *static_cast<Impl*>(handle.Impl());
}

template <typename T>
const T& As(const ModelData_SceneGraphElement& element)
{
    return static_cast<const T&>(element);
}

/// Depth-first walk with a stack of its own, so that the depth of the model does not matter.
class Walk
{
public:
    explicit Walk(ModelData_Model::ElementVisitor& visitor) : myVisitor(visitor) {}

    void Run(const ModelData_SceneGraphElement& root)
    {
        Enter(root);
        while (!myOpen.empty()) {
            const ModelData_SceneGraphElement child = NextChild(myOpen.back());
            if (child.IsNull()) {
                Leave();
            } else {
                Enter(child);
            }
        }
    }

private:
    struct Frame
    {
        ModelData_SceneGraphElement element; // held: a visitor may change the model
        bool descend;
        bool insideItself;
        std::size_t next;
    };

    void Enter(const ModelData_SceneGraphElement& element)
    {
        if (element.IsOfType<ModelData_Part>()) {
            myVisitor(As<ModelData_Part>(element));
            return;
        }
        const bool wanted = element.IsOfType<ModelData_Assembly>()
                                ? myVisitor.VisitEnter(As<ModelData_Assembly>(element))
                                : myVisitor.VisitEnter(As<ModelData_Instance>(element));
        const bool inside = !myPath.insert(element.Impl()).second;
        myOpen.push_back({element, wanted && !inside, inside, 0});
    }

    static ModelData_SceneGraphElement NextChild(Frame& frame)
    {
        if (!frame.descend) {
            return {};
        }
        if (frame.element.IsOfType<ModelData_Instance>()) {
            return frame.next++ == 0 ? As<ModelData_Instance>(frame.element).Reference()
                                     : ModelData_SceneGraphElement();
        }
        const auto& children = internal::ImplOf(As<ModelData_Assembly>(frame.element)).instances;
        return frame.next < children.size() ? ModelData_SceneGraphElement(children[frame.next++])
                                            : ModelData_SceneGraphElement();
    }

    void Leave()
    {
        const Frame frame = myOpen.back();
        if (!frame.insideItself) {
            myPath.erase(frame.element.Impl());
        }
        myOpen.pop_back();
        if (frame.element.IsOfType<ModelData_Assembly>()) {
            myVisitor.VisitLeave(As<ModelData_Assembly>(frame.element));
        } else {
            myVisitor.VisitLeave(As<ModelData_Instance>(frame.element));
        }
    }

    ModelData_Model::ElementVisitor& myVisitor;
    std::vector<Frame> myOpen;
    std::unordered_set<const void*> myPath; // what is open, to stop at an element that contains itself
};

} // namespace

ModelData_Model::ModelData_Model(const Base_UTF16String& theName) : myImpl(new internal::ModelImpl)
{
    myImpl->name = theName;
}

void ModelData_Model::SetName(const Base_UTF16String& theName)
{
    myImpl->name = theName;
}

const Base_UTF16String& ModelData_Model::Name() const
{
    return myImpl->name;
}

const ModelData_SceneGraphElement& ModelData_Model::AddRoot(const ModelData_SceneGraphElement& theElement)
{
    static const ModelData_SceneGraphElement none;
    if (theElement.IsNull()) {
        return none;
    }
    return static_cast<internal::ModelImpl*>(myImpl.Get())->roots.emplace_back(theElement);
}

std::size_t ModelData_Model::NumberOfRoots() const
{
    return internal::RootsOf(*this).size();
}

void ModelData_Model::Clear()
{
    static_cast<internal::ModelImpl*>(myImpl.Get())->roots.clear();
}

void ModelData_Model::Accept(ElementVisitor& theVisitor) const
{
    const auto roots = internal::RootsOf(*this); // a copy: the visitor may change the model
    for (const ModelData_SceneGraphElement& root : roots) {
        Walk(theVisitor).Run(root);
    }
}

void ModelData_SceneGraphElement::SetAppearance(const ModelData_Appearance& theAppearance)
{
    if (!IsNull()) {
        internal::ImplOf(*this).appearance = theAppearance;
    }
}

ModelData_Appearance ModelData_SceneGraphElement::Appearance() const
{
    return IsNull() ? ModelData_Appearance() : internal::ImplOf(*this).appearance;
}

void ModelData_SceneGraphElement::AddProperties(const ModelData_PropertyTable& theTable)
{
    if (IsNull() || theTable.IsNull()) {
        return;
    }
    ModelData_PropertyTable& own = internal::ImplOf(*this).properties;
    if (own.IsNull()) {
        own = theTable;
    } else {
        own.Add(theTable);
    }
}

ModelData_PropertyTable ModelData_SceneGraphElement::Properties() const
{
    return IsNull() ? ModelData_PropertyTable() : internal::ImplOf(*this).properties;
}

void ModelData_SceneGraphElement::Accept(ModelData_Model::ElementVisitor& theVisitor) const
{
    if (!IsNull()) {
        Walk(theVisitor).Run(*this);
    }
}

ModelData_Assembly::ModelData_Assembly(initialized) : ModelData_Assembly(Base_UTF16String()) {}

ModelData_Assembly::ModelData_Assembly(const Base_UTF16String& theName)
{
    SetImpl(Named<internal::AssemblyImpl>(theName).Impl());
}

void ModelData_Assembly::AddInstance(const ModelData_Instance& theInstance)
{
    if (!theInstance.IsNull()) {
        Ensure<internal::AssemblyImpl>(*this).instances.push_back(theInstance);
    }
}

std::size_t ModelData_Assembly::NumberOfInstances() const
{
    return IsNull() ? 0 : internal::ImplOf(*this).instances.size();
}

ModelData_Instance::ModelData_Instance(initialized) : ModelData_Instance(Base_UTF16String()) {}

ModelData_Instance::ModelData_Instance(const Base_UTF16String& theName)
{
    SetImpl(Named<internal::InstanceImpl>(theName).Impl());
}

ModelData_Instance::ModelData_Instance(const ModelData_SceneGraphElement& theReference,
                                       const Base_UTF16String& theName)
    : ModelData_Instance(theName)
{
    SetReference(theReference);
}

ModelData_Instance::ModelData_Instance(const ModelData_SceneGraphElement& theReference,
                                       const ModelData_Transformation& theTransformation,
                                       const Base_UTF16String& theName)
    : ModelData_Instance(theReference, theName)
{
    SetTransformation(theTransformation);
}

void ModelData_Instance::SetReference(const ModelData_SceneGraphElement& theObject)
{
    Ensure<internal::InstanceImpl>(*this).reference = theObject;
}

ModelData_SceneGraphElement ModelData_Instance::Reference() const
{
    return IsNull() ? ModelData_SceneGraphElement() : internal::ImplOf(*this).reference;
}

void ModelData_Instance::SetTransformation(const ModelData_Transformation& theTransformation)
{
    Ensure<internal::InstanceImpl>(*this).transformation =
        std::make_unique<ModelData_Transformation>(theTransformation);
}

bool ModelData_Instance::HasTransformation() const
{
    return !IsNull() && internal::ImplOf(*this).transformation != nullptr;
}

const ModelData_Transformation& ModelData_Instance::Transformation() const
{
    static const ModelData_Transformation identity;
    if (IsNull()) {
        return identity;
    }
    auto& own = internal::ImplOf(*this).transformation;
    if (own == nullptr) {
        own = std::make_unique<ModelData_Transformation>();
    }
    return *own;
}

ModelData_Part::ModelData_Part(initialized) : ModelData_Part(Base_UTF16String()) {}

ModelData_Part::ModelData_Part(const Base_UTF16String& theName)
{
    SetImpl(Named<internal::PartImpl>(theName).Impl());
}

ModelData_Part::ModelData_Part(const ModelData_Representation& theRepresentation,
                               const Base_UTF16String& theName)
    : ModelData_Part(theName)
{
    AddRepresentation(theRepresentation);
}

void ModelData_Part::AddRepresentation(const ModelData_Representation& theRepresentation)
{
    if (!theRepresentation.IsNull()) {
        Ensure<internal::PartImpl>(*this).representations.push_back(theRepresentation);
    }
}

ModelData_BRepRepresentation ModelData_Part::BRepRepresentation() const
{
    if (!IsNull()) {
        for (const ModelData_Representation& candidate : internal::ImplOf(*this).representations) {
            if (candidate.IsOfType<ModelData_BRepRepresentation>()) {
                return static_cast<const ModelData_BRepRepresentation&>(candidate);
            }
        }
    }
    return {};
}

ModelData_PolyRepresentation ModelData_Part::PolyRepresentation(ModelData_RepresentationMask theMask) const
{
    if (!IsNull()) {
        for (const ModelData_Representation& candidate : internal::ImplOf(*this).representations) {
            if (candidate.IsOfType<ModelData_PolyRepresentation>() &&
                (static_cast<internal::PolyRepresentationImpl*>(candidate.Impl())->levels & theMask) != 0) {
                return static_cast<const ModelData_PolyRepresentation&>(candidate);
            }
        }
    }
    return {};
}

namespace internal {

const std::deque<ModelData_SceneGraphElement>& RootsOf(const ModelData_Model& model)
{
    return static_cast<ModelImpl*>(model.Impl())->roots;
}

} // namespace internal
} // namespace cadex
