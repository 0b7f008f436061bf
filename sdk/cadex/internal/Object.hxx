// What a handle points at. Every ModelData class is a thin handle: one counted pointer to an ObjectImpl and
// nothing else, so that a copy is shallow and a base handle may be viewed as the concrete class after a test
// of its type id. Applications never name anything in here; engines derive from ObjectImpl and wrap it with
// internal::MakeHandle.
#pragma once

#include <cadex/Base_Export.hxx>

#include <atomic>
#include <cstddef>
#include <utility>

#include <cadex/Base_Allocator.hxx>
#include <cadex/Base_UTF16String.hxx>

namespace cadex {
namespace internal {

/// The values that GetTypeId() of the concrete classes gives; 0 is the type of a null handle.
enum TypeId : int
{
    TypeNull = 0,
    TypePart,
    TypeAssembly,
    TypeInstance,
    TypeBRepRepresentation,
    TypePolyRepresentation,
    TypeIndexedTriangleSet,
    TypePolyLineSet,
    TypePolyPointSet,
    TypeAppearance,
    TypeTextureSet,
    TypeTexture,
    TypeFileTexture,
    TypePixMapTexture,
    TypePixMap,
    TypePropertyTable
};

/// Shared, counted object behind a handle. Counting is safe across threads; the content is not guarded.
class CADEX_EXPORT ObjectImpl : public Allocated
{
public:
    explicit ObjectImpl(int type) : myType(type) {}
    virtual ~ObjectImpl() = default;
    ObjectImpl(const ObjectImpl&) = delete;
    ObjectImpl& operator=(const ObjectImpl&) = delete;

    int Type() const { return myType; }
    void Retain() { myCount.fetch_add(1, std::memory_order_relaxed); }
    void Release()
    {
        if (myCount.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            Destroy(this);
        }
    }

    Base_UTF16String name;

private:
    /// Deletes without recursion, so that releasing a tree of any depth needs a bounded stack.
    static void Destroy(ObjectImpl* object) noexcept;

    std::atomic<unsigned> myCount{0};
    const int myType;
};

/// Counted pointer to an ObjectImpl or a class derived from it.
template <typename T>
class CADEX_EXPORT Shared
{
public:
    Shared() = default;
    Shared(T* object) : myObject(object)
    {
        if (myObject != nullptr) {
            myObject->Retain();
        }
    }
    Shared(const Shared& other) : Shared(other.myObject) {}
    Shared(Shared&& other) noexcept : myObject(std::exchange(other.myObject, nullptr)) {}
    template <typename U>
    Shared(const Shared<U>& other) : Shared(other.Get())
    {
    }
    ~Shared()
    {
        if (myObject != nullptr) {
            myObject->Release();
        }
    }
    Shared& operator=(Shared other) noexcept
    {
        std::swap(myObject, other.myObject);
        return *this;
    }

    T* Get() const { return myObject; }
    T* operator->() const { return myObject; }
    T& operator*() const { return *myObject; }
    explicit operator bool() const { return myObject != nullptr; }

private:
    T* myObject = nullptr;
};

} // namespace internal
} // namespace cadex
