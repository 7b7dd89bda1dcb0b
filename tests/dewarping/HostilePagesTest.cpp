// Pages that hold no curves, or nothing at all, and curves that make no sense.

#include <gtest/gtest.h>

#include <array>
#include <random>

#include "core/DibImage.h"
#include "core/StepContext.h"
#include "dewarping/CurvePoints.h"
#include "dewarping/FindCurves.h"
#include "support/Images.h"

namespace velloran::test {
namespace {

using namespace dewarping;

using Points = std::array<std::int32_t, kCurvePoints>;

struct Grid {
    Points top, bottom;
    bool operator==(const Grid&) const = default;
};

Grid GridOf(const CDibImage& image) {
    Grid grid;
    resetCurves(image.GetWidth(), image.GetHeight(), grid.top.data(), grid.bottom.data(),
                kCurvePoints);
    return grid;
}

/// Searches from unknown curves.
int Find(int method, const CDibImage& image, Grid& curves, int illum = 1) {
    curves.top.fill(-1);
    curves.bottom.fill(-1);
    return findCurves(method, image, curves.top.data(), curves.bottom.data(), kCurvePoints, illum);
}

TEST(FindCurves, GivesUpOnAPageWithoutText) {
    for (const CDibImage& page :
         {Filled(600, 800, 24, 255), Filled(600, 800, 8, 0), Noise(600, 800, 8)})
        for (int method = 0; method < 8; ++method) {
            Grid curves;
            const StepContext context;
            EXPECT_EQ(Find(method, page, curves), 0) << method;
            EXPECT_EQ(curves, GridOf(page)) << method;
            EXPECT_FALSE(context.HasFailed());
        }
}

TEST(FindCurves, StraightEdgesAreThoseOfAFlatPage) {
    CDibImage page = Filled(600, 800, 8, 240);
    for (const int y : {90, 91, 92, 700, 701, 702})
        std::fill_n(page.GetBits(y) + 50, 500, std::uint8_t{10});
    Grid curves;
    EXPECT_EQ(Find(kPageEdges, page, curves), 1);
    EXPECT_EQ(curves, GridOf(page));
}

TEST(FindCurves, CheckerboardsHoldNoCurves) {
    for (const int cell : {1, 2, 3, 7, 16, 40}) {
        CDibImage page = Filled(500, 700, 8, 255);
        for (int y = 0; y < 700; ++y)
            for (int x = 0; x < 500; ++x)
                if ((x / cell + y / cell) % 2 == 0)
                    page.GetBits(y)[x] = 0;
        for (int method = 0; method < 4; ++method) {
            Grid curves;
            Find(method, page, curves);
            if (method != kPageEdges) {
                EXPECT_EQ(curves, GridOf(page)) << method << " with cells of " << cell;
            }
        }
    }
}

TEST(FindCurves, SmallAndThinPagesAreTaken) {
    for (int side = 1; side <= 12; ++side)
        for (const auto& [width, height] :
             {std::pair{side, 40}, std::pair{40, side}, std::pair{side, side}})
            for (int method = 0; method < 8; ++method) {
                const CDibImage page = Noise(width, height, 8);
                Grid curves;
                EXPECT_EQ(Find(method, page, curves), 0);
                EXPECT_EQ(curves, GridOf(page));
            }
    for (const auto& [width, height] : {std::pair{60000, 10}, std::pair{10, 60000}}) {
        const CDibImage page = Noise(width, height, 8);
        Grid curves;
        Find(kExtendedTextLines, page, curves);
        EXPECT_EQ(curves, GridOf(page));
    }
}

TEST(FindCurves, RefusesFewPointsAndImagesThatAreNone) {
    Grid curves;
    curves.top.fill(-1);
    curves.bottom.fill(-1);
    const Grid before = curves;
    EXPECT_EQ(findCurves(0, CDibImage(), curves.top.data(), curves.bottom.data(), kCurvePoints, 1),
              0);
    EXPECT_EQ(curves, before);
    EXPECT_EQ(findCurves(0, Filled(50, 50, 8, 9), curves.top.data(), curves.bottom.data(), 4, 1),
              0);
    EXPECT_EQ(curves.top[4], -1);
    EXPECT_FALSE(measureCurves(0, CDibImage(), 1).found);
}

TEST(FindCurves, TakesEveryMethodDepthAndLightOnGivenCurvesAtRandom) {
    std::mt19937 random(3);
    for (int round = 0; round < 300; ++round) {
        const int bpps[] = {1, 4, 8, 24};
        const int width = 10 + static_cast<int>(random() % 90);
        const int height = 10 + static_cast<int>(random() % 90);
        const CDibImage page = Noise(width, height, bpps[round % 4], random());
        Grid curves;
        for (Points* points : {&curves.top, &curves.bottom})
            for (std::int32_t& point : *points)
                point = static_cast<std::int32_t>(
                    round % 2 == 0 ? random() : (random() % 100) << 16 | random() % 100);
        const int method = static_cast<int>(random() % 12) - 2;
        const int illum = static_cast<int>(random() % 5) - 1;
        const StepContext context;
        findCurves(method, page, curves.top.data(), curves.bottom.data(), kCurvePoints, illum);
        EXPECT_NE(classifyCurves(curves.top.data(), curves.bottom.data(), kCurvePoints), kNoCurves);
        EXPECT_FALSE(context.HasFailed()) << context.FailureText();
    }
}

TEST(FindCurves, ASingleLineOfTextTellsNoShape) {
    CDibImage page = Filled(1000, 700, 8, 240);
    for (int x = 100; x < 900; x += 14)
        for (int y = 0; y < 14; ++y)
            std::fill_n(page.GetBits(400 + x / 40 + y) + x, 9, std::uint8_t{20});
    for (const int method : {0, 1, 3}) {
        Grid curves;
        Find(method, page, curves);
        EXPECT_EQ(curves, GridOf(page)) << method;
    }
}

}  // namespace
}  // namespace velloran::test
