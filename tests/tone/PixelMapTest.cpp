#include "tone/PixelMap.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace velloran {
namespace {

constexpr int kLowest = std::numeric_limits<int>::min();
constexpr int kHighest = std::numeric_limits<int>::max();
constexpr int kAnyInt[] = {kLowest, kLowest + 1, -100000,      -300,    -101, -100, -1,
                           0,       1,           10,           33,      99,   101,  128,
                           150,     190,         200,          254,     256,  257,  300,
                           1000,    100000,      kHighest - 1, kHighest};

/// The table of one stage: what it makes of the identity. The stage must report itself active.
PixelMap TableOf(const std::function<int(PixelMap&)>& stage) {
    PixelMap map = IdentityPixelMap();
    EXPECT_NE(stage(map), 0);
    return map;
}

void ExpectNeutral(const std::function<int(PixelMap&)>& stage) {
    PixelMap map{};
    map.fill(7);
    const PixelMap before = map;
    EXPECT_EQ(stage(map), 0);
    EXPECT_EQ(map, before);
}

// The stages once more, sample by sample, from their formulas.

int ReadUnsignedThenLimit(double value) {
    const double truncated = std::trunc(value);
    if (!(truncated >= -2147483648.0 && truncated <= 2147483647.0))
        return 255;
    const auto bits = static_cast<std::uint32_t>(static_cast<std::int32_t>(truncated));
    return bits > 255 ? 255 : static_cast<int>(bits);
}

int PlainHighlight(int sample, int highlight, int threshold) {
    if (sample < threshold)
        return sample;
    return ReadUnsignedThenLimit(sample * (highlight / 100.0) + 0.5);
}

int PlainBrightness(int sample, int brightness) {
    double sum = 0;
    for (int i = 0; i < sample; ++i)
        sum = sum + brightness / 100.0;
    return ReadUnsignedThenLimit(sum + 0.5);
}

int Limit(std::int64_t value) {
    return value < 0 ? 0 : value > 255 ? 255 : static_cast<int>(value);
}

int PlainParabola(int sample, int div, int offset) {
    const std::int64_t quotient = std::int64_t{sample} * sample / (std::int64_t{255} - div);
    return Limit(quotient - offset);
}

int PlainContrast(int sample, int contrast) {
    return Limit(128 + std::int64_t{sample - 128} * contrast / 100);
}

int PlainGamma(int sample, int gamma) {
    const double g = gamma / 100.0;
    const double s = std::pow(255.0, g) / 255.0;
    return ReadUnsignedThenLimit(std::pow(static_cast<double>(sample), g) / s + 0.5);
}

double CasteljauPoint(const std::vector<int>& controls, std::size_t first, std::size_t last,
                      double t) {
    if (first == last)
        return controls[first];
    return (1 - t) * CasteljauPoint(controls, first, last - 1, t) +
           t * CasteljauPoint(controls, first + 1, last, t);
}

int PlainSample(const std::vector<int>& controls, int k) {
    return Limit(static_cast<std::int64_t>(
        std::trunc(CasteljauPoint(controls, 0, controls.size() - 1, k / 256.0) + 0.5)));
}

std::vector<int> PlainCurve(int x1, int y1, int x2, int y2) {
    std::vector<int> known(256, -1);
    for (int k = 0; k < 256; ++k)
        known[static_cast<std::size_t>(PlainSample({0, x1, x2, 255}, k))] =
            PlainSample({0, y1, y2, 255}, k);
    known.front() = 0;
    known.back() = 255;
    std::vector<int> curve = known;
    for (int i = 0; i < 256; ++i) {
        int left = i, right = i;
        while (known[static_cast<std::size_t>(left)] < 0)
            --left;
        while (known[static_cast<std::size_t>(right)] < 0)
            ++right;
        const int from = known[static_cast<std::size_t>(left)];
        const int to = known[static_cast<std::size_t>(right)];
        if (left != right)
            curve[static_cast<std::size_t>(i)] = from + (to - from) * (i - left) / (right - left);
    }
    return curve;
}

TEST(PixelMap, StartsAsTheIdentity) {
    const PixelMap map = IdentityPixelMap();
    for (int i = 0; i < 256; ++i)
        EXPECT_EQ(map[i], i);
}

TEST(PixelMap, NeutralValuesLeaveTheMapAlone) {
    ExpectNeutral([](PixelMap& m) { return MapHighlight(100, 0, m); });
    ExpectNeutral([](PixelMap& m) { return MapBrightness(100, m); });
    ExpectNeutral([](PixelMap& m) { return MapParabola(0, 0, m); });
    ExpectNeutral([](PixelMap& m) { return MapContrast(100, m); });
    ExpectNeutral([](PixelMap& m) { return MapGamma(100, m); });
}

TEST(PixelMap, ALaterStageSeesWhatTheEarlierOneMade) {
    PixelMap map = IdentityPixelMap();
    MapBrightness(200, map);  // 60 to 120, 100 to 200
    MapContrast(200, map);    // 120 to 112, 200 to 272
    EXPECT_EQ(map[60], 112);
    EXPECT_EQ(map[100], 255);
}

TEST(PixelMapHighlight, ChangesOnlySamplesFromTheThresholdOn) {
    const PixelMap map = TableOf([](PixelMap& m) { return MapHighlight(120, 190, m); });
    EXPECT_EQ(map[0], 0);
    EXPECT_EQ(map[189], 189);
    EXPECT_EQ(map[190], 228);
    EXPECT_EQ(map[212], 254);  // 254.4
    EXPECT_EQ(map[213], 255);  // 255.6 is 256, limited
}

TEST(PixelMapHighlight, AThresholdAboveAllSamplesIsActiveAndTheIdentity) {
    for (const int threshold : {256, 1000, kHighest})
        EXPECT_EQ(TableOf([&](PixelMap& m) { return MapHighlight(150, threshold, m); }),
                  IdentityPixelMap());
}

TEST(PixelMapHighlight, AThresholdOfZeroReachesEverySample) {
    const PixelMap map = TableOf([](PixelMap& m) { return MapHighlight(150, 0, m); });
    EXPECT_EQ(map[1], 2);  // 1.5 + 0.5
    EXPECT_EQ(map[2], 3);
    EXPECT_EQ(map[100], 150);
    EXPECT_EQ(map[171], 255);  // 256.5
}

TEST(PixelMapHighlight, ANegativeResultSaturatesAtWhite) {
    const PixelMap map = TableOf([](PixelMap& m) { return MapHighlight(-100, 0, m); });
    EXPECT_EQ(map[0], 0);
    EXPECT_EQ(map[1], 0);  // -0.5 truncates to 0
    EXPECT_EQ(map[2], 255);
    EXPECT_EQ(map[255], 255);
}

TEST(PixelMapHighlight, IsTheFormulaForAnyInt) {
    for (const int highlight : kAnyInt)
        for (const int threshold : kAnyInt) {
            const PixelMap map =
                TableOf([&](PixelMap& m) { return MapHighlight(highlight, threshold, m); });
            for (int i = 0; i < 256; ++i)
                ASSERT_EQ(map[i], PlainHighlight(i, highlight, threshold))
                    << highlight << ", " << threshold << ", sample " << i;
        }
}

TEST(PixelMapBrightness, IsBuiltByRepeatedAddition) {
    const PixelMap map = TableOf([](PixelMap& m) { return MapBrightness(10, m); });
    EXPECT_EQ(map[10], 1);
    // 95 times 0.1 sums up to a little less than 9.5, where the product would round to 10.
    EXPECT_EQ(map[95], 9);
}

TEST(PixelMapBrightness, LimitsAtWhite) {
    const PixelMap map = TableOf([](PixelMap& m) { return MapBrightness(200, m); });
    EXPECT_EQ(map[127], 254);
    EXPECT_EQ(map[128], 255);
    EXPECT_EQ(map[255], 255);
}

TEST(PixelMapBrightness, IsTheFormulaForAnyInt) {
    for (const int brightness : kAnyInt) {
        const PixelMap map = TableOf([&](PixelMap& m) { return MapBrightness(brightness, m); });
        for (int i = 0; i < 256; ++i)
            ASSERT_EQ(map[i], PlainBrightness(i, brightness)) << brightness << ", sample " << i;
    }
}

TEST(PixelMapParabola, AnOffsetWithoutADivisorHasNoEffect) {
    for (const int offset : kAnyInt) {
        ExpectNeutral([&](PixelMap& m) { return MapParabola(0, offset, m); });
        ExpectNeutral([&](PixelMap& m) { return MapParabola(255, offset, m); });
    }
}

TEST(PixelMapParabola, Div254SquaresTheSample) {
    const PixelMap map = TableOf([](PixelMap& m) { return MapParabola(254, 100, m); });
    EXPECT_EQ(map[10], 0);
    EXPECT_EQ(map[11], 21);
    EXPECT_EQ(map[18], 224);
    EXPECT_EQ(map[19], 255);  // 261
}

TEST(PixelMapParabola, SubtractsBehindTheTruncatedDivision) {
    const PixelMap map = TableOf([](PixelMap& m) { return MapParabola(127, 50, m); });
    EXPECT_EQ(map[100], 28);   // 10000 / 128 is 78.1
    EXPECT_EQ(map[80], 0);     // 50 - 50
    EXPECT_EQ(map[198], 255);  // 306 - 50
    EXPECT_EQ(map[197], 253);  // 303 - 50
}

TEST(PixelMapParabola, IsTheFormulaForAnyInt) {
    for (const int div : kAnyInt)
        for (const int offset : kAnyInt) {
            if (div == 0)
                continue;
            const PixelMap map = TableOf([&](PixelMap& m) { return MapParabola(div, offset, m); });
            for (int i = 0; i < 256; ++i)
                ASSERT_EQ(map[i], PlainParabola(i, div, offset))
                    << div << ", " << offset << ", sample " << i;
        }
}

struct ContrastCase {
    const char* name;
    int contrast, sample, expected;
};
void PrintTo(const ContrastCase& c, std::ostream* out) {
    *out << c.name;
}
constexpr ContrastCase kContrastCases[] = {
    {"TruncatesTowardZero", 99, 127, 128},  // -1 * 99 / 100 is 0, not -1
    {"ClampsAtBlack", 200, 63, 0},          // 128 - 130
    {"ClampsAtWhite", 200, 192, 255},       // 128 + 128
    {"ZeroMakesMidGray", 0, 255, 128},     {"NegativeTurnsTonesOver", -100, 0, 255},  // 128 + 128
    {"KeepsMidGray", 300, 128, 128},
};
class PixelMapContrast : public testing::TestWithParam<ContrastCase> {};

TEST_P(PixelMapContrast, GivesTheSample) {
    const ContrastCase& c = GetParam();
    EXPECT_EQ(TableOf([&](PixelMap& m) { return MapContrast(c.contrast, m); })[c.sample],
              c.expected);
}

INSTANTIATE_TEST_SUITE_P(Cases, PixelMapContrast, testing::ValuesIn(kContrastCases),
                         [](const auto& c) { return std::string(c.param.name); });

TEST(PixelMapContrastTable, IsTheFormulaForAnyInt) {
    for (const int contrast : kAnyInt) {
        const PixelMap map = TableOf([&](PixelMap& m) { return MapContrast(contrast, m); });
        for (int i = 0; i < 256; ++i)
            ASSERT_EQ(map[i], PlainContrast(i, contrast)) << contrast << ", sample " << i;
    }
}

TEST(PixelMapCurve, AllZeroAndTheDiagonalAreNeutral) {
    ExpectNeutral([](PixelMap& m) { return MapBezierCurve(0, 0, 0, 0, m); });
    ExpectNeutral([](PixelMap& m) { return MapBezierCurve(0, 0, 255, 255, m); });
}

TEST(PixelMapCurve, AFlatEndIsActiveAndKeepsWhite) {
    const PixelMap map = TableOf([](PixelMap& m) { return MapBezierCurve(0, 0, 255, 0, m); });
    EXPECT_EQ(map[0], 0);
    EXPECT_EQ(map[255], 255);
    // At t = 1/2 x is 127.5 and y 31.9: the curve hangs far below the diagonal.
    EXPECT_EQ(map[128], 32);
}

TEST(PixelMapCurve, EvenlySpacedPointsOnTheDiagonalGiveTheIdentity) {
    EXPECT_EQ(TableOf([](PixelMap& m) { return MapBezierCurve(85, 85, 170, 170, m); }),
              IdentityPixelMap());
}

TEST(PixelMapCurve, OfSamplesOnOneLevelTheLastCounts) {
    // x is 255 t^3: samples 33 to 46 fall on 1, and y(46 / 256) is 255 (1 - (1 - t)^3) = 114.2,
    // where sample 33 would give 86.
    const PixelMap map = TableOf([](PixelMap& m) { return MapBezierCurve(0, 255, 0, 255, m); });
    EXPECT_EQ(map[1], 114);
    EXPECT_EQ(map[0], 0);
}

TEST(PixelMapCurve, PointsThatCrossOverResolveToTheLaterSample) {
    const PixelMap map = TableOf([](PixelMap& m) { return MapBezierCurve(150, 0, 110, 255, m); });
    const std::vector<int> expected = PlainCurve(150, 0, 110, 255);
    for (int i = 0; i < 256; ++i)
        ASSERT_EQ(map[i], expected[static_cast<std::size_t>(i)]) << "sample " << i;
    EXPECT_EQ(map[255], 255);
}

TEST(PixelMapCurve, IsTheFormulaForManyPoints) {
    constexpr int kPoints[] = {kLowest, -300, -1, 0, 1, 60, 128, 255, 256, 500, kHighest};
    for (const int x1 : kPoints)
        for (const int y1 : kPoints)
            for (const int x2 : kPoints)
                for (const int y2 : kPoints) {
                    PixelMap map = IdentityPixelMap();
                    if (MapBezierCurve(x1, y1, x2, y2, map) == 0)
                        continue;
                    const std::vector<int> expected = PlainCurve(x1, y1, x2, y2);
                    for (int i = 0; i < 256; ++i)
                        ASSERT_EQ(map[i], expected[static_cast<std::size_t>(i)])
                            << x1 << ", " << y1 << ", " << x2 << ", " << y2 << ", sample " << i;
                }
}

TEST(BezierSample, AddsAHalfAndTruncatesTowardZero) {
    // A straight line from 0 to -32: at k / 10 the values are -3.2 k.
    constexpr std::int32_t kControls[] = {0, -32};
    std::int32_t out[10] = {};
    BezierSample(1, kControls, 10, out);
    EXPECT_EQ(out[0], 0);
    EXPECT_EQ(out[1], -2);   // -3.2 + 0.5 is -2.7
    EXPECT_EQ(out[2], -5);   // -5.9
    EXPECT_EQ(out[9], -28);  // -28.3
}

TEST(BezierSample, LiesWithinOneOfTheBernsteinForm) {
    constexpr std::int32_t kControls[] = {0, 150, -40, 255};
    std::int32_t out[256] = {};
    BezierSample(3, kControls, 256, out);
    for (int k = 0; k < 256; ++k) {
        const double t = k / 256.0, u = 1 - t;
        const double value = 3 * u * u * t * 150 + 3 * u * t * t * -40 + t * t * t * 255;
        EXPECT_NEAR(out[k], value, 1.0) << "sample " << k;
    }
}

TEST(BezierSample, WithoutSamplesYieldsNothing) {
    constexpr std::int32_t kControls[] = {5, 5, 5, 5};
    std::int32_t out = 77;
    BezierSample(3, kControls, 0, &out);
    BezierSample(3, kControls, -1, &out);
    BezierSample(-1, kControls, 1, &out);
    BezierSample(kMaxBezierDegree + 1, kControls, 1, &out);
    EXPECT_EQ(out, 77);
}

TEST(PixelMapGamma, DarkensMidTonesAboveAndLightensThemBelow) {
    const PixelMap dark = TableOf([](PixelMap& m) { return MapGamma(200, m); });
    EXPECT_EQ(dark[128], 64);  // 64.25
    EXPECT_EQ(dark[255], 255);
    const PixelMap light = TableOf([](PixelMap& m) { return MapGamma(50, m); });
    EXPECT_EQ(light[64], 128);  // 127.7
    EXPECT_EQ(light[0], 0);
}

TEST(PixelMapGamma, ZeroMakesEverySampleWhiteBlackIncluded) {
    const PixelMap map = TableOf([](PixelMap& m) { return MapGamma(0, m); });
    for (int i = 0; i < 256; ++i)
        ASSERT_EQ(map[i], 255);
}

TEST(PixelMapGamma, IsTheFormulaForAnyInt) {
    for (const int gamma : kAnyInt) {
        const PixelMap map = TableOf([&](PixelMap& m) { return MapGamma(gamma, m); });
        for (int i = 0; i < 256; ++i)
            ASSERT_EQ(map[i], PlainGamma(i, gamma)) << gamma << ", sample " << i;
    }
}

}  // namespace
}  // namespace velloran
