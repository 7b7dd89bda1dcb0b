#include "codecs/Djvu.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "codecs/FileForms.h"
#include "codecs/Mutations.h"
#include "codecs/PlainJp2.h"
#include "support/Images.h"

namespace velloran {
namespace {

using test::BigNumber;
using test::BytesOf;

/// A chunk; odd ones are followed by a byte that does not count.
std::string Chunk(const std::string& name, const std::string& bytes) {
    return name + BigNumber(bytes.size(), 4) + bytes + (bytes.size() % 2 != 0 ? "\0" : "");
}

std::string InfoChunk(int width, int height, int dpi, int turn = 1) {
    std::string bytes = BigNumber(static_cast<std::uint64_t>(width), 2) +
                        BigNumber(static_cast<std::uint64_t>(height), 2) + BigNumber(24, 1) +
                        BigNumber(0, 1);
    bytes += static_cast<char>(dpi);
    bytes += static_cast<char>(dpi >> 8);
    bytes += static_cast<char>(22);
    bytes += static_cast<char>(turn);
    return Chunk("INFO", bytes);
}

/// A page of paper alone: its size, and nothing on it.
std::string Page(int width, int height, int dpi, int turn = 1) {
    return "FORM" + BigNumber(4 + InfoChunk(1, 1, 1).size(), 4) + "DJVU" +
           InfoChunk(width, height, dpi, turn);
}

bool Load(const std::string& file, int page, CDibImage& image, FileError* error = nullptr,
          LoadNotes* notes = nullptr) {
    MemorySource source(BytesOf(file));
    LoadNotes own;
    return LoadDjvu(source, page, image, notes != nullptr ? *notes : own, error);
}

bool Info(const std::string& file, ImageInfo& info, FileError* error = nullptr) {
    MemorySource source(BytesOf(file));
    return ReadDjvuInfo(source, info, error);
}

TEST(Djvu, InfoTellsSizeAndResolutionAsThePageIsShown) {
    ImageInfo info;
    ASSERT_TRUE(Info("AT&T" + Page(120, 80, 400), info));
    EXPECT_EQ(info.width, 120);
    EXPECT_EQ(info.height, 80);
    EXPECT_EQ(info.xDpi, 400);
    for (const int quarter : {5, 6}) {
        ASSERT_TRUE(Info("AT&T" + Page(120, 80, 400, quarter), info));
        EXPECT_EQ(info.width, 80);
        EXPECT_EQ(info.height, 120);
    }
    ASSERT_TRUE(Info("AT&T" + Page(120, 80, 7), info));
    EXPECT_EQ(info.xDpi, 300);  // nonsense is taken for the usual one
}

TEST(Djvu, SizesBeyondTheLimitsAreRefusedByTheHeadAlone) {
    FileError error;
    CDibImage image;
    EXPECT_FALSE(Load("AT&T" + Page(65535, 65535, 300), 1, image, &error));
    EXPECT_EQ(error.reason, FileReason::kTooLarge);
    error = {};
    EXPECT_FALSE(Load("AT&T" + Page(30000, 20000, 300), 1, image, &error));
    EXPECT_EQ(error.reason, FileReason::kDamaged);
}

TEST(Djvu, DocumentsOfOtherFilesAndPartsAreRefused) {
    const std::string indirect = "AT&TFORM" + BigNumber(20, 4) + "DJVM" +
                                 Chunk("DIRM", BigNumber(1, 1) + BigNumber(1, 2) + "xx");
    for (const std::string& file :
         {indirect, "AT&TFORM" + BigNumber(4, 4) + "DJVI", std::string("AT&TFORM"),
          "AT&TFORM" + BigNumber(4, 4) + "DJVU"}) {
        CDibImage image;
        FileError error;
        EXPECT_FALSE(Load(file, 1, image, &error));
        EXPECT_NE(error.cause, FileError::Cause::kNone);
        EXPECT_FALSE(image.IsValid());
    }
}

TEST(Djvu, APageThatIsNotThereIsNamed) {
    CDibImage image;
    for (const int page : {0, 2, -1}) {
        FileError error;
        EXPECT_FALSE(Load("AT&T" + Page(20, 10, 300), page, image, &error));
        EXPECT_EQ(error.reason, FileReason::kNoSuchPage);
    }
}

TEST(Djvu, DamagedHeadsEndInAMessageOrAPicture) {
    test::ForEachMutation("AT&T" + Page(40, 30, 300), 150, 5, [](const std::string& damaged) {
        CDibImage image;
        FileError error;
        const bool loaded = Load(damaged, 1, image, &error);
        EXPECT_EQ(loaded, image.IsValid());
        EXPECT_TRUE(loaded || error.cause != FileError::Cause::kNone);
    });
}

}  // namespace
}  // namespace velloran
