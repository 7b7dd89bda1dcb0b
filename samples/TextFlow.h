#pragma once

// Breaks a paragraph into justified lines.

#include <string>
#include <vector>

#include "samples/FontBook.h"
#include "samples/Texts.h"

namespace velloran::samples {

struct FlowStyle {
    Language language = Language::kLatin;
    Font font = Font::kSerif;
    double size = 44;     // pixels
    double width = 1800;  // of a line
    double indent = 0;    // of the first line
};

/// A line's characters and where each begins, from the line's left end.
struct FlowLine {
    std::u16string text;
    std::vector<double> starts;
    double end = 0;
};

/// Latin lines break at spaces and stretch them; Chinese ones break anywhere but before a closing
/// mark, which is squeezed into the line. The last line is not stretched.
std::vector<FlowLine> FlowParagraph(std::u16string_view text, const FlowStyle& style,
                                    FontBook& fonts);

/// How far a Chinese stop or comma must move, in shares of the font size, to stand where it belongs
/// in its square: at the lower left, or at the upper right where lines run down. Fonts differ in
/// this. (0, 0) for every other character.
Point MarkShift(char16_t character, Font font, bool vertical, FontBook& fonts);

}  // namespace velloran::samples
