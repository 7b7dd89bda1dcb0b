#include "files/PageSniffer.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "codecs/Formats.h"
#include "core/DibImage.h"
#include "files/FileType.h"
#include "files/ImageFiles.h"
#include "io/MemorySink.h"
#include "support/Images.h"
#include "support/TempFolder.h"

namespace velloran {
namespace {

using namespace std::string_literals;
using test::TempFolder;
using test::WriteAll;

struct Sniffed {
    int type = -9, kind = -9, result = -9;
    bool operator==(const Sniffed&) const = default;
};
void PrintTo(const Sniffed& s, std::ostream* out) {
    *out << "type " << s.type << ", kind " << s.kind << ", result " << s.result;
}

Sniffed Sniff(const std::string& bytes) {
    const TempFolder folder;
    WriteAll(folder / "page", bytes);
    Sniffed sniffed;
    sniffed.result = CPdgLoader::SniffFile(folder / "page", sniffed.type, sniffed.kind);
    return sniffed;
}

struct TableCase {
    const char* name;
    std::string head;
    Sniffed expected;
};
void PrintTo(const TableCase& c, std::ostream* out) {
    *out << c.name;
}
const TableCase kTable[] = {
    {"Pdf", "%PDF-1.4", {258, 2, 6}},
    {"PdfWantsItsDash", "%PDF 1.4", {0, 0, 2}},
    {"Png", "\x89PNG", {259, 2, 0}},
    {"Gif", "GIF89a", {264, 2, 0}},
    {"GifWantsItsEight", "GIF7", {0, 0, 2}},
    {"Bmp", "BM", {265, 2, 0}},
    {"TiffLittle", "II*\0"s, {261, 2, 0}},
    {"TiffBig", "MM\0*"s, {261, 2, 0}},
    {"Djvu", "AT&TFORM", {260, 2, 0}},
    {"Webp", "RIFF\0\0\0\0WEBP"s, {267, 2, 0}},
    {"Jp2", "\0\0\0\x0CjP  \x0D\x0A\x87\x0A"s, {262, 2, 0}},
    {"CodeStream", "\xFF\x4F\xFF\x51", {263, 2, 0}},
    {"EightyEighty", "\x80\x80", {257, 2, 5}},
    {"Jpeg", "\xFF\xD8\xFF", {256, 2, 0}},
    {"Unknown", "some words", {0, 0, 2}},
    {"Empty", " ", {0, 0, 2}},
    {"PngBeforeBmp", "BPNG", {259, 2, 0}},
    {"BmpBeforeWebp", "BM..\0\0\0\0WEBP"s, {265, 2, 0}},
    {"TiffBeforeWebp", "II..\0\0\0\0WEBP"s, {261, 2, 0}},
    {"WebpBeforeJpeg", "\xFF\xD8..\0\0\0\0WEBP"s, {267, 2, 0}},
    {"WebpBeforeEightyEighty", "\x80\x80..\0\0\0\0WEBP"s, {267, 2, 0}},
    {"Html", "<!DOCTYPE HTML>", {0, 0, 3}},
    {"HtmlBehindBlanks", "\xEF\xBB\xBF\r\n <html>", {0, 0, 3}},
};

class SniffTable : public testing::TestWithParam<TableCase> {};
TEST_P(SniffTable, TellsTypeKindAndResult) {
    EXPECT_EQ(Sniff(GetParam().head), GetParam().expected);
}
INSTANTIATE_TEST_SUITE_P(Heads, SniffTable, testing::ValuesIn(kTable),
                         [](const auto& tested) { return tested.param.name; });

/// A page file of the format's own head, 200 bytes unless said otherwise.
std::string PageFile(int version, std::size_t size = 200) {
    std::string file(size, '\0');
    file.replace(0, 2, "HH");
    file[2] = static_cast<char>(version);
    if (size > 20)
        file[20] = 8;
    return file;
}

std::string Little(std::uint32_t value) {
    std::string text;
    for (int i = 0; i < 4; ++i)
        text += static_cast<char>(value >> (8 * i));
    return text;
}

std::string PageAround(const std::string& payload, int type = 2, int flag = 8, int form = 0) {
    std::string file = PageFile(2, 136);
    file[15] = static_cast<char>(type);
    file[20] = static_cast<char>(flag);
    file[21] = static_cast<char>(form);
    file.replace(24, 4, Little(136));
    file.replace(28, 4, Little(static_cast<std::uint32_t>(payload.size())));
    return file + payload;
}

TEST(PageHead, TheOldFormIsAPayloadOfKindOne) {
    EXPECT_EQ(Sniff(PageFile(1)), (Sniffed{0, 1, 0}));
    std::string file = PageFile(1, 188);
    EXPECT_EQ(Sniff(file).result, 0);
    file[8] = 1;  // the word at 7 is not zero: 189 bytes are wanted
    EXPECT_EQ(Sniff(file).result, 4);
    EXPECT_EQ(Sniff(file + " ").result, 0);
}

TEST(PageHead, AFileShorterThanTheHeadFails) {
    EXPECT_EQ(Sniff(PageFile(1, 139)).result, -1);
    EXPECT_EQ(Sniff("HH").result, -1);
    EXPECT_EQ(Sniff(PageFile(1, 140)).result, 0);
}

TEST(PageHead, ThePayloadMustLieInTheFile) {
    const std::string page = PageAround(std::string(100, 'x'));
    EXPECT_EQ(Sniff(page).result, 0);
    EXPECT_EQ(Sniff(page.substr(0, page.size() - 1)).result, 4);
    std::string huge = page;
    huge.replace(28, 4, Little(0xFFFFFFFF));
    EXPECT_EQ(Sniff(huge).result, 4);
}

TEST(PageHead, TypeAndKindComeFromTheirBytes) {
    const std::string payload(100, 'x');
    EXPECT_EQ(Sniff(PageAround(payload, 2, 8)), (Sniffed{2, 2, 0}));
    EXPECT_EQ(Sniff(PageAround(payload, 2, 8 + 0x10)),
              (Sniffed{2, 2, 0}));  // the bit that is masked
    EXPECT_EQ(Sniff(PageAround(payload, 2, 9)), (Sniffed{2, 1, 0}));
    EXPECT_EQ(Sniff(PageAround(payload, 2, 0)), (Sniffed{2, 1, 0}));
    EXPECT_EQ(Sniff(PageAround(payload, 2, 8, 1)), (Sniffed{2, 3, 0}));
    EXPECT_EQ(Sniff(PageAround(payload, 2, 9, 1)), (Sniffed{2, 3, 0}));
    EXPECT_EQ(Sniff(PageAround(payload, 0x60)).result, -1);
    EXPECT_EQ(Sniff(PageAround(payload, 0x6F)).result, -1);
    EXPECT_EQ(Sniff(PageAround(payload, 0x70)).result, 0);
}

TEST(PageHead, AnFMeansAPdfInside) {
    std::string page = PageAround(std::string(100, 'x'));
    page[14] = 'F';
    EXPECT_EQ(Sniff(page), (Sniffed{258, 2, 6}));
}

TEST(SniffFile, AFileThatCannotBeReadFails) {
    int type = 7, kind = 7;
    EXPECT_EQ(CPdgLoader::SniffFile("/nowhere/page", type, kind), -1);
    EXPECT_EQ(type, 0);
    EXPECT_EQ(kind, 0);
}

TEST(SniffFile, RawIsAskedForWhatNothingElseClaims) {
    SetRawRecognizer([](ByteSource&, const std::filesystem::path&) { return true; });
    const Sniffed unknown = Sniff("some words"), tiff = Sniff("II*\0"s);
    SetRawRecognizer(nullptr);
    EXPECT_EQ(unknown, (Sniffed{266, 2, 0}));
    EXPECT_EQ(tiff, (Sniffed{261, 2, 0}));
}

std::string PictureAs(FileTypeId type, CDibImage image, int dpi) {
    SaveOptions options;
    options.dpi = dpi;
    MemorySink sink;
    EXPECT_TRUE(SaveImageTo(sink, type, image, options, nullptr));
    return {sink.Bytes().begin(), sink.Bytes().end()};
}

bool LoadPageBytes(const std::string& bytes, CDibImage& image, bool tryRepair = false) {
    return CPdgLoader::LoadPage(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size(),
                                image, tryRepair);
}

TEST(LoadPdgPage, PlainPicturesLoadByTheirContentInsideAPageToo) {
    const CDibImage page = test::Noise(30, 20, 24);
    for (const FileTypeId type : {kTypePng, kTypeBmp, kTypeTiff}) {
        const std::string file = PictureAs(type, page, 200);
        for (const std::string& bytes : {file, PageAround(file)}) {
            CDibImage image;
            ASSERT_TRUE(LoadPageBytes(bytes, image)) << FileTypeName(type);
            test::ExpectSamePixels(image, page);
            EXPECT_EQ(image.GetXDpi(), 200);
        }
    }
}

TEST(LoadPdgPage, NinetySixDpiBecomesAScansResolutionByTheWidth) {
    for (const auto& [width, dpi] : {std::pair(1200, 150), {1201, 300}}) {
        CDibImage image;
        ASSERT_TRUE(LoadPageBytes(PictureAs(kTypePng, test::Filled(width, 2, 8, 9), 96), image));
        EXPECT_EQ(image.GetXDpi(), dpi);
        EXPECT_EQ(image.GetYDpi(), dpi);
    }
}

TEST(LoadPdgPage, AnythingButResultZeroLoadsNothing) {
    CDibImage image;
    for (const std::string& bytes : {"%PDF-1.4"s, "\x80\x80"s, "words"s, PageFile(1, 50), ""s})
        EXPECT_FALSE(LoadPageBytes(bytes, image));
    EXPECT_FALSE(image.IsValid());
}

TEST(LoadPdgPage, PayloadsGoToTheDecoderAndTheirRepair) {
    CDibImage image;
    const std::string one = PageFile(1), three = PageAround("payload", 2, 8, 1);
    EXPECT_FALSE(LoadPageBytes(one, image));
    SetPageDecoder({[](std::span<const std::uint8_t> bytes, CDibImage& to) {
                        to = test::Filled(static_cast<int>(bytes.size()), 1, 8, 5);
                        return true;
                    },
                    [](std::span<const std::uint8_t>, CDibImage& to) { to.Clear(77); }});
    EXPECT_TRUE(LoadPageBytes(one, image, true));
    EXPECT_EQ(image.GetWidth(), 200);  // the whole file
    EXPECT_EQ(test::IndexAt(image, 0, 0), 5);
    EXPECT_TRUE(LoadPageBytes(three, image, false));
    EXPECT_EQ(test::IndexAt(image, 0, 0), 5);
    EXPECT_TRUE(LoadPageBytes(three, image, true));
    EXPECT_EQ(test::IndexAt(image, 0, 0), 77);
    SetPageDecoder({});
}

TEST(LoadImageFile, ReadsThePictureInsideAPageAndNamesWhatIsNone) {
    const TempFolder folder;
    const CDibImage page = test::Noise(30, 20, 24);
    WriteAll(folder / "a.pdg", PageAround(PictureAs(kTypePng, page, 200)));
    CDibImage image;
    ASSERT_TRUE(LoadImageFile(folder / "a.pdg", image));
    test::ExpectSamePixels(image, page);
    EXPECT_EQ(image.Source().sourceInfo, static_cast<std::uint32_t>(kTypePng));
    int type = 0;
    ImageInfo info;
    ASSERT_TRUE(ReadImageInfo(folder / "a.pdg", type, info));
    EXPECT_EQ(type, kTypePng);
    EXPECT_EQ(info.width, 30);

    struct Case {
        std::string bytes;
        FileReason reason;
    };
    for (const Case& c : {Case{"%PDF-1.4", FileReason::kHoldsPdf},
                          {"<html><body>404", FileReason::kHoldsHtml},
                          {PageAround("xyz", 0x61), FileReason::kLocked},
                          {PageFile(1), FileReason::kKindNotRead},
                          {PageAround("xyz").substr(0, 138), FileReason::kDamaged}})
        for (const char* name : {"b.pdg", "b.jpg"}) {
            WriteAll(folder / name, c.bytes);
            FileError error;
            EXPECT_FALSE(LoadImageFile(folder / name, image, &error));
            EXPECT_EQ(error.reason, c.reason) << name << ": " << error.detail;
        }
}

}  // namespace
}  // namespace velloran
