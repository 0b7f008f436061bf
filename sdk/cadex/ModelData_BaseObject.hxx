// Base of the model's handle classes. A handle holds one counted pointer and nothing else: a copy is shallow,
// and a base handle may be viewed as the concrete class (static_cast of the reference) once its type id has
// been tested.
//
//     ModelData_Part part("Bracket");                // non-null; ModelData_Part() is a null handle
//     ModelData_SceneGraphElement element = part;    // sees the same object
//     if (element.IsOfType<ModelData_Part>()) { ... static_cast<const ModelData_Part&>(element) ... }
#pragma once

#include <cadex/Base_Export.hxx>

#include <cstddef>
#include <functional>

#include <cadex/Base_Allocator.hxx>
#include <cadex/Base_Types.hxx>
#include <cadex/Base_UTF16String.hxx>
#include <cadex/internal/Object.hxx>

namespace cadex {

/// Reading a null handle gives empty results; SetName on one does nothing. Mutators of a concrete class make
/// the object when called on a null handle of that class.
class CADEX_EXPORT ModelData_BaseObject : public internal::Allocated
{
public:
    typedef int IdType;

    ModelData_BaseObject() = default;

    /// Kind of the object, as GetTypeId() of its concrete class gives it; 0 for a null handle.
    IdType TypeId() const { return myImpl ? myImpl->Type() : static_cast<int>(internal::TypeNull); }
    template <typename T>
    bool IsOfType() const
    {
        return TypeId() == T::GetTypeId();
    }

    void SetName(const Base_UTF16String& theName);
    /// Empty when never set.
    Base_UTF16String Name() const;

    /// Drops the reference.
    void Nullify() { myImpl = nullptr; }
    bool IsNull() const { return !myImpl; }
    /// True when not null. Portable code tests IsNull().
    explicit operator bool() const { return !IsNull(); }

    /// For engines: the shared object, and a way to put one in. The object must be of the handle's class.
    internal::ObjectImpl* Impl() const { return myImpl.Get(); }
    void SetImpl(internal::ObjectImpl* theImpl) { myImpl = theImpl; }

private:
    internal::Shared<internal::ObjectImpl> myImpl;
};

/// True when both refer to the same object, or both are null.
inline bool operator==(const ModelData_BaseObject& theLeft, const ModelData_BaseObject& theRight)
{
    return theLeft.Impl() == theRight.Impl();
}
inline bool operator!=(const ModelData_BaseObject& theLeft, const ModelData_BaseObject& theRight)
{
    return !(theLeft == theRight);
}

/// Hashes the identity of the object, not its content.
struct CADEX_EXPORT ModelData_BaseObjectHash
{
    std::size_t operator()(const ModelData_BaseObject& theObject) const
    {
        return std::hash<const void*>()(theObject.Impl());
    }
};

namespace internal {

/// For engines: a handle on an object of theirs.
template <typename Handle>
Handle MakeHandle(ObjectImpl* object)
{
    Handle handle;
    handle.SetImpl(object);
    return handle;
}

} // namespace internal
} // namespace cadex
