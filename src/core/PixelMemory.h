#pragma once

// Memory for pixels. Fresh pages of memory cost ten times a copy, so blocks of 2 MiB and more are
// aligned to 2 MiB and advised as huge pages, and each thread keeps its last few large blocks for
// the next step or file instead of giving them back.

#include <cstddef>
#include <cstdint>
#include <memory>

namespace velloran {

/// At least `bytes` bytes, not cleared; null when there are none. 0 bytes gives a valid pointer.
void* AllocatePixels(std::size_t bytes) noexcept;

/// Takes back a block of AllocatePixels; null is allowed. Any thread may free any block.
void FreePixels(void* block) noexcept;

/// Gives the blocks that the calling thread keeps back to the system.
void ReleaseKeptPixels() noexcept;

/// The same, and what the C library keeps of freed memory for the whole process: for a thread that
/// is going to wait for memory that others are to use.
void ReleaseFreedMemory() noexcept;

struct PixelDeleter {
    void operator()(void* block) const noexcept { FreePixels(block); }
};

/// Asks the C library to keep what is freed, so that the large buffers of the codecs' libraries are
/// not faulted in anew for each file. For programs that convert many files; works for the whole
/// process and does nothing where the C library has no such wish.
void KeepFreedMemory() noexcept;

/// Owner of scratch of page size.
using PixelBuffer = std::unique_ptr<std::uint8_t[], PixelDeleter>;

/// Throws std::bad_alloc where AllocatePixels gives null. Not cleared.
PixelBuffer MakePixelBuffer(std::size_t bytes);

}  // namespace velloran
