// What loads tell beside the picture: damage, pages, and sources that change while they are read.

#include "codecs/LoadNotes.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>
#include <thread>

#include "codecs/FileForms.h"
#include "codecs/Mutations.h"
#include "codecs/PlainGif.h"
#include "codecs/PlainTiff.h"
#include "core/DibImage.h"
#include "io/FailingSource.h"
#include "io/MemorySink.h"
#include "support/Images.h"
#include "support/TempFolder.h"

namespace velloran {
namespace {

using test::BytesOf;

/// A page that no codec shrinks to nothing.
CDibImage Page(int bpp, int width = 120, int height = 160) {
    CDibImage image = test::Filled(width, height, bpp, 0);
    unsigned seed = 7;
    for (int y = 0; y < height; ++y)
        for (std::uint32_t i = 0; i < image.GetEffWidth(); ++i) {
            seed = seed * 1664525U + 1013904223U;
            image.GetBits(y)[i] = static_cast<std::uint8_t>(seed >> 24);
        }
    return image;
}

std::string Coded(TargetFormat target, int bpp, const SaveOptions& options = {}, int width = 120,
                  int height = 160) {
    CDibImage image = Page(bpp, width, height);
    MemorySink sink;
    FileError error;
    EXPECT_TRUE(FormatOfTarget(target)->save(sink, image, options, &error)) << error.detail;
    return {sink.Bytes().begin(), sink.Bytes().end()};
}

struct Kind {
    const char* name;
    FileTypeId type;
    std::string file;
};

std::vector<Kind> Kinds(int width = 120, int height = 160) {
    const auto coded = [=](TargetFormat target, int bpp, SaveOptions options = {}) {
        return Coded(target, bpp, options, width, height);
    };
    SaveOptions lossless;
    lossless.quality = 100;
    SaveOptions progressive;
    progressive.jpeg.progressive = 1;
    const std::string jpeg = coded(TargetFormat::kJpeg, 24);
    test::PlainTiff tiles = test::TiffOfNoise(96, 96, 8, 3, PHOTOMETRIC_RGB);
    tiles.tileSize = 32;
    test::PlainTiff plain = test::TiffOfNoise(width, height, 8, 1, PHOTOMETRIC_MINISBLACK);
    return {
        {"Jpeg", kTypeJpeg, jpeg},
        {"JpegGray", kTypeJpeg, coded(TargetFormat::kJpeg, 8)},
        {"JpegProgressive", kTypeJpeg, coded(TargetFormat::kJpeg, 24, progressive)},
        {"Ufo", kTypeUfo, "0123456789" + jpeg.substr(10)},
        {"Gif", kTypeGif, coded(TargetFormat::kGif, 8)},
        {"Bmp8", kTypeBmp, coded(TargetFormat::kBmp, 8)},
        {"Bmp24", kTypeBmp, coded(TargetFormat::kBmp, 24)},
        {"Png8", kTypePng, coded(TargetFormat::kPng, 8)},
        {"Png24", kTypePng, coded(TargetFormat::kPng, 24)},
        {"TiffGroup4", kTypeTiff, coded(TargetFormat::kTiff, 1)},
        {"TiffLzw", kTypeTiff, coded(TargetFormat::kTiff, 24)},
        {"TiffPlain", kTypeTiff, test::EncodeTiff(plain)},
        {"TiffTiles", kTypeTiff, test::EncodeTiff(tiles)},
        {"WebpLossy", kTypeWebp, coded(TargetFormat::kWebp, 24)},
        {"WebpLossless", kTypeWebp, coded(TargetFormat::kWebp, 24, lossless)},
    };
}

bool Load(FileTypeId type, ByteSource& source, CDibImage& image, LoadNotes& notes,
          FileError* error) {
    return FindFormat(type)->load(source, {}, image, notes, error);
}

TEST(LoadNotes, WholeFilesAreNotDamagedAndHoldOnePage) {
    for (const Kind& kind : Kinds()) {
        MemorySource source(BytesOf(kind.file));
        CDibImage image;
        LoadNotes notes;
        FileError error;
        ASSERT_TRUE(Load(kind.type, source, image, notes, &error)) << kind.name << error.detail;
        EXPECT_FALSE(notes.damaged) << kind.name << ": " << notes.reason;
        EXPECT_EQ(notes.pictures, 1) << kind.name;
    }
}

TEST(LoadNotes, ACutFileFailsOrIsToldAsDamaged) {
    for (const Kind& kind : Kinds()) {
        int told = 0;
        for (const int percent : {10, 25, 50, 75, 90, 97, 99}) {
            const std::string cut = kind.file.substr(0, kind.file.size() * percent / 100);
            MemorySource source(BytesOf(cut));
            CDibImage image;
            LoadNotes notes;
            FileError error;
            if (Load(kind.type, source, image, notes, &error)) {
                EXPECT_TRUE(notes.damaged) << kind.name << " cut at " << percent << " %";
                EXPECT_FALSE(notes.reason.empty()) << kind.name;
                ++told;
            } else {
                EXPECT_NE(error.cause, FileError::Cause::kNone) << kind.name;
                EXPECT_EQ(error.reason, FileReason::kDamaged) << kind.name << ": " << error.detail;
            }
        }
        // The directory of our TIFF files stands at their end; without it there is no picture.
        if (kind.type != kTypeTiff) {
            EXPECT_GT(told, 0) << kind.name;
        }
    }
}

TEST(LoadNotes, AMissingEndMarkOfAJpegIsTold) {
    const std::string file = Coded(TargetFormat::kJpeg, 24);
    const std::string cut = file.substr(0, file.size() - 2);
    MemorySource source(BytesOf(cut));
    CDibImage image;
    LoadNotes notes;
    ASSERT_TRUE(LoadJpeg(source, image, false, notes, nullptr));
    EXPECT_TRUE(notes.damaged);
}

TEST(LoadNotes, FramesOfAGifAreCounted) {
    test::PlainGif gif = test::GifOfNoise(20, 10, 16);
    gif.frames.push_back(gif.frames[0]);
    gif.frames.back().localPalette = gif.palette;
    gif.frames.push_back(gif.frames[0]);
    const std::string file = test::EncodeGif(gif);
    MemorySource source(BytesOf(file));
    CDibImage image;
    LoadNotes notes;
    ASSERT_TRUE(LoadGif(source, image, notes, nullptr));
    EXPECT_EQ(notes.pictures, 3);
    EXPECT_FALSE(notes.damaged) << notes.reason;
    const std::string cut = file.substr(0, file.size() - 20);
    MemorySource shorter(BytesOf(cut));
    LoadNotes cutNotes;
    ASSERT_TRUE(LoadGif(shorter, image, cutNotes, nullptr));
    EXPECT_TRUE(cutNotes.damaged);
}

/// Two pages and a preview, in one file.
std::string TiffOfThree(const std::filesystem::path& path) {
    TIFF* tiff = TIFFOpen(path.c_str(), "w");
    for (const int kind : {0, FILETYPE_REDUCEDIMAGE, 0}) {
        TIFFSetField(tiff, TIFFTAG_SUBFILETYPE, kind);
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 8);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 1);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
        TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 1);
        std::string row = "abcdefgh";
        TIFFWriteScanline(tiff, row.data(), 0);
        TIFFWriteDirectory(tiff);
    }
    TIFFClose(tiff);
    return test::ReadAll(path);
}

TEST(LoadNotes, PagesOfATiffAreCountedWithoutPreviews) {
    const test::TempFolder folder;
    const std::string file = TiffOfThree(folder / "a.tif");
    MemorySource source(BytesOf(file));
    CDibImage image;
    LoadNotes notes;
    ASSERT_TRUE(LoadTiff(source, image, notes, nullptr));
    EXPECT_EQ(notes.pictures, 2);
    EXPECT_FALSE(notes.damaged) << notes.reason;
    const std::string cut = file.substr(0, file.size() - 4);
    MemorySource shorter(BytesOf(cut));
    LoadNotes cutNotes;
    ASSERT_TRUE(LoadTiff(shorter, image, cutNotes, nullptr));
    EXPECT_TRUE(cutNotes.damaged);
}

TEST(LoadNotes, AChainOfPagesThatBitesItsTailEnds) {
    const test::TempFolder folder;
    std::string file = TiffOfThree(folder / "a.tif");
    // The last link leads to the first page.
    const std::string first = file.substr(4, 4);
    const std::size_t last = file.rfind(std::string(4, 0));
    ASSERT_NE(last, std::string::npos);
    file.replace(last, 4, first);
    MemorySource source(BytesOf(file));
    CDibImage image;
    LoadNotes notes;
    ASSERT_TRUE(LoadTiff(source, image, notes, nullptr));
    EXPECT_LE(notes.pictures, 3);
}

TEST(Sources, ADiskThatFailsIsAReadFailureWhateverTheRead) {
    for (const Kind& kind : Kinds(400, 500)) {
        bool whole = false;
        int failures = 0;
        for (int n = 0; n < 400 && !whole; ++n) {
            test::ScriptedSource source(kind.file, test::FailsFrom(n));
            CDibImage image = test::Filled(3, 2, 8, 5);
            LoadNotes notes;
            FileError error;
            whole = Load(kind.type, source, image, notes, &error);
            if (whole) {
                EXPECT_FALSE(source.IsUnreadable()) << kind.name << " read " << n;
                continue;
            }
            ++failures;
            EXPECT_EQ(error.reason, FileReason::kInputOutput) << kind.name << ": " << error.detail;
            test::ExpectSamePixels(image, test::Filled(3, 2, 8, 5));
        }
        EXPECT_TRUE(whole) << kind.name;
        EXPECT_GT(failures, 0) << kind.name;
    }
}

TEST(Sources, ASourceThatShrinksWhileItIsReadFailsOrIsDamaged) {
    for (const Kind& kind : Kinds(400, 500))
        for (int n = 0; n < 12; ++n)
            for (const std::uint64_t length : {std::uint64_t{0}, std::uint64_t{100},
                                               kind.file.size() / 2, kind.file.size() * 9 / 10}) {
                test::ScriptedSource source(kind.file, test::ShrinksFrom(n, length));
                CDibImage image;
                LoadNotes notes;
                FileError error;
                if (!Load(kind.type, source, image, notes, &error)) {
                    EXPECT_NE(error.cause, FileError::Cause::kNone) << kind.name;
                } else if (source.CameShort()) {
                    EXPECT_TRUE(notes.damaged) << kind.name << " from read " << n;
                }
            }
}

TEST(Sources, AFileThatAnotherProgramCutsNeverKillsTheRun) {
    const test::TempFolder folder;
    for (const Kind& kind : Kinds(700, 900)) {
        const std::filesystem::path path = folder / kind.name;
        for (int i = 0; i < 12; ++i) {
            test::WriteAll(path, kind.file);
            std::atomic<bool> opened{false};
            std::thread cutter([&] {
                while (!opened)
                    std::this_thread::yield();
                std::this_thread::sleep_for(std::chrono::microseconds(150 * i));
                std::filesystem::resize_file(path, kind.file.size() / 3);
            });
            FileSource source;
            const bool open = source.Open(path);
            opened = true;
            CDibImage image;
            LoadNotes notes;
            FileError error;
            const bool loaded = open && Load(kind.type, source, image, notes, &error);
            cutter.join();
            EXPECT_TRUE(loaded || error.cause != FileError::Cause::kNone) << kind.name;
            if (loaded && source.CameShort()) {
                EXPECT_TRUE(notes.damaged) << kind.name;
            }
        }
    }
}

TEST(Sinks, AFullDiskIsToldByEachWriter) {
    for (const Format& format : Formats()) {
        if (format.save == nullptr)
            continue;
        CDibImage image = Page(format.Has(Format::kHoldsColor) ? 24 : 8);
        for (const std::uint64_t limit : {0, 1, 100, 1000}) {
            MemorySink sink(limit);
            FileError error;
            EXPECT_FALSE(format.save(sink, image, {}, &error)) << format.name;
            EXPECT_EQ(error.cause, FileError::Cause::kStorage) << format.name << error.detail;
            EXPECT_EQ(error.reason, FileReason::kNoSpace) << format.name << error.detail;
        }
    }
}

TEST(Transparency, AGifKeepsItsOwnTransparentColour) {
    test::PlainGif gif = test::GifOfNoise(20, 10, 16);
    gif.frames[0].transparent = 5;
    const std::string file = test::EncodeGif(gif);
    CDibImage image;
    ASSERT_TRUE(LoadGifBytes(BytesOf(file), image, nullptr));
    MemorySink sink;
    ASSERT_TRUE(SaveGif(sink, image, false, false, nullptr));
    const test::PlainGif saved = test::DecodeGif({sink.Bytes().begin(), sink.Bytes().end()});
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 20; ++x)
            EXPECT_EQ(saved.frames[0].At(x, y) == saved.frames[0].transparent,
                      gif.frames[0].At(x, y) == 5);
}

TEST(Transparency, AnAlphaPlaneBecomesTheTransparentColourOfAGif) {
    for (const int bpp : {1, 8, 24}) {
        CDibImage image = Page(bpp, 40, 30);
        ASSERT_TRUE(image.CreateAlpha());
        for (int x = 0; x < 40; ++x)
            image.GetAlpha()[x] = static_cast<std::uint8_t>(x * 6);  // the bottom row
        MemorySink sink;
        ASSERT_TRUE(SaveGif(sink, image, false, false, nullptr));
        const test::PlainGif saved = test::DecodeGif({sink.Bytes().begin(), sink.Bytes().end()});
        const auto& frame = saved.frames[0];
        ASSERT_GE(frame.transparent, 0) << bpp;
        for (int y = 0; y < 30; ++y)
            for (int x = 0; x < 40; ++x)
                EXPECT_EQ(frame.At(x, y) == frame.transparent, y == 29 && x * 6 < 128) << bpp;
    }
}

}  // namespace
}  // namespace velloran
