// The model: a name and root elements in order, walked by an ElementVisitor.
//
//     ModelData_Model model;
//     model.AddRoot(assembly);
//     model.Accept(visitor);
#pragma once

#include <cadex/Base_Export.hxx>

#include <cstddef>

#include <cadex/Base_Allocator.hxx>
#include <cadex/Base_UTF16String.hxx>
#include <cadex/internal/Object.hxx>

namespace cadex {

class ModelData_Assembly;
class ModelData_Instance;
class ModelData_Part;
class ModelData_SceneGraphElement;

/// A handle, although no ModelData_BaseObject; never null. Copies see the same model.
class CADEX_EXPORT ModelData_Model : public internal::Allocated
{
public:
    /// Called for every element in depth-first order. A part is one call. An assembly or instance is entered,
    /// then its children follow if the entry returned true, then it is left, in every case.
    class ElementVisitor
    {
    public:
        virtual ~ElementVisitor() = default;
        virtual void operator()(const ModelData_Part& thePart) = 0;
        virtual bool VisitEnter(const ModelData_Assembly& theAssembly) = 0;
        virtual void VisitLeave(const ModelData_Assembly& theAssembly) = 0;
        virtual bool VisitEnter(const ModelData_Instance& theInstance) = 0;
        virtual void VisitLeave(const ModelData_Instance& theInstance) = 0;
    };

    /// Visits everything and does nothing.
    class VoidElementVisitor : public ElementVisitor
    {
    public:
        void operator()(const ModelData_Part&) override {}
        bool VisitEnter(const ModelData_Assembly&) override { return true; }
        void VisitLeave(const ModelData_Assembly&) override {}
        bool VisitEnter(const ModelData_Instance&) override { return true; }
        void VisitLeave(const ModelData_Instance&) override {}
    };

    ModelData_Model(const Base_UTF16String& theName = Base_UTF16String());

    void SetName(const Base_UTF16String& theName);
    const Base_UTF16String& Name() const;

    /// Appends a root; a null element is not added. Returns the stored handle, or a null one.
    const ModelData_SceneGraphElement& AddRoot(const ModelData_SceneGraphElement& theElement);
    std::size_t NumberOfRoots() const;
    bool IsEmpty() const { return NumberOfRoots() == 0; }
    void Clear();

    /// Visits every root in order, each with its whole subtree, on a stack of bounded size whatever the
    /// depth. An element that contains itself is entered again, but its children are not visited a second
    /// time on that path.
    void Accept(ElementVisitor& theVisitor) const;

    /// For engines: the shared object.
    internal::ObjectImpl* Impl() const { return myImpl.Get(); }

private:
    internal::Shared<internal::ObjectImpl> myImpl;
};

} // namespace cadex
