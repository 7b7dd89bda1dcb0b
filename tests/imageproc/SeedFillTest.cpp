#include "imageproc/SeedFill.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "core/StepContext.h"
#include "imageproc/Pictures.h"
#include "support/CountedCancel.h"
#include "support/Images.h"

namespace velloran::imageproc {
namespace {

using test::FromPicture;
using test::Picture;
using test::RandomImage;
using test::ToPicture;

/// Grows one pixel a round.
Picture PlainFill(const Picture& seed, const Picture& mask, bool eight) {
    Picture filled = seed;
    const int height = static_cast<int>(seed.size()), width = static_cast<int>(seed[0].size());
    const auto black = [&](int x, int y) {
        return x >= 0 && y >= 0 && x < width && y < height &&
               filled[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] == '#';
    };
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            if (mask[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] != '#')
                filled[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] = '.';
    for (bool changed = true; changed;) {
        changed = false;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                if (black(x, y) ||
                    mask[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] != '#')
                    continue;
                bool touches =
                    black(x - 1, y) || black(x + 1, y) || black(x, y - 1) || black(x, y + 1);
                if (eight)
                    touches = touches || black(x - 1, y - 1) || black(x + 1, y - 1) ||
                              black(x - 1, y + 1) || black(x + 1, y + 1);
                if (touches) {
                    filled[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] = '#';
                    changed = true;
                }
            }
    }
    return filled;
}

TEST(SeedFill, EmptySeedGivesAnEmptyImage) {
    const BinaryImage filled = seedFill(BinaryImage({40, 5}, BwColor::kWhite),
                                        BinaryImage({40, 5}, BwColor::kBlack), Connectivity::k8);
    EXPECT_EQ(filled.contentBoundingBox(), (QT::QRect{0, 0, -1, -1}));
}

TEST(SeedFill, DiagonalNeighborsJoinOnlyWithEightConnections) {
    const BinaryImage mask = FromPicture({"#..", ".#.", "..#"});
    const BinaryImage seed = FromPicture({"#..", "...", "..."});
    EXPECT_EQ(ToPicture(seedFill(seed, mask, Connectivity::k4)), (Picture{"#..", "...", "..."}));
    EXPECT_EQ(ToPicture(seedFill(seed, mask, Connectivity::k8)), (Picture{"#..", ".#.", "..#"}));
}

TEST(SeedFill, AgreesWithThePlainFormAcrossWords) {
    for (const int width : {1, 5, 31, 32, 33, 64, 97})
        for (std::uint32_t seed = 1; seed < 8; ++seed)
            for (const bool eight : {false, true}) {
                const BinaryImage mask = RandomImage(width, 13, seed, 2);
                const BinaryImage start = RandomImage(width, 13, seed + 100, 40);
                ASSERT_EQ(
                    ToPicture(seedFill(start, mask, eight ? Connectivity::k8 : Connectivity::k4)),
                    PlainFill(ToPicture(start), ToPicture(mask), eight))
                    << width << " " << seed;
            }
}

TEST(SeedFill, RunsAlongALongRowBothWays) {
    const BinaryImage mask({300, 1}, BwColor::kBlack);
    BinaryImage seed({300, 1}, BwColor::kWhite);
    seed.fill({150, 0, 150, 0}, BwColor::kBlack);
    EXPECT_TRUE(seedFill(seed, mask, Connectivity::k4) == mask);
}

TEST(SeedFill, UnequalSizesThrowTheirText) {
    try {
        seedFill(BinaryImage({4, 4}, BwColor::kWhite), BinaryImage({5, 4}, BwColor::kWhite),
                 Connectivity::k4);
        FAIL();
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(), "seedFill: seed and mask have different sizes");
    }
}

/// Walls of one row that leave a gap left and right in turns: one way of width * height / 2 pixels.
BinaryImage Serpentine(int side) {
    BinaryImage mask({side, side}, BwColor::kBlack);
    for (int y = 1; y < side; y += 2) {
        const int gap = y % 4 == 1 ? side - 1 : 0;
        mask.fill({0, y, side - 1, y}, BwColor::kWhite);
        mask.fill({gap, y, gap, y}, BwColor::kBlack);
    }
    return mask;
}

/// The same turned by a quarter, so that each step enters another row.
BinaryImage UprightSerpentine(int side) {
    const BinaryImage lying = Serpentine(side);
    BinaryImage mask({side, side}, BwColor::kWhite);
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x)
            if (lying.isBlack(y, x))
                mask.fill({x, y, x, y}, BwColor::kBlack);
    return mask;
}

TEST(SeedFill, FollowsASerpentineToItsEndBothWays) {
    for (const int side : {33, 63, 65})
        for (const BinaryImage& mask : {Serpentine(side), UprightSerpentine(side)})
            for (const Connectivity connectivity : {Connectivity::k4, Connectivity::k8})
                for (const int from : {0, side - 1}) {
                    BinaryImage seed({side, side}, BwColor::kWhite);
                    seed.fill({from, from, from, from}, BwColor::kBlack);
                    ASSERT_TRUE(mask.isBlack(from, from));
                    EXPECT_TRUE(seedFill(seed, mask, connectivity) == mask) << side << " " << from;
                }
}

/// Visits each pixel of the mask once, from the top left one on: a measure of linear work.
std::size_t PlainFlood(const BinaryImage& mask) {
    std::vector<bool> reached(static_cast<std::size_t>(mask.width()) *
                              static_cast<std::size_t>(mask.height()));
    std::vector<std::pair<int, int>> open;
    std::size_t count = 0;
    const auto visit = [&](int x, int y) {
        const std::size_t at = static_cast<std::size_t>(y) * mask.width() + x;
        if (x < 0 || y < 0 || x >= mask.width() || y >= mask.height() || reached[at] ||
            !mask.isBlack(x, y))
            return;
        reached[at] = true;
        open.emplace_back(x, y);
        ++count;
    };
    visit(0, 0);
    while (!open.empty()) {
        const auto [x, y] = open.back();
        open.pop_back();
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx)
                visit(x + dx, y + dy);
    }
    return count;
}

template <typename Work>
double BestSeconds(Work&& work) {
    double best = 1e9;
    for (int i = 0; i < 3; ++i) {
        const auto start = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
        best = std::min(best, taken.count());
    }
    return best;
}

// Sweeping the rows until nothing changes took 2.4 s at the larger size.
TEST(SeedFillSlow, ASerpentineTakesNoMoreTimeThanVisitingItsPixels) {
    for (const int side : {1023, 2047})
        for (const BinaryImage& mask : {Serpentine(side), UprightSerpentine(side)})
            for (const Connectivity connectivity : {Connectivity::k4, Connectivity::k8}) {
                BinaryImage seed(mask.size(), BwColor::kWhite);
                seed.fill({0, 0, 0, 0}, BwColor::kBlack);
                const double fill =
                    BestSeconds([&] { EXPECT_TRUE(seedFill(seed, mask, connectivity) == mask); });
                const double flood = BestSeconds([&] { EXPECT_GT(PlainFlood(mask), 0u); });
                EXPECT_LT(fill, 2 * flood) << side;
                RecordProperty("side" + std::to_string(side),
                               std::to_string(fill) + " of " + std::to_string(flood));
            }
}

TEST(SeedFill, EndsWhenItIsCancelled) {
    const BinaryImage mask = Serpentine(1023);
    BinaryImage seed(mask.size(), BwColor::kWhite);
    seed.fill({0, 0, 0, 0}, BwColor::kBlack);
    const velloran::test::CountedCancel never, second(2);
    {
        const StepContext context(never.Token());
        EXPECT_TRUE(seedFill(seed, mask, Connectivity::k4) == mask);
    }
    EXPECT_GE(never.Asked(), 1023);
    const StepContext context(second.Token());
    EXPECT_FALSE(seedFill(seed, mask, Connectivity::k4) == mask);
    EXPECT_EQ(second.Asked(), 2);
}

TEST(SeedFillGray, EndsWhenItIsCancelled) {
    const velloran::test::CountedCancel never, first(1);
    const CDibImage mask = velloran::test::Noise(301, 403, 8, 2);
    CDibImage seed = velloran::test::Filled(301, 403, 8, 0);
    velloran::test::SetIndex(seed, 150, 200, 255);
    CDibImage cancelled = seed;
    {
        const StepContext context(never.Token());
        seedFillGrayInPlace(seed, mask, Connectivity::k8);
    }
    EXPECT_GE(never.Asked(), 403);
    const StepContext context(first.Token());
    seedFillGrayInPlace(cancelled, mask, Connectivity::k8);
    EXPECT_LE(first.Asked(), 4);
}

TEST(SeedFill, PixelsThatOthersShareStay) {
    const BinaryImage mask = FromPicture({"###.#", "..#.#"});
    BinaryImage seed = FromPicture({"#....", "....."});
    const BinaryImage shared(seed);
    seed = seedFill(seed, mask, Connectivity::k4);
    EXPECT_EQ(ToPicture(seed), (Picture{"###..", "..#.."}));
    EXPECT_EQ(ToPicture(shared), (Picture{"#....", "....."}));
    EXPECT_TRUE(seedFill(mask, mask, Connectivity::k4) == mask);
}

TEST(SeedFill, SeedsOutsideTheMaskAreLeftOut) {
    EXPECT_EQ(ToPicture(seedFill(FromPicture({"#.#"}), FromPicture({".##"}), Connectivity::k8)),
              Picture{".##"});
}

TEST(SeedFill, ANullImageStaysNull) {
    EXPECT_TRUE(seedFill(BinaryImage(), BinaryImage(), Connectivity::k8).isNull());
}

TEST(SeedFill, BitsBehindTheLastColumnJoinNothing) {
    BinaryImage mask({33, 3}, BwColor::kWhite), seed({33, 3}, BwColor::kWhite);
    for (int y = 0; y < 3; ++y)  // black behind the last column alone
        mask.data()[2 * y + 1] = seed.data()[2 * y + 1] = 0x7FFFFFFF;
    mask.fill({32, 0, 32, 0}, BwColor::kBlack);
    mask.fill({32, 2, 32, 2}, BwColor::kBlack);
    seed.fill({32, 0, 32, 0}, BwColor::kBlack);
    const BinaryImage filled = seedFill(seed, mask, Connectivity::k8);
    EXPECT_EQ(filled.contentBoundingBox(), (QT::QRect{32, 0, 32, 0}));
}

TEST(SeedFillGray, FollowsASerpentineUnderFallingLevels) {
    constexpr int kSide = 41;
    const BinaryImage way = UprightSerpentine(kSide);
    std::vector<std::vector<int>> rows(kSide, std::vector<int>(kSide)), expected = rows;
    for (int y = 0; y < kSide; ++y)
        for (int x = 0; x < kSide; ++x)
            if (way.isBlack(x, y)) {
                rows[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] = 250 - x;
                expected[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] = 250 - x;
            }
    CDibImage seed = velloran::test::Filled(kSide, kSide, 8, 0);
    velloran::test::SetIndex(seed, 0, 0, 255);
    // The way falls by one a column, so that each sample ends at its own limit.
    seedFillGrayInPlace(seed, velloran::test::FromRows(rows), Connectivity::k4);
    velloran::test::ExpectSamePixels(seed, velloran::test::FromRows(expected));
}

TEST(SeedFillGray, GrowsUnderTheMaskAndOnlyUp) {
    CDibImage seed = velloran::test::FromRows({{0, 90, 0, 0, 0}});
    const CDibImage mask = velloran::test::FromRows({{50, 100, 80, 20, 60}});
    seedFillGrayInPlace(seed, mask, Connectivity::k4);
    velloran::test::ExpectSamePixels(seed, velloran::test::FromRows({{50, 90, 80, 20, 20}}));
}

TEST(SeedFillGray, AgreesWithThePlainForm) {
    for (const bool eight : {false, true}) {
        CDibImage seed = velloran::test::Noise(17, 12, 8, 1);
        const CDibImage mask = velloran::test::Noise(17, 12, 8, 2);
        std::vector<std::vector<int>> level(12, std::vector<int>(17));
        for (int y = 0; y < 12; ++y)
            for (int x = 0; x < 17; ++x)
                level[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] = std::min(
                    velloran::test::IndexAt(seed, x, y), velloran::test::IndexAt(mask, x, y));
        for (bool changed = true; changed;) {
            changed = false;
            for (int y = 0; y < 12; ++y)
                for (int x = 0; x < 17; ++x)
                    for (int dy = -1; dy <= 1; ++dy)
                        for (int dx = -1; dx <= 1; ++dx) {
                            if ((!eight && dx != 0 && dy != 0) || y + dy < 0 || y + dy > 11 ||
                                x + dx < 0 || x + dx > 16)
                                continue;
                            int& here =
                                level[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)];
                            const int reached = std::min(velloran::test::IndexAt(mask, x, y),
                                                         level[static_cast<std::size_t>(y + dy)]
                                                              [static_cast<std::size_t>(x + dx)]);
                            changed = changed || reached > here;
                            here = std::max(here, reached);
                        }
        }
        seedFillGrayInPlace(seed, mask, eight ? Connectivity::k8 : Connectivity::k4);
        velloran::test::ExpectSamePixels(seed, velloran::test::FromRows(level));
    }
}

TEST(SeedFillGray, UnequalSizesThrowTheirText) {
    CDibImage seed = velloran::test::Filled(4, 4, 8, 0);
    try {
        seedFillGrayInPlace(seed, velloran::test::Filled(4, 5, 8, 0), Connectivity::k4);
        FAIL();
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(), "seedFillGrayInPlace: seed and mask have different sizes");
    }
}

}  // namespace
}  // namespace velloran::imageproc
