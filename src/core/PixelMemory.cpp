#include "core/PixelMemory.h"

#include <array>
#include <cassert>
#include <limits>
#include <new>

#ifdef __linux__
#include <sys/mman.h>
#endif
#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace velloran {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kKeepBlocks = false;  // a kept block would hide a use after free
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || \
    __has_feature(memory_sanitizer)
constexpr bool kKeepBlocks = false;
#else
constexpr bool kKeepBlocks = true;
#endif
#else
constexpr bool kKeepBlocks = true;
#endif

constexpr std::size_t kHugePage = std::size_t{2} << 20;
constexpr std::size_t kLargestKept = std::size_t{256} << 20;  // a rare giant page is given back
constexpr std::size_t kKeptBlocks = 2;                        // a picture and its scratch

/// In front of the bytes handed out; as long as a cache line, which keeps their alignment.
struct alignas(64) BlockHead {
    std::size_t capacity;  // bytes behind the head
    std::size_t alignment;
};
static_assert(sizeof(BlockHead) == 64);

BlockHead* HeadOf(void* block) {
    return static_cast<BlockHead*>(block) - 1;
}

void GiveBack(BlockHead* head) noexcept {
    const auto alignment = static_cast<std::align_val_t>(head->alignment);
    ::operator delete(static_cast<void*>(head), alignment);
}

BlockHead* TakeFresh(std::size_t total, std::size_t alignment) noexcept {
    void* memory = ::operator new(total, static_cast<std::align_val_t>(alignment), std::nothrow);
    if (memory == nullptr)
        return nullptr;
#ifdef __linux__
    if (alignment == kHugePage)
        madvise(memory, total, MADV_HUGEPAGE);  // advice only: a refusal changes nothing
#endif
    return new (memory) BlockHead{total - sizeof(BlockHead), alignment};
}

/// The large blocks that a thread keeps, the latest first. Needs no destructor of its own, so that
/// a static image may still free its block after the thread's other variables are gone.
struct KeptBlocks {
    std::array<BlockHead*, kKeptBlocks> heads;
    bool closed;
};
thread_local KeptBlocks kept{};

struct ReleaseAtThreadEnd {
    bool armed = false;
    ~ReleaseAtThreadEnd() {
        ReleaseKeptPixels();
        kept.closed = true;
    }
};
thread_local ReleaseAtThreadEnd releaseAtThreadEnd;

BlockHead* TakeKept(std::size_t capacity) noexcept {
    for (BlockHead*& head : kept.heads)
        if (head != nullptr && head->capacity >= capacity &&
            head->capacity <= capacity + capacity / 4) {
            BlockHead* found = head;
            head = nullptr;
            return found;
        }
    return nullptr;
}

void Keep(BlockHead* head) noexcept {
    releaseAtThreadEnd.armed = true;  // the first use registers its destructor
    for (BlockHead*& place : kept.heads)
        std::swap(place, head);
    if (head != nullptr)
        GiveBack(head);
}

}  // namespace

void* AllocatePixels(std::size_t bytes) noexcept {
    if (bytes > std::numeric_limits<std::size_t>::max() / 2)
        return nullptr;
    std::size_t total = bytes + sizeof(BlockHead);
    const bool large = total >= kHugePage;
    const std::size_t alignment = large ? kHugePage : alignof(BlockHead);
    if (large) {
        // The system hands out a huge page only where the block covers the whole of it.
        total = (total + kHugePage - 1) / kHugePage * kHugePage;
        if (BlockHead* head = TakeKept(total - sizeof(BlockHead)))
            return head + 1;
    }
    BlockHead* head = TakeFresh(total, alignment);
    if (head == nullptr && large) {
        ReleaseKeptPixels();
        head = TakeFresh(total, alignment);
    }
    return head == nullptr ? nullptr : head + 1;
}

void FreePixels(void* block) noexcept {
    if (block == nullptr)
        return;
    BlockHead* head = HeadOf(block);
    const bool large = head->alignment == kHugePage;
    if (kKeepBlocks && large && head->capacity <= kLargestKept && !kept.closed)
        Keep(head);
    else
        GiveBack(head);
}

void ReleaseKeptPixels() noexcept {
    for (BlockHead*& head : kept.heads) {
        if (head != nullptr)
            GiveBack(head);
        head = nullptr;
    }
}

void ReleaseFreedMemory() noexcept {
    ReleaseKeptPixels();
#ifdef __GLIBC__
    // Under a sanitizer the C library's own memory is not in use, and must not be woken.
    if constexpr (kKeepBlocks)
        malloc_trim(0);
#endif
}

void KeepFreedMemory() noexcept {
#ifdef __GLIBC__
    mallopt(M_MMAP_THRESHOLD, 32 << 20);  // the largest that the library takes
    mallopt(M_TRIM_THRESHOLD, 128 << 20);
#endif
}

PixelBuffer MakePixelBuffer(std::size_t bytes) {
    void* block = AllocatePixels(bytes);
    if (block == nullptr)
        throw std::bad_alloc();
    return PixelBuffer(static_cast<std::uint8_t*>(block));
}

}  // namespace velloran
