// Pages beyond the first: counted without pixels, and each to be had by its number.

#include <gtest/gtest.h>
#include <tiffio.h>

#include "codecs/FileForms.h"
#include "codecs/LoadNotes.h"
#include "codecs/Mutations.h"
#include "codecs/PlainGif.h"
#include "io/MemorySink.h"
#include "support/Images.h"
#include "support/TempFolder.h"

namespace velloran {
namespace {

using test::BytesOf;
using test::PixelAt;
using test::Rgb;

constexpr Rgb kRed{255, 0, 0}, kGreen{0, 255, 0}, kBlue{0, 0, 255}, kWhite{255, 255, 255};

test::PlainGifFrame Block(int left, int top, int width, int height, int index) {
    test::PlainGifFrame frame;
    frame.left = left;
    frame.top = top;
    frame.width = width;
    frame.height = height;
    frame.indices.assign(static_cast<std::size_t>(width * height), index);
    return frame;
}

bool LoadPageOf(const std::string& file, int page, CDibImage& image, FileError* error = nullptr) {
    MemorySource source(BytesOf(file));
    LoadNotes notes;
    return LoadGifPage(source, page, image, notes, error);
}

bool IsClear(const CDibImage& image, int x, int y) {
    return image.GetAlpha() != nullptr &&
           image.GetAlpha()[(image.GetHeight() - 1 - y) * image.GetWidth() + x] == 0;
}

test::PlainGif FourFrames() {
    test::PlainGif gif;
    gif.width = 8;
    gif.height = 6;
    gif.palette = {kRed, kGreen, kBlue, kWhite};
    gif.frames = {Block(0, 0, 8, 6, 0), Block(1, 1, 4, 3, 1), Block(4, 2, 3, 3, 2),
                  Block(0, 5, 8, 1, 3)};
    return gif;
}

TEST(GifPages, ALaterPictureStandsOnThoseBefore) {
    const std::string file = test::EncodeGif(FourFrames());
    CDibImage image;
    ASSERT_TRUE(LoadPageOf(file, 3, image));
    EXPECT_EQ(PixelAt(image, 0, 0), kRed);
    EXPECT_EQ(PixelAt(image, 1, 1), kGreen);
    EXPECT_EQ(PixelAt(image, 4, 2), kBlue);  // over the green
    EXPECT_EQ(PixelAt(image, 4, 1), kGreen);
    EXPECT_EQ(PixelAt(image, 7, 5), kRed);
    ASSERT_TRUE(LoadPageOf(file, 4, image));
    EXPECT_EQ(PixelAt(image, 7, 5), kWhite);
}

TEST(GifPages, APictureThatIsTakenAwayLeavesWhatItsDisposalSays) {
    test::PlainGif gif = FourFrames();
    gif.frames[1].disposal = 2;  // to the background, which is clear
    CDibImage image;
    ASSERT_TRUE(LoadPageOf(test::EncodeGif(gif), 3, image));
    EXPECT_TRUE(IsClear(image, 1, 1));
    EXPECT_FALSE(IsClear(image, 0, 0));
    EXPECT_EQ(PixelAt(image, 4, 2), kBlue);
    gif.frames[1].disposal = 3;  // to what was before
    ASSERT_TRUE(LoadPageOf(test::EncodeGif(gif), 3, image));
    EXPECT_EQ(PixelAt(image, 1, 1), kRed);
}

TEST(GifPages, TransparentPixelsShowWhatLiesBeneath) {
    test::PlainGif gif = FourFrames();
    gif.frames[1].transparent = 2;
    gif.frames[1].indices[0] = 2;
    CDibImage image;
    ASSERT_TRUE(LoadPageOf(test::EncodeGif(gif), 2, image));
    EXPECT_EQ(PixelAt(image, 1, 1), kRed);
    EXPECT_EQ(PixelAt(image, 2, 1), kGreen);
}

TEST(GifPages, InterlacedPicturesAreInTheirRowsToo) {
    test::PlainGif gif = FourFrames();
    gif.frames[1] = Block(0, 0, 8, 6, 0);
    gif.frames[1].interlaced = true;
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 8; ++x)
            gif.frames[1].indices[static_cast<std::size_t>(y * 8 + x)] = (x + y) % 4;
    CDibImage image;
    ASSERT_TRUE(LoadPageOf(test::EncodeGif(gif), 2, image));
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 8; ++x)
            EXPECT_EQ(PixelAt(image, x, y), gif.palette[static_cast<std::size_t>((x + y) % 4)]);
}

TEST(GifPages, NumbersThatThereAreNotAreRefused) {
    const std::string file = test::EncodeGif(FourFrames());
    CDibImage image;
    for (const int page : {0, 5, -3}) {
        FileError error;
        EXPECT_FALSE(LoadPageOf(file, page, image, &error));
        EXPECT_EQ(error.reason, FileReason::kNoSuchPage);
    }
    MemorySource source(BytesOf(file));
    LoadNotes notes;
    ASSERT_TRUE(ReadGifNotes(source, notes, nullptr));
    EXPECT_EQ(notes.pictures, 4);
}

TEST(GifPages, DamagedAnimationsEndInAMessageOrAPicture) {
    test::ForEachMutation(test::EncodeGif(FourFrames()), 500, 9, [](const std::string& damaged) {
        CDibImage image;
        FileError error;
        const bool loaded = LoadPageOf(damaged, 3, image, &error);
        EXPECT_EQ(loaded, image.IsValid());
        EXPECT_TRUE(loaded || error.cause != FileError::Cause::kNone);
    });
}

/// A TIFF of pages of different sizes, the second one a preview.
std::string TiffOfPages() {
    const test::TempFolder folder;
    const std::string path = (folder / "a.tif").native();
    TIFF* tiff = TIFFOpen(path.c_str(), "w");
    for (int page = 0; page < 4; ++page) {
        TIFFSetField(tiff, TIFFTAG_SUBFILETYPE, page == 1 ? FILETYPE_REDUCEDIMAGE : FILETYPE_PAGE);
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 10 + page);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 5);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
        TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
        std::vector<std::uint8_t> row(20, static_cast<std::uint8_t>(50 * page));
        for (std::uint32_t y = 0; y < 5; ++y)
            TIFFWriteScanline(tiff, row.data(), y);
        TIFFWriteDirectory(tiff);
    }
    TIFFClose(tiff);
    return test::ReadAll(path);
}

TEST(TiffPages, EachPageIsReadByItsNumberAndPreviewsAreNone) {
    const std::string file = TiffOfPages();
    MemorySource source(BytesOf(file));
    LoadNotes notes;
    ASSERT_TRUE(ReadTiffNotes(source, notes, nullptr));
    EXPECT_EQ(notes.pictures, 3);
    constexpr int kWidths[] = {10, 12, 13}, kLevels[] = {0, 100, 150};
    for (int page = 1; page <= 3; ++page) {
        CDibImage image;
        ASSERT_TRUE(LoadTiffPage(source, page, image, notes, nullptr));
        EXPECT_EQ(image.GetWidth(), kWidths[page - 1]);
        EXPECT_EQ(PixelAt(image, 3, 3).red, kLevels[page - 1]);
    }
    CDibImage image;
    FileError error;
    EXPECT_FALSE(LoadTiffPage(source, 4, image, notes, &error));
    EXPECT_EQ(error.reason, FileReason::kNoSuchPage);
}

}  // namespace
}  // namespace velloran
