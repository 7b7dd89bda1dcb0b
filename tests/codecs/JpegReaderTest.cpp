// clang-format off
#include <cstdio>  // jpeglib.h needs it before itself
#include <jpeglib.h>
// clang-format on

#include <gtest/gtest.h>

#include "codecs/FileForms.h"
#include "codecs/Jpeg.h"
#include "codecs/Mutations.h"
#include "codecs/PlainJpeg.h"
#include "core/DibImage.h"
#include "support/FailingAllocator.h"
#include "support/Images.h"
#include "support/SharedData.h"
#include "support/TempFolder.h"

namespace velloran {
namespace {

using test::BytesOf;
using test::PlainOptions;
using test::PlainPicture;

bool Load(const std::string& file, CDibImage& image, FileError* error = nullptr) {
    return LoadJpegBytes(BytesOf(file), image, /*reverseCmyk=*/false, error);
}

void ExpectShows(const CDibImage& image, const PlainPicture& expected) {
    ASSERT_EQ(image.GetWidth(), expected.width);
    ASSERT_EQ(image.GetHeight(), expected.height);
    int differing = 0;
    for (int y = 0; y < expected.height; ++y)
        for (int x = 0; x < expected.width; ++x) {
            const int last = expected.channels - 1;
            const test::Rgb wanted{expected.At(x, y, 0), expected.At(x, y, last / 2),
                                   expected.At(x, y, last)};
            if (!(test::PixelAt(image, x, y) == wanted) && ++differing <= 3)
                ADD_FAILURE() << "at " << x << ", " << y;
        }
    EXPECT_EQ(differing, 0);
}

PlainOptions WithDensity(int unit, int x, int y) {
    PlainOptions options;
    options.adjust = [=](jpeg_compress_struct& jpeg) {
        jpeg.density_unit = static_cast<UINT8>(unit);
        jpeg.X_density = static_cast<UINT16>(x);
        jpeg.Y_density = static_cast<UINT16>(y);
    };
    return options;
}

TEST(JpegReader, ColorIsWhatTheLibraryDecodes) {
    for (const int width : {1, 2, 3, 15, 16, 17, 50})
        for (const int height : {1, 7, 16, 33}) {
            const std::string file = test::EncodePlain(test::Scene(width, height, 3));
            CDibImage image;
            ASSERT_TRUE(Load(file, image));
            EXPECT_EQ(image.GetBpp(), 24);
            EXPECT_EQ(image.Source().sourceColours, 24U);
            ExpectShows(image, test::DecodePlain(file));
        }
}

TEST(JpegReader, GrayTakesTheIdentityRamp) {
    const std::string file = test::EncodePlain(test::Scene(37, 21, 1));
    CDibImage image;
    ASSERT_TRUE(Load(file, image));
    EXPECT_EQ(image.GetBpp(), 8);
    EXPECT_TRUE(image.IsGrayScale());
    EXPECT_EQ(image.Source().sourceColours, 8U);
    ExpectShows(image, test::DecodePlain(file));
}

TEST(JpegReader, BytesBehindTheRowsAreZero) {
    for (const int channels : {1, 3}) {
        CDibImage image;
        ASSERT_TRUE(Load(test::EncodePlain(test::Scene(5, 9, channels)), image));
        for (int y = 0; y < 9; ++y)
            for (std::size_t i = 5U * channels; i < image.GetEffWidth(); ++i)
                EXPECT_EQ(image.GetBits(y)[i], 0);
    }
}

TEST(JpegReader, ProgressiveArithmeticAndRestartsAreRead) {
    const PlainPicture scene = test::Scene(70, 45, 3);
    const std::vector<std::function<void(jpeg_compress_struct&)>> kinds = {
        [](jpeg_compress_struct& jpeg) { jpeg_simple_progression(&jpeg); },
        [](jpeg_compress_struct& jpeg) { jpeg.arith_code = TRUE; },
        [](jpeg_compress_struct& jpeg) { jpeg.restart_interval = 3; },
        [](jpeg_compress_struct& jpeg) { jpeg_set_colorspace(&jpeg, JCS_RGB); },
    };
    for (const auto& kind : kinds) {
        PlainOptions options;
        options.adjust = kind;
        const std::string file = test::EncodePlain(scene, options);
        CDibImage image;
        ASSERT_TRUE(Load(file, image));
        ExpectShows(image, test::DecodePlain(file));
    }
}

struct DpiCase {
    const char* name;
    int unit, density, dpi;
};
void PrintTo(const DpiCase& c, std::ostream* out) {
    *out << c.name;
}
constexpr DpiCase kDpiCases[] = {
    {"DotsPerInch", 1, 300, 300},
    {"AspectRatioOnlyIsTakenAsItIs", 0, 7, 7},
    {"PerCentimetreReadsByTheOldFactor", 2, 118, 3},  // 118 * 254 / 10000 + 0.5 = 3.497
    {"PerCentimetreRoundsHalfUp", 2, 138, 4},         // 3.505 + 0.5
    {"PerCentimetreThatGivesNothingIsTheDefault", 2, 19,
     96},  // 0.98: 0, which an image takes as 96
    {"NoDensityIsTheDefault", 1, 0, 96},
};
class JpegDpi : public testing::TestWithParam<DpiCase> {};
TEST_P(JpegDpi, OfBothDirectionsComesFromTheXDensity) {
    const DpiCase& c = GetParam();
    const std::string file =
        test::EncodePlain(test::Scene(8, 8, 3), WithDensity(c.unit, c.density, 999));
    CDibImage image;
    ASSERT_TRUE(Load(file, image));
    EXPECT_EQ(image.GetXDpi(), c.dpi);
    EXPECT_EQ(image.GetYDpi(), c.dpi);
    EXPECT_EQ(image.Source().sourceFlag, static_cast<std::uint32_t>(c.dpi));
    ImageInfo info;
    ASSERT_TRUE(ReadJpegInfo(BytesOf(file), info, nullptr));
    EXPECT_EQ(info.xDpi, c.dpi);
    EXPECT_EQ(info.yDpi, c.dpi);
}
INSTANTIATE_TEST_SUITE_P(, JpegDpi, testing::ValuesIn(kDpiCases),
                         [](const auto& c) { return std::string(c.param.name); });

TEST(JpegReader, HeadTellsBitsAndDpi) {
    int bits = 0, dpi = 0;
    EXPECT_TRUE(ReadJpegHeader(
        BytesOf(test::EncodePlain(test::Scene(8, 8, 3), WithDensity(2, 118, 118))), bits, dpi));
    EXPECT_EQ(bits, 24);
    EXPECT_EQ(dpi, 3);
    EXPECT_TRUE(ReadJpegHeader(
        BytesOf(test::EncodePlain(test::Scene(8, 8, 1), WithDensity(1, 600, 1))), bits, dpi));
    EXPECT_EQ(bits, 8);
    EXPECT_EQ(dpi, 600);
    EXPECT_FALSE(ReadJpegHeader(BytesOf(std::string("\xFF\xD8\xFF\xE0 no head")), bits, dpi));
}

TEST(JpegReader, InfoTellsWhatALoadWouldGive) {
    ImageInfo info;
    ASSERT_TRUE(ReadJpegInfo(BytesOf(test::EncodePlain(test::Scene(20, 30, 1))), info, nullptr));
    EXPECT_EQ(info.width, 20);
    EXPECT_EQ(info.height, 30);
    EXPECT_EQ(info.bitsPerPixel, 8);
    EXPECT_EQ(info.colorsUsed, 0);
    EXPECT_TRUE(info.gray);
    ASSERT_TRUE(ReadJpegInfo(BytesOf(test::EncodePlain(test::Scene(20, 30, 4))), info, nullptr));
    EXPECT_EQ(info.bitsPerPixel, 32);
    EXPECT_FALSE(info.gray);
}

TEST(JpegReader, NineBytesOfAValidStartFail) {
    const std::string file = test::EncodePlain(test::Scene(8, 8, 3));
    const test::TempFolder folder;
    CDibImage image = test::Filled(3, 3, 8, 7);
    const CDibImage before = image;
    for (const std::size_t length : {0U, 1U, 9U, 10U}) {
        test::WriteAll(folder / "short.jpg", file.substr(0, length));
        FileError error;
        EXPECT_FALSE(LoadJpeg(folder / "short.jpg", image, false, &error));
        EXPECT_NE(error.cause, FileError::Cause::kNone);
    }
    test::ExpectSamePixels(image, before);
}

TEST(JpegReader, MissingFilesAndFoldersFailWithAReason) {
    const test::TempFolder folder;
    CDibImage image;
    FileError error;
    EXPECT_FALSE(LoadJpeg(folder / "none.jpg", image, false, &error));
    EXPECT_NE(error.cause, FileError::Cause::kNone);
    EXPECT_FALSE(LoadJpeg(folder.Path(), image));
}

TEST(JpegReader, TwoComponentsAndTwelveBitsAndLosslessFailWithAReason) {
    std::vector<std::string> files = {test::EncodePlain(test::Scene(8, 8, 2))};
    std::string twelve = test::EncodePlain(test::Scene(8, 8, 3));
    const std::size_t frame = twelve.find("\xFF\xC0");
    std::string lossless = twelve;
    twelve[frame + 4] = 12;
    lossless[frame + 1] = '\xC3';
    files.push_back(twelve);
    files.push_back(lossless);
    for (const std::string& file : files) {
        CDibImage image;
        FileError error;
        EXPECT_FALSE(Load(file, image, &error));
        EXPECT_EQ(error.cause, FileError::Cause::kContent);
        EXPECT_FALSE(error.detail.empty());
        EXPECT_FALSE(image.IsValid());
        ImageInfo info;
        EXPECT_FALSE(ReadJpegInfo(BytesOf(file), info, nullptr));
    }
}

TEST(JpegReader, SizesAboveAGigapixelAreRefused) {
    std::string file = test::EncodePlain(test::Scene(8, 8, 3));
    const std::size_t frame = file.find("\xFF\xC0");
    for (const std::size_t at : {5U, 7U}) {  // height, width: 65000
        file[frame + at] = '\xFD';
        file[frame + at + 1] = '\xE8';
    }
    CDibImage image;
    FileError error;
    EXPECT_FALSE(Load(file, image, &error));
    EXPECT_EQ(error.detail, "Picture too large");
}

TEST(JpegReader, ASizeThatTheFileCannotHoldIsRefused) {
    std::string file = test::EncodePlain(test::Scene(8, 8, 3));
    const std::size_t frame = file.find("\xFF\xC0");
    for (const std::size_t at : {5U, 7U}) {  // height, width: 20000
        file[frame + at] = '\x4E';
        file[frame + at + 1] = '\x20';
    }
    CDibImage image;
    FileError error;
    EXPECT_FALSE(Load(file, image, &error));
    EXPECT_EQ(error.detail, "Picture too large for its file");
}

TEST(JpegReader, AFloodOfScansIsRefused) {
    PlainOptions options;
    options.adjust = [](jpeg_compress_struct& jpeg) { jpeg_simple_progression(&jpeg); };
    std::string file = test::EncodePlain(test::Scene(16, 16, 1), options);
    // The last scan, which refines, once more and once more.
    const std::size_t last = file.rfind("\xFF\xDA");
    const std::string scan = file.substr(last, file.size() - 2 - last);
    file.resize(file.size() - 2);
    for (int i = 0; i < 600; ++i)
        file += scan;
    CDibImage image;
    FileError error;
    EXPECT_FALSE(Load(file, image, &error));
    EXPECT_EQ(error.detail, "Too many scans");
}

TEST(JpegReader, UfoIsAJpegWithItsFirstTenBytesPutRight) {
    std::string file = test::EncodePlain(test::Scene(30, 20, 3));
    CDibImage expected;
    ASSERT_TRUE(Load(file, expected));
    for (std::size_t i = 0; i < 10; ++i)
        file[i] = '?';
    const test::TempFolder folder;
    test::WriteAll(folder / "page.ufo", file);
    CDibImage image;
    ASSERT_TRUE(LoadUfo(folder / "page.ufo", image));
    test::ExpectSamePixels(image, expected);
    ImageInfo info;
    ASSERT_TRUE(ReadUfoInfo(BytesOf(file), info, nullptr));
    EXPECT_EQ(info.width, 30);
    EXPECT_FALSE(LoadJpeg(folder / "page.ufo", image));
    EXPECT_EQ(test::ReadAll(folder / "page.ufo"), file);
}

TEST(JpegReader, UfoNeedsMoreThanTenBytes) {
    const test::TempFolder folder;
    CDibImage image;
    test::WriteAll(folder / "ten.ufo", "0123456789");
    FileError error;
    EXPECT_FALSE(LoadUfo(folder / "ten.ufo", image, false, &error));
    EXPECT_EQ(error.detail, "Too short for a JPEG file");
    EXPECT_FALSE(LoadUfo(folder / "none.ufo", image));
}

TEST(JpegReader, ALoadKeepsTheNameInTheSourceRecord) {
    CDibImage image;
    image.Source().sourceName = "kept.jpg";
    image.Source().sourceInfo = 1;
    ASSERT_TRUE(Load(test::EncodePlain(test::Scene(8, 8, 3)), image));
    EXPECT_EQ(image.Source().sourceName, "kept.jpg");
    EXPECT_EQ(image.Source().sourceInfo, 1U);
}

TEST(JpegReader, OutOfMemoryAnywhereIsAReason) {
    for (const int channels : {3, 4}) {
        PlainOptions options;
        options.app1 = test::ExifPayload({.orientation = 6});
        const std::string file = test::EncodePlain(test::Scene(40, 30, channels), options);
        const int failures = test::SweepFailingAllocations([&](long) {
            CDibImage image;
            FileError error;
            if (!Load(file, image, &error)) {
                EXPECT_EQ(error.reason, FileReason::kNoMemory);
            }
        });
        EXPECT_GE(failures, 2);
    }
}

TEST(JpegReader, RealPagesAreWhatTheLibraryDecodes) {
    if (test::SharedData().empty())
        GTEST_SKIP() << "no shared pictures";
    int pages = 0;
    for (const auto& entry : std::filesystem::directory_iterator(test::SharedData() / "scans")) {
        if (entry.path().extension() != ".jpg")
            continue;
        const std::string file = test::ReadAll(entry.path());
        CDibImage image;
        ASSERT_TRUE(LoadJpeg(entry.path(), image)) << entry.path();
        const PlainPicture expected = test::DecodePlain(file);
        EXPECT_EQ(image.GetBpp(), expected.channels * 8);
        EXPECT_EQ(image.Source().sourceColours, static_cast<std::uint32_t>(expected.channels * 8));
        const int density = test::FactsOf(file).xDensity;
        EXPECT_EQ(image.GetXDpi(), density) << entry.path();
        ExpectShows(image, expected);
        ++pages;
    }
    EXPECT_GE(pages, 15);
}

}  // namespace
}  // namespace velloran
