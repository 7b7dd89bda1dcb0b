#include <gtest/gtest.h>
#include <webp/decode.h>

#include "FullDisk.h"
#include "codecs/FileForms.h"
#include "codecs/Webp.h"
#include "support/FailingAllocator.h"
#include "support/Images.h"
#include "support/TempFolder.h"

namespace velloran {
namespace {

using test::Rgb;

struct Plain {
    WebPBitstreamFeatures features{};
    std::vector<std::uint8_t> rgba;
    Rgb At(int x, int y) const {
        const std::uint8_t* pixel = rgba.data() + 4 * (y * features.width + x);
        return {pixel[0], pixel[1], pixel[2]};
    }
    int AlphaAt(int x, int y) const {
        return rgba[static_cast<std::size_t>(4 * (y * features.width + x) + 3)];
    }
    bool IsLossless() const { return features.format == 2; }
};

Plain Saved(const CDibImage& image, int quality, std::size_t* fileBytes = nullptr) {
    const test::TempFolder folder;
    FileError error;
    EXPECT_TRUE(SaveWebp(folder / "a.webp", image, quality, &error)) << error.detail;
    const std::string file = test::ReadAll(folder / "a.webp");
    if (fileBytes != nullptr)
        *fileBytes = file.size();
    Plain plain;
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(file.data());
    EXPECT_EQ(WebPGetFeatures(bytes, file.size(), &plain.features), VP8_STATUS_OK);
    int width = 0, height = 0;
    std::uint8_t* pixels = WebPDecodeRGBA(bytes, file.size(), &width, &height);
    EXPECT_NE(pixels, nullptr);
    plain.rgba.assign(pixels, pixels + 4 * width * height);
    WebPFree(pixels);
    return plain;
}

void ExpectSame(const Plain& plain, const CDibImage& image) {
    ASSERT_EQ(plain.features.width, image.GetWidth());
    ASSERT_EQ(plain.features.height, image.GetHeight());
    for (int y = 0; y < image.GetHeight(); ++y)
        for (int x = 0; x < image.GetWidth(); ++x)
            ASSERT_EQ(plain.At(x, y), test::PixelAt(image, x, y)) << x << ", " << y;
}

TEST(WebpWriter, Quality100IsLosslessForEveryDepthAndWidth) {
    for (const int bpp : {1, 4, 8, 24})
        for (int width = 1; width <= 17; width += 2) {
            const CDibImage image = test::Noise(width, 1 + width % 5, bpp);
            const Plain plain = Saved(image, 100);
            EXPECT_TRUE(plain.IsLossless());
            EXPECT_EQ(plain.features.has_alpha, 0);
            ExpectSame(plain, image);
        }
}

TEST(WebpWriter, BlackAndWhiteIsLosslessAtEveryQuality) {
    CDibImage image = test::Noise(61, 40, 1);
    test::SetPalette(image, {{255, 255, 255}, {0, 0, 0}});
    for (const int quality : {0, 50, 80}) {
        const Plain plain = Saved(image, quality);
        EXPECT_TRUE(plain.IsLossless());
        ExpectSame(plain, image);
    }
    test::SetPalette(image, {{255, 255, 255}, {200, 0, 0}});
    EXPECT_FALSE(Saved(image, 80).IsLossless());
}

TEST(WebpWriter, LowerQualityIsSmallerAndStaysNear) {
    CDibImage image = test::Filled(160, 120, 24, 0);
    for (int y = 0; y < 120; ++y)
        for (int x = 0; x < 160; ++x)
            test::SetPixel(image, x, y, {x + y / 2, 255 - x, (x * y / 40) & 255});
    std::size_t high = 0, low = 0;
    const Plain plain = Saved(image, 95, &high);
    EXPECT_FALSE(plain.IsLossless());
    Saved(image, 10, &low);
    EXPECT_LT(low, high);
    std::int64_t error = 0;
    for (int y = 0; y < 120; ++y)
        for (int x = 0; x < 160; ++x)
            error += std::abs(plain.At(x, y).green - test::PixelAt(image, x, y).green);
    EXPECT_LT(error / (120 * 160), 6);
}

TEST(WebpWriter, QualityIsLimited) {
    const CDibImage image = test::Noise(16, 16, 24);
    EXPECT_TRUE(Saved(image, 1000).IsLossless());
    std::size_t below = 0, zero = 0;
    EXPECT_FALSE(Saved(image, -5, &below).IsLossless());
    Saved(image, 0, &zero);
    EXPECT_EQ(below, zero);
}

TEST(WebpWriter, AlphaPlanesComeBackExactly) {
    CDibImage image = test::Noise(9, 7, 24);
    ASSERT_TRUE(image.CreateAlpha());
    for (int i = 0; i < 63; ++i)
        image.GetAlpha()[i] = static_cast<std::uint8_t>(i * 4);
    const test::TempFolder folder;
    CDibImage again;
    ASSERT_TRUE(SaveWebp(folder / "a.webp", image, 100));
    ASSERT_TRUE(LoadWebp(folder / "a.webp", again));
    test::ExpectSamePixels(again, image);  // also under clear pixels
    ASSERT_NE(again.GetAlpha(), nullptr);
    for (int i = 0; i < 63; ++i)
        EXPECT_EQ(again.GetAlpha()[i], i * 4);
    EXPECT_NE(Saved(image, 80).features.has_alpha, 0);
}

TEST(WebpWriter, SidesAbove16383AreRefused) {
    const test::TempFolder folder;
    FileError error;
    EXPECT_FALSE(SaveWebp(folder / "a.webp", test::Filled(16384, 1, 1, 0), 80, &error));
    EXPECT_EQ(error.cause, FileError::Cause::kContent);
    EXPECT_NE(error.detail.find("16383"), std::string::npos);
    EXPECT_FALSE(SaveWebp(folder / "a.webp", test::Filled(1, 16384, 1, 0), 80));
    EXPECT_TRUE(folder.AllNames().empty());
    EXPECT_TRUE(SaveWebp(folder / "a.webp", test::Filled(16383, 1, 1, 0), 80));
}

TEST(WebpWriter, AnEmptyImageIsRefusedBeforeTheFileIsTouched) {
    const test::TempFolder folder;
    test::WriteAll(folder / "a.webp", "old");
    FileError error;
    EXPECT_FALSE(SaveWebp(folder / "a.webp", CDibImage(), 80, &error));
    EXPECT_EQ(error.cause, FileError::Cause::kContent);
    EXPECT_EQ(test::ReadAll(folder / "a.webp"), "old");
}

TEST(WebpWriter, AFullDiskLeavesTheOldFileAndNothingElse) {
    const test::TempFolder folder;
    test::WriteAll(folder / "a.webp", "old");
    const CDibImage image = test::Noise(300, 300, 24);
    FileError error;
    {
        const test::FullDisk full(20000);
        EXPECT_FALSE(SaveWebp(folder / "a.webp", image, 100, &error));
    }
    EXPECT_EQ(error.cause, FileError::Cause::kStorage);
    EXPECT_EQ(test::ReadAll(folder / "a.webp"), "old");
    EXPECT_EQ(folder.AllNames(), std::vector<std::string>{"a.webp"});
}

TEST(WebpWriter, FailingAllocationsEndInFalseAndNoFile) {
    const test::TempFolder folder;
    const std::filesystem::path file = folder / "a.webp";
    const CDibImage image = test::Noise(30, 20, 8);
    int saved = 0;
    test::SweepFailingAllocations([&](long) {
        if (SaveWebp(file, image, 80, nullptr))
            ++saved;
    });
    EXPECT_GE(saved, 1);
    EXPECT_EQ(folder.AllNames(), std::vector<std::string>{"a.webp"});
}

}  // namespace
}  // namespace velloran
