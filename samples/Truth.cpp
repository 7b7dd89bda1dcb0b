#include "samples/Truth.h"

#include <cmath>
#include <nlohmann/json.hpp>

namespace velloran::samples {

namespace {

using Json = nlohmann::ordered_json;

double Rounded(double value) {
    return std::round(value * 1000) / 1000 + 0.0;  // no negative zero
}

Json ToJson(Point point) {
    return Json::array({Rounded(point.x), Rounded(point.y)});
}
Json ToJson(const Box& box) {
    return {{"left", Rounded(box.left)},
            {"top", Rounded(box.top)},
            {"right", Rounded(box.right)},
            {"bottom", Rounded(box.bottom)}};
}
Json ToJson(const Rgb& color) {
    return Json::array({color.red, color.green, color.blue});
}

// Declared before the template that calls them.
Json ToJson(const std::vector<Point>& points);
Json ToJson(const std::array<Point, 2>& points);
Json ToJson(const BalloonTruth& balloon);
Json ToJson(const TextLine& line);
Json ToJson(const PageTruth& page);
Json ToJson(const SpeckTruth& speck);
Json ToJson(const ScreenArea& area);
Json ToJson(const ScreenTruth& screen);

template <typename List>
Json ListToJson(const List& list) {
    Json json = Json::array();
    for (const auto& entry : list)
        json.push_back(ToJson(entry));
    return json;
}

Json ToJson(const std::vector<Point>& points) {
    return ListToJson(points);
}
Json ToJson(const std::array<Point, 2>& points) {
    return ListToJson(points);
}
Json ToJson(const BalloonTruth& balloon) {
    return ToJson(balloon.box);
}

Json ToJson(const TextLine& line) {
    return {{"text", line.text},         {"page", line.page},
            {"vertical", line.vertical}, {"fontSize", Rounded(line.fontSize)},
            {"box", ToJson(line.box)},   {"baseline", ListToJson(line.baseline)}};
}

Json ToJson(const PageTruth& page) {
    return {{"corners", ListToJson(page.corners)},
            {"topCurve", ListToJson(page.topCurve)},
            {"bottomCurve", ListToJson(page.bottomCurve)},
            {"contentBox", ToJson(page.contentBox)},
            {"uprightContentBox",
             page.uprightContentBox ? ToJson(*page.uprightContentBox) : Json(nullptr)}};
}

Json ToJson(const SpeckTruth& speck) {
    return {{"x", Rounded(speck.center.x)},
            {"y", Rounded(speck.center.y)},
            {"radius", Rounded(speck.radius)}};
}

Json ToJson(const ScreenArea& area) {
    return {{"box", ToJson(area.box)}, {"tone", Rounded(area.tone)}};
}

Json ToJson(const ScreenTruth& screen) {
    return {{"linesPerInch", Rounded(screen.linesPerInch)},
            {"pitch", Rounded(screen.pitch)},
            {"angleDegrees", Rounded(screen.angleDegrees)},
            {"areas", ListToJson(screen.areas)}};
}

Json ToJson(const SealTruth& seal) {
    return {{"x", Rounded(seal.center.x)},
            {"y", Rounded(seal.center.y)},
            {"radius", Rounded(seal.radius)},
            {"coreRadius", Rounded(seal.coreRadius)},
            {"color", ToJson(seal.color)}};
}

Json ToJson(const TableTruth& table) {
    return {{"page", table.page},
            {"rows", table.rows},
            {"columns", table.columns},
            {"ruleWidth", Rounded(table.ruleWidth)},
            {"horizontal", ListToJson(table.horizontal)},
            {"vertical", ListToJson(table.vertical)}};
}

Json ToJson(const GutterTruth& gutter) {
    return {{"top", ToJson(gutter.top)}, {"bottom", ToJson(gutter.bottom)}};
}

template <typename Value>
Json OptionalToJson(const std::optional<Value>& value) {
    return value ? ToJson(*value) : Json(nullptr);
}

}  // namespace

std::string ToJson(const Truth& truth, const std::string& imageName) {
    const Json json = {{"image", imageName},
                       {"kind", truth.kind},
                       {"seed", truth.seed},
                       {"width", truth.width},
                       {"height", truth.height},
                       {"dpi", truth.dpi},
                       {"bitsPerPixel", truth.bitsPerPixel},
                       {"angleDegrees", truth.angleDegrees},
                       {"inverted", truth.inverted},
                       {"paper", ToJson(truth.paper)},
                       {"ink", ToJson(truth.ink)},
                       {"background", OptionalToJson(truth.background)},
                       {"light", truth.light},
                       {"noise", Rounded(truth.noise)},
                       {"bleedThrough", Rounded(truth.bleedThrough)},
                       {"contentBox", OptionalToJson(truth.contentBox)},
                       {"pages", ListToJson(truth.pages)},
                       {"gutter", OptionalToJson(truth.gutter)},
                       {"blackEdges", ListToJson(truth.blackEdges)},
                       {"blackEdgeColor", ToJson(truth.blackEdgeColor)},
                       {"specks", ListToJson(truth.specks)},
                       {"seal", OptionalToJson(truth.seal)},
                       {"table", OptionalToJson(truth.table)},
                       {"screens", ListToJson(truth.screens)},
                       {"panels", ListToJson(truth.panels)},
                       {"balloons", ListToJson(truth.balloons)},
                       {"lines", ListToJson(truth.lines)}};
    return json.dump(2) + "\n";
}

}  // namespace velloran::samples
