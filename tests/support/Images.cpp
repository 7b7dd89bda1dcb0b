#include "support/Images.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

namespace velloran::test {
namespace {

CDibImage Cleared(int width, int height, int bpp) {
    CDibImage image;
    EXPECT_NE(image.Create(width, height, bpp), nullptr);
    for (int y = 0; y < height; ++y)
        std::memset(image.GetBits(y), 0, image.GetEffWidth());
    if (bpp <= 8)
        image.SetGrayPalette();
    return image;
}

}  // namespace

CDibImage Filled(int width, int height, int bpp, std::uint8_t value) {
    CDibImage image = Cleared(width, height, bpp);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            if (bpp == 24)
                SetPixel(image, x, y, {value, value, value});
            else
                SetIndex(image, x, y, value & ((1 << bpp) - 1));
        }
    return image;
}

CDibImage Noise(int width, int height, int bpp, std::uint32_t seed) {
    CDibImage image = Cleared(width, height, bpp);
    std::mt19937 random(seed);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const std::uint32_t value = random();
            if (bpp == 24)
                SetPixel(image, x, y,
                         {static_cast<int>(value & 255), static_cast<int>(value >> 8 & 255),
                          static_cast<int>(value >> 16 & 255)});
            else
                SetIndex(image, x, y, static_cast<int>(value >> 8) & ((1 << bpp) - 1));
        }
    return image;
}

CDibImage FromRows(const std::vector<std::vector<int>>& rows, int channels) {
    const int width = static_cast<int>(rows.at(0).size()) / channels;
    CDibImage image = Cleared(width, static_cast<int>(rows.size()), channels == 3 ? 24 : 8);
    for (int y = 0; y < image.GetHeight(); ++y) {
        const std::vector<int>& row = rows[static_cast<std::size_t>(y)];
        for (int x = 0; x < width; ++x) {
            const std::size_t at = static_cast<std::size_t>(x) * channels;
            if (channels == 3)
                SetPixel(image, x, y, {row.at(at), row.at(at + 1), row.at(at + 2)});
            else
                SetIndex(image, x, y, row.at(at));
        }
    }
    return image;
}

int IndexAt(const CBaseImage& image, int x, int y) {
    const std::uint8_t* row = image.GetBits(image.GetHeight() - 1 - y);
    switch (image.GetBpp()) {
        case 1:
            return row[x / 8] >> (7 - x % 8) & 1;
        case 4:
            return row[x / 2] >> (x % 2 == 0 ? 4 : 0) & 15;
        default:
            return row[x];
    }
}

void SetIndex(CBaseImage& image, int x, int y, int index) {
    std::uint8_t* row = image.GetBits(image.GetHeight() - 1 - y);
    const auto put = [&](std::uint8_t& byte, int shift, int mask) {
        byte = static_cast<std::uint8_t>((byte & ~(mask << shift)) | (index & mask) << shift);
    };
    switch (image.GetBpp()) {
        case 1:
            put(row[x / 8], 7 - x % 8, 1);
            break;
        case 4:
            put(row[x / 2], x % 2 == 0 ? 4 : 0, 15);
            break;
        default:
            row[x] = static_cast<std::uint8_t>(index);
    }
}

Rgb PixelAt(const CBaseImage& image, int x, int y) {
    if (image.GetBpp() == 24) {
        const std::uint8_t* pixel = image.GetBits(image.GetHeight() - 1 - y) + 3 * x;
        return {pixel[2], pixel[1], pixel[0]};
    }
    const PaletteEntry& entry = image.GetPalette()[IndexAt(image, x, y)];
    return {entry.red, entry.green, entry.blue};
}

void SetPixel(CBaseImage& image, int x, int y, Rgb color) {
    std::uint8_t* pixel = image.GetBits(image.GetHeight() - 1 - y) + 3 * x;
    pixel[0] = static_cast<std::uint8_t>(color.blue);
    pixel[1] = static_cast<std::uint8_t>(color.green);
    pixel[2] = static_cast<std::uint8_t>(color.red);
}

void SetPalette(CBaseImage& image, const std::vector<Rgb>& entries) {
    ASSERT_LE(entries.size(), static_cast<std::size_t>(image.GetPaletteCount()));
    for (std::size_t i = 0; i < entries.size(); ++i)
        image.GetPalette()[i] = {static_cast<std::uint8_t>(entries[i].blue),
                                 static_cast<std::uint8_t>(entries[i].green),
                                 static_cast<std::uint8_t>(entries[i].red), 0};
}

void ExpectSamePixels(const CBaseImage& actual, const CBaseImage& expected) {
    ASSERT_EQ(actual.IsValid(), expected.IsValid());
    ASSERT_EQ(actual.GetWidth(), expected.GetWidth());
    ASSERT_EQ(actual.GetHeight(), expected.GetHeight());
    ASSERT_EQ(actual.GetBpp(), expected.GetBpp());
    for (int i = 0; i < actual.GetPaletteCount(); ++i)
        ASSERT_TRUE(actual.GetPalette()[i] == expected.GetPalette()[i]) << "palette entry " << i;
    int differing = 0;
    std::string first;
    for (int y = 0; y < actual.GetHeight(); ++y)
        for (int x = 0; x < actual.GetWidth(); ++x) {
            const bool palette = actual.GetBpp() <= 8;
            if (palette ? IndexAt(actual, x, y) == IndexAt(expected, x, y)
                        : PixelAt(actual, x, y) == PixelAt(expected, x, y))
                continue;
            if (++differing > 5)
                continue;
            const Rgb a = PixelAt(actual, x, y), e = PixelAt(expected, x, y);
            first += "\n  (" + std::to_string(x) + ", " + std::to_string(y) + "): ";
            for (const Rgb& c : {a, e})
                first += " [" + std::to_string(c.red) + ", " + std::to_string(c.green) + ", " +
                         std::to_string(c.blue) + "]";
        }
    EXPECT_EQ(differing, 0) << "pixels differ (x, y from the top): actual, expected" << first;
}

}  // namespace velloran::test
