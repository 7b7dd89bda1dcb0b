// Steps of tone that take long end soon after they are cancelled.

#include <gtest/gtest.h>

#include <iterator>
#include <ostream>
#include <string>

#include "support/CancelSweep.h"
#include "support/Images.h"
#include "tone/AutoLevels.h"
#include "tone/BlackWhiteText.h"
#include "tone/Channels.h"
#include "tone/FrankleMcCann.h"
#include "tone/IlluminationFit.h"
#include "tone/Light.h"
#include "tone/MultiScaleRetinex.h"
#include "tone/PixelMap.h"
#include "tone/ReplaceColor.h"
#include "tone/Unshadow.h"
#include "tone/Vibrance.h"
#include "tone/WhiteBalance.h"

namespace velloran {
namespace {

struct CancelCase {
    const char* name;
    void (*work)(CDibImage&);
};
void PrintTo(const CancelCase& c, std::ostream* out) {
    *out << c.name;
}

PixelMap Inverse() {
    PixelMap map{};
    for (std::size_t i = 0; i < map.size(); ++i)
        map[i] = static_cast<std::uint8_t>(255 - i);
    return map;
}

constexpr CancelCase kCases[] = {
    {"Light", [](CDibImage& image) { AdjustLight(image, 40, 30); }},
    {"AutoLevels", [](CDibImage& image) { AutoLevels(image, 3); }},
    {"BlackWhiteText", [](CDibImage& image) { BlackWhiteText(image, /*keepColor=*/true); }},
    {"CombineMean", [](CDibImage& image) { CombineChannels(image, 4); }},
    {"ContrastGray", [](CDibImage& image) { ContrastGray(image); }},
    {"FrankleMcCann", [](CDibImage& image) { FrankleMcCannRetinex(image, 4); }},
    {"IlluminationFit", [](CDibImage& image) { IlluminationFit(image); }},
    {"MultiScaleRetinex",
     [](CDibImage& image) { MultiScaleRetinex(image, /*brighten=*/true, 240, 3, 1.2F); }},
    {"PixelMap", [](CDibImage& image) { ApplyPixelMap(Inverse(), image); }},
    {"ReplaceColor", [](CDibImage& image) { ReplaceColor(1, image, 0x102030, 0x405060, 60); }},
    {"Sepia", [](CDibImage& image) { Sepia(image, 1.0, /*toGray=*/false); }},
    {"Unshadow", [](CDibImage& image) { Unshadow(image, -20); }},
    {"Vibrance", [](CDibImage& image) { Vibrance(image, 60); }},
    {"WhiteBalance", [](CDibImage& image) { WhiteBalance(image, 2); }},
};

class ToneCancel : public testing::TestWithParam<CancelCase> {};

TEST_P(ToneCancel, EndsFromAnyQuestionOn) {
    test::ExpectCancelled(test::Noise(301, 403, 24), GetParam().work);
}

INSTANTIATE_TEST_SUITE_P(Steps, ToneCancel, testing::ValuesIn(kCases),
                         [](const auto& c) { return std::string(c.param.name); });

// But for Light, which takes its time in a filter.
class ToneCancelSlow : public testing::TestWithParam<CancelCase> {};

TEST_P(ToneCancelSlow, TakesAFractionOfTheTime) {
    test::ExpectQuickCancel(test::Noise(1201, 1803, 24), GetParam().work);
}

INSTANTIATE_TEST_SUITE_P(Steps, ToneCancelSlow,
                         testing::ValuesIn(std::begin(kCases) + 1, std::end(kCases)),
                         [](const auto& c) { return std::string(c.param.name); });

}  // namespace
}  // namespace velloran
