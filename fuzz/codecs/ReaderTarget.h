#pragma once

// What every fuzz target of a reader does: the head and the load of any bytes, whatever the head
// says, with memory that stays below a multiple of the file's size plus 64 MiB.

#include <sanitizer/allocator_interface.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>

#include "codecs/Formats.h"
#include "codecs/ImageInfo.h"
#include "codecs/LoadNotes.h"
#include "core/DibImage.h"
#include "core/PixelMemory.h"
#include "io/FileError.h"
#include "io/MemorySource.h"

namespace velloran::fuzz {

inline std::atomic<std::int64_t> bytesInUse{0}, mostBytesInUse{0};

inline void OnAllocate(const volatile void*, std::size_t size) {
    const std::int64_t now = bytesInUse += static_cast<std::int64_t>(size);
    if (now > mostBytesInUse)
        mostBytesInUse = now;
}

inline void OnFree(const volatile void* block) {
    if (block != nullptr)
        bytesInUse -= static_cast<std::int64_t>(__sanitizer_get_allocated_size(block));
}

inline void Require(bool held) {
    if (!held)
        __builtin_trap();
}

/// `perByte`: bytes of memory that an honest file may need for each byte of its own.
inline int RunReader(FileTypeId type, std::int64_t perByte, const std::uint8_t* data,
                     std::size_t size) {
    static const int installed = __sanitizer_install_malloc_and_free_hooks(OnAllocate, OnFree);
    Require(installed != 0);
    const Format& format = *FindFormat(type);
    const std::span<const std::uint8_t> bytes(data, size);
    ReleaseKeptPixels();
    const std::int64_t before = bytesInUse;
    mostBytesInUse = before;

    ImageInfo info;
    MemorySource headSource(bytes);
    const bool head = format.info(headSource, info, nullptr);

    MemorySource source(bytes);
    CDibImage image;
    LoadNotes notes;
    FileError error;
    LoadOptions options;
    options.reverseCmyk = size % 2 != 0;
    const bool loaded = format.load(source, options, image, notes, &error);
    MemorySource notesSource(bytes);
    LoadNotes beside;
    if (format.notes != nullptr)
        format.notes(notesSource, beside, nullptr);
    // A page beyond the first, of formats that have some.
    if (loaded && notes.pictures > 1) {
        CDibImage later;
        LoadOptions second = options;
        second.page = 2;
        FileError why;
        const bool isThere = format.load(source, second, later, beside, &why);
        Require(isThere == later.IsValid());
        Require(isThere || why.cause != FileError::Cause::kNone);
    }
    // What loads has a head that can be told, and a failure leaves the image alone and says why.
    Require(loaded == image.IsValid());
    Require(!loaded || head);
    Require(loaded || error.cause != FileError::Cause::kNone);
    Require(!loaded || notes.pictures >= 1);

    constexpr std::int64_t kAlways = std::int64_t{64} << 20;
    Require(mostBytesInUse - before <= kAlways + perByte * static_cast<std::int64_t>(size));
    return 0;
}

}  // namespace velloran::fuzz
