// The objects behind the scene-graph handles, for engines that walk or change a model without a visitor.
//
//     for (const ModelData_Instance& child : ImplOf(assembly).instances) { ... }
#pragma once

#include <deque>
#include <memory>
#include <vector>

#include <cadex/ModelData_Assembly.hxx>
#include <cadex/ModelData_Instance.hxx>
#include <cadex/ModelData_Model.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/ModelData_PolyRepresentation.hxx>

namespace cadex {
namespace internal {

class ElementImpl : public ObjectImpl
{
public:
    using ObjectImpl::ObjectImpl;

    ModelData_Appearance appearance;
    ModelData_PropertyTable properties;
};

class AssemblyImpl : public ElementImpl
{
public:
    AssemblyImpl() : ElementImpl(TypeAssembly) {}

    std::vector<ModelData_Instance> instances;
};

class InstanceImpl : public ElementImpl
{
public:
    InstanceImpl() : ElementImpl(TypeInstance) {}

    ModelData_SceneGraphElement reference;
    std::unique_ptr<ModelData_Transformation> transformation; ///< null: none was set
};

class PartImpl : public ElementImpl
{
public:
    PartImpl() : ElementImpl(TypePart) {}

    std::vector<ModelData_Representation> representations;
};

class PolyRepresentationImpl : public ObjectImpl
{
public:
    PolyRepresentationImpl() : ObjectImpl(TypePolyRepresentation) {}

    ModelData_PolyShapeList shapes;
    /// The levels of detail that this representation stands for; the default is the one that every poly mask
    /// admits.
    int levels = ModelData_RM_Poly;
};

class ModelImpl : public ObjectImpl
{
public:
    ModelImpl() : ObjectImpl(TypeNull) {}

    std::deque<ModelData_SceneGraphElement> roots; // a deque: AddRoot returns references that must last
};

/// The object of a handle that is not null.
inline ElementImpl& ImplOf(const ModelData_SceneGraphElement& element)
{
    return *static_cast<ElementImpl*>(element.Impl());
}
inline AssemblyImpl& ImplOf(const ModelData_Assembly& assembly)
{
    return *static_cast<AssemblyImpl*>(assembly.Impl());
}
inline InstanceImpl& ImplOf(const ModelData_Instance& instance)
{
    return *static_cast<InstanceImpl*>(instance.Impl());
}
inline PartImpl& ImplOf(const ModelData_Part& part)
{
    return *static_cast<PartImpl*>(part.Impl());
}

/// The roots of a model, in order.
const std::deque<ModelData_SceneGraphElement>& RootsOf(const ModelData_Model& model);

} // namespace internal
} // namespace cadex
