#include "samples/ComicPen.h"

#include <algorithm>

namespace velloran::samples {

namespace {

constexpr double kLinesPerInch = 60;
constexpr double kFinestPitch = 4;  // pixels; finer dots could not be told apart
constexpr double kBlackAngle = 45;
constexpr double kColorAngles[] = {15, 75, 0};  // cyan, magenta, yellow

}  // namespace

ComicPen::ComicPen(Sheet& sheet, ComicStyle style)
    : sheet_(sheet), style_(style), lineWidth_(std::max(1.0, sheet.Millimeters(0.3))) {
    const double pitch = std::max(kFinestPitch, sheet.Dpi() / kLinesPerInch);
    if (style == ComicStyle::kScreen)
        screens_ = {{pitch, kBlackAngle}};
    if (style == ComicStyle::kColor)
        for (const double angle : kColorAngles)
            screens_.push_back({pitch, angle});
    for (const Screen& screen : screens_)
        notes_.push_back({sheet.Dpi() / screen.pitch, screen.pitch, screen.angleDegrees, {}});
}

void ComicPen::FinishNotes() {
    sheet_.GetTruth().screens = std::move(notes_);
}

void ComicPen::Stroke(const Contour& line, double width, bool closed) {
    sheet_.Ink(StrokePath(line, lineWidth_ * width, closed));
}

void ComicPen::PrintInk(const Contour& area, double share, const ToneAt& strength, int ink) {
    if (share <= 0)
        return;
    Inks& inks = sheet_.GetInks();
    Plane* const planes[] = {&inks.cyan, &inks.magenta, &inks.yellow};
    Plane& plane = style_ == ComicStyle::kScreen ? inks.black : *planes[ink];
    const ToneAt tone = [&](Point at) { return strength ? share * strength(at) : share; };
    sheet_.PrintTone({{area}}, screens_[ink], tone, plane, &notes_[ink]);
}

void ComicPen::Tone(const Contour& area, const Tint& tint, const ToneAt& strength) {
    if (style_ == ComicStyle::kScreen)
        PrintInk(area, tint.black, strength, 0);
    if (style_ == ComicStyle::kColor) {
        PrintInk(area, tint.cyan, strength, 0);
        PrintInk(area, tint.magenta, strength, 1);
        PrintInk(area, tint.yellow, strength, 2);
    }
}

void ComicPen::Object(const Contour& area, const Tint& tint, double width) {
    White(area);
    Tone(area, tint);
    if (width > 0)
        Stroke(area, width, /*closed=*/true);
}

}  // namespace velloran::samples
