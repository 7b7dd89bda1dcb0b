#pragma once

// Colour profiles: their names, and printing inks turned to screen colours by them.

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace velloran {

/// The description that a profile gives of itself, UTF-8; nothing (empty) for none that is read.
std::string ProfileDescription(std::span<const std::uint8_t> profile);

/// Rows of cyan, magenta, yellow, black to blue, green, red. With a profile of inks by that
/// profile, perceptually, to sRGB; without one, or with one that is none of inks, as
/// ConvertCmykRow does. Rows may be converted by several threads at once.
class InkConverter {
 public:
    /// `invert`: 255 is no ink. The profile's bytes are not kept.
    InkConverter(std::span<const std::uint8_t> profile, bool invert);
    ~InkConverter();
    InkConverter(const InkConverter&) = delete;
    InkConverter& operator=(const InkConverter&) = delete;

    void ConvertRow(const std::uint8_t* cmyk, std::uint8_t* bgr, int width) const;

 private:
    void* transform_ = nullptr;  // of Little CMS
    bool invert_;
};

}  // namespace velloran
