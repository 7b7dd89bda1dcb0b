#include "files/ImageFiles.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdio>
// libjpeg's header wants FILE first.
#include <jpeglib.h>

#include <string>
#include <vector>

#include "codecs/FileForms.h"
#include "codecs/Jpeg.h"
#include "core/DibImage.h"
#include "files/FileType.h"
#include "params/ParaBlock.h"
#include "support/AsOtherUser.h"
#include "support/Images.h"
#include "support/SharedData.h"
#include "support/TempFolder.h"
#include "text/Labels.h"
#include "text/Text.h"

namespace velloran {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using test::ReadAll;
using test::WriteAll;

constexpr int kQuality = 90, kDpi = 300, kTrueColour = 2;
constexpr bool kWholeGif = false;

bool Save(const fs::path& path, CDibImage image, FileError* error = nullptr) {
    const CParaBlock block;
    return SaveImageFile(path, image, kQuality, kDpi, kTrueColour, kWholeGif, block, error);
}

class ImageFiles : public testing::Test {
 protected:
    test::TempFolder folder_;
    CDibImage image_;
    FileError error_;
};

TEST_F(ImageFiles, EachWriterIsChosenByTheExtension) {
    struct Target {
        const char* name;
        int type;
    };
    for (const Target& target : {Target{"a.jpg", kTypeJpeg},
                                 {"a.JPEG", kTypeJpeg},
                                 {"a.bmp", kTypeBmp},
                                 {"a.dib", kTypeBmp},
                                 {"a.png", kTypePng},
                                 {"a.tif", kTypeTiff},
                                 {"a.tiff", kTypeTiff},
                                 {"a.gif", kTypeGif},
                                 {"a.webp", kTypeWebp}}) {
        SCOPED_TRACE(target.name);
        ASSERT_TRUE(Save(folder_ / target.name, test::Noise(20, 10, 24)));
        EXPECT_EQ(ReadAll(folder_ / target.name).size() > 0, true);
        // The content tells, not the name.
        fs::rename(folder_ / target.name, folder_ / "unnamed");
        EXPECT_EQ(DetectFileType(folder_ / "unnamed", 1), target.type);
        ASSERT_TRUE(LoadImageFile(folder_ / "unnamed", image_, &error_)) << error_.detail;
        EXPECT_EQ(image_.GetWidth(), 20);
        EXPECT_EQ(image_.GetHeight(), 10);
        EXPECT_EQ(image_.Source().sourceInfo, static_cast<std::uint32_t>(target.type));
        EXPECT_EQ(image_.Source().sourceName, folder_ / "unnamed");
    }
}

TEST_F(ImageFiles, JpegNamedPngLoadsAsJpeg) {
    ASSERT_TRUE(Save(folder_ / "a.jpg", test::Filled(16, 8, 8, 90)));
    fs::rename(folder_ / "a.jpg", folder_ / "a.png");
    ASSERT_TRUE(LoadImageFile(folder_ / "a.png", image_));
    EXPECT_EQ(image_.Source().sourceInfo, 1u);
    EXPECT_EQ(image_.GetBpp(), 8);
    int type = 0;
    ImageInfo info;
    ASSERT_TRUE(ReadImageInfo(folder_ / "a.png", type, info));
    EXPECT_EQ(type, kTypeJpeg);
    EXPECT_EQ(info.width, 16);
}

TEST_F(ImageFiles, MisleadingTiffHeadGoesToTheTiffReader) {
    ASSERT_TRUE(Save(folder_ / "a.tif", test::Filled(16, 8, 8, 90)));
    fs::rename(folder_ / "a.tif", folder_ / "a.nef");
    ASSERT_TRUE(LoadImageFile(folder_ / "a.nef", image_));
    EXPECT_EQ(image_.Source().sourceInfo, 6u);
    WriteAll(folder_ / "b.jpg", "II but nothing else of a picture");
    EXPECT_FALSE(LoadImageFile(folder_ / "b.jpg", image_, &error_));
    EXPECT_EQ(error_.cause, FileError::Cause::kContent);
    int type = 0;
    ImageInfo info;
    EXPECT_FALSE(ReadImageInfo(folder_ / "b.jpg", type, info));
    EXPECT_EQ(type, kTypeTiff);
}

TEST_F(ImageFiles, UfoIsReadByItsName) {
    ASSERT_TRUE(Save(folder_ / "a.jpg", test::Filled(16, 8, 24, 90)));
    std::string bytes = ReadAll(folder_ / "a.jpg");
    bytes.replace(0, 10, 10, 'X');
    WriteAll(folder_ / "a.ufo", bytes);
    ASSERT_TRUE(LoadImageFile(folder_ / "a.ufo", image_, &error_)) << error_.detail;
    EXPECT_EQ(image_.Source().sourceInfo, 2u);
    int type = 0;
    ImageInfo info;
    ASSERT_TRUE(ReadImageInfo(folder_ / "a.ufo", type, info));
    EXPECT_EQ(type, kTypeUfo);
    EXPECT_EQ(info.width, 16);
    EXPECT_EQ(info.height, 8);
}

TEST_F(ImageFiles, TypesWithoutAReaderFailByTheirContent) {
    const std::pair<const char*, std::string> files[] = {
        {"a.wmf", "\xD7\xCD\xC6\x9A"},
        {"a.j2k", "\xFF\x4F\xFF\x51"},
        {"a.jp2", "\0\0\0\x0CjP  \x0D\x0A\x87\x0A"s},
        {"a.nef", "unknown head"},
        {"a.txt", "text"},
        {"a.jpe", "nothing readable"},
    };
    for (const auto& [name, head] : files) {
        SCOPED_TRACE(name);
        WriteAll(folder_ / name, head);
        FileError error;
        EXPECT_FALSE(LoadImageFile(folder_ / name, image_, &error));
        EXPECT_EQ(error.cause, FileError::Cause::kContent);
        EXPECT_NE(error.detail, "");
        int type = -1;
        ImageInfo info;
        EXPECT_FALSE(ReadImageInfo(folder_ / name, type, info));
        EXPECT_EQ(type, DetectFileType(folder_ / name, 1));
    }
}

TEST_F(ImageFiles, FailedLoadLeavesTheImageAsItWasOrEmpty) {
    for (const char* name : {"a.jpg", "a.png", "a.gif", "a.bmp", "a.tif", "a.webp", "a.txt"}) {
        SCOPED_TRACE(name);
        image_ = test::Noise(5, 4, 24);
        WriteAll(folder_ / name, "damaged");
        EXPECT_FALSE(LoadImageFile(folder_ / name, image_, &error_));
        if (image_.IsValid())
            test::ExpectSamePixels(image_, test::Noise(5, 4, 24));
        EXPECT_EQ(image_.Source().sourceName, "");
    }
}

TEST_F(ImageFiles, WhatIsNoPlainFileIsRefusedAndNotRead) {
    ASSERT_EQ(mkfifo((folder_ / "pipe.png").c_str(), 0600), 0);
    fs::create_directory(folder_ / "folder.png");
    fs::create_symlink("/dev/zero", folder_ / "device.tif");
    for (const fs::path& path : {folder_ / "pipe.png", folder_ / "folder.png",
                                 folder_ / "device.tif", fs::path("/dev/zero")}) {
        SCOPED_TRACE(path);
        FileError error;
        EXPECT_FALSE(LoadImageFile(path, image_, &error));
        EXPECT_EQ(error.cause, FileError::Cause::kContent);
        int type = 0;
        ImageInfo info;
        EXPECT_FALSE(ReadImageInfo(path, type, info));
    }
}

TEST_F(ImageFiles, MissingAndEmptyFilesFailWithAReason) {
    WriteAll(folder_ / "empty.jpg", "");
    for (const char* name : {"absent.jpg", "empty.jpg"}) {
        FileError error;
        EXPECT_FALSE(LoadImageFile(folder_ / name, image_, &error)) << name;
        EXPECT_NE(error.cause, FileError::Cause::kNone) << name;
        EXPECT_NE(error.detail, "") << name;
    }
}

TEST_F(ImageFiles, FileWithoutPermissionFailsWithTheSystemsReason) {
    ASSERT_TRUE(Save(folder_ / "closed.png", test::Filled(4, 4, 8, 9)));
    fs::permissions(folder_ / "closed.png", fs::perms::none);
    EXPECT_TRUE(test::TrueAsOtherUser(folder_.Path(), [&] {
        FileError error;
        return !LoadImageFile(folder_ / "closed.png", image_, &error) &&
               error.detail.find("Permission denied") != std::string::npos;
    }));
}

TEST_F(ImageFiles, FolderWithoutPermissionIsAMatterOfTheDisk) {
    EXPECT_TRUE(test::TrueAsOtherUser(folder_.Path(), [&] {
        FileError error;
        return !Save(folder_ / "a.png", test::Filled(4, 4, 8, 9), &error) &&
               error.cause == FileError::Cause::kStorage;
    }));
    EXPECT_TRUE(folder_.AllNames().empty());
}

TEST_F(ImageFiles, ExtensionWithoutAWriterIsToldInTheSystemsWords) {
    for (const char* name : {"a.j2k", "a.jpc", "a.ufo", "a.wmf", "a.nef", "a.txt", "a.jpe", "a"}) {
        SCOPED_TRACE(name);
        FileError error;
        EXPECT_FALSE(HasImageWriter(name));
        EXPECT_FALSE(Save(folder_ / name, test::Filled(4, 4, 24, 9), &error));
        EXPECT_EQ(error.cause, FileError::Cause::kContent);
        EXPECT_EQ(error.detail, ToUtf8(labels::kUnwritableType));
    }
    EXPECT_TRUE(folder_.AllNames().empty());
}

TEST_F(ImageFiles, Jpeg2000IsWrittenAtTheRateOfTheGlobalBlock) {
    const CDibImage page = test::Noise(100, 100, 24);
    GlobalBlock().SetPara(PARA_JP2_RATE, 60);
    EXPECT_TRUE(Save(folder_ / "a.jp2", page, &error_)) << error_.detail;
    GlobalBlock().SetPara(PARA_JP2_RATE, 20);
    EXPECT_TRUE(Save(folder_ / "b.jp2", page, &error_)) << error_.detail;
    GlobalBlock().SetPara(PARA_JP2_RATE, 15);
    EXPECT_NEAR(static_cast<double>(fs::file_size(folder_ / "a.jp2")), 5800, 300);
    EXPECT_NEAR(static_cast<double>(fs::file_size(folder_ / "b.jp2")), 1850, 160);
}

TEST_F(ImageFiles, ACodeStreamIsReadButNotWritten) {
    EXPECT_TRUE(Save(folder_ / "a.jp2", test::Noise(40, 30, 8), &error_)) << error_.detail;
    const std::string file = ReadAll(folder_ / "a.jp2");
    WriteAll(folder_ / "a.j2k", file.substr(file.find("jp2c") + 4));
    CDibImage image;
    ASSERT_TRUE(LoadImageFile(folder_ / "a.j2k", image));
    EXPECT_EQ(image.GetWidth(), 40);
    EXPECT_EQ(image.Source().sourceInfo, static_cast<std::uint32_t>(kTypeJ2k));
    EXPECT_FALSE(Save(folder_ / "b.j2k", image, &error_));
    EXPECT_EQ(error_.detail, ToUtf8(labels::kUnwritableType));
}

TEST_F(ImageFiles, EmptyImageFailsAndTouchesNoFile) {
    WriteAll(folder_ / "a.bmp", "old");
    for (const char* name : {"a.bmp", "a.jpg", "a.gif", "a.txt"}) {
        FileError error;
        EXPECT_FALSE(Save(folder_ / name, CDibImage(), &error)) << name;
        EXPECT_EQ(error.cause, FileError::Cause::kContent);
    }
    EXPECT_EQ(ReadAll(folder_ / "a.bmp"), "old");
    EXPECT_EQ(folder_.AllNames(), std::vector<std::string>{"a.bmp"});
}

int Int16At(const std::string& bytes, std::size_t at) {
    return static_cast<std::uint8_t>(bytes.at(at)) | static_cast<std::uint8_t>(bytes.at(at + 1))
                                                         << 8;
}

struct BmpDepthCase {
    int colourIndex, bits, compression;
};

TEST_F(ImageFiles, BmpOfThe16BitColoursTakesThe16BitWriter) {
    const CParaBlock block;
    for (const BmpDepthCase& c :
         {BmpDepthCase{18, 16, 3}, {19, 16, 0}, {17, 24, 0}, {2, 24, 0}, {0, 24, 0}}) {
        SCOPED_TRACE(c.colourIndex);
        CDibImage image = test::Noise(5, 4, 24);
        ASSERT_TRUE(SaveImageFile(folder_ / "a.bmp", image, kQuality, 254, c.colourIndex, kWholeGif,
                                  block));
        const std::string bytes = ReadAll(folder_ / "a.bmp");
        EXPECT_EQ(Int16At(bytes, 28), c.bits);
        EXPECT_EQ(Int16At(bytes, 30), c.compression);
        EXPECT_EQ(Int16At(bytes, 38), 10000);  // 254 dots an inch are 10000 a metre
        EXPECT_EQ(Int16At(bytes, 42), 10000);
    }
}

TEST_F(ImageFiles, SixteenBitColourMeansNothingToOtherTypes) {
    const CParaBlock block;
    CDibImage image = test::Noise(5, 4, 24);
    ASSERT_TRUE(SaveImageFile(folder_ / "a.png", image, kQuality, kDpi, 18, kWholeGif, block));
    ASSERT_TRUE(LoadImageFile(folder_ / "a.png", image_));
    test::ExpectSamePixels(image_, test::Noise(5, 4, 24));
}

TEST_F(ImageFiles, DpiIsWritten) {
    const CParaBlock block;
    for (const char* name : {"a.jpg", "a.bmp", "a.png", "a.tif"}) {
        CDibImage image = test::Filled(8, 8, 24, 9);
        ASSERT_TRUE(SaveImageFile(folder_ / name, image, kQuality, 300, 2, kWholeGif, block));
        ASSERT_TRUE(LoadImageFile(folder_ / name, image_));
        EXPECT_NEAR(image_.GetXDpi(), 300, 1) << name;
        EXPECT_NEAR(image_.GetYDpi(), 300, 1) << name;
    }
}

TEST_F(ImageFiles, BlackAndWhiteTiffStaysAtOneBit) {
    ASSERT_TRUE(Save(folder_ / "a.tif", test::Noise(33, 9, 1)));
    ASSERT_TRUE(LoadImageFile(folder_ / "a.tif", image_));
    EXPECT_EQ(image_.GetBpp(), 1);
    EXPECT_TRUE(image_.IsBW());
    for (int y = 0; y < 9; ++y)
        for (int x = 0; x < 33; ++x)
            ASSERT_EQ(test::PixelAt(image_, x, y), test::PixelAt(test::Noise(33, 9, 1), x, y));
}

TEST_F(ImageFiles, QualityReachesTheLossyWriters) {
    const CParaBlock block;
    for (const char* name : {"a.jpg", "a.webp"}) {
        CDibImage image = test::Noise(64, 64, 24);
        ASSERT_TRUE(SaveImageFile(folder_ / name, image, 10, kDpi, 2, kWholeGif, block));
        const auto small = fs::file_size(folder_ / name);
        image = test::Noise(64, 64, 24);
        ASSERT_TRUE(SaveImageFile(folder_ / name, image, 95, kDpi, 2, kWholeGif, block));
        EXPECT_LT(small, fs::file_size(folder_ / name)) << name;
    }
}

TEST_F(ImageFiles, TransparentBackgroundFollowsTheBlock) {
    CParaBlock block;
    for (const int isTransparent : {0, 1}) {
        block.SetPara(PARA_DECREASE_TRANSPARENT, isTransparent);
        CDibImage image = test::FromRows({{255, 0, 255}, {255, 0, 255}});
        ASSERT_TRUE(SaveImageFile(folder_ / "a.gif", image, kQuality, kDpi, 2, kWholeGif, block));
        ASSERT_TRUE(LoadImageFile(folder_ / "a.gif", image_));
        EXPECT_EQ(image_.Fields().backgroundIndex >= 0, isTransparent != 0);
        ASSERT_TRUE(SaveImageFile(folder_ / "a.png", image, kQuality, kDpi, 2, kWholeGif, block));
        const bool hasTransparency = ReadAll(folder_ / "a.png").find("tRNS") != std::string::npos;
        EXPECT_EQ(hasTransparency, isTransparent != 0);
    }
}

TEST_F(ImageFiles, CropFlagKeepsTheTightFrameOfAGif) {
    const CParaBlock block;
    CDibImage image = test::Filled(40, 30, 8, 255);
    test::SetIndex(image, 7, 5, 0);
    ASSERT_TRUE(SaveImageFile(folder_ / "whole.gif", image, kQuality, kDpi, 2, false, block));
    ASSERT_TRUE(SaveImageFile(folder_ / "tight.gif", image, kQuality, kDpi, 2, true, block));
    EXPECT_LT(fs::file_size(folder_ / "tight.gif"), fs::file_size(folder_ / "whole.gif"));
    const std::string head = ReadAll(folder_ / "tight.gif").substr(0, 10);
    EXPECT_EQ(Int16At(head, 6), 40);  // the screen keeps the page's size
    EXPECT_EQ(Int16At(head, 8), 30);
}

/// A CMYK picture of one colour, written by the library itself.
void WriteCmykJpeg(const fs::path& path, std::uint8_t value) {
    jpeg_compress_struct codec{};
    jpeg_error_mgr errors{};
    codec.err = jpeg_std_error(&errors);
    jpeg_create_compress(&codec);
    std::FILE* file = std::fopen(path.c_str(), "wb");
    ASSERT_NE(file, nullptr);
    jpeg_stdio_dest(&codec, file);
    codec.image_width = codec.image_height = 8;
    codec.input_components = 4;
    codec.in_color_space = JCS_CMYK;
    jpeg_set_defaults(&codec);
    jpeg_start_compress(&codec, TRUE);
    std::vector<JSAMPLE> row(8 * 4, value);
    JSAMPROW rows[] = {row.data()};
    while (codec.next_scanline < codec.image_height)
        jpeg_write_scanlines(&codec, rows, 1);
    jpeg_finish_compress(&codec);
    jpeg_destroy_compress(&codec);
    std::fclose(file);
}

TEST_F(ImageFiles, CmykReversalFollowsTheGlobalBlock) {
    WriteCmykJpeg(folder_ / "a.jpg", 60);
    std::vector<test::Rgb> colours;
    for (const int reverse : {0, 1}) {
        GlobalBlock().SetPara(PARA_REVERSE_CMYK, reverse);
        CDibImage loaded, expected;
        ASSERT_TRUE(LoadImageFile(folder_ / "a.jpg", loaded, &error_)) << error_.detail;
        ASSERT_TRUE(LoadJpeg(folder_ / "a.jpg", expected, reverse != 0));
        test::ExpectSamePixels(loaded, expected);
        colours.push_back(test::PixelAt(loaded, 3, 3));
    }
    GlobalBlock().SetPara(PARA_REVERSE_CMYK, 0);
    EXPECT_FALSE(colours[0] == colours[1]);
}

TEST(ImageFilesOfTheWorld, EachLoadsAsItsHeadSays) {
    const fs::path data = test::SharedData();
    if (data.empty())
        GTEST_SKIP() << "no real pictures here";
    int loaded = 0;
    for (const auto& entry : fs::recursive_directory_iterator(data)) {
        const int byName = DetectFileType(entry.path(), 0);
        if (!entry.is_regular_file() || byName == kTypeUnknown)
            continue;
        SCOPED_TRACE(entry.path());
        CDibImage image;
        FileError error;
        EXPECT_TRUE(LoadImageFile(entry.path(), image, &error)) << error.detail;
        int type = 0;
        ImageInfo info;
        EXPECT_TRUE(ReadImageInfo(entry.path(), type, info, &error)) << error.detail;
        EXPECT_EQ(type, byName);
        EXPECT_EQ(image.GetWidth(), info.width);
        EXPECT_EQ(image.GetHeight(), info.height);
        EXPECT_EQ(image.GetXDpi(), info.xDpi);
        EXPECT_EQ(image.GetYDpi(), info.yDpi);
        EXPECT_EQ(image.IsGrayScale(), info.gray);
        EXPECT_EQ(image.Source().sourceInfo, static_cast<std::uint32_t>(type));
        ++loaded;
    }
    EXPECT_GT(loaded, 40);
}

}  // namespace
}  // namespace velloran
