#include <gtest/gtest.h>
#include <png.h>

#include <chrono>
#include <cstring>
#include <string>

#include "Mutations.h"
#include "PlainPng.h"
#include "codecs/FileForms.h"
#include "codecs/Png.h"
#include "support/FailingAllocator.h"
#include "support/Images.h"

namespace velloran {
namespace {

using test::BytesOf;
using test::PlainPng;
using test::Rgb;

constexpr Rgb kWhite{255, 255, 255};

/// Rows that compress badly, so that each takes its share of the file.
PlainPng NoisyPage(int colorType = PNG_COLOR_TYPE_RGB) {
    return test::PngOfNoise(40, 60, 8, colorType);
}

std::size_t PlaceOf(const std::string& file, const char* chunk) {
    const std::size_t place = file.find(chunk);
    EXPECT_NE(place, std::string::npos) << chunk;
    return place;
}

/// Writes a big-endian number and leaves the checksum wrong or mends it.
void PutNumber(std::string& file, std::size_t place, std::uint32_t value) {
    for (int i = 0; i < 4; ++i)
        file[place + static_cast<std::size_t>(i)] = static_cast<char>(value >> (24 - 8 * i));
}

std::uint32_t Checksum(const std::string& bytes) {
    std::uint32_t crc = 0xFFFFFFFF;
    for (const char c : bytes) {
        crc ^= static_cast<std::uint8_t>(c);
        for (int bit = 0; bit < 8; ++bit)
            crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320u : 0);
    }
    return ~crc;
}

std::string WithSize(std::string file, std::uint32_t width, std::uint32_t height) {
    PutNumber(file, 16, width);
    PutNumber(file, 20, height);
    PutNumber(file, 29, Checksum(file.substr(12, 17)));
    return file;
}

TEST(PngDamage, WhatATruncatedFileLacksIsWhite) {
    const PlainPng png = NoisyPage();
    const std::string file = EncodePng(png);
    const std::string half = file.substr(0, file.size() / 2);
    CDibImage image;
    ASSERT_TRUE(LoadPngBytes(BytesOf(half), image, nullptr));
    int whole = 0;
    while (whole < 60 && test::PixelAt(image, 0, whole) ==
                             Rgb{png.At(0, whole, 0), png.At(0, whole, 1), png.At(0, whole, 2)})
        ++whole;
    EXPECT_GE(whole, 25);
    EXPECT_LE(whole, 31);
    for (int y = 0; y < 60; ++y)
        for (int x = 0; x < 40; ++x) {
            const Rgb told{png.At(x, y, 0), png.At(x, y, 1), png.At(x, y, 2)};
            ASSERT_EQ(test::PixelAt(image, x, y), y < whole ? told : kWhite) << x << ", " << y;
        }
}

TEST(PngDamage, TheLackingRowsOfAPaletteTakeTheEntryNearestToWhite) {
    PlainPng png = NoisyPage(PNG_COLOR_TYPE_PALETTE);
    png.palette[77] = {250, 251, 252};
    for (int i = 0; i < 256; ++i)
        if (i != 77)
            png.palette[static_cast<std::size_t>(i)] = {i / 2, i / 2, i / 2};
    const std::string file = EncodePng(png);
    CDibImage image;
    ASSERT_TRUE(LoadPngBytes(BytesOf(file.substr(0, file.size() * 2 / 3)), image, nullptr));
    EXPECT_EQ(test::IndexAt(image, 0, 59), 77);
    EXPECT_EQ(test::IndexAt(image, 39, 59), 77);
}

TEST(PngDamage, LackingAlphaIsOpaque) {
    const PlainPng png = NoisyPage(PNG_COLOR_TYPE_RGB_ALPHA);
    const std::string file = EncodePng(png);
    CDibImage image;
    ASSERT_TRUE(LoadPngBytes(BytesOf(file.substr(0, file.size() / 2)), image, nullptr));
    ASSERT_NE(image.GetAlpha(), nullptr);
    EXPECT_EQ(image.GetAlpha()[0], 255);
    EXPECT_EQ(test::PixelAt(image, 0, 59), kWhite);
}

TEST(PngDamage, ATruncatedInterlacedFileIsCoarseAndNotHoled) {
    PlainPng png = NoisyPage();
    png.samples.assign(png.samples.size(), 90);
    for (int i = 0; i < 40; ++i)  // enough bytes that the first passes end inside of the file
        png.At(i, 59, 1) = i * 6;
    png.interlaced = true;
    const std::string file = EncodePng(png);
    CDibImage image;
    ASSERT_TRUE(LoadPngBytes(BytesOf(file.substr(0, file.size() - 30)), image, nullptr));
    EXPECT_EQ(test::PixelAt(image, 3, 5), (Rgb{90, 90, 90}));
}

TEST(PngDamage, TruncationsLoadOrLeaveTheImageAsItWas) {
    for (const bool interlaced : {false, true})
        for (const int colorType : {PNG_COLOR_TYPE_RGB_ALPHA, PNG_COLOR_TYPE_PALETTE}) {
            PlainPng png = NoisyPage(colorType);
            png.interlaced = interlaced;
            int loaded = 0;
            for (const std::string& part : test::TruncationsOf(EncodePng(png))) {
                CDibImage image = test::Filled(3, 2, 8, 5);
                FileError error;
                if (LoadPngBytes(BytesOf(part), image, &error)) {
                    EXPECT_EQ(image.GetWidth(), 40);
                    ++loaded;
                } else {
                    test::ExpectSamePixels(image, test::Filled(3, 2, 8, 5));
                    EXPECT_EQ(error.cause, FileError::Cause::kContent);
                }
                ImageInfo info;
                ReadPngInfo(BytesOf(part), info, nullptr);
            }
            EXPECT_GT(loaded, 50);
        }
}

TEST(PngDamage, FilesOfNoneOneAndNineBytesFail) {
    const std::string file = EncodePng(NoisyPage());
    for (const std::size_t size : {0u, 1u, 9u}) {
        CDibImage image;
        FileError error;
        EXPECT_FALSE(LoadPngBytes(BytesOf(file.substr(0, size)), image, &error));
        EXPECT_EQ(error.cause, FileError::Cause::kContent);
        EXPECT_FALSE(image.IsValid());
        ImageInfo info;
        EXPECT_FALSE(ReadPngInfo(BytesOf(file.substr(0, size)), info, nullptr));
    }
}

TEST(PngDamage, AWrongChecksumOfAnAncillaryChunkIsTolerated) {
    PlainPng png = NoisyPage();
    png.xPerMeter = png.yPerMeter = 11811;
    std::string file = EncodePng(png);
    file[PlaceOf(file, "pHYs") + 4 + 9] ^= 1;
    CDibImage image;
    ASSERT_TRUE(LoadPngBytes(BytesOf(file), image, nullptr));
    EXPECT_EQ(image.GetXDpi(), 300);
}

TEST(PngDamageSlow, LyingSizesAreRefusedAtOnce) {
    const std::string file = EncodePng(NoisyPage());
    const std::uint32_t kSizes[][2] = {{0, 10},        {10, 0},         {0x7FFFFFFF, 0x7FFFFFFF},
                                       {31000, 31000}, {1000000000, 1}, {1, 1000000000},
                                       {26000, 26000}, {0xFFFFFFFF, 1}};
    for (const auto& size : kSizes) {
        const auto start = std::chrono::steady_clock::now();
        CDibImage image;
        FileError error;
        EXPECT_FALSE(LoadPngBytes(BytesOf(WithSize(file, size[0], size[1])), image, &error))
            << size[0] << " x " << size[1];
        EXPECT_EQ(error.cause, FileError::Cause::kContent);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
    }
}

TEST(PngDamage, AHeightTooLargeForTheDataLeavesWhiteRows) {
    const PlainPng png = NoisyPage();
    CDibImage image;
    ASSERT_TRUE(LoadPngBytes(BytesOf(WithSize(EncodePng(png), 40, 90)), image, nullptr));
    EXPECT_EQ(image.GetHeight(), 90);
    EXPECT_EQ(test::PixelAt(image, 3, 59),
              (Rgb{png.At(3, 59, 0), png.At(3, 59, 1), png.At(3, 59, 2)}));
    EXPECT_EQ(test::PixelAt(image, 3, 60), kWhite);
}

TEST(PngDamage, IndicesBeyondTheTableAreBlack) {
    PlainPng png = test::PngOfNoise(8, 8, 8, PNG_COLOR_TYPE_PALETTE);
    std::string file = EncodePng(png);
    const std::size_t place = PlaceOf(file, "PLTE");
    // The table shrinks to one entry; its other bytes go.
    const std::string entry = "PLTE" + file.substr(place + 4, 3);
    std::string chunk(4, '\0');
    PutNumber(chunk, 0, 3);
    chunk += entry + std::string(4, '\0');
    PutNumber(chunk, 11, Checksum(entry));
    file.replace(place - 4, 12 + 768, chunk);
    CDibImage image;
    ASSERT_TRUE(LoadPngBytes(BytesOf(file), image, nullptr));
    png.At(0, 0, 0) = 0;
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x)
            if (test::IndexAt(image, x, y) != 0) {
                EXPECT_EQ(test::PixelAt(image, x, y), (Rgb{0, 0, 0}));
            }
}

TEST(PngDamage, MutationsNeverCrash) {
    int visited = 0;
    for (const int colorType : {PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_PALETTE, PNG_COLOR_TYPE_RGB,
                                PNG_COLOR_TYPE_RGB_ALPHA})
        for (const bool interlaced : {false, true}) {
            PlainPng png = test::PngOfNoise(21, 13, 8, colorType);
            png.interlaced = interlaced;
            test::ForEachMutation(EncodePng(png), 100, 11, [&](const std::string& bytes) {
                CDibImage image;
                ImageInfo info;
                const bool head = ReadPngInfo(BytesOf(bytes), info, nullptr);
                if (LoadPngBytes(BytesOf(bytes), image, nullptr)) {
                    EXPECT_TRUE(head);
                    EXPECT_EQ(image.GetWidth(), info.width);
                    EXPECT_EQ(image.GetHeight(), info.height);
                }
                ++visited;
            });
        }
    EXPECT_EQ(visited, 800);
}

TEST(PngDamage, FailingAllocationsEndInFalse) {
    PlainPng png = NoisyPage(PNG_COLOR_TYPE_RGB_ALPHA);
    png.interlaced = true;
    const std::string file = EncodePng(png);
    int loaded = 0;
    test::SweepFailingAllocations([&](long) {
        CDibImage image;
        FileError error;
        if (LoadPngBytes(BytesOf(file), image, &error))
            ++loaded;
    });
    EXPECT_GE(loaded, 1);
}

}  // namespace
}  // namespace velloran
