#include <cadex/Base_Allocator.hxx>
#include <cadex/ModelData_BaseObject.hxx>
#include <cadex/internal/Object.hxx>

#include <cstdlib>
#include <vector>

#include "sdk/model/BRepImpl.h"

namespace cadex {

void* cadex_malloc(std::size_t size)
{
    void* memory = std::malloc(size != 0 ? size : 1);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void cadex_free(void* memory) noexcept
{
    std::free(memory);
}

void ModelData_BaseObject::SetName(const Base_UTF16String& theName)
{
    if (myImpl) {
        myImpl->name = theName;
    }
}

Base_UTF16String ModelData_BaseObject::Name() const
{
    return myImpl ? myImpl->name : Base_UTF16String();
}

namespace internal {

// Deleting an object releases what it holds; those land here again and wait in the outermost call's list.
void ObjectImpl::Destroy(ObjectImpl* object) noexcept
{
    thread_local std::vector<ObjectImpl*>* waiting = nullptr;
    if (waiting != nullptr) {
        try {
            waiting->push_back(object);
            return;
        } catch (const std::bad_alloc&) {
            delete object; // recursion is better than a leak
            return;
        }
    }
    std::vector<ObjectImpl*> list;
    waiting = &list;
    delete object;
    while (!list.empty()) {
        ObjectImpl* next = list.back();
        list.pop_back();
        delete next;
    }
    waiting = nullptr;
}

BRepImpl::~BRepImpl() = default;

} // namespace internal
} // namespace cadex
