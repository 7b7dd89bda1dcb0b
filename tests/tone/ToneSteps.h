#pragma once

// All tone steps of a run besides pixel mapping and automatic levels, with every value of their
// lists, for the tests that ask the same of each of them.

#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "core/DibImage.h"
#include "support/Images.h"
#include "tone/Channels.h"
#include "tone/Levels.h"
#include "tone/Light.h"
#include "tone/LumCorrect.h"
#include "tone/ReplaceColor.h"
#include "tone/Unshadow.h"
#include "tone/Vibrance.h"
#include "tone/WhiteBalance.h"

namespace velloran::test {

/// What a step does to the depth of a picture.
enum class Depth {
    kKept,
    kNormalised,     // 8-bit grey where all its colors are grey, else 24 bits
    kGray,           // 8-bit grey
    kColorKept,      // 24 bits, save for the 8-bit grey ramp
    kGrayUnlessRgb,  // 8-bit grey, save for 24 bits
};

struct ToneStep {
    std::string name;
    std::function<int(CDibImage&)> run;
    Depth depth;
    bool isPointwise = false;  // a pixel becomes the same whatever lies around it
    int smallestSide = 1;
};

inline std::vector<ToneStep> ColorSteps() {
    std::vector<ToneStep> steps;
    for (int type = 1; type <= 8; ++type)
        steps.push_back(
            {"replace color " + std::to_string(type),
             [=](CDibImage& image) { return ReplaceColor(type, image, 0x6478C8, 0x0A96F0, 30); },
             Depth::kKept, true});
    for (int which = 1; which <= 3; ++which)
        steps.push_back({"swap " + std::to_string(which),
                         [=](CDibImage& image) { return SwapChannels(image, which); }, Depth::kKept,
                         true});
    steps.push_back({"negate", Negate, Depth::kKept, true});
    for (int mode = 1; mode <= 13; ++mode)
        steps.push_back({"combine " + std::to_string(mode),
                         [=](CDibImage& image) { return CombineChannels(image, mode); },
                         Depth::kGray, mode != 10});
    for (int mode = 1; mode <= 2; ++mode)
        steps.push_back({"white balance " + std::to_string(mode),
                         [=](CDibImage& image) { return WhiteBalance(image, mode); },
                         Depth::kNormalised, false, 2});
    return steps;
}

inline std::vector<ToneStep> LightSteps() {
    std::vector<ToneStep> steps;
    constexpr Depth kLumDepths[] = {Depth::kGrayUnlessRgb, Depth::kNormalised, Depth::kNormalised,
                                    Depth::kNormalised,    Depth::kGray,       Depth::kColorKept};
    constexpr int kLumSides[] = {2, 1, 1, 1, 8, 8};
    for (int method = 1; method <= 6; ++method)
        steps.push_back({"illumination " + std::to_string(method),
                         [=](CDibImage& image) { return LumCorrect(image, method); },
                         kLumDepths[method - 1], false, kLumSides[method - 1]});
    for (const int strength : {-50, -1, 1, 50})
        steps.push_back({"unshadow " + std::to_string(strength),
                         [=](CDibImage& image) { return Unshadow(image, strength); },
                         strength < 0 ? Depth::kColorKept : Depth::kGray, false, 8});
    steps.push_back({"levels",
                     [](CDibImage& image) { return ApplyLevels(image, 0x10203040, 0xF0D0E0C8); },
                     Depth::kKept, true, 2});
    for (const int amount : {-100, 1, 200})
        steps.push_back({"vibrance " + std::to_string(amount),
                         [=](CDibImage& image) { return Vibrance(image, amount); }, Depth::kKept,
                         true});
    for (const auto& [low, high] : {std::pair{60, 0}, {0, -60}, {0, 60}, {-100, 100}})
        steps.push_back({"light " + std::to_string(low) + ", " + std::to_string(high),
                         [=](CDibImage& image) { return AdjustLight(image, low, high); },
                         Depth::kNormalised, low == 0});
    steps.push_back({"equalize", HistEqualize, Depth::kNormalised});
    return steps;
}

inline std::vector<ToneStep> AllToneSteps() {
    std::vector<ToneStep> steps = ColorSteps();
    for (ToneStep& step : LightSteps())
        steps.push_back(std::move(step));
    return steps;
}

/// A step for each of its values, with extremes for all of them.
inline std::vector<ToneStep> ExtremeToneSteps() {
    std::vector<ToneStep> steps;
    const auto add = [&](const char* name, int a, std::function<int(CDibImage&)> run) {
        steps.push_back({name + (" " + std::to_string(a)), std::move(run), Depth::kKept});
    };
    for (const int v : {std::numeric_limits<int>::min(), std::numeric_limits<int>::min() + 1, -1,
                        256, std::numeric_limits<int>::max()}) {
        const auto color = static_cast<std::uint32_t>(v);
        for (int type = 1; type <= 8; ++type)
            add("replace", v, [=](auto& i) { return ReplaceColor(type, i, color, ~color, v); });
        add("replace type", v, [=](auto& i) { return ReplaceColor(v, i, color, color, 9); });
        add("swap", v, [=](auto& i) { return SwapChannels(i, v); });
        add("combine", v, [=](auto& i) { return CombineChannels(i, v); });
        add("white balance", v, [=](auto& i) { return WhiteBalance(i, v); });
        add("illumination", v, [=](auto& i) { return LumCorrect(i, v); });
        add("unshadow", v, [=](auto& i) { return Unshadow(i, v); });
        add("levels", v, [=](auto& i) { return ApplyLevels(i, color, 0x01020304); });
        add("levels light", v, [=](auto& i) { return ApplyLevels(i, 0x01020304, color); });
        add("vibrance", v, [=](auto& i) { return Vibrance(i, v); });
        add("light low", v, [=](auto& i) { return AdjustLight(i, v, 0); });
        add("light high", v, [=](auto& i) { return AdjustLight(i, 0, v); });
        add("light both", v, [=](auto& i) { return AdjustLight(i, v, v); });
    }
    return steps;
}

/// Tones that change slowly, other ones in each channel.
inline CDibImage SmoothPicture(int width, int height, int bpp) {
    CDibImage image = Filled(width, height, bpp, 0);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int red = 20 + 220 * x / width, green = 250 - 200 * y / height;
            const int blue = (red + 2 * green) / 3;
            if (bpp == 24)
                SetPixel(image, x, y, {red, green, blue});
            else
                SetIndex(image, x, y, blue & ((1 << bpp) - 1));
        }
    return image;
}

/// The part from (left, top) of an 8-bit or 24-bit picture.
inline CDibImage CutOut(const CDibImage& image, int left, int top, int width, int height) {
    CDibImage part = Filled(width, height, image.GetBpp(), 0);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            if (image.GetBpp() == 24)
                SetPixel(part, x, y, PixelAt(image, left + x, top + y));
            else
                SetIndex(part, x, y, IndexAt(image, left + x, top + y));
        }
    return part;
}

}  // namespace velloran::test
