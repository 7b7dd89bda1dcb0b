#include <gtest/gtest.h>
#include <webp/decode.h>
#include <webp/encode.h>
#include <webp/mux.h>

#include <random>

#include "Mutations.h"
#include "codecs/FileForms.h"
#include "codecs/Webp.h"
#include "support/FailingAllocator.h"
#include "support/Images.h"

namespace velloran {
namespace {

using test::BytesOf;
using test::Rgb;

/// Red, green, blue and alpha side by side, the top row first.
struct Pixels {
    int width = 0, height = 0;
    std::vector<std::uint8_t> rgba;
    Rgb At(int x, int y) const {
        const std::uint8_t* pixel = rgba.data() + 4 * (y * width + x);
        return {pixel[0], pixel[1], pixel[2]};
    }
    int AlphaAt(int x, int y) const {
        return rgba[static_cast<std::size_t>(4 * (y * width + x) + 3)];
    }
};

Pixels Gradient(int width, int height, bool withAlpha) {
    Pixels pixels{width, height, {}};
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (const int value : {x * 3, y * 2, 255 - x, withAlpha ? 255 - y : 255})
                pixels.rgba.push_back(static_cast<std::uint8_t>(value));
    return pixels;
}

std::string Encode(const Pixels& pixels, bool lossless) {
    WebPConfig config;
    WebPConfigInit(&config);
    config.lossless = lossless ? 1 : 0;
    config.quality = 90;
    config.exact = 1;
    WebPPicture picture;
    WebPPictureInit(&picture);
    picture.use_argb = lossless ? 1 : 0;
    picture.width = pixels.width;
    picture.height = pixels.height;
    WebPPictureImportRGBA(&picture, pixels.rgba.data(), 4 * pixels.width);
    WebPMemoryWriter writer;
    WebPMemoryWriterInit(&writer);
    picture.writer = WebPMemoryWrite;
    picture.custom_ptr = &writer;
    EXPECT_NE(WebPEncode(&config, &picture), 0);
    std::string file(reinterpret_cast<const char*>(writer.mem), writer.size);
    WebPMemoryWriterClear(&writer);
    WebPPictureFree(&picture);
    return file;
}

/// Frames of which the first has an offset, on a larger canvas.
std::string Animation(const Pixels& first, int left, int top, const Pixels& second) {
    WebPMux* mux = WebPMuxNew();
    WebPMuxSetCanvasSize(mux, 100, 90);
    const WebPMuxAnimParams parameters{0xFF0000FF, 0};
    WebPMuxSetAnimationParams(mux, &parameters);
    for (const Pixels* pixels : {&first, &second}) {
        const std::string file = Encode(*pixels, true);
        WebPMuxFrameInfo frame{};
        frame.bitstream = {reinterpret_cast<const std::uint8_t*>(file.data()), file.size()};
        frame.x_offset = pixels == &first ? left : 0;
        frame.y_offset = pixels == &first ? top : 0;
        frame.duration = 100;
        frame.id = WEBP_CHUNK_ANMF;
        EXPECT_EQ(WebPMuxPushFrame(mux, &frame, /*copy_data=*/1), WEBP_MUX_OK);
    }
    WebPData data{};
    EXPECT_EQ(WebPMuxAssemble(mux, &data), WEBP_MUX_OK);
    std::string file(reinterpret_cast<const char*>(data.bytes), data.size);
    WebPDataClear(&data);
    WebPMuxDelete(mux);
    return file;
}

CDibImage Loaded(const std::string& file) {
    CDibImage image;
    FileError error;
    EXPECT_TRUE(LoadWebpBytes(BytesOf(file), image, &error)) << error.detail;
    return image;
}

int AlphaAt(const CDibImage& image, int x, int y) {
    return image.GetAlpha()[(image.GetHeight() - 1 - y) * image.GetWidth() + x];
}

TEST(WebpReader, LosslessPixelsAndAlphaAreExactAtEveryWidth) {
    for (int width = 1; width <= 17; ++width)
        for (const bool withAlpha : {false, true}) {
            const Pixels pixels = Gradient(width, 2 + width % 5, withAlpha);
            const CDibImage image = Loaded(Encode(pixels, true));
            ASSERT_EQ(image.GetBpp(), 24);
            ASSERT_EQ(image.GetWidth(), width);
            ASSERT_EQ(image.GetHeight(), pixels.height);
            ASSERT_EQ(image.GetAlpha() != nullptr, withAlpha);
            for (int y = 0; y < pixels.height; ++y)
                for (int x = 0; x < width; ++x) {
                    ASSERT_EQ(test::PixelAt(image, x, y), pixels.At(x, y));
                    if (withAlpha) {
                        ASSERT_EQ(AlphaAt(image, x, y), pixels.AlphaAt(x, y));
                    }
                }
            EXPECT_EQ(image.GetXDpi(), 96);
            EXPECT_EQ(image.Source().sourceColours, withAlpha ? 32u : 24u);
            EXPECT_EQ(image.Source().sourceFlag, 96u);
        }
}

TEST(WebpReader, LossyPixelsEqualThePlainDecoder) {
    for (const bool withAlpha : {false, true}) {
        const std::string file = Encode(Gradient(83, 61, withAlpha), false);
        const CDibImage image = Loaded(file);
        int width = 0, height = 0;
        std::uint8_t* plain = WebPDecodeRGBA(reinterpret_cast<const std::uint8_t*>(file.data()),
                                             file.size(), &width, &height);
        ASSERT_NE(plain, nullptr);
        const Pixels expected{width, height, {plain, plain + 4 * width * height}};
        WebPFree(plain);
        ASSERT_EQ(image.GetWidth(), width);
        ASSERT_EQ(image.GetAlpha() != nullptr, withAlpha);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                ASSERT_EQ(test::PixelAt(image, x, y), expected.At(x, y));
                if (withAlpha) {
                    ASSERT_EQ(AlphaAt(image, x, y), expected.AlphaAt(x, y));
                }
            }
    }
}

TEST(WebpReader, TellsItsHead) {
    for (const bool withAlpha : {false, true}) {
        ImageInfo info;
        ASSERT_TRUE(
            ReadWebpInfo(BytesOf(Encode(Gradient(83, 61, withAlpha), true)), info, nullptr));
        EXPECT_EQ(info.width, 83);
        EXPECT_EQ(info.height, 61);
        EXPECT_EQ(info.bitsPerPixel, withAlpha ? 32 : 24);
        EXPECT_EQ(info.colorsUsed, 0);
        EXPECT_FALSE(info.gray);
    }
}

TEST(WebpReader, TheFirstFrameOfAnAnimationLiesOnAClearWhiteCanvas) {
    const Pixels first = Gradient(20, 10, true), second = Gradient(100, 90, false);
    const CDibImage image = Loaded(Animation(first, 30, 40, second));
    ASSERT_EQ(image.GetWidth(), 100);
    ASSERT_EQ(image.GetHeight(), 90);
    ASSERT_NE(image.GetAlpha(), nullptr);
    for (int y = 0; y < 90; ++y)
        for (int x = 0; x < 100; ++x) {
            const bool inside = x >= 30 && x < 50 && y >= 40 && y < 50;
            ASSERT_EQ(test::PixelAt(image, x, y),
                      inside ? first.At(x - 30, y - 40) : (Rgb{255, 255, 255}));
            ASSERT_EQ(AlphaAt(image, x, y), inside ? first.AlphaAt(x - 30, y - 40) : 0);
        }
}

TEST(WebpReader, AnAnimationThatStartsWithTheWholeCanvasIsAPlainPage) {
    const Pixels first = Gradient(100, 90, false), second = Gradient(20, 10, true);
    const CDibImage image = Loaded(Animation(first, 0, 0, second));
    EXPECT_EQ(image.GetAlpha(), nullptr);
    EXPECT_EQ(test::PixelAt(image, 99, 89), first.At(99, 89));
}

TEST(WebpDamage, WhatATruncatedFileLacksIsWhite) {
    for (const bool lossless : {false, true}) {
        Pixels pixels = Gradient(150, 200, false);
        std::mt19937 random(4);  // rows that each take their share of the file
        for (std::size_t i = 0; i < pixels.rgba.size(); ++i)
            if (i % 4 != 3)
                pixels.rgba[i] = static_cast<std::uint8_t>(pixels.rgba[i] / 2 + random() % 60);
        const std::string file = Encode(pixels, lossless);
        const CDibImage whole = Loaded(file);
        const CDibImage image = Loaded(file.substr(0, file.size() * 3 / 4));
        EXPECT_EQ(image.GetHeight(), 200);
        EXPECT_EQ(test::PixelAt(image, 7, 0), test::PixelAt(whole, 7, 0));
        EXPECT_EQ(test::PixelAt(image, 149, 60), test::PixelAt(whole, 149, 60));
        EXPECT_EQ(test::PixelAt(image, 0, 199), (Rgb{255, 255, 255}));
        EXPECT_EQ(test::PixelAt(image, 149, 199), (Rgb{255, 255, 255}));
    }
}

TEST(WebpDamage, TruncationsLoadOrLeaveTheImageAsItWas) {
    int loaded = 0, failed = 0;
    for (const std::string& file :
         {Encode(Gradient(150, 200, true), true), Encode(Gradient(150, 200, true), false),
          Animation(Gradient(20, 10, true), 4, 4, Gradient(20, 10, false))})
        for (const std::string& part : test::TruncationsOf(file)) {
            CDibImage image = test::Filled(3, 2, 8, 5);
            FileError error;
            if (LoadWebpBytes(BytesOf(part), image, &error)) {
                EXPECT_EQ(image.GetBpp(), 24);
                ++loaded;
            } else {
                test::ExpectSamePixels(image, test::Filled(3, 2, 8, 5));
                EXPECT_EQ(error.cause, FileError::Cause::kContent);
                ++failed;
            }
        }
    EXPECT_GT(loaded, 20);
    EXPECT_GT(failed, 60);
}

TEST(WebpDamage, FilesOfNoneOneAndNineBytesFail) {
    const std::string file = Encode(Gradient(8, 8, false), true);
    for (const std::size_t size : {0u, 1u, 9u}) {
        CDibImage image;
        FileError error;
        EXPECT_FALSE(LoadWebpBytes(BytesOf(file.substr(0, size)), image, &error));
        EXPECT_EQ(error.cause, FileError::Cause::kContent);
        ImageInfo info;
        EXPECT_FALSE(ReadWebpInfo(BytesOf(file.substr(0, size)), info, nullptr));
    }
}

TEST(WebpDamage, MutationsNeverCrash) {
    int visited = 0;
    for (const std::string& file :
         {Encode(Gradient(40, 30, true), true), Encode(Gradient(40, 30, true), false),
          Animation(Gradient(20, 10, true), 4, 4, Gradient(20, 10, false))})
        test::ForEachMutation(file, 200, 9, [&](const std::string& bytes) {
            ImageInfo info;
            CDibImage image;
            const bool head = ReadWebpInfo(BytesOf(bytes), info, nullptr);
            if (std::int64_t{info.width} * info.height > 4000000)
                return;  // a canvas of any size is a true one
            if (LoadWebpBytes(BytesOf(bytes), image, nullptr)) {
                EXPECT_TRUE(head);
                EXPECT_EQ(image.GetWidth(), info.width);
            }
            ++visited;
        });
    EXPECT_GE(visited, 400);
}

TEST(WebpDamage, FailingAllocationsEndInFalse) {
    const std::string file = Encode(Gradient(40, 30, true), true);
    int loaded = 0;
    test::SweepFailingAllocations([&](long) {
        CDibImage image;
        FileError error;
        if (LoadWebpBytes(BytesOf(file), image, &error))
            ++loaded;
    });
    EXPECT_GE(loaded, 1);
}

TEST(WebpDamage, ATinyAnimationOnAHugeCanvasIsRefused) {
    std::string file =
        Animation(Gradient(20, 10, true), 4, 4, Gradient(20, 10, false)).substr(0, 30);
    ASSERT_EQ(file.substr(12, 4), "VP8X");
    for (int i = 24; i < 30; ++i)  // sides of 24 bits, each less one
        file[static_cast<std::size_t>(i)] = i % 3 == 0 ? '\xFF' : i % 3 == 1 ? '\x3F' : '\0';
    file.resize(100);
    CDibImage image;
    FileError error;
    EXPECT_FALSE(LoadWebpBytes(BytesOf(file), image, &error));
    EXPECT_EQ(error.reason, FileReason::kDamaged);
    EXPECT_EQ(error.detail, "the file is too short for its picture");
}

TEST(WebpReader, ABlankPageOfTheLargestScannersIsRead) {
    // 600 dpi, A4, of one colour: about a hundred megabytes from a thousand bytes.
    Pixels page = Gradient(4960, 7016, false);
    std::fill(page.rgba.begin(), page.rgba.end(), std::uint8_t{255});
    const CDibImage image = Loaded(Encode(page, true));
    EXPECT_EQ(image.GetWidth(), 4960);
    EXPECT_EQ(test::PixelAt(image, 4959, 7015), (Rgb{255, 255, 255}));
}

}  // namespace
}  // namespace velloran
