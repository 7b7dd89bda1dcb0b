#pragma once

// libpng reports errors by a long jump; here it ends. Nothing that has a destructor may live in
// the frames that it passes.

#include <png.h>

#include <csetjmp>
#include <cstdio>

namespace velloran {

/// What libpng said last.
struct PngMessage {
    char text[160] = "";
};

[[noreturn]] inline void OnPngError(png_structp png, png_const_charp text) {
    auto* message = static_cast<PngMessage*>(png_get_error_ptr(png));
    std::snprintf(message->text, sizeof message->text, "%s", text);
    png_longjmp(png, 1);
}

inline void OnPngWarning(png_structp, png_const_charp) {}

/// Runs calls into libpng; false when one of them failed. `work` and what it calls hold nothing
/// with a destructor, and what it changes lies outside of its frame.
template <typename Work>
[[gnu::noinline]] bool RunGuarded(png_structp png, const Work& work) {
    if (setjmp(png_jmpbuf(png)) != 0)
        return false;
    work();
    return true;
}

}  // namespace velloran
