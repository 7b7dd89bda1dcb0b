#include "imageproc/MaxWhitespaceFinder.h"

#include <stdexcept>

#include "imageproc/Pictures.h"

namespace velloran::imageproc {
namespace {

using test::FromPicture;
using test::RandomImage;

bool IsEmptyOfBlack(const BinaryImage& image, const QT::QRect& rect) {
    for (int y = rect.top; y <= rect.bottom; ++y)
        for (int x = rect.left; x <= rect.right; ++x)
            if (image.isBlack(x, y))
                return false;
    return true;
}

/// The best score of all empty rectangles of at least the minimal size, by trying each.
template <typename Score>
int BestScore(const BinaryImage& image, int minSize, Score score) {
    int best = 0;
    for (int top = 0; top < image.height(); ++top)
        for (int bottom = top + minSize - 1; bottom < image.height(); ++bottom)
            for (int left = 0; left < image.width(); ++left)
                for (int right = left + minSize - 1; right < image.width(); ++right)
                    if (score(right - left + 1, bottom - top + 1) > best &&
                        IsEmptyOfBlack(image, {left, top, right, bottom}))
                        best = score(right - left + 1, bottom - top + 1);
    return best;
}

template <typename Ordering, typename Score>
void ExpectFirstIsBest(Score score) {
    for (std::uint32_t seed = 1; seed < 10; ++seed) {
        const BinaryImage image = RandomImage(20, 14, seed, 12);
        auto finder = max_whitespace_finder::make<Ordering>(image, {2, 2});
        const QT::QRect found = finder.next();
        ASSERT_TRUE(IsEmptyOfBlack(image, found));
        EXPECT_EQ(score(found.Width(), found.Height()), BestScore(image, 2, score)) << seed;
    }
}

TEST(MaxWhitespaceFinder, LargestAreaComesFirst) {
    ExpectFirstIsBest<AreaCompare>([](int width, int height) { return width * height; });
}

TEST(MaxWhitespaceFinder, WideRectanglesComeFirst) {
    ExpectFirstIsBest<PreferHorizontal>(
        [](int width, int height) { return width * width * height; });
}

TEST(MaxWhitespaceFinder, TallRectanglesComeFirst) {
    ExpectFirstIsBest<PreferVertical>(
        [](int width, int height) { return width * height * height; });
}

TEST(MaxWhitespaceFinder, ResultsKeepClearOfEachOther) {
    const BinaryImage image = RandomImage(60, 40, 4, 90);
    auto finder = max_whitespace_finder::make<AreaCompare>(image);
    std::vector<QT::QRect> found;
    for (QT::QRect rect = finder.next(); !rect.IsEmpty(); rect = finder.next()) {
        EXPECT_TRUE(IsEmptyOfBlack(image, rect));
        EXPECT_GE(rect.Width(), 4);
        EXPECT_GE(rect.Height(), 4);
        for (const QT::QRect& other : found)
            EXPECT_TRUE(rect.right < other.left || other.right < rect.left ||
                        rect.bottom < other.top || other.bottom < rect.top);
        found.push_back(rect);
    }
    EXPECT_GT(found.size(), 3U);
    EXPECT_EQ(finder.results(), found);
}

TEST(MaxWhitespaceFinder, ManualModeKeepsNothing) {
    const BinaryImage image = FromPicture({"......", "......", "......", "......", "......"});
    auto finder = max_whitespace_finder::make<AreaCompare>(image);
    EXPECT_EQ(finder.next(max_whitespace_finder::kManualObstacles), image.rect());
    EXPECT_TRUE(finder.next(max_whitespace_finder::kManualObstacles).IsEmpty());
}

TEST(MaxWhitespaceFinder, AddedObstacleIsAvoided) {
    const BinaryImage image({20, 10}, BwColor::kWhite);
    auto finder = max_whitespace_finder::make<AreaCompare>(image);
    finder.addObstacle({12, 0, 13, 9});
    EXPECT_EQ(finder.next(), (QT::QRect{0, 0, 11, 9}));
    EXPECT_EQ(finder.next(), (QT::QRect{14, 0, 19, 9}));
    EXPECT_TRUE(finder.next().IsEmpty());
}

TEST(MaxWhitespaceFinder, SmallRectanglesAreDropped) {
    const BinaryImage image({3, 100}, BwColor::kWhite);
    auto finder = max_whitespace_finder::make<AreaCompare>(image);
    EXPECT_TRUE(finder.next().IsEmpty());
}

TEST(MaxWhitespaceFinder, SpentIterationsGiveTheNullRectangle) {
    const BinaryImage image = RandomImage(200, 200, 3, 10);
    auto finder = max_whitespace_finder::make<AreaCompare>(image);
    EXPECT_TRUE(finder.next(max_whitespace_finder::kAutoObstacles, 3).IsEmpty());
}

TEST(MaxWhitespaceFinder, NullImageThrows) {
    EXPECT_THROW(max_whitespace_finder::make<AreaCompare>(BinaryImage()), std::invalid_argument);
}

}  // namespace
}  // namespace velloran::imageproc
