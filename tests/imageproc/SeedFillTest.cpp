#include "imageproc/SeedFill.h"

#include <stdexcept>

#include "imageproc/Pictures.h"
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
