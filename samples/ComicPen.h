#pragma once

// What an artist does: outlines, solid black, white, and tones in the manner of the page.

#include "samples/Sheet.h"

namespace velloran::samples {

/// Line art alone, with tones as black dots, or with dots of coloured inks.
enum class ComicStyle { kLine, kScreen, kColor };

/// Shares of ink. A page in black takes `black`, one in colour the other three.
struct Tint {
    double black = 0, cyan = 0, magenta = 0, yellow = 0;
};

class ComicPen {
 public:
    ComicPen(Sheet& sheet, ComicStyle style);
    /// Gives the screens to the truth.
    void FinishNotes();

    Sheet& Paper() { return sheet_; }
    double LineWidth() const { return lineWidth_; }

    void Solid(const Contour& area) { sheet_.Ink({{area}}); }
    void White(const Contour& area) { sheet_.Erase({{area}}); }
    void Stroke(const Contour& line, double width = 1, bool closed = false);
    /// `strength` scales the tint from place to place.
    void Tone(const Contour& area, const Tint& tint, const ToneAt& strength = {});
    /// White, then toned, then outlined: hides what lies behind it.
    void Object(const Contour& area, const Tint& tint = {}, double width = 1);

 private:
    void PrintInk(const Contour& area, double share, const ToneAt& strength, int ink);

    Sheet& sheet_;
    ComicStyle style_;
    double lineWidth_;
    std::vector<Screen> screens_;
    std::vector<ScreenTruth> notes_;
};

}  // namespace velloran::samples
