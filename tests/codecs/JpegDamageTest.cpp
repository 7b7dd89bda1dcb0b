// clang-format off
#include <cstdio>  // jpeglib.h needs it before itself
#include <jpeglib.h>
// clang-format on

#include <gtest/gtest.h>

#include <algorithm>
#include <csetjmp>

#include "codecs/FileForms.h"
#include "codecs/Jpeg.h"
#include "codecs/JpegDecoder.h"
#include "codecs/Mutations.h"
#include "codecs/PlainJpeg.h"
#include "core/DibImage.h"
#include "support/Images.h"

namespace velloran {
namespace {

using test::BytesOf;
using test::PlainOptions;

bool Load(const std::string& file, CDibImage& image) {
    return LoadJpegBytes(BytesOf(file), image, /*reverseCmyk=*/false, nullptr);
}

CDibImage Loaded(const std::string& file) {
    CDibImage image;
    EXPECT_TRUE(Load(file, image));
    return image;
}

std::string Coded(int channels, std::function<void(jpeg_compress_struct&)> adjust = {},
                  int width = 64, int height = 96) {
    PlainOptions options;
    options.adjust = std::move(adjust);
    return test::EncodePlain(test::Scene(width, height, channels), options);
}

bool IsWhiteRow(const CDibImage& image, int y) {
    for (int x = 0; x < image.GetWidth(); ++x)
        if (!(test::PixelAt(image, x, y) == test::Rgb{255, 255, 255}))
            return false;
    return true;
}

bool SameRow(const CDibImage& a, const CDibImage& b, int y) {
    for (int x = 0; x < a.GetWidth(); ++x)
        if (!(test::PixelAt(a, x, y) == test::PixelAt(b, x, y)))
            return false;
    return true;
}

/// Rows from the top before the white ones, all of which must be at the bottom.
int RowsBeforeWhite(const CDibImage& image) {
    int rows = 0;
    while (rows < image.GetHeight() && !IsWhiteRow(image, rows))
        ++rows;
    for (int y = rows; y < image.GetHeight(); ++y)
        EXPECT_TRUE(IsWhiteRow(image, y)) << y;
    return rows;
}

void NoSubsampling(jpeg_compress_struct& jpeg) {
    jpeg.comp_info[0].h_samp_factor = jpeg.comp_info[0].v_samp_factor = 1;
}

TEST(JpegDamage, AFileCutInTheScanKeepsItsTopAndIsWhiteBelow) {
    for (const int channels : {1, 3}) {
        const std::string file = Coded(channels, NoSubsampling);
        const CDibImage whole = Loaded(file);
        const std::size_t start = test::StartOfScanData(file);
        const CDibImage cut = Loaded(file.substr(0, start + (file.size() - start) / 2));
        const int rows = RowsBeforeWhite(cut);
        EXPECT_EQ(rows % 8, 0);
        EXPECT_GE(rows, 32);
        EXPECT_LE(rows, 64);
        for (int y = 0; y < rows; ++y)
            EXPECT_TRUE(SameRow(cut, whole, y)) << y;
    }
}

TEST(JpegDamage, AFourInkFileCutInTheScanIsWhiteBelow) {
    const std::string file = Coded(4);
    const CDibImage whole = Loaded(file);
    const std::size_t start = test::StartOfScanData(file);
    const CDibImage cut = Loaded(file.substr(0, start + (file.size() - start) / 2));
    const int rows = RowsBeforeWhite(cut);
    EXPECT_GE(rows, 32);
    EXPECT_LE(rows, 64);
    for (int y = 0; y < rows; ++y)
        EXPECT_TRUE(SameRow(cut, whole, y)) << y;
}

TEST(JpegDamage, AMissingEndMarkerCostsNothing) {
    const std::function<void(jpeg_compress_struct&)> kinds[] = {
        {},
        [](jpeg_compress_struct& jpeg) { jpeg_simple_progression(&jpeg); },
        [](jpeg_compress_struct& jpeg) { jpeg.restart_interval = 4; },
        [](jpeg_compress_struct& jpeg) { jpeg.arith_code = TRUE; },
    };
    for (const auto& kind : kinds) {
        const std::string file = Coded(3, kind);
        ASSERT_EQ(file.substr(file.size() - 2), "\xFF\xD9");
        test::ExpectSamePixels(Loaded(file.substr(0, file.size() - 2)), Loaded(file));
    }
}

TEST(JpegDamage, TheMoreOfTheFileThereIsTheMoreRowsShow) {
    const std::function<void(jpeg_compress_struct&)> kinds[] = {
        {},
        [](jpeg_compress_struct& jpeg) { jpeg.restart_interval = 3; },
        [](jpeg_compress_struct& jpeg) { jpeg.arith_code = TRUE; },
    };
    for (const auto& kind : kinds) {
        const std::string file = Coded(3, kind);
        int last = 0;
        for (std::size_t length = test::StartOfScanData(file); length <= file.size(); length += 7) {
            const int rows = RowsBeforeWhite(Loaded(file.substr(0, length)));
            EXPECT_GE(rows, last);
            last = rows;
        }
        EXPECT_GE(last, 80);  // but for the last row of MCUs
        EXPECT_EQ(RowsBeforeWhite(Loaded(file)), 96);
    }
}

TEST(JpegDamage, AFileThatEndsWithItsHeadIsWhite) {
    const std::string file = Coded(3);
    EXPECT_EQ(RowsBeforeWhite(Loaded(file.substr(0, test::StartOfScanData(file)))), 0);
}

TEST(JpegDamage, AnEarlyEndMarkerCountsAsTheEnd) {
    const std::string file = Coded(1);
    const std::size_t start = test::StartOfScanData(file);
    std::string cut = file.substr(0, start + (file.size() - start) / 2);
    if (cut.back() == '\xFF')
        cut.pop_back();
    const int rows = RowsBeforeWhite(Loaded(cut + "\xFF\xD9"));
    EXPECT_GE(rows, 24);
    EXPECT_LE(rows, 72);
}

TEST(JpegDamage, AnIntervalLostBetweenRestartsDoesNotEndThePicture) {
    const std::string file = Coded(1, [](jpeg_compress_struct& jpeg) {
        jpeg.restart_interval = 8;  // 64 pixels: a row of blocks
    });
    const CDibImage whole = Loaded(file);
    // Cut bytes out of the fourth interval; its restart markers stay.
    const std::size_t from = file.find("\xFF\xD2"), to = file.find("\xFF\xD3");
    ASSERT_LT(from, to);
    std::string damaged = file;
    damaged.erase(from + 4, (to - from) / 2);
    const CDibImage image = Loaded(damaged);
    EXPECT_FALSE(IsWhiteRow(image, 95));
    for (int y = 40; y < 96; ++y)
        EXPECT_TRUE(SameRow(image, whole, y)) << y;
}

TEST(JpegDamage, AProgressiveFileIsWhiteOnlyWhereItsFirstScanDoesNotReach) {
    const std::string file =
        Coded(3, [](jpeg_compress_struct& jpeg) { jpeg_simple_progression(&jpeg); });
    const std::size_t start = test::StartOfScanData(file);
    const std::size_t second = file.find("\xFF\xDA", start);
    const int rows = RowsBeforeWhite(Loaded(file.substr(0, (start + second) / 2)));
    EXPECT_GT(rows, 0);
    EXPECT_LT(rows, 96);
    // Behind the first scan everything shows, coarse at first.
    for (std::size_t length = second; length < file.size(); length += 5)
        EXPECT_EQ(RowsBeforeWhite(Loaded(file.substr(0, length))), 96) << length;
}

TEST(JpegDamage, AFileOfOneScanAComponentKeepsItsLightWithoutColors) {
    static const jpeg_scan_info kScans[3] = {
        {1, {0}, 0, 63, 0, 0}, {1, {1}, 0, 63, 0, 0}, {1, {2}, 0, 63, 0, 0}};
    const std::string file = Coded(3, [](jpeg_compress_struct& jpeg) {
        jpeg.scan_info = kScans;
        jpeg.num_scans = 3;
    });
    ASSERT_EQ(test::FactsOf(file).scans, 3);
    const std::size_t start = test::StartOfScanData(file);
    const std::size_t second = file.find("\xFF\xDA", start);
    const CDibImage light = Loaded(file.substr(0, second));
    EXPECT_EQ(RowsBeforeWhite(light), 96);
    const test::Rgb pixel = test::PixelAt(light, 5, 5);
    EXPECT_EQ(pixel.red, pixel.green);
    EXPECT_EQ(pixel.red, pixel.blue);
    const int rows = RowsBeforeWhite(Loaded(file.substr(0, (start + second) / 2)));
    EXPECT_GT(rows, 0);
    EXPECT_LT(rows, 96);
}

TEST(JpegDamage, AFileCutInItsHeadFailsAndLeavesTheImage) {
    const std::string file = Coded(3);
    CDibImage image = test::Filled(2, 2, 8, 9);
    for (std::size_t length = 0; length + 14 < test::StartOfScanData(file); ++length)
        EXPECT_FALSE(Load(file.substr(0, length), image)) << length;
    test::ExpectSamePixels(image, test::Filled(2, 2, 8, 9));
}

TEST(JpegDamage, WholeSegmentsEndBeforeACutOne) {
    const auto lengthOf = [](const std::string& text) {
        return LengthOfWholeSegments(BytesOf(text));
    };
    const std::string start("\xFF\xD8\xFF\xDB\x00\x04\x01\x02", 8);
    EXPECT_EQ(lengthOf(start), 8U);
    EXPECT_EQ(lengthOf(start + "\xFF"), 8U);
    EXPECT_EQ(lengthOf(start + "\xFF\xC4"), 8U);
    EXPECT_EQ(lengthOf(start + std::string("\xFF\xC4\x00\x05\x01", 5)), 8U);
    EXPECT_EQ(lengthOf(start + std::string("\xFF\xFF\xC4\x00", 4)), 8U);
    EXPECT_EQ(lengthOf(start + std::string("\xFF\xC4\x00\x03\x01", 5)), 13U);
    EXPECT_EQ(lengthOf(start + std::string("ab\xFF\x00z\xFF\xD0q", 8)), 16U);  // coded data
    EXPECT_EQ(lengthOf(start + "\xFF\xD9\xFF\xC4"), 12U);  // what follows the end is nobody's
    EXPECT_EQ(lengthOf(""), 0U);
}

TEST(JpegDamage, NoTruncationCrashesOrHangs) {
    for (const int channels : {1, 3, 4})
        for (const bool progressive : {false, true})
            for (const std::string& file :
                 test::TruncationsOf(Coded(channels, [=](jpeg_compress_struct& jpeg) {
                     if (progressive)
                         jpeg_simple_progression(&jpeg);
                 }))) {
                CDibImage image;
                const bool loaded = Load(file, image);
                EXPECT_EQ(loaded, image.IsValid());
                ImageInfo info;
                ReadJpegInfo(BytesOf(file), info, nullptr);
                ReadUfoInfo(BytesOf(file), info, nullptr);
            }
}

/// Damage may lie about the size; the cost of an honest huge picture is not this test's matter.
bool IsSmall(const std::string& file) {
    ImageInfo info;
    return ReadJpegInfo(BytesOf(file), info, nullptr) &&
           static_cast<std::int64_t>(info.width) * info.height <= 1'000'000;
}

TEST(JpegDamage, NoMutationCrashesOrHangs) {
    const std::string exif =
        test::ExifPayload({.orientation = 6, .unit = 2, .xResolution = 300, .yResolution = 300});
    int shown = 0;
    for (const int channels : {1, 3, 4})
        for (const bool progressive : {false, true}) {
            PlainOptions options;
            options.app1 = exif;
            options.adjust = [=](jpeg_compress_struct& jpeg) {
                if (progressive)
                    jpeg_simple_progression(&jpeg);
                else
                    jpeg.restart_interval = 5;
            };
            const std::string file = test::EncodePlain(test::Scene(50, 40, channels), options);
            test::ForEachMutation(file, 250, 7, [&](const std::string& damaged) {
                if (!IsSmall(damaged))
                    return;
                CDibImage image;
                if (Load(damaged, image))
                    ++shown;
            });
        }
    EXPECT_GT(shown, 100);  // or the damage would be too coarse to reach the decoder
}

/// Rows of `image` that are as in `whole`.
int SameRows(const CDibImage& image, const CDibImage& whole) {
    int rows = 0;
    for (int y = 0; y < whole.GetHeight(); ++y)
        rows += SameRow(image, whole, y) ? 1 : 0;
    return rows;
}

/// What plain calls of the library make of a file, as far as they come.
struct PlainRows {
    jpeg_error_mgr errors;  // first, so that the hook finds the rest
    std::jmp_buf jump;
    test::PlainPicture picture;
};

void DecodeAsFarAsItGoes(const std::string& file, PlainRows& plain) {
    jpeg_decompress_struct jpeg{};
    jpeg.err = jpeg_std_error(&plain.errors);
    plain.errors.output_message = [](j_common_ptr) {};
    plain.errors.error_exit = [](j_common_ptr common) {
        std::longjmp(reinterpret_cast<PlainRows*>(common->err)->jump, 1);
    };
    jpeg_create_decompress(&jpeg);
    if (setjmp(plain.jump) == 0) {
        jpeg_mem_src(&jpeg, BytesOf(file).data(), file.size());
        jpeg_read_header(&jpeg, TRUE);
        jpeg_start_decompress(&jpeg);
        const std::size_t stride = std::size_t{jpeg.output_width} * jpeg.output_components;
        while (jpeg.output_scanline < jpeg.output_height) {
            JSAMPROW row = &plain.picture.samples[jpeg.output_scanline * stride];
            jpeg_read_scanlines(&jpeg, &row, 1);
        }
    }
    jpeg_destroy_decompress(&jpeg);
}

/// The same count of what plain calls of the library make of the file.
int SamePlainRows(const std::string& file, const test::PlainPicture& whole) {
    PlainRows plain;
    plain.picture = whole;
    std::fill(plain.picture.samples.begin(), plain.picture.samples.end(), std::uint8_t{128});
    DecodeAsFarAsItGoes(file, plain);
    const std::size_t stride = static_cast<std::size_t>(whole.width) * whole.channels;
    int rows = 0;
    for (std::size_t y = 0; y < static_cast<std::size_t>(whole.height); ++y)
        rows += std::equal(&whole.samples[stride * y], &whole.samples[stride * y] + stride,
                           &plain.picture.samples[stride * y])
                    ? 1
                    : 0;
    return rows;
}

TEST(JpegDamage, OneBadByteKeepsTheRowsThatTheNextRestartTells) {
    const std::uint8_t badBytes[] = {0x00, 0x37, 0x80, 0xC4, 0xD5, 0xD9, 0xE1, 0xFE, 0xFF};
    int files = 0, keptBelow = 0;
    for (const int channels : {1, 3})
        for (const unsigned interval : {4U, 12U}) {
            const std::string file = Coded(
                channels, [=](jpeg_compress_struct& jpeg) { jpeg.restart_interval = interval; }, 96,
                160);
            const CDibImage whole = Loaded(file);
            const test::PlainPicture plainWhole = test::DecodePlain(file);
            const std::size_t start = test::StartOfScanData(file);
            for (std::size_t at = start + 5; at + 2 < file.size(); at += file.size() / 13)
                for (const std::uint8_t bad : badBytes)
                    for (const bool behindFill : {false, true}) {
                        std::string damaged = file;
                        if (behindFill)  // makes a marker
                            damaged[at - 1] = '\xFF';
                        damaged[at] = static_cast<char>(bad);
                        const CDibImage image = Loaded(damaged);
                        const int rows = SameRows(image, whole);
                        EXPECT_GE(rows, SamePlainRows(damaged, plainWhole) - 16)
                            << "byte " << int{bad} << " at " << at << " of " << file.size();
                        ++files;
                        keptBelow += SameRow(image, whole, 159) ? 1 : 0;
                    }
        }
    EXPECT_GT(keptBelow, files * 3 / 4);
}

TEST(JpegDamage, AMarkerThatDamageMadeDoesNotEndAFileOfOneScan) {
    const std::string file =
        Coded(1, [](jpeg_compress_struct& jpeg) { jpeg.restart_interval = 8; });
    const CDibImage whole = Loaded(file);
    const std::size_t restart = file.find("\xFF\xD2");
    for (const char marker : {'\x37', '\xC4', '\xDA', '\xE0'}) {
        std::string damaged = file;
        damaged[restart + 5] = '\xFF';
        damaged[restart + 6] = marker;
        const CDibImage image = Loaded(damaged);
        for (int y = 40; y < 96; ++y)
            EXPECT_TRUE(SameRow(image, whole, y)) << int{marker} << " row " << y;
    }
}

TEST(JpegDamage, ScansAreBoundedByTheSizeOfTheFile) {
    // A large picture of which each scan says nothing.
    const std::string file =
        Coded(1, [](jpeg_compress_struct& jpeg) { jpeg_simple_progression(&jpeg); });
    const std::size_t frame = file.find("\xFF\xC2");
    ASSERT_NE(frame, std::string::npos);
    const auto withScans = [&](char sideHigh, int scans) {
        std::string made = file.substr(0, file.find("\xFF\xDA", test::StartOfScanData(file)));
        for (const std::size_t side : {frame + 5, frame + 7}) {
            made[side] = sideHigh;
            made[side + 1] = 0;
        }
        for (int i = 0; i < scans; ++i)
            made += std::string("\xFF\xDA\0\x08\x01\x01\0\x01\x05\0", 10);
        return made + "\xFF\xD9";
    };
    CDibImage image;
    FileError error, none;
    EXPECT_FALSE(LoadJpegBytes(BytesOf(withScans(0x20, 30000)), image, false, &error));
    EXPECT_EQ(error.detail, "Too many scans");
    EXPECT_TRUE(LoadJpegBytes(BytesOf(withScans(0x10, 10)), image, false, &none)) << none.detail;
}

}  // namespace
}  // namespace velloran
