#pragma once

// What is known of a sample page: everything that was drawn, in pixel coordinates of the finished
// scan. x runs to the right and y down from the top left corner of the picture; coordinates are
// continuous, pixel (i, j) covers [i, i + 1) x [j, j + 1). docs/samples.md tells each field.

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "samples/Shapes.h"

namespace velloran::samples {

struct Rgb {
    int red = 0, green = 0, blue = 0;
    bool operator==(const Rgb&) const = default;
};

struct TextLine {
    std::string text;  // UTF-8
    bool vertical = false;
    int page = 0;
    double fontSize = 0;  // pixels
    Box box;              // around the line's ink
    /// From the first character to the last: the baseline, or the middle of a vertical line. Two
    /// points where it is straight, more where the page is curled.
    std::vector<Point> baseline;
};

struct PageTruth {
    /// Top left, top right, bottom right, bottom left of the paper; may lie outside the picture.
    std::array<Point, 4> corners;
    /// From left to right along the paper's upper and lower edge.
    std::vector<Point> topCurve, bottomCurve;
    Box contentBox;
    /// The content box as it would stand if the picture were turned back about its centre by
    /// `angleDegrees`; only where turning alone makes the page upright.
    std::optional<Box> uprightContentBox;
};

struct GutterTruth {
    Point top, bottom;  // on the upper and lower edge of the picture
};
struct SpeckTruth {
    Point center;
    double radius = 0;
};
struct SealTruth {
    Point center;
    double radius = 0, coreRadius = 0;  // the whole seal; the solid disc in its middle
    Rgb color;
};
struct ScreenArea {
    Box box;
    double tone = 0;  // share of ink, or the mean of a gradient
};
struct ScreenTruth {
    double linesPerInch = 0, pitch = 0, angleDegrees = 0;
    std::vector<ScreenArea> areas;
};
struct TableTruth {
    int page = 0, rows = 0, columns = 0;
    std::vector<std::array<Point, 2>> horizontal, vertical;  // middle of each rule
    double ruleWidth = 0;
};
struct BalloonTruth {
    Box box;
};

struct Truth {
    std::string kind;
    std::uint64_t seed = 0;
    int width = 0, height = 0, dpi = 0, bitsPerPixel = 24;
    double angleDegrees = 0;  // of the content, positive clockwise as seen
    bool inverted = false;
    Rgb paper, ink;
    std::optional<Rgb> background;  // around the paper, where it shows
    std::string light = "even";
    double noise = 0;               // standard deviation in levels
    double bleedThrough = 0;        // how dark the reverse side shows, as a share of ink
    std::optional<Box> contentBox;  // of all pages together; none for a blank page
    std::vector<PageTruth> pages;
    std::vector<TextLine> lines;
    std::optional<GutterTruth> gutter;
    std::vector<Box> blackEdges;
    Rgb blackEdgeColor;
    std::vector<SpeckTruth> specks;
    std::optional<SealTruth> seal;
    std::optional<TableTruth> table;
    std::vector<ScreenTruth> screens;
    std::vector<std::vector<Point>> panels;
    std::vector<BalloonTruth> balloons;
};

/// Two spaces a level, coordinates rounded to a thousandth of a pixel, one newline at the end.
std::string ToJson(const Truth& truth, const std::string& imageName);

}  // namespace velloran::samples
