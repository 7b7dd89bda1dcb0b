#pragma once

// One page to draw on: shapes and text are given in the flat page's pixels, and land warped on the
// inks of the scan. What is drawn is noted in the truth on the way.

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "samples/FontBook.h"
#include "samples/Plane.h"
#include "samples/Random.h"
#include "samples/Truth.h"
#include "samples/Warp.h"

namespace velloran::samples {

/// One plane an ink. Those that a page does not use stay empty.
struct Inks {
    Plane black, cyan, magenta, yellow, seal;
};

/// The place of a sheet in the scan.
struct SheetPlace {
    int page = 0;                  // index in the truth
    double width = 0, height = 0;  // of the flat page
    double dpi = 300;
    Warp warp;
    std::optional<Warp> upright;  // the same without the turn of the scan
};

/// A field of dots that print a tone: dots of equal pitch on a turned square lattice.
struct Screen {
    double pitch = 5, angleDegrees = 45;
};
using ToneAt = std::function<double(Point)>;

class Sheet {
 public:
    Sheet(const SheetPlace& place, Inks& inks, FontBook& fonts, Truth& truth);

    double Width() const { return place_.width; }
    double Height() const { return place_.height; }
    double Millimeters(double length) const { return length * place_.dpi / 25.4; }
    double FontPoints(double size) const { return size * place_.dpi / 72; }
    Truth& GetTruth() { return truth_; }
    FontBook& Fonts() { return fonts_; }
    Inks& GetInks() { return inks_; }
    int Page() const { return place_.page; }
    double Dpi() const { return place_.dpi; }
    Point InScan(Point page) const { return place_.warp(page); }
    /// The box around a page shape, in the scan.
    Box InScan(const Path& page) const { return place_.warp(page).GetBounds().Get(); }

    /// From here on only what lies inside this convex contour is drawn; empty: everything.
    void ClipTo(Contour convex) { clip_ = std::move(convex); }

    void Ink(const Path& path) { Ink(path, inks_.black); }
    void Ink(const Path& path, Plane& plane);
    void Line(const Contour& line, double width) { Ink(StrokePath(line, width)); }
    /// Takes all inks away: white art over what lies below.
    void Erase(const Path& path);
    /// Prints the area with dots of `plane`'s ink; `tone` is the share of ink at a page point, up
    /// to 0.75. `notes` takes the area, when given.
    void PrintTone(const Path& area, const Screen& screen, const ToneAt& tone, Plane& plane,
                   ScreenTruth* notes);

    /// Draws characters at their origins (left end of the baseline of each) and notes the line.
    /// `baseline` are the ends of the line's baseline or, when vertical, of its middle.
    void WriteLine(std::u16string_view text, Font font, double size,
                   const std::vector<Point>& origins, const std::array<Point, 2>& baseline,
                   bool vertical = false);
    /// The same for a horizontal line of the font's own advances; returns its width.
    double WriteLine(std::u16string_view text, Font font, double size, Point origin);

    /// Box around all ink, in the scan.
    const Bounds& Content() const { return content_; }
    /// And as it would stand without the turn; empty where the place knows no upright form.
    const Bounds& UprightContent() const { return uprightContent_; }

 private:
    SheetPlace place_;
    Inks& inks_;
    FontBook& fonts_;
    Truth& truth_;
    Contour clip_;
    Coverage coverage_, mask_;
    Bounds content_, uprightContent_;
};

}  // namespace velloran::samples
