// The SDK's own memory functions and a standard allocator on top of them.
#pragma once

#include <cadex/Base_Export.hxx>

#include <cstddef>
#include <new>

namespace cadex {

/// Returns `size` bytes, aligned for any fundamental type. Throws std::bad_alloc when there is no memory.
/// A size of 0 gives a unique pointer. Released with cadex_free.
CADEX_EXPORT void* cadex_malloc(std::size_t size);

/// Releases memory of cadex_malloc; null is allowed.
CADEX_EXPORT void cadex_free(void* memory) noexcept;

/// Standard allocator on cadex_malloc; any two instances are interchangeable.
template <typename T>
class CADEX_EXPORT Base_Allocator
{
public:
    using value_type = T;
    Base_Allocator() = default;
    template <typename U>
    Base_Allocator(const Base_Allocator<U>&)
    {
    }

    T* allocate(std::size_t count)
    {
        if (count > static_cast<std::size_t>(-1) / sizeof(T)) {
            throw std::bad_array_new_length();
        }
        return static_cast<T*>(cadex_malloc(count * sizeof(T)));
    }
    void deallocate(T* memory, std::size_t) noexcept { cadex_free(memory); }

    template <typename U>
    friend bool operator==(const Base_Allocator&, const Base_Allocator<U>&)
    {
        return true;
    }
};

namespace internal {

/// Empty base of the classes whose objects live in the SDK's memory.
struct CADEX_EXPORT Allocated
{
    static void* operator new(std::size_t size) { return cadex_malloc(size); }
    static void* operator new[](std::size_t size) { return cadex_malloc(size); }
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void* memory) noexcept { cadex_free(memory); }
    static void operator delete[](void* memory) noexcept { cadex_free(memory); }
    static void operator delete(void*, void*) noexcept {}
};

} // namespace internal
} // namespace cadex
