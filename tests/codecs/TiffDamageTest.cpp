#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <thread>

#include "Mutations.h"
#include "PlainTiff.h"
#include "codecs/FileForms.h"
#include "codecs/Tiff.h"
#include "support/FailingAllocator.h"
#include "support/Images.h"

namespace velloran {
namespace {

using test::BytesOf;
using test::PlainTiff;
using test::Rgb;

/// Appends a little-endian number.
void Append(std::string& bytes, std::uint32_t value, int size) {
    for (int i = 0; i < size; ++i)
        bytes += static_cast<char>(value >> (8 * i));
}

struct Entry {
    std::uint16_t tag, type;
    std::uint32_t count, value;
};

/// A file with its directory in front and one strip behind, as scanners write it; all numbers are
/// the caller's.
std::string FileOf(const std::vector<Entry>& entries, const std::string& strip) {
    std::string file("II*\0", 4);
    Append(file, 8, 4);
    Append(file, static_cast<std::uint32_t>(entries.size()), 2);
    for (const Entry& entry : entries) {
        Append(file, entry.tag, 2);
        Append(file, entry.type, 2);
        Append(file, entry.count, 4);
        Append(file, entry.value, 4);
    }
    Append(file, 0, 4);
    return file + strip;
}

std::uint32_t StripPlace(std::size_t entries) {
    return static_cast<std::uint32_t>(8 + 2 + 12 * entries + 4);
}

/// A grey or bilevel page of one strip in front of which the directory stands.
std::string ScannedPage(std::uint32_t width, std::uint32_t height, std::uint32_t bits,
                        std::uint32_t compression, const std::string& strip,
                        std::uint32_t stripBytes) {
    return FileOf({{256, 4, 1, width},
                   {257, 4, 1, height},
                   {258, 3, 1, bits},
                   {259, 3, 1, compression},
                   {262, 3, 1, compression == 4 ? 0u : 1u},
                   {273, 4, 1, StripPlace(9)},
                   {277, 3, 1, 1},
                   {278, 4, 1, height},
                   {279, 4, 1, stripBytes}},
                  strip);
}

TEST(TiffDamage, AStripThatTheEndOfTheFileCutsKeepsItsRows) {
    std::string rows;
    for (int i = 0; i < 10 * 20; ++i)
        rows += static_cast<char>(i);
    const std::string file = ScannedPage(10, 20, 8, COMPRESSION_NONE, rows, 200);
    CDibImage image;
    ASSERT_TRUE(LoadTiffBytes(BytesOf(file.substr(0, file.size() - 95)), image, nullptr));
    ASSERT_EQ(image.GetHeight(), 20);
    for (int y = 0; y < 20; ++y)  // 105 bytes are ten rows and a half
        for (int x = 0; x < 10; ++x)
            EXPECT_EQ(test::IndexAt(image, x, y), y < 10 ? y * 10 + x : 255) << x << ", " << y;
}

TEST(TiffDamage, ACutFaxPageIsWhiteBelow) {
    PlainTiff tiff = test::TiffOfNoise(64, 64, 1, 1, PHOTOMETRIC_MINISWHITE);
    tiff.compression = COMPRESSION_CCITTFAX4;
    const std::string whole = EncodeTiff(tiff);
    // libtiff puts the one strip behind the 8 bytes of the head, and the directory behind it.
    const std::string strip = whole.substr(8, whole.size() / 3);
    const std::string file = ScannedPage(64, 64, 1, COMPRESSION_CCITTFAX4, strip, 100000);
    CDibImage image;
    ASSERT_TRUE(LoadTiffBytes(BytesOf(file), image, nullptr));
    for (int y = 0; y < 15; ++y)
        for (int x = 0; x < 64; ++x)
            ASSERT_EQ(test::IndexAt(image, x, y), tiff.At(x, y));
    for (int x = 0; x < 64; ++x)
        EXPECT_EQ(test::PixelAt(image, x, 63), (Rgb{255, 255, 255}));
}

TEST(TiffDamage, TruncationsLoadOrLeaveTheImageAsItWas) {
    std::string rows;
    for (int i = 0; i < 4000; ++i)
        rows += static_cast<char>(i * 7);
    PlainTiff tiled = test::TiffOfNoise(40, 40, 8, 3, PHOTOMETRIC_RGB);
    tiled.tileSize = 16;
    int loaded = 0;
    for (const std::string& file :
         {ScannedPage(50, 80, 8, COMPRESSION_NONE, rows, 4000), EncodeTiff(tiled)})
        for (const std::string& part : test::TruncationsOf(file)) {
            CDibImage image = test::Filled(3, 2, 8, 5);
            FileError error;
            if (LoadTiffBytes(BytesOf(part), image, &error)) {
                ++loaded;
            } else {
                test::ExpectSamePixels(image, test::Filled(3, 2, 8, 5));
                EXPECT_EQ(error.cause, FileError::Cause::kContent);
                EXPECT_FALSE(error.detail.empty());
            }
        }
    EXPECT_GT(loaded, 50);
}

TEST(TiffDamage, FilesOfNoneOneAndNineBytesFail) {
    const std::string file = EncodeTiff(test::TiffOfNoise(4, 4, 8, 1, PHOTOMETRIC_MINISBLACK));
    for (const std::size_t size : {0u, 1u, 9u}) {
        CDibImage image;
        FileError error;
        EXPECT_FALSE(LoadTiffBytes(BytesOf(file.substr(0, size)), image, &error));
        EXPECT_EQ(error.cause, FileError::Cause::kContent);
        ImageInfo info;
        EXPECT_FALSE(ReadTiffInfo(BytesOf(file.substr(0, size)), info, nullptr));
    }
}

TEST(TiffDamageSlow, LyingSizesAreRefusedAtOnce) {
    struct Lie {
        std::uint32_t width, height, bits, compression;
    };
    const Lie kLies[] = {
        {0, 10, 8, 1},        {10, 0, 8, 1},        {0xFFFFFFFF, 0xFFFFFFFF, 8, 1},
        {31000, 31000, 8, 1}, {30000, 30000, 8, 5}, {30000, 30000, 8, 32773},
        {1, 500000000, 1, 4}, {900000000, 1, 1, 4}, {30000, 30000, 8, 8},
    };
    for (const Lie& lie : kLies) {
        const auto start = std::chrono::steady_clock::now();
        const std::string file =
            ScannedPage(lie.width, lie.height, lie.bits, lie.compression, "0123456789", 10);
        CDibImage image;
        FileError error;
        EXPECT_FALSE(LoadTiffBytes(BytesOf(file), image, &error))
            << lie.width << " x " << lie.height << " coded " << lie.compression;
        EXPECT_EQ(error.cause, FileError::Cause::kContent);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));
    }
}

TEST(TiffDamage, LyingTileAndStripCountsAreRefused) {
    const std::vector<Entry> tiles = {
        {256, 4, 1, 100},   {257, 4, 1, 100},   {258, 3, 1, 8},
        {259, 3, 1, 1},     {262, 3, 1, 1},     {277, 3, 1, 1},
        {322, 4, 1, 60000}, {323, 4, 1, 30000}, {324, 4, 1, StripPlace(10)},
        {325, 4, 1, 100},
    };
    CDibImage image;
    EXPECT_FALSE(LoadTiffBytes(BytesOf(FileOf(tiles, "0123456789")), image, nullptr));
    const std::vector<Entry> samples = {
        {256, 4, 1, 100},   {257, 4, 1, 100}, {258, 3, 1, 8},
        {259, 3, 1, 1},     {262, 3, 1, 1},   {273, 4, 0x40000000, StripPlace(9)},
        {277, 3, 1, 65535}, {278, 4, 1, 1},   {279, 4, 0x40000000, 10},
    };
    EXPECT_FALSE(LoadTiffBytes(BytesOf(FileOf(samples, "0123456789")), image, nullptr));
}

TEST(TiffDamage, MutationsNeverCrash) {
    struct Kind {
        int bits, channels, photometric, compression, tileSize;
        bool separate;
    };
    const Kind kKinds[] = {
        {1, 1, PHOTOMETRIC_MINISWHITE, COMPRESSION_CCITTFAX4, 0, false},
        {8, 1, PHOTOMETRIC_PALETTE, COMPRESSION_LZW, 0, false},
        {8, 3, PHOTOMETRIC_RGB, COMPRESSION_ADOBE_DEFLATE, 16, false},
        {8, 3, PHOTOMETRIC_YCBCR, COMPRESSION_JPEG, 0, false},
        {16, 4, PHOTOMETRIC_SEPARATED, COMPRESSION_PACKBITS, 0, true},
        {8, 3, PHOTOMETRIC_CIELAB, COMPRESSION_NONE, 0, false},
    };
    int visited = 0;
    for (const Kind& kind : kKinds) {
        PlainTiff tiff = test::TiffOfNoise(33, 21, kind.bits, kind.channels, kind.photometric);
        tiff.compression = kind.compression;
        tiff.tileSize = kind.tileSize;
        tiff.separate = kind.separate;
        tiff.rowsPerStrip = 16;
        if (kind.photometric == PHOTOMETRIC_PALETTE)
            test::AddPalette(tiff);
        test::ForEachMutation(EncodeTiff(tiff), 200, 3, [&](const std::string& bytes) {
            ImageInfo info;
            CDibImage image;
            const bool head = ReadTiffInfo(BytesOf(bytes), info, nullptr);
            if (LoadTiffBytes(BytesOf(bytes), image, nullptr)) {
                EXPECT_TRUE(head);
                EXPECT_EQ(image.GetWidth(), info.width);
                EXPECT_EQ(image.GetHeight(), info.height);
            }
            ++visited;
        });
    }
    EXPECT_EQ(visited, 1200);
}

TEST(TiffDamage, MessagesBelongToTheirFileOnEveryThread) {
    PlainTiff tiff = test::TiffOfNoise(20, 20, 8, 1, PHOTOMETRIC_MINISBLACK);
    const std::string good = EncodeTiff(tiff);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&good, i] {
            for (int round = 0; round < 50; ++round) {
                CDibImage image;
                FileError error;
                const std::string file = i % 2 == 0 ? good : good.substr(0, 30);
                EXPECT_EQ(LoadTiffBytes(BytesOf(file), image, &error), i % 2 == 0);
                EXPECT_EQ(error.detail.empty(), i % 2 == 0);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
}

TEST(TiffDamage, FailingAllocationsEndInFalse) {
    PlainTiff tiff = test::TiffOfNoise(20, 20, 8, 4, PHOTOMETRIC_RGB);
    tiff.extraSample = EXTRASAMPLE_UNASSALPHA;
    tiff.separate = true;
    tiff.orientation = 6;
    const std::string file = EncodeTiff(tiff);
    int loaded = 0;
    test::SweepFailingAllocations([&](long) {
        CDibImage image;
        FileError error;
        if (LoadTiffBytes(BytesOf(file), image, &error))
            ++loaded;
    });
    EXPECT_GE(loaded, 1);
}

}  // namespace
}  // namespace velloran
