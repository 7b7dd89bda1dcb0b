#include <gtest/gtest.h>

#include "codecs/Bmp.h"
#include "codecs/BmpFiles.h"
#include "codecs/FileForms.h"
#include "codecs/FullDisk.h"
#include "core/DibImage.h"
#include "support/FailingAllocator.h"
#include "support/Images.h"
#include "support/TempFolder.h"

namespace velloran {
namespace {

using test::Le;
using test::PixelAt;
using test::Rgb;
using namespace std::string_literals;

class BmpWriter : public testing::Test {
 protected:
    std::string Saved(const CDibImage& image) {
        FileError error;
        EXPECT_TRUE(SaveBmp(folder_ / "page.bmp", image, &error)) << error.detail;
        return test::ReadAll(folder_ / "page.bmp");
    }
    std::string Saved16(const CDibImage& image, bool is565) {
        FileError error;
        EXPECT_TRUE(SaveBmp16(folder_ / "page.bmp", image, is565, &error)) << error.detail;
        return test::ReadAll(folder_ / "page.bmp");
    }
    CDibImage Back() {
        CDibImage image;
        EXPECT_TRUE(LoadBmp(folder_ / "page.bmp", image));
        return image;
    }
    test::TempFolder folder_;
};

CDibImage Colors() {
    CDibImage image = test::FromRows(
        {{255, 254, 253, 7, 8, 9, 100, 101, 102}, {0, 1, 2, 128, 64, 32, 15, 16, 17}}, 3);
    image.SetXDpi(300);
    image.SetYDpi(600);
    return image;
}

TEST_F(BmpWriter, TwentyFourBitsAreWrittenByteForByte) {
    const std::string rows = "\x2\x1\x0\x20\x40\x80\x11\x10\xF\0\0\0"s +
                             "\xFD\xFE\xFF\x9\x8\x7\x66\x65\x64\0\0\0"s;  // the bottom row first
    // 300 * 10000 / 254 = 11811.02, 600: 23622.05
    EXPECT_EQ(Saved(Colors()), "BM" + Le(54 + 24, 4) + Le(0, 4) + Le(54, 4) + Le(40, 4) + Le(3, 4) +
                                   Le(2, 4) + Le(1, 2) + Le(24, 2) + Le(0, 4) + Le(24, 4) +
                                   Le(11811, 4) + Le(23622, 4) + Le(0, 4) + Le(0, 4) + rows);
}

TEST_F(BmpWriter, OneBitHasTwoEntriesAndClearedPadding) {
    CDibImage image = test::Filled(10, 1, 1, 1);
    test::SetPalette(image, {{1, 2, 3}, {4, 5, 6}});
    image.GetPalette()[1].reserved = 99;
    std::fill(image.GetBits(0), image.GetBits(0) + 4, std::uint8_t{0xFF});
    EXPECT_EQ(Saved(image), "BM" + Le(66, 4) + Le(0, 4) + Le(62, 4) + Le(40, 4) + Le(10, 4) +
                                Le(1, 4) + Le(1, 2) + Le(1, 2) + Le(0, 4) + Le(4, 4) + Le(3780, 4) +
                                Le(3780, 4) + Le(2, 4) + Le(0, 4) + "\3\2\1\0\6\5\4\0"s +
                                "\xFF\xC0\0\0"s);
}

TEST_F(BmpWriter, EveryDepthComesBack) {
    for (const int bpp : {1, 4, 8, 24})
        for (int width = 1; width <= 17; ++width) {
            CDibImage image = test::Noise(width, 5, bpp);
            image.SetXDpi(150);
            image.SetYDpi(75);
            Saved(image);
            const CDibImage back = Back();
            test::ExpectSamePixels(back, image);
            EXPECT_EQ(back.GetXDpi(), 150);
            EXPECT_EQ(back.GetYDpi(), 75);
            EXPECT_EQ(back.Source().sourceColours, static_cast<std::uint32_t>(bpp));
        }
}

TEST_F(BmpWriter, SixteenBits565AreWrittenByteForByte) {
    // Bottom row: (0,1,2) (128,64,32) (15,16,17) as red, green, blue.
    const std::string rows = Le(0, 2) + Le(16 << 11 | 16 << 5 | 4, 2) +
                             Le(1 << 11 | 4 << 5 | 2, 2) + Le(0, 2) +
                             Le(31 << 11 | 63 << 5 | 31, 2) + Le(0 << 11 | 2 << 5 | 1, 2) +
                             Le(12 << 11 | 25 << 5 | 12, 2) + Le(0, 2);
    EXPECT_EQ(Saved16(Colors(), true),
              "BM" + Le(66 + 16, 4) + Le(0, 4) + Le(66, 4) + Le(40, 4) + Le(3, 4) + Le(2, 4) +
                  Le(1, 2) + Le(16, 2) + Le(3, 4) + Le(16, 4) + Le(11811, 4) + Le(23622, 4) +
                  Le(0, 4) + Le(0, 4) + Le(0xF800, 4) + Le(0x07E0, 4) + Le(0x001F, 4) + rows);
}

TEST_F(BmpWriter, SixteenBits555AreWrittenByteForByte) {
    const std::string rows = Le(0, 2) + Le(16 << 10 | 8 << 5 | 4, 2) + Le(1 << 10 | 2 << 5 | 2, 2) +
                             Le(0, 2) + Le(31 << 10 | 31 << 5 | 31, 2) +
                             Le(0 << 10 | 1 << 5 | 1, 2) + Le(12 << 10 | 12 << 5 | 12, 2) +
                             Le(0, 2);
    EXPECT_EQ(Saved16(Colors(), false), "BM" + Le(54 + 16, 4) + Le(0, 4) + Le(54, 4) + Le(40, 4) +
                                            Le(3, 4) + Le(2, 4) + Le(1, 2) + Le(16, 2) + Le(0, 4) +
                                            Le(0, 4) + Le(11811, 4) + Le(23622, 4) + Le(0, 4) +
                                            Le(0, 4) + rows);
}

TEST_F(BmpWriter, SixteenBitsComeBackMasked) {
    const CDibImage image = test::Noise(17, 9, 24);
    for (const bool is565 : {true, false}) {
        Saved16(image, is565);
        const CDibImage back = Back();
        EXPECT_EQ(back.Source().sourceColours, 16U);
        for (int y = 0; y < 9; ++y)
            for (int x = 0; x < 17; ++x) {
                const Rgb pixel = PixelAt(image, x, y);
                EXPECT_EQ(PixelAt(back, x, y),
                          (Rgb{pixel.red & 0xF8, pixel.green & (is565 ? 0xFC : 0xF8),
                               pixel.blue & 0xF8}));
            }
    }
}

TEST_F(BmpWriter, SixteenBitsWidenPalettesFirst) {
    CDibImage image = test::Filled(3, 2, 8, 1);
    test::SetPalette(image, {{0, 0, 0}, {255, 128, 64}});
    const CDibImage before = image;
    Saved16(image, true);
    EXPECT_EQ(PixelAt(Back(), 2, 1), (Rgb{248, 128, 64}));
    test::ExpectSamePixels(image, before);
}

TEST_F(BmpWriter, SixteenBitsOfAnEmptyImageAreOnlyTheHeads) {
    const std::string plain = Saved16(CDibImage(), false);
    EXPECT_EQ(plain, "BM" + Le(54, 4) + Le(0, 4) + Le(54, 4) + Le(40, 4) + Le(0, 4) + Le(0, 4) +
                         Le(1, 2) + Le(16, 2) + Le(0, 4) + Le(0, 4) + Le(3780, 4) + Le(3780, 4) +
                         Le(0, 4) + Le(0, 4));
    const std::string fields = Saved16(CDibImage(), true);
    EXPECT_EQ(fields.size(), 66U);
    EXPECT_EQ(fields.substr(2, 4), Le(66, 4));
    EXPECT_EQ(fields.substr(30, 8), Le(3, 4) + Le(0, 4));
    EXPECT_EQ(fields.substr(54), Le(0xF800, 4) + Le(0x07E0, 4) + Le(0x001F, 4));
}

TEST_F(BmpWriter, AnEmptyImageIsRefusedBeforeTheFileIsTouched) {
    FileError error;
    EXPECT_FALSE(SaveBmp(folder_ / "page.bmp", CDibImage(), &error));
    EXPECT_EQ(error.cause, FileError::Cause::kContent);
    EXPECT_TRUE(folder_.AllNames().empty());
}

TEST_F(BmpWriter, AFolderThatIsMissingIsAStorageFailure) {
    for (const bool sixteen : {false, true}) {
        FileError error;
        const auto path = folder_ / "none" / "page.bmp";
        EXPECT_FALSE(sixteen ? SaveBmp16(path, Colors(), true, &error)
                             : SaveBmp(path, Colors(), &error));
        EXPECT_EQ(error.cause, FileError::Cause::kStorage);
    }
}

TEST_F(BmpWriter, AFullDiskIsAStorageFailureAndKeepsTheOldFile) {
    const CDibImage image = test::Noise(500, 400, 24);
    test::WriteAll(folder_ / "page.bmp", "before");
    for (const bool sixteen : {false, true})
        for (const rlim_t room : {0, 100, 300'000}) {
            FileError error;
            {
                const test::FullDisk full(room);
                EXPECT_FALSE(sixteen ? SaveBmp16(folder_ / "page.bmp", image, true, &error)
                                     : SaveBmp(folder_ / "page.bmp", image, &error));
            }
            EXPECT_EQ(error.cause, FileError::Cause::kStorage);
            EXPECT_EQ(test::ReadAll(folder_ / "page.bmp"), "before");
            EXPECT_EQ(folder_.AllNames(), std::vector<std::string>{"page.bmp"});
        }
}

TEST_F(BmpWriter, OutOfMemoryAnywhereLeavesNoFile) {
    const CDibImage image = test::Noise(9, 9, 8);
    const std::filesystem::path path = folder_ / "page.bmp";
    for (const bool sixteen : {false, true}) {
        std::filesystem::remove(path);
        const int failures = test::SweepFailingAllocations([&](long) {
            const bool saved = sixteen ? SaveBmp16(path, image, true) : SaveBmp(path, image);
            EXPECT_EQ(saved, std::filesystem::exists(path));
        });
        EXPECT_GE(failures, 1);
        EXPECT_EQ(folder_.AllNames(), std::vector<std::string>{"page.bmp"});
    }
}

}  // namespace
}  // namespace velloran
