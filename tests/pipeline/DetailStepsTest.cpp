// What the steps of detail, surface blur and adjustable sharpening do with their parameters.

#include <gtest/gtest.h>

#include <climits>

#include "core/DibImage.h"
#include "filters/AdjustSharpen.h"
#include "filters/MultiScaleDetail.h"
#include "filters/SurfaceBlur.h"
#include "params/ParaBlock.h"
#include "pipeline/RunRecord.h"
#include "support/Images.h"

namespace velloran {
namespace {

using test::After;
using test::Values;

TEST(SurfaceBlurStep, CountsTheRadiusFromOneAndTheThresholdFromTwo) {
    const CDibImage page = test::Noise(40, 30, 24);
    for (int algorithm = 0; algorithm < 4; ++algorithm) {
        CDibImage expected = page;
        ASSERT_NE(SurfaceBlur(expected, 8, 32, 2, algorithm), 0);
        test::ExpectSamePixels(After({{PARA_SURFACE_BLUR_TIMES, 2},
                                      {PARA_SURFACE_BLUR_RADIUS, 7},
                                      {PARA_SURFACE_BLUR_THRESHOLD, 30},
                                      {PARA_SURFACE_BLUR_ALGRITHOM, algorithm}},
                                     page),
                               expected);
    }
}

TEST(SurfaceBlurStep, TakesExtremesForTheLimits) {
    const CDibImage page = test::Noise(40, 30, 8);
    CDibImage largest = page, smallest = page;
    ASSERT_NE(SurfaceBlur(largest, 15, 50, 3, 3), 0);
    ASSERT_NE(SurfaceBlur(smallest, 1, 2, 3, 3), 0);
    test::ExpectSamePixels(After({{PARA_SURFACE_BLUR_TIMES, INT_MAX},
                                  {PARA_SURFACE_BLUR_RADIUS, INT_MAX},
                                  {PARA_SURFACE_BLUR_THRESHOLD, INT_MAX},
                                  {PARA_SURFACE_BLUR_ALGRITHOM, 3}},
                                 page),
                           largest);
    test::ExpectSamePixels(After({{PARA_SURFACE_BLUR_TIMES, INT_MAX},
                                  {PARA_SURFACE_BLUR_RADIUS, INT_MIN},
                                  {PARA_SURFACE_BLUR_THRESHOLD, INT_MIN},
                                  {PARA_SURFACE_BLUR_ALGRITHOM, 3}},
                                 page),
                           smallest);
}

TEST(SurfaceBlurStep, PassesThePageOnWithoutTimesOrForm) {
    const CDibImage page = test::Noise(40, 30, 8);
    test::ExpectSamePixels(After({{PARA_SURFACE_BLUR_TIMES, 0}}, page), page);
    test::ExpectSamePixels(After({{PARA_SURFACE_BLUR_TIMES, -1}}, page), page);
    test::ExpectSamePixels(
        After({{PARA_SURFACE_BLUR_TIMES, 1}, {PARA_SURFACE_BLUR_ALGRITHOM, 4}}, page), page);
}

TEST(MultiScaleStep, TakesTheParameterForTheRadius) {
    const CDibImage page = test::Noise(40, 30, 24);
    CDibImage expected = page;
    ASSERT_NE(MultiScaleDetail(expected, 6), 0);
    test::ExpectSamePixels(After({{PARA_ADJUST_MULTI_SCALE_R, 6}}, page), expected);
    test::ExpectSamePixels(After({{PARA_ADJUST_MULTI_SCALE_R, -6}}, page), page);
}

TEST(AdjustSharpenStep, CountsOddSizesFromSeven) {
    const CDibImage page = test::Noise(40, 30, 24);
    for (const auto& [value, size] : {std::pair{0, 7}, {3, 13}, {9, 25}}) {
        CDibImage expected = page;
        ASSERT_NE(AdjustSharpen(expected, 40, size), 0);
        test::ExpectSamePixels(
            After({{PARA_ADJUST_SHARPEN_PERCENT, 40}, {PARA_ADJUST_SHARPEN_SIZE, value}}, page),
            expected);
    }
}

TEST(AdjustSharpenStep, PassesThePageOnForSizesOutsideTheList) {
    const CDibImage page = test::Noise(40, 30, 24);
    for (const int value : {-1, 10, INT_MIN, INT_MAX})
        test::ExpectSamePixels(
            After({{PARA_ADJUST_SHARPEN_PERCENT, 40}, {PARA_ADJUST_SHARPEN_SIZE, value}}, page),
            page);
}

}  // namespace
}  // namespace velloran
