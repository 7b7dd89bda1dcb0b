// Colour reduction and its parts end soon after they are cancelled.

#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "reduce/CleanPage.h"
#include "reduce/DecreaseBpp.h"
#include "reduce/PaletteMakers.h"
#include "support/CancelSweep.h"
#include "support/Images.h"

namespace velloran {
namespace {

struct CancelCase {
    const char* name;
    void (*work)(CDibImage&);
    int bpp = 24;
};
void PrintTo(const CancelCase& c, std::ostream* out) {
    *out << c.name;
}

template <int kMaker, int kDither>
void ReduceTo16(CDibImage& image) {
    DecreaseBppRequest request;
    request.color = 11;
    request.quantize = kMaker;
    request.dither = kDither;
    DecreaseBpp(image, /*previewing=*/false, request);
}

template <int kMethod, int kDither>
void ReduceTo2(CDibImage& image) {
    DecreaseBppRequest request;
    request.color = 7;
    request.thresholdMethod = kMethod;
    request.windowSize = 30;
    request.dither = kDither;
    request.bwDitherMethod = kMethod;
    DecreaseBpp(image, /*previewing=*/false, request);
}

void Clean(CDibImage& image) {
    CleanRequest request;
    request.despeckleSize = 2;
    CleanComponents(image, nullptr, request);
}

constexpr CancelCase kCases[] = {
    {"Octree", ReduceTo16<0, 0>},
    {"MedianCut", ReduceTo16<1, 0>},
    {"Wu", ReduceTo16<2, 0>},
    {"Fixed", ReduceTo16<3, 0>},
    {"Neural", ReduceTo16<4, 0>},
    {"FloydSteinberg", ReduceTo16<3, 1>},
    {"Wolf", ReduceTo2<2, 0>, 8},
    {"Blocks", ReduceTo2<3, 0>, 8},
    {"JarvisJudiceNinke", ReduceTo2<0, 1>, 8},
    {"GrayFloydSteinberg", ReduceTo2<1, 1>, 8},
    {"CleanComponents", Clean, 8},
    {"SmoothEdges", [](CDibImage& image) { SmoothEdges(image); }, 8},
};

class ReduceCancel : public testing::TestWithParam<CancelCase> {};

TEST_P(ReduceCancel, EndsFromAnyQuestionOn) {
    test::ExpectCancelled(test::Noise(301, 403, GetParam().bpp), GetParam().work);
}

INSTANTIATE_TEST_SUITE_P(Steps, ReduceCancel, testing::ValuesIn(kCases),
                         [](const auto& c) { return std::string(c.param.name); });

class ReduceCancelSlow : public testing::TestWithParam<CancelCase> {};

TEST_P(ReduceCancelSlow, TakesAFractionOfTheTime) {
    test::ExpectQuickCancel(test::Noise(1201, 1803, GetParam().bpp), GetParam().work);
}

INSTANTIATE_TEST_SUITE_P(Steps, ReduceCancelSlow, testing::ValuesIn(kCases),
                         [](const auto& c) { return std::string(c.param.name); });

// Between two questions of each lie only so many pixels, also where all of them are one.
TEST(ReduceCancel, MedianCutAndTheNetworkAskWithinABox) {
    const CDibImage page = test::Noise(1100, 1000, 24);
    for (const int maker : {kMedianCut, kNeuralNetwork}) {
        const test::CountedCancel never;
        const StepContext context(never.Token());
        EXPECT_EQ(MakePalette(page, maker, 2, 8).size(), 2u);
        EXPECT_GE(never.Asked(), 1100 * 1000 >> 18);
    }
}

}  // namespace
}  // namespace velloran
