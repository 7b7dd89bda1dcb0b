#pragma once

// Glyph outlines from the fonts of Debian packages.

#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "samples/Shapes.h"

namespace velloran::samples {

enum class Font { kSerif, kSerifBold, kSans, kSong, kHei };
constexpr int kFontCount = 5;

/// Says which font is missing and which package holds it.
class FontMissing : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

struct Glyph {
    /// In shares of the font size, y down, the origin on the baseline at the left.
    Path outline;
    double advance = 0;
};

class FontBook {
 public:
    FontBook();
    ~FontBook();
    FontBook(const FontBook&) = delete;
    FontBook& operator=(const FontBook&) = delete;

    /// The font is opened at first use. Throws FontMissing. A character that the font does not
    /// have gives the font's own sign for that.
    const Glyph& Get(Font font, char16_t character);
    double TextWidth(Font font, std::u16string_view text);

 private:
    struct Faces;
    std::unique_ptr<Faces> faces_;
    std::map<std::pair<Font, char16_t>, Glyph> glyphs_;
};

}  // namespace velloran::samples
