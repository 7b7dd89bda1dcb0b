// Whatever the parameters of geometry hold, a run ends with a picture within the limits, or with
// the page as it was: at random, and at their extremes. The sanitizers look on.

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <vector>

#include "core/DibImage.h"
#include "core/PictureLimits.h"
#include "params/ParaTable.h"
#include "params/Settings.h"
#include "pipeline/Run.h"
#include "support/Images.h"

namespace velloran::test {
namespace {

/// The parameters of the tabs of paper, page and layout.
std::vector<ParaIndex> GeometryParameters() {
    std::vector<ParaIndex> all;
    for (const ParaTab tab : {ParaTab::kPaper, ParaTab::kPage, ParaTab::kLayout})
        for (const ParaIndex index : ParaIndexesOf(tab))
            all.push_back(index);
    return all;
}

/// Between them pages are in order, yet would take all the time.
constexpr std::int32_t kLongLength = 300, kEndlessLength = 1 << 30;

class RandomGeometry : public testing::Test {
 protected:
    int Below(int count) { return static_cast<int>(random_() % static_cast<unsigned>(count)); }

    std::int32_t Extreme() {
        constexpr std::int32_t kExtremes[] = {std::numeric_limits<std::int32_t>::min(),
                                              std::numeric_limits<std::int32_t>::max(),
                                              -1,
                                              0,
                                              1,
                                              -32768,
                                              0x7FFF7FFF,
                                              0x00010001,
                                              -0x7FFF8000};
        return kExtremes[Below(static_cast<int>(std::size(kExtremes)))];
    }

    /// A point or a line near a page of that size.
    std::int32_t Packed(int width, int height) {
        const auto half = [](int value) { return static_cast<std::uint32_t>(value) & 0xFFFFU; };
        return static_cast<std::int32_t>(half(Below(3 * height) - height) << 16 |
                                         half(Below(3 * width) - width));
    }

    Settings Random(int width, int height) {
        Settings settings;
        for (const ParaIndex index : parameters_) {
            const int kind = Below(10);
            if (kind < 4)
                continue;  // its default
            settings.Set(index, kind < 7 ? Below(8) : kind < 9 ? Packed(width, height) : Extreme());
        }
        // A page of A0 at a fine resolution is in order, yet would take all the time.
        settings.Set(PARA_DPI, 1 + Below(6));
        for (const ParaIndex length : {PARA_PAGE_WIDTH, PARA_PAGE_HEIGHT, PARA_MARGIN_LEFT,
                                       PARA_MARGIN_RIGHT, PARA_MARGIN_TOP, PARA_MARGIN_BOTTOM})
            if (settings[length] > kLongLength && settings[length] < kEndlessLength)
                settings.Set(length, settings[length] % kLongLength);
        if (settings[PARA_RESIZE] > kLongLength)
            settings.Set(PARA_RESIZE, 100);
        return settings;
    }

    void RunOnce(int width, int height, int bits, const Settings& settings) {
        CDibImage page = Noise(width, height, bits);
        constexpr int kStops[] = {kStopWhole,
                                  kStopWhole,
                                  kStopContentBox,
                                  kStopPageCorrection,
                                  kStopPageCorrectionFast,
                                  kStopContentBoxLayout,
                                  kStopSplitDrawn};
        RunRequest request;
        request.image = &page;
        request.settings = settings;
        request.stop = kStops[Below(static_cast<int>(std::size(kStops)))];
        request.deskewEdge = Below(4);
        request.wantsSure = Below(8) == 0;
        const RunReport report = velloran::Run(request);
        EXPECT_EQ(report.end, RunEnd::kDone);
        ASSERT_TRUE(report.IsWhole()) << report.Detail();
        ASSERT_TRUE(page.IsValid());
        EXPECT_LE(std::int64_t{page.GetWidth()} * page.GetHeight(), kMaxPicturePixels);
        // Every pixel is there.
        long sum = 0;
        const std::int64_t last = (std::int64_t{page.GetWidth()} * page.GetBpp() - 1) / 8;
        for (int y = 0; y < page.GetHeight(); ++y)
            sum += page.GetBits(y)[0] + page.GetBits(y)[last];
        EXPECT_LE(sum, 510L * page.GetHeight());
    }

    std::mt19937 random_{20260401};
    const std::vector<ParaIndex> parameters_ = GeometryParameters();
};

TEST_F(RandomGeometry, SlowTenThousandBlocksEndWithinTheLimits) {
    ASSERT_GT(parameters_.size(), 50U);
    constexpr int kBits[] = {1, 4, 8, 24};
    for (int i = 0; i < 10000; ++i) {
        const int width = 1 + Below(48), height = 1 + Below(48);
        const int bits = kBits[Below(4)];
        const Settings settings = Random(width, height);
        RunOnce(width, height, bits, settings);
        if (HasFatalFailure()) {
            ADD_FAILURE() << "block " << i << ": " << width << " x " << height << ", " << bits;
            for (const ParaIndex index : parameters_)
                ADD_FAILURE() << ParaRowOf(index).name << "=" << settings[index];
            return;
        }
    }
}

TEST_F(RandomGeometry, PagesOfOneToTwelvePixelsPassEveryStep) {
    Settings settings;
    settings.Set(PARA_PAGE_SPLIT_TYPE, 2);
    settings.Set(PARA_DESKEW, 3);
    settings.Set(PARA_FIND_CNT_BOX, 1);
    settings.Set(PARA_PAGE_SIZE, 2);
    for (const int type : {0, 1, 2, 3}) {
        settings.Set(PARA_CRT_TYPE, type);
        for (const ParaIndex corner :
             {PARA_CRT_PT_LT, PARA_CRT_PT_RT, PARA_CRT_PT_RB, PARA_CRT_PT_LB})
            settings.Set(corner, -1);
        for (int side = 1; side <= 12; ++side)
            for (const int other : {1, 12, 60})
                for (const int bits : {1, 4, 8, 24}) {
                    RunOnce(side, other, bits, settings);
                    RunOnce(other, side, bits, settings);
                }
    }
}

TEST_F(RandomGeometry, PagesWithNothingOrEverythingOnThemPassEveryStep) {
    Settings settings;
    settings.Set(PARA_PAGE_SPLIT_TYPE, 3);
    settings.Set(PARA_CRT_TYPE, 3);
    settings.Set(PARA_DESKEW, 1);
    settings.Set(PARA_FIND_CNT_BOX, 1);
    for (const int bkMore : {0, 1}) {
        settings.Set(PARA_CBF_BK_MORE, bkMore);
        std::vector<CDibImage> pages = {Filled(400, 300, 24, 0), Filled(400, 300, 24, 255),
                                        Filled(60000, 10, 8, 200), Noise(10, 3000, 8),
                                        Noise(500, 400, 24)};
        CDibImage checkers = Filled(400, 400, 8, 255);
        for (int y = 0; y < 400; ++y)
            for (int x = 0; x < 400; ++x)
                checkers.GetBits(y)[x] = (x / 8 + y / 8) % 2 == 0 ? 0 : 255;
        pages.push_back(checkers);
        CDibImage line = Filled(500, 400, 8, 255);
        for (int y = 200; y < 212; ++y)
            for (int x = 60; x < 440; ++x)
                line.GetBits(y)[x] = x % 9 < 6 ? 0 : 255;
        pages.push_back(line);
        for (const CDibImage& page : pages) {
            CDibImage image = page;
            RunRequest request;
            request.image = &image;
            request.settings = settings;
            request.wantsSure = true;
            const RunReport report = velloran::Run(request);
            EXPECT_TRUE(report.IsWhole()) << report.Detail();
            EXPECT_TRUE(image.IsValid());
            for (const auto& sure : report.sure) {
                EXPECT_GE(sure.value_or(0), 0);
                EXPECT_LE(sure.value_or(0), 1);
            }
        }
    }
}

}  // namespace
}  // namespace velloran::test
