#include <gtest/gtest.h>

#include "codecs/Bmp.h"
#include "codecs/BmpFiles.h"
#include "codecs/FileForms.h"
#include "codecs/Mutations.h"
#include "core/DibImage.h"
#include "support/FailingAllocator.h"
#include "support/Images.h"
#include "support/SharedData.h"
#include "support/TempFolder.h"

namespace velloran {
namespace {

using test::BmpParts;
using test::BuildBmp;
using test::BytesOf;
using test::IndexAt;
using test::Le;
using test::PixelAt;
using test::Rgb;
using namespace std::string_literals;

const std::vector<Rgb> kTwo = {{10, 20, 30}, {200, 210, 220}};
const std::vector<Rgb> kFour = {{1, 2, 3}, {50, 60, 70}, {255, 250, 245}, {9, 9, 9}};

bool Load(const std::string& file, CDibImage& image, FileError* error = nullptr) {
    return LoadBmpBytes(BytesOf(file), image, error);
}

CDibImage Loaded(const BmpParts& parts) {
    CDibImage image;
    FileError error;
    EXPECT_TRUE(Load(BuildBmp(parts), image, &error)) << error.detail;
    return image;
}

void ExpectRefused(const std::string& file) {
    CDibImage image = test::Filled(2, 2, 8, 5);
    FileError error;
    EXPECT_FALSE(Load(file, image, &error));
    EXPECT_EQ(error.cause, FileError::Cause::kContent);
    EXPECT_FALSE(error.detail.empty());
    test::ExpectSamePixels(image, test::Filled(2, 2, 8, 5));
}

TEST(BmpReader, OneBitKeepsItsPalette) {
    // 10 pixels: 1 0 1 0 0 0 0 0 | 1 1, then padding that is not zero.
    const CDibImage image =
        Loaded({.width = 10, .bits = 1, .palette = kTwo, .pixels = "\xA0\xFF\xFF\xFF"});
    EXPECT_EQ(image.GetBpp(), 1);
    EXPECT_EQ(PixelAt(image, 0, 0), (Rgb{200, 210, 220}));
    EXPECT_EQ(PixelAt(image, 1, 0), (Rgb{10, 20, 30}));
    EXPECT_EQ(IndexAt(image, 9, 0), 1);
    EXPECT_EQ(image.GetPalette()[0].reserved, 0);
    EXPECT_EQ(image.GetBits(0)[1], 0xC0);  // bits behind the last pixel are cleared
    EXPECT_EQ(image.GetBits(0)[2], 0);
    EXPECT_EQ(image.Source().sourceColours, 1U);
}

TEST(BmpReader, TwoBitsBecomeFour) {
    const CDibImage image =
        Loaded({.width = 5, .bits = 2, .palette = kFour, .pixels = "\x1B\x40\0\0"s});  // 0 1 2 3 1
    EXPECT_EQ(image.GetBpp(), 4);
    const int expected[] = {0, 1, 2, 3, 1};
    for (int x = 0; x < 5; ++x)
        EXPECT_EQ(IndexAt(image, x, 0), expected[x]);
    EXPECT_EQ(PixelAt(image, 2, 0), (Rgb{255, 250, 245}));
    EXPECT_EQ(image.Source().sourceColours, 2U);
}

TEST(BmpReader, FourAndEightBitsKeepTheirIndexes) {
    const CDibImage four = Loaded({.width = 3,
                                   .bits = 4,
                                   .colorsUsed = 0,
                                   .palette = kFour,
                                   .pixels = "\x12\x30\0\0"s,
                                   .pixelOffset = 14 + 40 + 16});
    EXPECT_EQ(four.GetBpp(), 4);
    EXPECT_EQ(IndexAt(four, 0, 0), 1);
    EXPECT_EQ(IndexAt(four, 1, 0), 2);
    EXPECT_EQ(IndexAt(four, 2, 0), 3);
    const CDibImage eight = Loaded({.width = 2,
                                    .height = 2,
                                    .bits = 8,
                                    .colorsUsed = 4,
                                    .palette = kFour,
                                    .pixels = "\0\1\0\0\2\3\0\0"s});
    EXPECT_EQ(eight.GetBpp(), 8);
    EXPECT_EQ(IndexAt(eight, 0, 1), 0);  // the first stored row is the bottom row
    EXPECT_EQ(IndexAt(eight, 1, 0), 3);
}

TEST(BmpReader, TwentyFourBitsAreBlueGreenRed) {
    const CDibImage image = Loaded({.width = 1, .height = 2, .pixels = "\1\2\3\0\4\5\6\0"s});
    EXPECT_EQ(PixelAt(image, 0, 1), (Rgb{3, 2, 1}));
    EXPECT_EQ(PixelAt(image, 0, 0), (Rgb{6, 5, 4}));
    EXPECT_EQ(image.Source().sourceColours, 24U);
}

TEST(BmpReader, NegativeHeightMeansTheTopRowFirst) {
    const CDibImage image = Loaded({.width = 1, .height = -2, .pixels = "\1\2\3\0\4\5\6\0"s});
    EXPECT_EQ(image.GetHeight(), 2);
    EXPECT_EQ(PixelAt(image, 0, 0), (Rgb{3, 2, 1}));
    EXPECT_EQ(PixelAt(image, 0, 1), (Rgb{6, 5, 4}));
}

TEST(BmpReader, SixteenBitsFillTheHighBits) {
    const CDibImage five =
        Loaded({.width = 2, .bits = 16, .pixels = Le(0x7FFF, 2) + Le(0x4432, 2)});
    EXPECT_EQ(five.GetBpp(), 24);
    EXPECT_EQ(PixelAt(five, 0, 0), (Rgb{248, 248, 248}));
    EXPECT_EQ(PixelAt(five, 1, 0), (Rgb{17 << 3, 1 << 3, 18 << 3}));
    EXPECT_EQ(five.Source().sourceColours, 16U);
    const CDibImage six = Loaded({.width = 2,
                                  .bits = 16,
                                  .compression = 3,
                                  .masks = {0xF800, 0x07E0, 0x001F},
                                  .pixels = Le(0xFFFF, 2) + Le(0x8422, 2)});
    EXPECT_EQ(PixelAt(six, 0, 0), (Rgb{248, 252, 248}));
    EXPECT_EQ(PixelAt(six, 1, 0), (Rgb{16 << 3, 33 << 2, 2 << 3}));
}

TEST(BmpReader, BitFieldsMayLieAnywhere) {
    // 10 bits a channel, red lowest: the high 8 of 10 bits count.
    const CDibImage image = Loaded({.width = 1,
                                    .bits = 32,
                                    .compression = 3,
                                    .masks = {0x000003FF, 0x000FFC00, 0x3FF00000},
                                    .pixels = Le(0x3FF | 0x200U << 10 | 0x004U << 20, 4)});
    EXPECT_EQ(PixelAt(image, 0, 0), (Rgb{255, 128, 1}));
    EXPECT_EQ(image.GetAlpha(), nullptr);
}

TEST(BmpReader, MasksThatReachTheHighestBitOrAreMissingAreTaken) {
    const CDibImage image = Loaded({.width = 1,
                                    .bits = 32,
                                    .compression = 3,
                                    .masks = {0xFF000000, 0, 0xFFFFFF},
                                    .pixels = Le(0x7B123456, 4)});
    EXPECT_EQ(PixelAt(image, 0, 0), (Rgb{0x7B, 0, 0x12}));
}

/// The colour of one pixel whose three masks are given.
Rgb OddPixel(int bits, std::uint32_t red, std::uint32_t green, std::uint32_t blue,
             std::uint32_t pixel) {
    return PixelAt(Loaded({.width = 1,
                           .bits = bits,
                           .compression = 3,
                           .masks = {red, green, blue},
                           .pixels = Le(pixel, 4)}),
                   0, 0);
}

TEST(BmpReader, NarrowFieldsOfOddMasksReachWhite) {
    EXPECT_EQ(OddPixel(16, 0xF00, 0x0F0, 0x00F, 0xFFF), (Rgb{255, 255, 255}));
    EXPECT_EQ(OddPixel(16, 0xF00, 0x0F0, 0x00F, 0x84F), (Rgb{136, 68, 255}));
    EXPECT_EQ(OddPixel(16, 0x4, 0x2, 0x1, 0x5), (Rgb{255, 0, 255}));
    EXPECT_EQ(OddPixel(16, 0xC0, 0x38, 0x07, 0x6D), (Rgb{85, 182, 182}));  // 1/3, 5/7, 5/7
    EXPECT_EQ(OddPixel(32, 0x7F0000, 0x7F00, 0x7F, 0x7F4000), (Rgb{255, 129, 0}));
    // 565 the other way round is none that the 16-bit writer cut.
    EXPECT_EQ(OddPixel(16, 0x001F, 0x07E0, 0xF800, 0xFFFF), (Rgb{255, 255, 255}));
}

TEST(BmpReader, MasksWithHolesAreRefused) {
    ExpectRefused(BuildBmp({.width = 1,
                            .bits = 32,
                            .compression = 3,
                            .masks = {0xF0F0, 0xFF0000, 0x0F},
                            .pixels = Le(0, 4)}));
}

TEST(BmpReader, AnAlphaMaskFillsTheAlphaPlane) {
    for (const bool insideHead : {true, false}) {
        BmpParts parts{.width = 2,
                       .height = 2,
                       .bits = 16,
                       .compression = insideHead ? 3U : 6U,
                       .masks = {0x7C00, 0x03E0, 0x001F, 0x8000}};
        parts.headSize = insideHead ? 108 : 40;
        parts.pixels = Le(0x8000, 2) + Le(0x0000, 2) + Le(0x0000, 2) + Le(0xFFFF, 2);
        const CDibImage image = Loaded(parts);
        ASSERT_NE(image.GetAlpha(), nullptr);
        // In the order of the pixel rows: the bottom row first.
        EXPECT_EQ(image.GetAlpha()[0], 255);
        EXPECT_EQ(image.GetAlpha()[1], 0);
        EXPECT_EQ(image.GetAlpha()[2], 0);
        EXPECT_EQ(image.GetAlpha()[3], 255);
        EXPECT_EQ(PixelAt(image, 1, 0), (Rgb{248, 248, 248}));
    }
}

struct FourthByteCase {
    const char* name;
    std::uint32_t first, second;
    bool hasAlpha;
};
TEST(BmpReader, TheFourthByteIsAlphaOnlyWhereItSaysSomething) {
    const FourthByteCase cases[] = {
        {"AllZeroIsAWriterThatLeftItAlone", 0x00010203, 0x00040506, false},
        {"AllFullIsOpaque", 0xFF010203, 0xFF040506, false},
        {"AMixtureIsAlpha", 0x80010203, 0x00040506, true},
    };
    for (const FourthByteCase& c : cases)
        for (const bool masked : {false, true}) {
            BmpParts parts{.width = 2, .bits = 32, .pixels = Le(c.first, 4) + Le(c.second, 4)};
            if (masked) {
                parts.headSize = 124;
                parts.compression = 3;
                parts.masks = {0xFF0000, 0xFF00, 0xFF, 0xFF000000};
            }
            const CDibImage image = Loaded(parts);
            EXPECT_EQ(image.GetAlpha() != nullptr, c.hasAlpha) << c.name;
            EXPECT_EQ(PixelAt(image, 0, 0), (Rgb{1, 2, 3}));
            EXPECT_EQ(PixelAt(image, 1, 0), (Rgb{4, 5, 6}));
            EXPECT_EQ(image.Source().sourceColours, 32U);
            if (c.hasAlpha) {
                EXPECT_EQ(image.GetAlpha()[0], 0x80);
                EXPECT_EQ(image.GetAlpha()[1], 0);
            }
        }
}

TEST(BmpReader, OldHeadsAreRead) {
    const CDibImage oldest =
        Loaded({.headSize = 12, .width = 2, .bits = 1, .palette = kTwo, .pixels = "\x40\0\0\0"s});
    EXPECT_EQ(PixelAt(oldest, 0, 0), (Rgb{10, 20, 30}));
    EXPECT_EQ(PixelAt(oldest, 1, 0), (Rgb{200, 210, 220}));
    EXPECT_EQ(oldest.GetXDpi(), 96);  // such a head has no resolution
    EXPECT_EQ(oldest.Source().sourceColours, 1U);
    for (const std::uint32_t size : {16U, 20U, 36U, 64U}) {
        const CDibImage image =
            Loaded({.headSize = size,
                    .width = 2,
                    .bits = 8,
                    .colorsUsed = size > 36 ? 2U : 0U,
                    .palette = size > 36 ? kTwo : std::vector<Rgb>(256, Rgb{7, 8, 9}),
                    .pixels = "\0\1\0\0"s});
        EXPECT_EQ(PixelAt(image, 0, 0), size > 36 ? kTwo[0] : (Rgb{7, 8, 9}));
        EXPECT_EQ(IndexAt(image, 1, 0), 1);
    }
}

TEST(BmpReader, NewHeadsAreRead) {
    for (const std::uint32_t size : {52U, 56U, 108U, 124U}) {
        const CDibImage image = Loaded({.headSize = size, .width = 1, .pixels = "\1\2\3\0"s});
        EXPECT_EQ(PixelAt(image, 0, 0), (Rgb{3, 2, 1}));
    }
}

struct DpiCase {
    int perMeter, dpi;
};
TEST(BmpReader, DpiIsTheResolutionRoundedHalfUp) {
    // value * 254 / 10000 + 0.5: 2835: 72.5, 11811: 300.5, 3780: 96.5, 19: 0.98
    for (const DpiCase c : {DpiCase{2835, 72},
                            {11811, 300},
                            {3780, 96},
                            {19, 96},
                            {20, 1},
                            {0, 96},
                            {-11811, 96},
                            {0x7FFFFFFF, 54546085}}) {
        const CDibImage image = Loaded(
            {.width = 1, .xPerMeter = c.perMeter, .yPerMeter = 23622, .pixels = "\1\2\3\0"s});
        EXPECT_EQ(image.GetXDpi(), c.dpi);
        EXPECT_EQ(image.GetYDpi(), 600);
        EXPECT_EQ(image.Source().sourceFlag, static_cast<std::uint32_t>(c.dpi));
    }
}

TEST(BmpReader, APaletteThatIsShorterThanStatedEndsAtThePixels) {
    const CDibImage image = Loaded(
        {.width = 2, .bits = 8, .colorsUsed = 256, .palette = kTwo, .pixels = "\1\xC8\0\0"s});
    EXPECT_EQ(PixelAt(image, 0, 0), (Rgb{200, 210, 220}));
    EXPECT_EQ(PixelAt(image, 1, 0), (Rgb{0, 0, 0}));  // an entry that the file does not hold
}

TEST(BmpReader, CountsThatLieAreLimited) {
    std::vector<Rgb> entries(256, Rgb{5, 6, 7});
    const CDibImage image = Loaded({.width = 1,
                                    .bits = 8,
                                    .colorsUsed = 0xFFFFFFFF,
                                    .palette = entries,
                                    .pixels = "\xFF\0\0\0"s});
    EXPECT_EQ(PixelAt(image, 0, 0), (Rgb{5, 6, 7}));
}

TEST(BmpReader, APixelOffsetOfNoUseIsWorkedOut) {
    for (const std::uint32_t offset : {0U, 13U, 0xFFFFFFFFU}) {
        const CDibImage image = Loaded({.width = 1,
                                        .bits = 8,
                                        .colorsUsed = 2,
                                        .palette = kTwo,
                                        .pixels = "\1\0\0\0"s,
                                        .pixelOffset = offset});
        EXPECT_EQ(PixelAt(image, 0, 0), (Rgb{200, 210, 220}));
    }
}

TEST(BmpReader, AGapBeforeThePixelsIsPassedOver) {
    const CDibImage image =
        Loaded({.width = 1, .pixels = "gap!\1\2\3\0"s, .pixelOffset = 14 + 40 + 4});
    EXPECT_EQ(PixelAt(image, 0, 0), (Rgb{3, 2, 1}));
}

TEST(BmpReader, CutOffRowsAreWhiteAndTheRestIsKept) {
    const CDibImage color = Loaded({.width = 1, .height = 4, .pixels = "\1\2\3\0\4\5\6\0\7\7"s});
    EXPECT_EQ(PixelAt(color, 0, 3), (Rgb{3, 2, 1}));
    EXPECT_EQ(PixelAt(color, 0, 2), (Rgb{6, 5, 4}));
    EXPECT_EQ(PixelAt(color, 0, 1), (Rgb{255, 255, 255}));
    EXPECT_EQ(PixelAt(color, 0, 0), (Rgb{255, 255, 255}));
    const CDibImage topDown = Loaded({.width = 1, .height = -2, .pixels = "\1\2\3\0"s});
    EXPECT_EQ(PixelAt(topDown, 0, 0), (Rgb{3, 2, 1}));
    EXPECT_EQ(PixelAt(topDown, 0, 1), (Rgb{255, 255, 255}));
    const CDibImage palette = Loaded({.width = 1,
                                      .height = 2,
                                      .bits = 8,
                                      .colorsUsed = 4,
                                      .palette = kFour,
                                      .pixels = "\1\0\0\0"s});
    EXPECT_EQ(PixelAt(palette, 0, 0), (Rgb{255, 250, 245}));  // the lightest entry
    const CDibImage bits = Loaded(
        {.width = 9, .height = 2, .bits = 1, .palette = kTwo, .pixels = std::string(4, '\0')});
    EXPECT_EQ(PixelAt(bits, 8, 0), (Rgb{200, 210, 220}));
    EXPECT_EQ(PixelAt(bits, 8, 1), (Rgb{10, 20, 30}));
}

TEST(BmpReader, CutOffRowsOfAPictureWithAlphaAreOpaque) {
    const CDibImage image =
        Loaded({.width = 1, .height = 2, .bits = 32, .pixels = Le(0x80010203, 4)});
    ASSERT_NE(image.GetAlpha(), nullptr);
    EXPECT_EQ(image.GetAlpha()[0], 0x80);
    EXPECT_EQ(image.GetAlpha()[1], 255);
    EXPECT_EQ(PixelAt(image, 0, 0), (Rgb{255, 255, 255}));
}

TEST(BmpReader, TheLastRowMayLackItsPadding) {
    const CDibImage image = Loaded({.width = 1, .height = 2, .pixels = "\1\2\3\0\4\5\6"s});
    EXPECT_EQ(PixelAt(image, 0, 0), (Rgb{6, 5, 4}));
}

TEST(BmpReader, FilesWithoutAWholeHeadOrPaletteOrRowFail) {
    const std::string file = BuildBmp({.width = 2,
                                       .height = 2,
                                       .bits = 8,
                                       .colorsUsed = 4,
                                       .palette = kFour,
                                       .pixels = "\0\1\0\0\2\3\0\0"s});
    const std::size_t firstRowEnds = 14 + 40 + 16 + 2;  // without its padding
    for (std::size_t length = 0; length < firstRowEnds; ++length)
        ExpectRefused(file.substr(0, length));
    CDibImage image;
    for (std::size_t length = firstRowEnds; length <= file.size(); ++length)
        EXPECT_TRUE(Load(file.substr(0, length), image)) << length;
}

TEST(BmpReader, WhatIsNoPageIsRefused) {
    const auto with = [](auto change) {
        BmpParts parts{.width = 4, .height = 4, .pixels = std::string(64, 'x')};
        change(parts);
        return BuildBmp(parts);
    };
    ExpectRefused(with([](BmpParts& p) { p.compression = 4; }));   // an embedded JPEG
    ExpectRefused(with([](BmpParts& p) { p.compression = 5; }));   // an embedded PNG
    ExpectRefused(with([](BmpParts& p) { p.compression = 11; }));  // printing inks
    ExpectRefused(with([](BmpParts& p) { p.compression = 3; }));   // bit fields at 24 bits
    ExpectRefused(with([](BmpParts& p) { p.compression = 1; }));   // RLE8 at 24 bits
    ExpectRefused(with([](BmpParts& p) { p.bits = 0; }));
    ExpectRefused(with([](BmpParts& p) { p.bits = 64; }));
    ExpectRefused(with([](BmpParts& p) { p.width = 0; }));
    ExpectRefused(with([](BmpParts& p) { p.height = 0; }));
    ExpectRefused(with([](BmpParts& p) { p.width = -4; }));
    ExpectRefused(with([](BmpParts& p) { p.height = INT32_MIN; }));
    ExpectRefused(with([](BmpParts& p) { p.width = p.height = 40000; }));
    ExpectRefused(with([](BmpParts& p) { p.width = 0x7FFFFFFF; }));
    ExpectRefused(with([](BmpParts& p) { p.headSize = 15; }));
    ExpectRefused("PM" + with([](BmpParts&) {}).substr(2));
    std::string lying = with([](BmpParts&) {});
    lying.replace(14, 4, Le(0x7FFFFFF0, 4));
    ExpectRefused(lying);
    ExpectRefused(BuildBmp({.headSize = 64,
                            .width = 8,
                            .bits = 1,
                            .compression = 3,
                            .palette = kTwo,
                            .pixels = "Huffman!"}));
}

TEST(BmpReader, ASizeThatTheFileCannotHoldIsRefused) {
    ExpectRefused(BuildBmp({.width = 20000, .height = 20000, .pixels = std::string(100'000, 'x')}));
}

TEST(BmpReader, InfoTellsWhatTheFileHolds) {
    std::vector<Rgb> ramp;
    for (int i = 0; i < 256; ++i)
        ramp.push_back({i, i, i});
    ImageInfo info;
    ASSERT_TRUE(ReadBmpInfo(BytesOf(BuildBmp({.width = 3,
                                              .height = -7,
                                              .bits = 8,
                                              .xPerMeter = 11811,
                                              .yPerMeter = 5906,
                                              .palette = ramp,
                                              .pixels = "-"})),
                            info, nullptr));
    EXPECT_EQ(info.width, 3);
    EXPECT_EQ(info.height, 7);
    EXPECT_EQ(info.bitsPerPixel, 8);
    EXPECT_EQ(info.colorsUsed, 256);
    EXPECT_EQ(info.xDpi, 300);
    EXPECT_EQ(info.yDpi, 150);
    EXPECT_TRUE(info.gray);
    ASSERT_TRUE(ReadBmpInfo(BytesOf(BuildBmp({.width = 1, .bits = 16})), info, nullptr));
    EXPECT_EQ(info.bitsPerPixel, 16);
    EXPECT_EQ(info.colorsUsed, 0);
    EXPECT_FALSE(info.gray);
    ASSERT_TRUE(
        ReadBmpInfo(BytesOf(BuildBmp({.width = 1, .bits = 4, .colorsUsed = 4, .palette = kFour})),
                    info, nullptr));
    EXPECT_EQ(info.colorsUsed, 4);
}

TEST(BmpReader, OutOfMemoryAnywhereIsAReason) {
    const test::TempFolder folder;
    const std::filesystem::path path = folder / "page.bmp";
    test::WriteAll(path,
                   BuildBmp({.width = 1, .height = 1, .bits = 32, .pixels = Le(0x80010203, 4)}));
    const int failures = test::SweepFailingAllocations([&](long) {
        CDibImage image;
        FileError error;
        const bool loaded = LoadBmp(path, image, &error);
        EXPECT_EQ(loaded, error.cause == FileError::Cause::kNone);
        EXPECT_EQ(loaded, image.IsValid());
    });
    EXPECT_GE(failures, 1);
}

TEST(BmpReader, NoTruncationOrMutationCrashes) {
    const std::string files[] = {
        BuildBmp({.width = 37,
                  .height = 11,
                  .bits = 1,
                  .palette = kTwo,
                  .pixels = std::string(11 * 8, '\x5A')}),
        BuildBmp({.width = 9,
                  .height = 11,
                  .bits = 8,
                  .colorsUsed = 4,
                  .palette = kFour,
                  .pixels = std::string(11 * 12, '\2')}),
        BuildBmp({.headSize = 124,
                  .width = 9,
                  .height = 11,
                  .bits = 32,
                  .compression = 3,
                  .masks = {0xFF0000, 0xFF00, 0xFF, 0xFF000000},
                  .pixels = std::string(11 * 36, '\x90')}),
        BuildBmp({.width = 9,
                  .height = -11,
                  .bits = 16,
                  .compression = 3,
                  .masks = {0xF800, 0x07E0, 0x001F},
                  .pixels = std::string(11 * 20, '\x77')}),
        BuildBmp({.headSize = 12,
                  .width = 9,
                  .height = 11,
                  .bits = 4,
                  .palette = std::vector<Rgb>(16, Rgb{1, 2, 3}),
                  .pixels = std::string(11 * 8, '\x31')}),
    };
    int shown = 0;
    for (const std::string& file : files) {
        const auto visit = [&](const std::string& damaged) {
            ImageInfo info;
            CDibImage image;
            if (!ReadBmpInfo(BytesOf(damaged), info, nullptr)) {
                EXPECT_FALSE(Load(damaged, image));
                return;
            }
            if (static_cast<std::int64_t>(info.width) * info.height > 1'000'000)
                return;  // honest about a size that costs time
            shown += Load(damaged, image) ? 1 : 0;
        };
        for (const std::string& cut : test::TruncationsOf(file))
            visit(cut);
        test::ForEachMutation(file, 250, 21, visit);
    }
    EXPECT_GT(shown, 200);
}

TEST(BmpReader, RealFilesLoad) {
    const std::filesystem::path data = test::SharedData();
    if (data.empty())
        GTEST_SKIP() << "no shared pictures";
    struct Case {
        const char* name;
        int width, height, bpp;
        std::uint32_t colours;
        int dpi;
    };
    // From the heads: 2925 and 5669 dots a metre.
    for (const Case& c : {Case{"depths/test1.bmp", 550, 426, 1, 1, 74},
                          {"depths/weasel2.4c.bmp", 82, 73, 4, 4, 0},
                          {"scans/test-rgba.bmp", 113, 45, 24, 32, 144}}) {
        CDibImage image;
        FileError error;
        ASSERT_TRUE(LoadBmp(data / c.name, image, &error)) << c.name << error.detail;
        EXPECT_EQ(image.GetWidth(), c.width);
        EXPECT_EQ(image.GetHeight(), c.height);
        EXPECT_EQ(image.GetBpp(), c.bpp);
        EXPECT_EQ(image.Source().sourceColours, c.colours);
        if (c.dpi != 0) {
            EXPECT_EQ(image.GetXDpi(), c.dpi);
        }
    }
}

}  // namespace
}  // namespace velloran
