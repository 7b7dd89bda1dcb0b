#pragma once

// What the writers share.

#include <new>
#include <stdexcept>

#include "core/BaseImage.h"
#include "io/ByteSink.h"
#include "io/FileError.h"

namespace velloran {

/// Runs a writer of an image that is not empty; a failed allocation is a failure.
template <typename Work>
bool SaveWith(const CBaseImage& image, FileError* error, Work&& work) {
    if (!image.IsValid())
        return FailContent(error, "the image is empty", FileReason::kEmpty);
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return FailNoMemory(error);
    } catch (const std::length_error&) {
        return FailNoMemory(error);
    }
}

/// A failed write is told by the sink; anything else by the library's text.
inline bool FailCoding(ByteSink& sink, FileError* error, const char* text) {
    return sink.HasFailed() ? sink.FailWrite(error) : FailContent(error, text);
}

}  // namespace velloran
