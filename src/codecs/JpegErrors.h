#pragma once

// libjpeg's error hook. The library is C: an exception must not pass through its frames, so the
// hook jumps back to RunJpeg, which throws once all of the library's frames are gone.

// clang-format off
#include <cstdio>  // jpeglib.h needs it before itself
#include <jpeglib.h>
// clang-format on

#include <csetjmp>
#include <stdexcept>
#include <string>

#include "io/FileError.h"

namespace velloran {

/// What an error of libjpeg becomes; it never leaves the JPEG reader and writer.
class CNewJPEGException : public std::runtime_error {
 public:
    explicit CNewJPEGException(const std::string& message, FileReason why = FileReason::kDamaged)
        : std::runtime_error(message), reason(why) {}
    FileReason reason;
};

/// Give `&errors.manager` to libjpeg as its error manager, after InstallJpegErrors.
struct JpegErrors {
    jpeg_error_mgr manager;  // first, so that the hooks find the rest
    std::jmp_buf jump;
    char message[JMSG_LENGTH_MAX];
};

/// Fills the manager: errors jump, warnings and traces are silent.
void InstallJpegErrors(JpegErrors& errors);

/// Ends the running RunJpeg with this message; for hooks of ours that libjpeg calls.
[[noreturn]] void FailJpeg(j_common_ptr jpeg, const char* message);

void RunJpegFunction(JpegErrors& errors, void (*work)(void*), void* context);

/// Runs calls of libjpeg; throws CNewJPEGException when one of them fails. An error jumps out of
/// `work`, so it may hold no object with a destructor.
template <typename Work>
void RunJpeg(JpegErrors& errors, Work work) {
    RunJpegFunction(
        errors, [](void* context) { (*static_cast<Work*>(context))(); }, &work);
}

}  // namespace velloran
