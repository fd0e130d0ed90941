// The global operators of a whole program under test. All forms: a sanitizer's own would not match these.

#include <cstdlib>
#include <new>

#include "platform/posix/allocation_faults.h"

namespace {

void* Allocate(std::size_t size) noexcept {
    return posix_layer::AllocationFails() ? nullptr : std::malloc(size == 0 ? 1 : size);
}

void* Allocate(std::size_t size, std::align_val_t alignment) noexcept {
    void* block = nullptr;
    if (posix_layer::AllocationFails()) return nullptr;
    return posix_memalign(&block, static_cast<std::size_t>(alignment), size) == 0 ? block : nullptr;
}

template <class... Alignment>
void* AllocateOrThrow(std::size_t size, Alignment... alignment) {
    void* const block = Allocate(size, alignment...);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

}  // namespace

void* operator new(std::size_t size) {
    return AllocateOrThrow(size);
}
void* operator new[](std::size_t size) {
    return AllocateOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return AllocateOrThrow(size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return AllocateOrThrow(size, alignment);
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return Allocate(size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return Allocate(size, alignment);
}

void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete[](void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    std::free(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
    std::free(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
    std::free(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
    std::free(block);
}
void operator delete[](void* block, std::align_val_t) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
    std::free(block);
}
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept {
    std::free(block);
}
void operator delete(void* block, std::align_val_t, const std::nothrow_t&) noexcept {
    std::free(block);
}
void operator delete[](void* block, std::align_val_t, const std::nothrow_t&) noexcept {
    std::free(block);
}
