#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "reduce/PaletteMakers.h"
#include "support/Images.h"

namespace velloran {
namespace {

Palette OfColorPage(int colors, int bits = 8) {
    return FixedPalette(test::Filled(1, 1, 24, 0), colors, bits);
}

std::uint32_t Hex(const PaletteEntry& entry) {
    return static_cast<std::uint32_t>(entry.red << 16 | entry.green << 8 | entry.blue);
}

std::vector<std::uint32_t> HexOf(const Palette& palette) {
    std::vector<std::uint32_t> all;
    for (const PaletteEntry& entry : palette)
        all.push_back(Hex(entry));
    return all;
}

TEST(FixedPalette, SmallPalettesAreBuiltIn) {
    using List = std::vector<std::uint32_t>;
    EXPECT_EQ(HexOf(OfColorPage(2)), (List{0, 0xFFFFFF}));
    EXPECT_EQ(HexOf(OfColorPage(4)), (List{0, 0x555555, 0xAAAAAA, 0xFFFFFF}));
    EXPECT_EQ(HexOf(OfColorPage(8)), (List{0x000000, 0x0000FF, 0x00FF00, 0xFF0000, 0x00FFFF,
                                           0xFF00FF, 0xFFFF00, 0xFFFFFF}));
    EXPECT_EQ(
        HexOf(OfColorPage(16)),
        (List{0x000000, 0x800000, 0x008000, 0x808000, 0x000080, 0x800080, 0x008080, 0xC0C0C0,
              0x808080, 0xFF0000, 0x00FF00, 0xFFFF00, 0x0000FF, 0xFF00FF, 0x00FFFF, 0xFFFFFF}));
}

TEST(FixedPalette, CubesRunFromRedOutermostToBlueInnermost) {
    const Palette of32 = OfColorPage(32), of64 = OfColorPage(64), of128 = OfColorPage(128);
    ASSERT_EQ(of32.size(), 32u);
    ASSERT_EQ(of64.size(), 64u);
    ASSERT_EQ(of128.size(), 128u);
    constexpr std::array<std::uint32_t, 8> kEighths{0, 36, 72, 109, 145, 182, 218, 255};
    for (std::uint32_t i = 0; i < 32; ++i)
        EXPECT_EQ(Hex(of32[i]), i / 8 * 85 << 16 | i / 2 % 4 * 85 << 8 | i % 2 * 255);
    for (std::uint32_t i = 0; i < 64; ++i)
        EXPECT_EQ(Hex(of64[i]), i / 16 * 85 << 16 | i / 4 % 4 * 85 << 8 | i % 4 * 85);
    for (std::uint32_t i = 0; i < 128; ++i)
        EXPECT_EQ(Hex(of128[i]), i / 32 * 85 << 16 | kEighths[i / 4 % 8] << 8 | i % 4 * 85);
}

struct Entry {
    std::size_t index;
    int blue, green, red;
};

// The ends, ramp by ramp the places where lists and exceptions meet, and the greys.
constexpr Entry kEntries[] = {
    {0, 0, 0, 0},
    {1, 0, 0, 128},
    {2, 0, 128, 0},
    {3, 0, 128, 128},
    {4, 128, 0, 0},
    {5, 128, 0, 128},
    {6, 128, 128, 0},
    {7, 192, 192, 192},
    {8, 192, 220, 192},
    {9, 240, 202, 166},
    // Ramp 1, hue (0, 170, 255), whole.
    {10, 212, 240, 255},
    {11, 177, 226, 255},
    {12, 142, 212, 255},
    {13, 107, 198, 255},
    {14, 72, 184, 255},
    {15, 37, 170, 255},
    {16, 0, 170, 255},
    {17, 0, 146, 220},
    {18, 0, 122, 185},
    {19, 0, 98, 150},
    {20, 0, 74, 115},
    {21, 0, 50, 80},
    // Ramp 2, hue (0, 85, 255), whole.
    {22, 212, 227, 255},
    {23, 177, 199, 255},
    {24, 142, 171, 255},
    {25, 107, 143, 255},
    {26, 72, 115, 255},
    {27, 37, 87, 255},
    {28, 0, 85, 255},
    {29, 0, 73, 220},
    {30, 0, 61, 185},
    {31, 0, 49, 150},
    {32, 0, 37, 115},
    {33, 0, 25, 80},
    // Ramp 3, pure red: 254 in the middle.
    {34, 212, 212, 255},
    {39, 37, 37, 255},
    {40, 0, 0, 254},
    {41, 0, 0, 220},
    {45, 0, 0, 80},
    {46, 227, 212, 255},
    {52, 85, 0, 255},
    {58, 240, 212, 255},
    {64, 170, 0, 255},
    {70, 255, 212, 255},
    {76, 254, 0, 254},
    {77, 220, 0, 220},
    {82, 255, 212, 240},
    {88, 255, 0, 170},
    {94, 255, 212, 227},
    {100, 255, 0, 85},
    {106, 255, 212, 212},
    {112, 254, 0, 0},
    {117, 80, 0, 0},
    {118, 255, 227, 212},
    {124, 255, 85, 0},
    {130, 255, 240, 212},
    {136, 255, 170, 0},
    {142, 255, 255, 212},
    {148, 254, 254, 0},
    {154, 240, 255, 212},
    {160, 170, 255, 0},
    {166, 227, 255, 212},
    {172, 85, 255, 0},
    {178, 212, 255, 212},
    {184, 0, 254, 0},
    {190, 212, 255, 227},
    {196, 0, 255, 85},
    {202, 212, 255, 240},
    {208, 0, 255, 170},
    {214, 212, 255, 255},
    {219, 37, 255, 255},
    {220, 0, 254, 254},
    {221, 0, 220, 220},
    {225, 0, 80, 80},
    {226, 242, 242, 242},
    {227, 230, 230, 230},
    {235, 134, 134, 134},
    {245, 14, 14, 14},
    {246, 240, 251, 255},
    {247, 164, 160, 160},
    {248, 128, 128, 128},
    {249, 0, 0, 255},
    {250, 0, 255, 0},
    {251, 0, 255, 255},
    {252, 255, 0, 0},
    {253, 255, 0, 255},
    {254, 255, 255, 0},
    {255, 255, 255, 255},
};

TEST(FixedPalette, TheTableOf256HasItsEntriesInPlace) {
    const Palette palette = OfColorPage(256);
    ASSERT_EQ(palette.size(), 256u);
    for (const Entry& e : kEntries) {
        EXPECT_EQ(palette[e.index].blue, e.blue) << e.index;
        EXPECT_EQ(palette[e.index].green, e.green) << e.index;
        EXPECT_EQ(palette[e.index].red, e.red) << e.index;
    }
}

TEST(FixedPalette, OnlySixEntriesOfTheTableHold254) {
    const Palette palette = OfColorPage(256);
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < palette.size(); ++i)
        if (palette[i].blue == 254 || palette[i].green == 254 || palette[i].red == 254)
            found.push_back(i);
    EXPECT_EQ(found, (std::vector<std::size_t>{40, 76, 112, 148, 184, 220}));
}

TEST(FixedPalette, AnotherCountOfAColorPageIsAllBlack) {
    for (const int colors : {1, 3, 7, 15, 31, 63, 127, 255})
        EXPECT_EQ(OfColorPage(colors), Palette(static_cast<std::size_t>(colors)));
}

TEST(FixedPalette, AtOneBitThePairIsBlackAndWhiteWhateverTheCount) {
    for (const int colors : {1, 2, 16, 256})
        for (const int bpp : {8, 24})
            EXPECT_EQ(HexOf(FixedPalette(test::Filled(1, 1, bpp, 9), colors, 1)),
                      (std::vector<std::uint32_t>{0, 0xFFFFFF}));
}

TEST(FixedPalette, AGrayPageTakesAnEvenRamp) {
    const CDibImage image = test::Filled(2, 2, 8, 9);
    using List = std::vector<std::uint32_t>;
    EXPECT_EQ(HexOf(FixedPalette(image, 4, 4)), (List{0, 0x555555, 0xAAAAAA, 0xFFFFFF}));
    // 255 / 7 = 36.43: 36.4, 72.9, 109.3, 145.7, 182.1, 218.6
    EXPECT_EQ(HexOf(FixedPalette(image, 8, 4)),
              (List{0, 0x242424, 0x494949, 0x6D6D6D, 0x929292, 0xB6B6B6, 0xDBDBDB, 0xFFFFFF}));
    for (const int colors : {2, 3, 15, 16, 31, 32, 64, 127, 128, 255, 256}) {
        const Palette ramp = FixedPalette(image, colors, 8);
        ASSERT_EQ(static_cast<int>(ramp.size()), colors);
        EXPECT_EQ(ramp.front().red, 0);
        EXPECT_EQ(ramp.back().red, 255);
        for (int i = 0; i < colors; ++i)
            EXPECT_NEAR(ramp[static_cast<std::size_t>(i)].red, i * 255.0 / (colors - 1), 0.501);
    }
}

TEST(FixedPalette, CountsOutOfRangeGiveNone) {
    for (const int colors : {INT32_MIN, -1, 0, 257, INT32_MAX})
        EXPECT_TRUE(OfColorPage(colors).empty());
    EXPECT_TRUE(FixedPalette(CDibImage(), 16, 4).empty());
}

}  // namespace
}  // namespace velloran
