#include "files/FileType.h"

#include <fnmatch.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "support/AsOtherUser.h"
#include "support/TempFolder.h"
#include "text/Text.h"

namespace velloran {
namespace {

using namespace std::string_literals;
using test::TempFolder;
using test::WriteAll;

/// Lets a test answer as the raw reader for names that hold "raw".
class NamesWithRawAreRaw {
 public:
    NamesWithRawAreRaw() {
        SetRawRecognizer([](ByteSource&, const std::filesystem::path& name) {
            return name.filename().native().find("raw") != std::string::npos;
        });
    }
    ~NamesWithRawAreRaw() { SetRawRecognizer(nullptr); }
};

struct HeadCase {
    const char* name;
    std::string head;
    int expected;
};
void PrintTo(const HeadCase& c, std::ostream* out) {
    *out << c.name;
}

const HeadCase kHeadCases[] = {
    {"Jpeg", "\xFF\xD8", kTypeJpeg},
    {"JpegWantsBothBytes", "\xFF\xD9", kTypeUnknown},
    {"Gif", "GIF89a", kTypeGif},
    {"GifOfAnyVersion", "GIF..", kTypeGif},
    {"GifWantsItsF", "GIX89a", kTypeUnknown},
    {"Bmp", "BM", kTypeBmp},
    {"BmpInCapitalsOnly", "bm", kTypeUnknown},
    {"Png", "\x89PNG", kTypePng},
    {"PngWithAnyFirstByte", "xPNG", kTypePng},
    {"PngWantsItsG", "\x89PNX", kTypeUnknown},
    {"TiffLittleEndian", "II*\0"s, kTypeTiff},
    {"TiffBigEndian", "MM\0*"s, kTypeTiff},
    {"TiffByTwoBytesAlone", "II", kTypeTiff},
    {"Metafile", "\xD7\xCD\xC6\x9A", kTypeMetafile},
    {"Jp2", "\0\0\0\x0CjP  \x0D\x0A\x87\x0A"s, kTypeJp2},
    {"Jp2WantsItsLineEnds", "\0\0\0\x0CjP  \x0D\x0A\x87\x0B"s, kTypeUnknown},
    {"J2kCodeStream", "\xFF\x4F\xFF\x51", kTypeJ2k},
    {"J2kWantsItsSizeMarker", "\xFF\x4F\xFF\x52", kTypeUnknown},
    {"Webp", "RIFF\0\0\0\0WEBP"s, kTypeWebp},
    {"WebpWithoutRiff", "....\0\0\0\0WEBP"s, kTypeWebp},
    {"JpegBeforeWebp", "\xFF\xD8..\0\0\0\0WEBP"s, kTypeJpeg},
    {"BmpBeforeWebp", "BM..\0\0\0\0WEBP"s, kTypeBmp},
    {"TiffBeforeWebp", "MM..\0\0\0\0WEBP"s, kTypeTiff},
    {"BmpBeforePng", "BPNG"s, kTypePng},
    {"GifBeforePngWhereBothCannotBe", "GIFG", kTypeGif},
    {"ShorterThanAnyHead", "I", kTypeUnknown},
    {"Empty", "", kTypeUnknown},
    {"Zeros", std::string(600, '\0'), kTypeUnknown},
};

class DetectedByHead : public testing::TestWithParam<HeadCase> {};

TEST_P(DetectedByHead, WithoutRegardToTheName) {
    const TempFolder folder;
    WriteAll(folder / "file.xyz", GetParam().head);
    EXPECT_EQ(DetectFileType(folder / "file.xyz", 1), GetParam().expected);
    WriteAll(folder / "file.gif", GetParam().head);
    // What the head does not tell the extension does.
    const int byName = GetParam().expected != kTypeUnknown ? GetParam().expected : int{kTypeGif};
    EXPECT_EQ(DetectFileType(folder / "file.gif", 1), byName);
    EXPECT_EQ(DetectFileType(folder / "file.gif", 0), kTypeGif);
}
INSTANTIATE_TEST_SUITE_P(FileType, DetectedByHead, testing::ValuesIn(kHeadCases),
                         [](const auto& c) { return std::string(c.param.name); });

struct ExtensionCase {
    const char* extension;
    int expected;
};

constexpr ExtensionCase kExtensionCases[] = {
    {".jpg", 1},  {".jpeg", 1}, {".gif", 3},  {".ufo", 2},   {".bmp", 4},  {".dib", 4},
    {".png", 5},  {".tif", 6},  {".tiff", 6}, {".nef", 11},  {".crw", 11}, {".cr2", 11},
    {".dng", 11}, {".wmf", 7},  {".emf", 7},  {".jpf", 9},   {".jpx", 9},  {".jp2", 9},
    {".j2c", 9},  {".j2k", 8},  {".jpc", 8},  {".webp", 10}, {".jpe", 0},  {".txt", 0},
    {".", 0},     {"", 0},      {".jpg ", 0}, {".jp", 0},    {".jpgg", 0},
};

TEST(FileType, EveryExtensionHasItsId) {
    for (const ExtensionCase& c : kExtensionCases)
        EXPECT_EQ(DetectFileType("folder.png/name"s + c.extension, 0), c.expected) << c.extension;
}

TEST(FileType, ExtensionIgnoresCase) {
    EXPECT_EQ(DetectFileType("A.JPG", 0), kTypeJpeg);
    EXPECT_EQ(DetectFileType("A.WebP", 0), kTypeWebp);
    EXPECT_EQ(DetectFileType("A.TifF", 0), kTypeTiff);
}

TEST(FileType, OnlyTheLastExtensionCounts) {
    EXPECT_EQ(DetectFileType("a.png.jpg", 0), kTypeJpeg);
    EXPECT_EQ(DetectFileType("a.jpg.bak", 0), kTypeUnknown);
}

TEST(FileType, UfoIsKnownByItsExtensionAlone) {
    const TempFolder folder;
    WriteAll(folder / "a.ufo", "no head of a picture");
    EXPECT_EQ(DetectFileType(folder / "a.ufo", 1), kTypeUfo);
    WriteAll(folder / "b.ufo", "\xFF\xD8");  // a head that is whole tells
    EXPECT_EQ(DetectFileType(folder / "b.ufo", 1), kTypeJpeg);
}

TEST(FileType, JpeFileIsKnownByItsContentAlone) {
    const TempFolder folder;
    WriteAll(folder / "a.jpe", "\xFF\xD8\xFF");
    EXPECT_EQ(DetectFileType(folder / "a.jpe", 1), kTypeJpeg);
    WriteAll(folder / "b.jpe", "nothing readable");
    EXPECT_EQ(DetectFileType(folder / "b.jpe", 1), kTypeUnknown);
}

TEST(FileType, FileThatCannotBeOpenedIsKnownByItsExtension) {
    EXPECT_EQ(DetectFileType("/no such folder/a.png", 1), kTypePng);
    const TempFolder folder;
    WriteAll(folder / "closed.png", "\xFF\xD8");
    std::filesystem::permissions(folder / "closed.png", std::filesystem::perms::none);
    EXPECT_TRUE(test::TrueAsOtherUser(
        folder.Path(), [&] { return DetectFileType(folder / "closed.png", 1) == kTypePng; }));
}

TEST(FileType, FolderIsKnownByItsExtension) {
    const TempFolder folder;
    std::filesystem::create_directory(folder / "a.gif");
    EXPECT_EQ(DetectFileType(folder / "a.gif", 1), kTypeGif);
}

TEST(FileType, PipeIsNotWaitedFor) {
    const TempFolder folder;
    ASSERT_EQ(mkfifo((folder / "a.jpg").c_str(), 0600), 0);
    EXPECT_EQ(DetectFileType(folder / "a.jpg", 1), kTypeJpeg);
}

TEST(FileType, DeviceIsNotRead) {
    // /dev/zero would never end and has no extension.
    EXPECT_EQ(DetectFileType("/dev/zero", 1), kTypeUnknown);
}

TEST(FileType, HeadBeyondTheFirstBytesIsNotSearched) {
    const TempFolder folder;
    WriteAll(folder / "a.xyz", std::string(512, ' ') + "\xFF\xD8");
    EXPECT_EQ(DetectFileType(folder / "a.xyz", 1), kTypeUnknown);
}

TEST(FileType, NothingIsCameraRawWithoutARawReader) {
    const TempFolder folder;
    WriteAll(folder / "raw", "II*\0CR"s);
    EXPECT_EQ(DetectFileType(folder / "raw", 1), kTypeTiff);
}

TEST(FileType, RawReaderIsAskedForTiffHeadsAndUnknownOnes) {
    const NamesWithRawAreRaw recognizer;
    const TempFolder folder;
    const auto typeOf = [&](const char* name, const std::string& head) {
        WriteAll(folder / name, head);
        return DetectFileType(folder / name, 1);
    };
    EXPECT_EQ(typeOf("raw-ii", "II*\0"s), kTypeRaw);
    EXPECT_EQ(typeOf("raw-mm", "MM\0*"s), kTypeRaw);
    EXPECT_EQ(typeOf("raw-other.jpg", "FUJIFILM"), kTypeRaw);  // before the extension is looked at
    EXPECT_EQ(typeOf("plain-ii", "II*\0"s), kTypeTiff);
    EXPECT_EQ(typeOf("raw-jpeg", "\xFF\xD8"), kTypeJpeg);  // other heads are settled before
    EXPECT_EQ(typeOf("raw-webp", "....\0\0\0\0WEBP"s), kTypeWebp);
}

TEST(FileType, EveryIdHasAName) {
    const std::vector<std::string> names = {"unknown", "JPEG", "UFO", "GIF", "BMP",  "PNG",
                                            "TIFF",    "WMF",  "J2K", "JP2", "WebP", "RAW"};
    for (int id = 0; id <= 11; ++id)
        EXPECT_EQ(FileTypeName(id), names[static_cast<std::size_t>(id)]);
    EXPECT_EQ(FileTypeName(-1), "unknown");
    EXPECT_EQ(FileTypeName(12), "unknown");
}

TEST(FileType, RenamerTakesTheEightRasterTypesByContent) {
    const bool expected[] = {false, true,  false, true, true, true,
                             true,  false, true,  true, true, false};
    const char* const extensions[] = {".txt", ".jpg", ".ufo", ".gif", ".bmp",  ".png",
                                      ".tif", ".wmf", ".j2k", ".jp2", ".webp", ".nef"};
    for (int id = 0; id <= 11; ++id)
        EXPECT_EQ(IsRenamerImage("/absent/a"s + extensions[id]), expected[id]) << id;
    const TempFolder folder;
    WriteAll(folder / "a.txt", "GIF89a");
    EXPECT_TRUE(IsRenamerImage(folder / "a.txt"));
}

TEST(FileType, ReducedResultWantsATypeWithAPalette) {
    const TempFolder folder;
    const bool expected[] = {false, false, false, true,  true, true,
                             true,  false, false, false, true, false};
    const char* const extensions[] = {".txt", ".jpg", ".ufo", ".gif", ".bmp",  ".png",
                                      ".tif", ".wmf", ".j2k", ".jp2", ".webp", ".nef"};
    for (int id = 0; id <= 11; ++id)
        EXPECT_EQ(IsColourReducedTarget("a"s + extensions[id]), expected[id]) << id;
    WriteAll(folder / "a.png", "\xFF\xD8");  // the name of a target decides, not what it held
    EXPECT_TRUE(IsColourReducedTarget(folder / "a.png"));
}

std::vector<std::u16string_view> SplitAt(std::u16string_view text, char16_t divider) {
    std::vector<std::u16string_view> parts;
    for (std::size_t end; (end = text.find(divider)) != text.npos; text.remove_prefix(end + 1))
        parts.push_back(text.substr(0, end));
    parts.push_back(text);
    return parts;
}

TEST(FileType, SupportedFilterHoldsTwelveTypesAndEndsInTwoBars) {
    const auto parts = SplitAt(SupportedFilter(), u'|');
    const std::vector<std::u16string_view> names = {
        u"Supported", u"JPEG", u"GIF",       u"UFO",  u"BMP", u"PNG",
        u"TIFF",      u"WMF",  u"JPEG 2000", u"Webp", u"Raw", u"All Files(*.*)"};
    ASSERT_EQ(parts.size(), 2 * names.size() + 2);
    for (std::size_t i = 0; i < names.size(); ++i)
        EXPECT_EQ(parts[2 * i], names[i]);
    EXPECT_TRUE(SupportedFilter().ends_with(u"|*.*||"));
    EXPECT_EQ(parts[3], u"*.jpg;*.jpeg;*.jpe");
    EXPECT_EQ(SplitAt(parts[1], u';').size(), 23u);
}

TEST(FileType, RawFilterMatchesCr2OnlyThroughItsPatternWithoutDot) {
    const auto parts = SplitAt(SupportedFilter(), u'|');
    std::string matching;
    bool matchesOther = false;
    for (const std::u16string_view pattern : SplitAt(parts[21], u';')) {
        const std::string glob = ToUtf8(pattern);
        if (fnmatch(glob.c_str(), "page.cr2", 0) == 0)
            matching += glob;
        matchesOther |= fnmatch(glob.c_str(), "pagecr2", 0) == 0;
    }
    EXPECT_EQ(matching, "*cr2");
    EXPECT_TRUE(matchesOther);  // any name that ends in "cr2"
}

}  // namespace
}  // namespace velloran
