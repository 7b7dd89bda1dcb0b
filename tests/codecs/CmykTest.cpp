#include "codecs/Cmyk.h"

// clang-format off
#include <cstdio>  // jpeglib.h needs it before itself
#include <jpeglib.h>
// clang-format on

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <random>

#include "codecs/FileForms.h"
#include "codecs/Jpeg.h"
#include "codecs/Mutations.h"
#include "codecs/PlainJpeg.h"
#include "core/DibImage.h"
#include "support/Images.h"

namespace velloran {
namespace {

using Inks = std::array<std::uint8_t, 4>;

struct Corner {
    const char* inks;
    std::array<double, 3> color;  // red, green, blue
};
constexpr Corner kCorners[] = {
    {"", {1, 1, 1}},
    {"k", {0.1373, 0.1216, 0.1255}},
    {"y", {1, 0.949, 0}},
    {"yk", {0.1098, 0.102, 0}},
    {"m", {0.9255, 0, 0.549}},
    {"mk", {0.1412, 0, 0}},
    {"my", {0.9294, 0.1098, 0.1412}},
    {"myk", {0.1333, 0, 0}},
    {"c", {0, 0.6784, 0.9373}},
    {"ck", {0, 0.0588, 0.1412}},
    {"cy", {0, 0.651, 0.3137}},
    {"cyk", {0, 0.0745, 0}},
    {"cm", {0.1804, 0.1922, 0.5725}},
    {"cmk", {0, 0, 0.0078}},
    {"cmy", {0.2118, 0.2119, 0.2235}},
};

/// The blend in plain doubles, before it is truncated.
std::array<double, 3> Blend(const Inks& inks) {
    std::array<double, 3> sum{};
    for (const Corner& corner : kCorners) {
        double weight = 1;
        for (int i = 0; i < 4; ++i) {
            const double ink = inks[static_cast<std::size_t>(i)] / 255.0;
            const bool full =
                std::string_view(corner.inks).find("cmyk"[i]) != std::string_view::npos;
            weight *= full ? ink : 1 - ink;
        }
        for (std::size_t channel = 0; channel < 3; ++channel)
            sum[channel] += weight * corner.color[channel];
    }
    for (double& value : sum)
        value *= 255;
    return sum;
}

std::array<std::uint8_t, 3> Convert(const Inks& inks, bool invert = false) {
    std::array<std::uint8_t, 3> bgr{};
    ConvertCmykRow(inks.data(), bgr.data(), 1, invert);
    return {bgr[2], bgr[1], bgr[0]};
}

/// The truncated blend; a blend that is whole but for the doubles' own error counts as whole.
void ExpectBlend(const Inks& inks, const std::array<std::uint8_t, 3>& actual) {
    const std::array<double, 3> expected = Blend(inks);
    for (std::size_t channel = 0; channel < 3; ++channel)
        ASSERT_EQ(actual[channel], static_cast<int>(std::floor(expected[channel] + 1e-9)))
            << +inks[0] << ' ' << +inks[1] << ' ' << +inks[2] << ' ' << +inks[3];
}

TEST(Cmyk, CornersHaveTheirColors) {
    using Color = std::array<std::uint8_t, 3>;
    EXPECT_EQ(Convert({0, 0, 0, 0}), (Color{255, 255, 255}));
    EXPECT_EQ(Convert({0, 0, 0, 255}), (Color{35, 31, 32}));      // 35.01, 31.008, 32.0025
    EXPECT_EQ(Convert({0, 0, 255, 0}), (Color{255, 241, 0}));     // 241.995
    EXPECT_EQ(Convert({0, 255, 0, 0}), (Color{236, 0, 139}));     // 236.0025, 139.995
    EXPECT_EQ(Convert({255, 0, 0, 0}), (Color{0, 172, 239}));     // 172.992, 239.0115
    EXPECT_EQ(Convert({255, 255, 255, 0}), (Color{54, 54, 56}));  // 54.009, 54.0345, 56.9925
    EXPECT_EQ(Convert({255, 255, 0, 255}), (Color{0, 0, 1}));     // 1.989
    EXPECT_EQ(Convert({255, 255, 255, 255}), (Color{0, 0, 0}));
}

TEST(Cmyk, EveryBlendIsTheFormulaTruncated) {
    for (int a = 0; a < 256; ++a) {  // along the edges, where results are whole
        const auto ink = static_cast<std::uint8_t>(a);
        for (const Inks& inks : {Inks{ink, 0, 0, 0}, Inks{0, ink, 0, 0}, Inks{0, 0, ink, 0},
                                 Inks{0, 0, 0, ink}, Inks{ink, ink, ink, ink}})
            ExpectBlend(inks, Convert(inks));
    }
    std::mt19937 random(5);
    for (int i = 0; i < 200000; ++i) {
        const std::uint32_t bits = random();
        const Inks inks{static_cast<std::uint8_t>(bits), static_cast<std::uint8_t>(bits >> 8),
                        static_cast<std::uint8_t>(bits >> 16),
                        static_cast<std::uint8_t>(bits >> 24)};
        ExpectBlend(inks, Convert(inks));
    }
}

TEST(Cmyk, InvertedInksAreCountedFromTheOtherEnd) {
    EXPECT_EQ(Convert({255, 255, 255, 255}, true), Convert({0, 0, 0, 0}));
    EXPECT_EQ(Convert({10, 20, 30, 40}, true), Convert({245, 235, 225, 215}));
}

TEST(Cmyk, ARowOfRepeatedPixelsIsEachPixelsColor) {
    const std::array<Inks, 6> row = {Inks{0, 0, 0, 0}, Inks{9, 8, 7, 6}, Inks{9, 8, 7, 6},
                                     Inks{0, 0, 0, 0}, Inks{0, 0, 0, 0}, Inks{255, 1, 2, 3}};
    std::array<std::uint8_t, 18> bgr{};
    ConvertCmykRow(row[0].data(), bgr.data(), 6, false);
    for (std::size_t i = 0; i < row.size(); ++i)
        ExpectBlend(row[i], {bgr[3 * i + 2], bgr[3 * i + 1], bgr[3 * i]});
}

struct FileCase {
    const char* name;
    bool adobe, ycck, reverse, inverted;
};
void PrintTo(const FileCase& c, std::ostream* out) {
    *out << c.name;
}
constexpr FileCase kFiles[] = {
    {"PlainInks", false, false, false, false},
    {"PlainInksReversed", false, false, true, true},
    {"AdobeInksAreInverted", true, false, false, true},
    {"AdobeInksReversedAreNot", true, false, true, false},
    {"AdobeYcckIsInverted", true, true, false, true},
};
class CmykFile : public testing::TestWithParam<FileCase> {};
TEST_P(CmykFile, LoadsAsTheColorsOfItsInks) {
    const FileCase& c = GetParam();
    test::PlainOptions options;
    options.adjust = [&](jpeg_compress_struct& jpeg) {
        if (c.ycck)
            jpeg_set_colorspace(&jpeg, JCS_YCCK);
        jpeg.write_Adobe_marker = c.adobe ? TRUE : FALSE;
    };
    const std::string file = test::EncodePlain(test::Scene(41, 70, 4), options);
    CDibImage image;
    ASSERT_TRUE(LoadJpegBytes(test::BytesOf(file), image, c.reverse, nullptr));
    EXPECT_EQ(image.GetBpp(), 24);
    EXPECT_EQ(image.Source().sourceColours, 32U);
    const test::PlainPicture stored = test::DecodePlain(file);
    for (int y = 0; y < 70; ++y)
        for (int x = 0; x < 41; ++x) {
            Inks inks{};
            for (int i = 0; i < 4; ++i) {
                const std::uint8_t value = stored.At(x, y, i);
                inks[static_cast<std::size_t>(i)] =
                    static_cast<std::uint8_t>(c.inverted ? 255 - value : value);
            }
            const test::Rgb pixel = test::PixelAt(image, x, y);
            ExpectBlend(
                inks, {static_cast<std::uint8_t>(pixel.red), static_cast<std::uint8_t>(pixel.green),
                       static_cast<std::uint8_t>(pixel.blue)});
        }
}
INSTANTIATE_TEST_SUITE_P(, CmykFile, testing::ValuesIn(kFiles),
                         [](const auto& c) { return std::string(c.param.name); });

}  // namespace
}  // namespace velloran
