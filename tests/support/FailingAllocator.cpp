#include "support/FailingAllocator.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

thread_local long countdown = 0;  // 0: never fail
thread_local bool failOnlyOne = false;
thread_local bool failureHappened = false;

bool MustFail() {
    if (countdown == 0)
        return false;
    if (countdown > 1) {
        --countdown;
        return false;
    }
    if (failOnlyOne) {
        if (failureHappened)
            return false;
    }
    failureHappened = true;
    return true;
}

void* Allocate(std::size_t size, std::size_t alignment) noexcept {
    if (MustFail())
        return nullptr;
    if (size == 0)
        size = 1;
    if (alignment <= alignof(std::max_align_t))
        return std::malloc(size);
    return std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
}

void* AllocateOrThrow(std::size_t size, std::size_t alignment) {
    void* block = Allocate(size, alignment);
    if (block == nullptr)
        throw std::bad_alloc();
    return block;
}

}  // namespace

void* operator new(std::size_t size) {
    return AllocateOrThrow(size, 1);
}
void* operator new[](std::size_t size) {
    return AllocateOrThrow(size, 1);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size, 1);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size, 1);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return AllocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return AllocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return Allocate(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return Allocate(size, static_cast<std::size_t>(alignment));
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

namespace velloran::test {

FailAllocation::FailAllocation(long n, bool onlyOne) {
    countdown = n;
    failOnlyOne = onlyOne;
    failureHappened = false;
}

FailAllocation::~FailAllocation() {
    countdown = 0;
}

bool FailAllocation::Happened() const {
    return failureHappened;
}

int SweepFailingAllocations(const std::function<void(long)>& trial, int limit) {
    for (int n = 1; n <= limit; ++n) {
        bool happened;
        {
            const FailAllocation fail(n);
            trial(n);
            happened = fail.Happened();
        }
        if (!happened)
            return n - 1;
    }
    return limit;
}

}  // namespace velloran::test
