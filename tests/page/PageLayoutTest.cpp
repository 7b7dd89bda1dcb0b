#include "page/PageLayout.h"

#include <gtest/gtest.h>

#include "page/PageSizes.h"

namespace velloran {
namespace {

/// 1000 x 2000 pixels of which 100 were cut at the left and right and 200 at the top and bottom:
/// the content has 800 x 1600.
LayoutRequest CutPage(std::int32_t pageSize) {
    LayoutRequest request;
    request.pageSize = pageSize;
    request.unit = 1;
    request.dpi = 254;  // 100 pixels a centimetre
    request.imageWidth = 1000;
    request.imageHeight = 2000;
    request.cutLeft = request.cutRight = 100;
    request.cutTop = request.cutBottom = 200;
    return request;
}

TEST(InnerSize, RowsWithoutAPageAreFreeBothWays) {
    for (const int row : {0, 1, 2}) {
        LayoutRequest request = CutPage(row);
        computeInnerSize(request);
        EXPECT_EQ(request.innerWidth, -1) << row;
        EXPECT_EQ(request.innerHeight, -1) << row;
        EXPECT_TRUE(innerSizeValid(request)) << row;
    }
}

TEST(InnerSize, NamedSizesAreCentimetresInEitherUnit) {
    struct Case {
        int row;
        double width, height;  // centimetres
    };
    constexpr Case kCases[] = {
        {6, 18.5, 26.0},  {7, 13.0, 18.5},  {8, 9.2, 12.7},   {9, 6.0, 8.7},    {10, 20.0, 28.5},
        {11, 14.0, 20.3}, {12, 10.1, 13.7}, {13, 6.5, 9.7},   {14, 21.0, 28.5}, {15, 14.3, 21.0},
        {16, 10.5, 14.0}, {17, 6.7, 10.0},  {18, 20.1, 29.7}, {19, 14.8, 21.0}, {20, 10.5, 14.4},
        {21, 6.9, 10.0},  {22, 16.9, 23.9}, {23, 11.9, 16.5}, {24, 8.2, 11.5},  {25, 21.0, 29.7},
        {26, 14.8, 21.0}, {27, 10.5, 14.4}, {28, 16.9, 23.9}, {29, 11.9, 16.5}, {30, 8.2, 11.5},
        {31, 55.0, 39.0}, {32, 27.5, 39.0}, {33, 42.0, 59.4}, {34, 29.7, 42.0}, {35, 21.0, 29.7},
    };
    static_assert(std::size(kCases) == kPageSizeCount - kFirstNamedSize);
    for (const Case& c : kCases)
        for (const int unit : {0, 1}) {
            LayoutRequest request = CutPage(c.row);
            request.unit = unit;
            computeInnerSize(request);
            EXPECT_EQ(request.innerWidth, static_cast<int>(c.width * 100 + 0.5)) << c.row;
            EXPECT_EQ(request.innerHeight, static_cast<int>(c.height * 100 + 0.5)) << c.row;
        }
}

TEST(InnerSize, HundredthsOfACentimetreBecomePixelsRounded) {
    LayoutRequest request = CutPage(5);
    request.unit = 0;
    request.dpi = 300;
    request.pageWidth = 2100;   // 21 cm: 2480.3 pixels
    request.pageHeight = 2970;  // 3507.9
    request.marginLeft = 100;   // 118.1
    request.marginBottom = 50;  // 59.06
    computeInnerSize(request);
    EXPECT_EQ(request.innerWidth, 2480 - 118);
    EXPECT_EQ(request.innerHeight, 3508 - 59);
}

TEST(InnerSize, MarginsWiderThanThePageLeaveNothing) {
    LayoutRequest request = CutPage(3);
    request.pageWidth = 100;
    request.marginLeft = 60;
    request.marginRight = 60;
    computeContentSize(request);
    EXPECT_EQ(request.innerWidth, 0);
    EXPECT_EQ(request.innerHeight, -1);
    EXPECT_EQ(request.contentWidth, 800);  // the content as it is
    EXPECT_EQ(request.contentHeight, 1600);
    EXPECT_FALSE(innerSizeValid(request));
}

TEST(InnerSize, ElevenPixelsAreEnough) {
    LayoutRequest request = CutPage(5);
    request.pageWidth = 11;
    request.pageHeight = 11;
    EXPECT_TRUE(innerSizeValid(request));
    request.pageHeight = 10;
    EXPECT_FALSE(innerSizeValid(request));
}

struct ContentCase {
    const char* name;
    int pageSize, pageWidth, pageHeight, smallRule, bigRule, percent;
    int width, height;  // expected
};
void PrintTo(const ContentCase& c, std::ostream* out) {
    *out << c.name;
}
constexpr ContentCase kContentCases[] = {
    {"FreePageKeepsTheCutSize", 2, 0, 0, 1, 1, 100, 800, 1600},
    {"PercentIsTakenFirst", 2, 0, 0, 1, 1, 50, 400, 800},
    {"SmallerGrowsToTheNarrowerSide", 5, 1000, 1800, 1, 0, 100, 900, 1800},
    {"SmallerGrowsToTheWidth", 5, 900, 4000, 1, 0, 100, 900, 1800},
    {"SmallerStaysWithoutTheRule", 5, 1000, 1800, 0, 1, 100, 800, 1600},
    {"LargerShrinks", 5, 400, 1000, 0, 1, 100, 400, 800},
    {"LargerOneWayShrinks", 5, 2000, 800, 1, 1, 100, 400, 800},
    {"LargerStaysToOverflow", 5, 400, 1000, 1, 0, 100, 800, 1600},
    {"LargerStaysToBeCut", 5, 400, 1000, 1, 2, 100, 800, 1600},
    {"WidthAloneGrows", 3, 1000, 0, 1, 0, 100, 1000, 2000},
    {"WidthAloneShrinks", 3, 400, 0, 0, 1, 100, 400, 800},
    {"WidthAloneStays", 3, 400, 0, 1, 0, 100, 800, 1600},
    {"HeightAloneGrows", 4, 0, 2000, 1, 0, 100, 1000, 2000},
    {"HeightAloneShrinks", 4, 0, 800, 0, 1, 100, 400, 800},
    {"ARowBeyondTheListIsFree", 36, 0, 0, 1, 1, 100, 800, 1600},
};
class ContentSize : public testing::TestWithParam<ContentCase> {};

TEST_P(ContentSize, FollowsTheRules) {
    const ContentCase& c = GetParam();
    LayoutRequest request = CutPage(c.pageSize);
    request.pageWidth = c.pageWidth;
    request.pageHeight = c.pageHeight;
    request.smallRule = c.smallRule;
    request.bigRule = c.bigRule;
    request.resizePercent = c.percent;
    computeContentSize(request);
    EXPECT_EQ(request.contentWidth, c.width);
    EXPECT_EQ(request.contentHeight, c.height);
}
INSTANTIATE_TEST_SUITE_P(Rules, ContentSize, testing::ValuesIn(kContentCases),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(ContentSizeOf, APageOfNoSizeHasNone) {
    LayoutRequest request = CutPage(2);
    request.imageHeight = 0;
    computeContentSize(request);
    EXPECT_EQ(request.contentWidth, 0);
    EXPECT_EQ(request.contentHeight, 0);
}

TEST(ContentSizeOf, ExtremesDoNotOverflow) {
    constexpr int kLow = std::numeric_limits<int>::min(), kHigh = std::numeric_limits<int>::max();
    for (const int value : {kLow, -1, 0, 1, kHigh})
        for (int row = -1; row <= 36; ++row)
            for (const int unit : {0, 1}) {
                LayoutRequest request = CutPage(row);
                request.unit = unit;
                request.dpi = request.resizePercent = value;
                request.pageWidth = request.pageHeight = kHigh;
                request.marginLeft = request.marginTop = value;
                request.smallRule = request.bigRule = 1;
                computeContentSize(request);  // the undefined behaviour sanitizer looks on
                EXPECT_GE(request.innerWidth, -1);
            }
}

}  // namespace
}  // namespace velloran
