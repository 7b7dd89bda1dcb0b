#include "samples/PagePlaces.h"

namespace velloran::samples {

namespace {

Path PageRectangle(double width, double height) {
    return {{RectangleContour({0, 0, width, height})}};
}

// A flat page of this size whose corner lies at (left, top) before the picture is turned.
void AddTurned(PagePlaces& places, const Frame& frame, const Box& box, double angle) {
    const Point center = {frame.width / 2.0, frame.height / 2.0};
    const auto warp = [&](bool mirrored, double degrees) {
        Warp steps;
        if (mirrored)
            steps.Mirror(box.Width());
        return steps.Move(box.left, box.top).Turn(degrees, center);
    };
    const int page = static_cast<int>(places.pages.size());
    places.pages.push_back(
        {page, box.Width(), box.Height(), frame.dpi + 0.0, warp(false, angle), warp(false, 0)});
    places.reversed.push_back(
        {page, box.Width(), box.Height(), frame.dpi + 0.0, warp(true, angle), std::nullopt});
    places.angleDegrees = angle;
}

void AddWarped(PagePlaces& places, const Frame& frame, double width, double height,
               const Warp& warp) {
    const int page = static_cast<int>(places.pages.size());
    places.pages.push_back({page, width, height, frame.dpi + 0.0, warp, std::nullopt});
    places.paper.Add(warp(PageRectangle(width, height)));
}

// The line through two points, from the upper to the lower edge of the picture.
GutterTruth GutterThrough(Point a, Point b, const Frame& frame) {
    const auto at = [&](double y) { return Point{a.x + (b.x - a.x) * (y - a.y) / (b.y - a.y), y}; };
    return {at(0), at(frame.height)};
}

PagePlaces PlaceBesideGutter(const PageRecipe& recipe, const Frame& frame, double angle,
                             Random& random) {
    const bool twoPages = recipe.lie == Lie::kSpread;
    PagePlaces places;
    const double w = frame.width, h = frame.height;
    const double middle = twoPages ? w * random.Between(recipe.gutterFrom, recipe.gutterTo)
                                   : w * random.Between(0.05, 0.07);
    if (twoPages)
        AddTurned(places, frame, {0, 0, middle, h}, angle);
    AddTurned(places, frame, {middle, 0, w, h}, angle);
    const SheetPlace& right = places.pages.back();
    places.gutter = GutterThrough(right.warp({0, 0}), right.warp({0, right.height}), frame);
    return places;
}

PagePlaces PlaceOpenBook(const Frame& frame, Random& random, bool twoPages) {
    PagePlaces places;
    const double w = frame.width, h = frame.height;
    const double spine = twoPages ? w * random.Between(0.485, 0.515) : w * 0.07;
    const double width = twoPages ? w * 0.455 : w * 0.87, height = h * 0.84;
    const double top = h * random.Between(0.075, 0.09);
    PageCurl curl{width, height, 0, 0, random.Between(0.15, 0.22), true};
    curl.topRise = h * random.Between(0.028, 0.042);
    curl.bottomRise = curl.topRise * random.Between(0.35, 0.7);
    Warp right, left;
    right.Curl(curl).Move(spine, top);
    curl.spineAtLeft = false;
    left.Curl(curl).Move(spine - width, top);
    if (twoPages)
        AddWarped(places, frame, width, height, left);
    else
        places.paper.Add(left(PageRectangle(width, height)));
    AddWarped(places, frame, width, height, right);
    places.gutter = GutterThrough({spine, top}, {spine, top + height}, frame);
    return places;
}

PagePlaces PlacePhoto(const PageRecipe& recipe, const Frame& frame, Random& random) {
    PagePlaces places;
    const double w = frame.width, h = frame.height;
    const auto corner = [&](double x, double y) {
        const double shake = recipe.photoShake;
        return Point{w * (x + random.Between(-shake, shake)),
                     h * (y + random.Between(-shake, shake))};
    };
    // Seen from the reader's side: the far edge is the shorter one.
    const double far = random.Between(recipe.photoFarFrom, recipe.photoFarTo);
    const std::array<Point, 4> corners = {corner(0.08 + far, 0.09), corner(0.92 - far, 0.08),
                                          corner(0.94, 0.93), corner(0.06, 0.92)};
    Warp warp;
    warp.Project(w, h, corners);
    AddWarped(places, frame, w, h, warp);
    return places;
}

}  // namespace

PagePlaces PlacePages(const PageRecipe& recipe, const Frame& frame, double angleDegrees,
                      Random& random) {
    PagePlaces places;
    const double w = frame.width, h = frame.height;
    switch (recipe.lie) {
        case Lie::kFull:
            AddTurned(places, frame, {0, 0, w, h}, angleDegrees);
            return places;
        case Lie::kOnBlack:
            AddTurned(places, frame,
                      Box{0, 0, w, h}.Inset(w * random.Between(0.07, 0.09),
                                            h * random.Between(0.05, 0.07)),
                      angleDegrees);
            places.paper =
                places.pages[0].warp(PageRectangle(places.pages[0].width, places.pages[0].height));
            return places;
        case Lie::kRightPage:
        case Lie::kSpread:
            return PlaceBesideGutter(recipe, frame, angleDegrees, random);
        case Lie::kOpenSpread:
        case Lie::kOpenPage:
            return PlaceOpenBook(frame, random, recipe.lie == Lie::kOpenSpread);
        case Lie::kPhoto:
            return PlacePhoto(recipe, frame, random);
    }
    return places;
}

}  // namespace velloran::samples
