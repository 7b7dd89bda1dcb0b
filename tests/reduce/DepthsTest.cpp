#include <gtest/gtest.h>

#include <set>

#include "core/PixelMemory.h"
#include "core/Threads.h"
#include "reduce/CountColors.h"
#include "reduce/DecreaseBpp.h"
#include "support/FailingAllocator.h"
#include "support/Images.h"
#include "support/Threads.h"

namespace velloran {
namespace {

struct Depth {
    int colors, bits;
    bool gray;
};
// By position in the list; 24 bits where no palette is made.
constexpr Depth kDepths[20] = {{0, 24, false},  {256, 8, true}, {0, 24, false}, {256, 8, false},
                               {16, 4, true},   {8, 4, true},   {4, 4, true},   {2, 1, true},
                               {128, 8, false}, {64, 8, false}, {32, 8, false}, {16, 4, false},
                               {8, 4, false},   {4, 4, false},  {2, 1, false},  {128, 8, true},
                               {64, 8, true},   {32, 8, true},  {0, 24, false}, {0, 24, false}};

int ExpectedBits(int color, int bpp) {
    if (bpp == 8 && (color == 0 || color == 2 || color >= 18))
        return 8;
    return kDepths[color].bits;
}

void ExpectDepth(const CDibImage& image, int color, int bpp) {
    ASSERT_EQ(image.GetBpp(), ExpectedBits(color, bpp));
    if (image.GetBpp() == 24 || kDepths[color].colors == 0)
        return;
    std::set<int> used;
    for (int y = 0; y < image.GetHeight(); ++y)
        for (int x = 0; x < image.GetWidth(); ++x)
            used.insert(test::IndexAt(image, x, y));
    EXPECT_LT(*used.rbegin(), kDepths[color].colors);
    EXPECT_GT(used.size(), 1u);
    if (bpp == 8 || kDepths[color].gray)
        for (const int index : used) {
            const PaletteEntry& entry = image.GetPalette()[index];
            EXPECT_EQ(entry.blue, entry.green);
            EXPECT_EQ(entry.blue, entry.red);
        }
}

template <typename Trial>
void ForEachRequest(Trial trial) {
    for (int color = 0; color < 20; ++color)
        for (int maker = 0; maker < 5; ++maker)
            for (const int dither : {0, 1}) {
                SCOPED_TRACE(testing::Message()
                             << "color " << color << " maker " << maker << " dither " << dither);
                DecreaseBppRequest request;
                request.color = color;
                request.sourceBpp = 24;
                request.quantize = maker;
                request.dither = dither;
                trial(request);
            }
}

CDibImage Reduced(const CDibImage& page, const DecreaseBppRequest& request, int threads) {
    const test::Threads limit(threads);
    CDibImage image(page);
    EXPECT_TRUE(DecreaseBpp(image, false, request));
    return image;
}

TEST(Depths, EveryKindWithEveryMakerEndsAtItsDepthTwiceTheSame) {
    for (const int bpp : {8, 24}) {
        SCOPED_TRACE(bpp);
        const CDibImage page = test::Noise(31, 23, bpp);
        ForEachRequest([&](const DecreaseBppRequest& request) {
            const CDibImage one = Reduced(page, request, 1);
            ExpectDepth(one, request.color, bpp);
            test::ExpectSamePixels(Reduced(page, request, 1), one);
            CDibImage preview(page);
            EXPECT_TRUE(DecreaseBpp(preview, true, request));
            const bool gray = bpp == 8 || kDepths[request.color].gray ||
                              (request.color == 14 && request.quantize == 3);
            EXPECT_EQ(preview.GetBpp(), gray ? 8 : 24);
            if (kDepths[request.color].colors > 0) {
                EXPECT_LE(CountColors(preview), kDepths[request.color].colors);
            }
        });
    }
}

TEST(Depths, FourThreadsGiveTheSamePageAsOneForEveryKindAndMaker) {
    for (const int bpp : {8, 24}) {
        SCOPED_TRACE(bpp);
        const CDibImage page = test::Noise(263, 251, bpp);
        ASSERT_TRUE(IsWorthThreads(std::int64_t{page.GetWidth()} * page.GetHeight()));
        ForEachRequest([&](const DecreaseBppRequest& request) {
            test::ExpectSamePixels(Reduced(page, request, 4), Reduced(page, request, 1));
        });
    }
}

TEST(Depths, FourThreadsGiveTheSamePageAsOneForEveryThreshold) {
    for (const int bpp : {8, 24}) {
        const CDibImage page = test::Noise(263, 251, bpp);
        for (int method = 0; method < 4; ++method)
            for (const int cleaned : {0, 1}) {
                SCOPED_TRACE(testing::Message() << "bpp " << bpp << " method " << method);
                DecreaseBppRequest request;
                request.color = 7;
                request.thresholdMethod = method;
                request.windowSize = 20;
                request.despeckleSize = request.deSmooth = request.deBlack = cleaned;
                test::ExpectSamePixels(Reduced(page, request, 4), Reduced(page, request, 1));
            }
    }
}

TEST(Depths, PagesOfOnePixelAndOfOneColorReachTheirDepth) {
    for (const int bpp : {8, 24})
        for (int color = 1; color < 18; ++color)
            for (int maker = 0; maker < 5; ++maker)
                for (const int dither : {0, 1})
                    for (const int size : {1, 9}) {
                        if (color == 2)
                            continue;
                        CDibImage image = test::Filled(size, size, bpp, 200);
                        DecreaseBppRequest request;
                        request.color = color;
                        request.quantize = maker;
                        request.dither = dither;
                        EXPECT_TRUE(DecreaseBpp(image, false, request));
                        // One colour fits one bit, but for 256 greys, which need no palette.
                        const bool gray = bpp == 8 || kDepths[color].gray;
                        EXPECT_EQ(image.GetBpp(), gray && (color == 1 || color == 3) ? 8 : 1)
                            << color << ' ' << maker;
                    }
}

/// Fails the n-th allocation of a reduction, alone or with all later ones, for every n.
void SweepReduction(const CDibImage& page, const DecreaseBppRequest& request, bool onlyOne) {
    CDibImage gray(page), reduced(page);
    DecreaseBppRequest grayRequest;
    grayRequest.color = 1;
    DecreaseBpp(gray, false, grayRequest);
    DecreaseBpp(reduced, false, request);
    bool failed = true;
    for (long n = 1; failed; ++n) {
        ASSERT_LT(n, 400);
        CDibImage image(page);
        ReleaseKeptPixels();
        {
            const test::FailAllocation fail(n, onlyOne);
            DecreaseBpp(image, false, request);
            failed = fail.Happened();
        }
        ASSERT_TRUE(image.IsValid());
        if (!failed)
            test::ExpectSamePixels(image, reduced);
        if (image.GetBpp() == 24 && request.color < 18)
            test::ExpectSamePixels(image, page);
        // A grey page is the page still, or has its two levels and only wants packing.
        const bool twoLevels = request.color == 7 || request.color == 14;
        for (int y = 0; y < image.GetHeight() && image.GetBpp() == 8 && reduced.GetBpp() < 8; ++y)
            for (int x = 0; x < image.GetWidth(); ++x) {
                const int level = test::PixelAt(image, x, y).red;
                ASSERT_TRUE(level == test::PixelAt(gray, x, y).red ||
                            (twoLevels && level % 255 == 0));
            }
    }
}

TEST(Depths, WithoutMemoryThePageStaysAPicture) {
    constexpr struct {
        int color, maker;
    } kCases[] = {{1, 2},  {3, 2},  {7, 0},  {7, 1},  {7, 2},  {7, 3},  {11, 0},
                  {11, 1}, {11, 2}, {11, 3}, {11, 4}, {14, 0}, {14, 1}, {19, 2}};
    for (const int bpp : {8, 24})
        for (const auto& [color, maker] : kCases)
            for (const int dither : {0, 1}) {
                SCOPED_TRACE(testing::Message() << "bpp " << bpp << " color " << color << " maker "
                                                << maker << " dither " << dither);
                DecreaseBppRequest request;
                request.color = color;
                request.quantize = maker;
                request.dither = dither;
                request.thresholdMethod = maker;  // all methods are among the cases of 7
                request.windowSize = 10;
                request.despeckleSize = 1;
                request.deSmooth = 1;
                for (const bool onlyOne : {false, true})
                    SweepReduction(test::Noise(12, 11, bpp), request, onlyOne);
            }
}

}  // namespace
}  // namespace velloran
