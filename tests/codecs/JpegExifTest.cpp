#include "codecs/JpegExif.h"

#include <gtest/gtest.h>

#include "codecs/FileForms.h"
#include "codecs/Jpeg.h"
#include "codecs/Mutations.h"
#include "codecs/PlainJpeg.h"
#include "core/DibImage.h"
#include "support/Images.h"
#include "support/SharedData.h"

namespace velloran {
namespace {

using test::BytesOf;
using test::ExifTags;

std::string FileWith(const ExifTags& tags, int channels = 3, int width = 19, int height = 13) {
    test::PlainOptions options;
    options.app1 = test::ExifPayload(tags);
    options.quality = 95;
    return test::EncodePlain(test::Scene(width, height, channels), options);
}

CDibImage Loaded(const std::string& file) {
    CDibImage image;
    EXPECT_TRUE(LoadJpegBytes(BytesOf(file), image, false, nullptr));
    return image;
}

struct OrientationCase {
    const char* name;
    int orientation;
    bool swapsSides;
    // Where the upright picture's pixel (x, y) lies in the stored one of width w and height h, by
    // the meaning of the tag: which stored side is the visual top and left.
    int (*storedX)(int x, int y, int w, int h);
    int (*storedY)(int x, int y, int w, int h);
};
void PrintTo(const OrientationCase& c, std::ostream* out) {
    *out << c.name;
}
constexpr OrientationCase kOrientations[] = {
    {"TopLeft", 1, false, [](int x, int, int, int) { return x; },
     [](int, int y, int, int) { return y; }},
    {"TopRight", 2, false, [](int x, int, int w, int) { return w - 1 - x; },
     [](int, int y, int, int) { return y; }},
    {"BottomRight", 3, false, [](int x, int, int w, int) { return w - 1 - x; },
     [](int, int y, int, int h) { return h - 1 - y; }},
    {"BottomLeft", 4, false, [](int x, int, int, int) { return x; },
     [](int, int y, int, int h) { return h - 1 - y; }},
    {"LeftTop", 5, true, [](int, int y, int, int) { return y; },
     [](int x, int, int, int) { return x; }},
    {"RightTop", 6, true, [](int, int y, int, int) { return y; },
     [](int x, int, int, int h) { return h - 1 - x; }},
    {"RightBottom", 7, true, [](int, int y, int w, int) { return w - 1 - y; },
     [](int x, int, int, int h) { return h - 1 - x; }},
    {"LeftBottom", 8, true, [](int, int y, int w, int) { return w - 1 - y; },
     [](int x, int, int, int) { return x; }},
    {"AnUnknownOneStays", 9, false, [](int x, int, int, int) { return x; },
     [](int, int y, int, int) { return y; }},
};
class ExifOrientation : public testing::TestWithParam<OrientationCase> {};
TEST_P(ExifOrientation, IsTurnedUpright) {
    const OrientationCase& c = GetParam();
    for (const int channels : {1, 3})
        for (const auto& [width, height] : {std::pair{19, 13}, {8, 65}, {1, 1}, {130, 70}}) {
            const std::string file =
                FileWith({.orientation = c.orientation}, channels, width, height);
            const test::PlainPicture stored = test::DecodePlain(file);
            const CDibImage image = Loaded(file);
            ASSERT_EQ(image.GetWidth(), c.swapsSides ? height : width);
            ASSERT_EQ(image.GetHeight(), c.swapsSides ? width : height);
            EXPECT_EQ(image.GetBpp(), channels * 8);
            EXPECT_EQ(image.IsGrayScale(), channels == 1);
            for (int y = 0; y < image.GetHeight(); ++y)
                for (int x = 0; x < image.GetWidth(); ++x) {
                    const int sx = c.storedX(x, y, width, height);
                    const int sy = c.storedY(x, y, width, height);
                    ASSERT_EQ(test::PixelAt(image, x, y).red, stored.At(sx, sy, 0));
                    ASSERT_EQ(test::PixelAt(image, x, y).blue, stored.At(sx, sy, channels - 1));
                }
            ImageInfo info;
            ASSERT_TRUE(ReadJpegInfo(BytesOf(file), info, nullptr));
            EXPECT_EQ(info.width, image.GetWidth());
            EXPECT_EQ(info.height, image.GetHeight());
        }
}
INSTANTIATE_TEST_SUITE_P(, ExifOrientation, testing::ValuesIn(kOrientations),
                         [](const auto& c) { return std::string(c.param.name); });

TEST(JpegExif, OrientationSixSwapsWidthAndHeight) {
    const CDibImage image = Loaded(FileWith({.orientation = 6}, 3, 40, 24));
    EXPECT_EQ(image.GetWidth(), 24);
    EXPECT_EQ(image.GetHeight(), 40);
}

TEST(JpegExif, PaddingBehindTurnedRowsIsZero) {
    const CDibImage image = Loaded(FileWith({.orientation = 6}, 3, 6, 5));
    for (int y = 0; y < 6; ++y)
        EXPECT_EQ(image.GetBits(y)[15], 0);
}

struct ResolutionCase {
    const char* name;
    ExifTags tags;
    int xDpi, yDpi;
};
void PrintTo(const ResolutionCase& c, std::ostream* out) {
    *out << c.name;
}
// The head of the test files holds a density of 1 with no unit: 1 DPI.
const ResolutionCase kResolutions[] = {
    {"InchesAreTakenForBothDirections", {-1, 2, 150, 158}, 150, 158},
    {"FractionsAreCut", {-1, 2, 299.999, 72.5}, 299, 72},
    {"InchesWithOneValueLeaveTheOther", {-1, 2, -1, 158}, 1, 158},
    // 4000 * 254 / 10000 + 0.5 = 102.1, and 8000: 203.7; the second overwrites the first.
    {"CentimetresBothGoToX", {-1, 3, 4000, 8000}, 203, 1},
    {"CentimetresWithoutYGiveX", {-1, 3, 4000, -1}, 102, 1},
    {"CentimetresOfNoUseAreTheDefault", {-1, 3, 10, 10}, 96, 1},  // 0.75
    {"NoUnitChangesNothing", {-1, -1, 300, 300}, 1, 1},
    {"AnotherUnitChangesNothing", {-1, 1, 300, 300}, 1, 1},
    {"ZeroIsTheDefault", {-1, 2, 0, 0}, 96, 96},
    {"NoTagsChangeNothing", {}, 1, 1},
    {"BigEndianReadsTheSame", {-1, 2, 150, 158, true}, 150, 158},
};
class ExifResolution : public testing::TestWithParam<ResolutionCase> {};
TEST_P(ExifResolution, SetsTheDpi) {
    const ResolutionCase& c = GetParam();
    const std::string file = FileWith(c.tags);
    const CDibImage image = Loaded(file);
    EXPECT_EQ(image.GetXDpi(), c.xDpi);
    EXPECT_EQ(image.GetYDpi(), c.yDpi);
    EXPECT_EQ(image.Source().sourceFlag, static_cast<std::uint32_t>(c.xDpi));
    ImageInfo info;
    ASSERT_TRUE(ReadJpegInfo(BytesOf(file), info, nullptr));
    EXPECT_EQ(info.xDpi, c.xDpi);
    EXPECT_EQ(info.yDpi, c.yDpi);
}
INSTANTIATE_TEST_SUITE_P(, ExifResolution, testing::ValuesIn(kResolutions),
                         [](const auto& c) { return std::string(c.param.name); });

TEST(JpegExif, ResolutionStaysWithItsTagsInATurnedPicture) {
    const CDibImage image =
        Loaded(FileWith({.orientation = 8, .unit = 2, .xResolution = 200, .yResolution = 100}));
    EXPECT_EQ(image.GetXDpi(), 200);
    EXPECT_EQ(image.GetYDpi(), 100);
}

TEST(JpegExif, AZeroDenominatorIsNoResolution) {
    std::string exif = test::ExifPayload({.unit = 2, .xResolution = 300, .yResolution = 300});
    exif.replace(exif.size() - 4, 4, 4, '\0');  // that of the y resolution
    const ExifFacts facts = ReadExifFacts(BytesOf(exif));
    EXPECT_EQ(facts.xResolution, 300);
    EXPECT_FALSE(facts.yResolution.has_value());
}

TEST(JpegExif, DamagedExifCostsOnlyItself) {
    const std::string exif =
        test::ExifPayload({.orientation = 3, .unit = 2, .xResolution = 300, .yResolution = 300});
    for (const std::string& cut : test::TruncationsOf(exif)) {
        const ExifFacts facts = ReadExifFacts(BytesOf(cut));
        EXPECT_TRUE(facts.orientation == 1 || facts.orientation == 3);
    }
    test::ForEachMutation(exif, 2000, 11, [](const std::string& damaged) {
        const ExifFacts facts = ReadExifFacts(BytesOf(damaged));
        EXPECT_GE(facts.orientation, 1);
        EXPECT_LE(facts.orientation, 8);
        ApplyExifResolution(facts, {96, 96});
    });
    test::PlainOptions options;
    options.app1 = exif.substr(0, 20);
    const CDibImage image = Loaded(test::EncodePlain(test::Scene(9, 5, 3), options));
    EXPECT_EQ(image.GetWidth(), 9);
    EXPECT_EQ(image.GetXDpi(), 1);
}

TEST(JpegExif, APhotographTakenSidewaysStandsUpright) {
    if (test::SharedData().empty())
        GTEST_SKIP() << "no shared pictures";
    CDibImage image;  // orientation 6, 72 dots an inch, 3264 x 2448 stored
    ASSERT_TRUE(LoadJpeg(test::SharedData() / "photos" / "boston_cooking_a.jpg", image));
    EXPECT_EQ(image.GetWidth(), 2448);
    EXPECT_EQ(image.GetHeight(), 3264);
    EXPECT_EQ(image.GetXDpi(), 72);
    EXPECT_EQ(image.GetYDpi(), 72);
}

}  // namespace
}  // namespace velloran
