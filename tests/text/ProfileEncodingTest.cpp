#include <gtest/gtest.h>

#include <string>

#include "text/ProfileFile.h"
#include "text/Text.h"
#include "text/TextEncoding.h"

namespace velloran {
namespace {

using namespace std::string_view_literals;

// "[描]", "; 注", "k=值" and "other=1", each line in its own bytes. 描 is U+63CF, GBK C3 E8;
// 注 is U+6CE8, D7 A2; 值 is U+503C, D6 B5; 新 is U+65B0, D0 C2; 卷 is U+5377, BE ED.
struct EncodingCase {
    const char* name;
    TextEncoding encoding;
    std::string_view mark;
    std::string_view head, comment, key, other;  // the lines without their ends
    std::string_view changedKey, newKey;         // "k=新" and "卷=2"
    std::string_view lf, crLf;
};
void PrintTo(const EncodingCase& c, std::ostream* out) {
    *out << c.name;
}

constexpr EncodingCase kCases[] = {
    {"Utf8", TextEncoding::kUtf8, "", "[\xE6\x8F\x8F]", "; \xE6\xB3\xA8", "k=\xE5\x80\xBC",
     "other=1", "k=\xE6\x96\xB0", "\xE5\x8D\xB7=2", "\n", "\r\n"},
    {"Utf8WithMark", TextEncoding::kUtf8Mark, "\xEF\xBB\xBF", "[\xE6\x8F\x8F]", "; \xE6\xB3\xA8",
     "k=\xE5\x80\xBC", "other=1", "k=\xE6\x96\xB0", "\xE5\x8D\xB7=2", "\n", "\r\n"},
    {"Utf16LittleEndian", TextEncoding::kUtf16Le, "\xFF\xFE", "[\0\xCF\x63]\0"sv,
     ";\0 \0\xE8\x6C"sv, "k\0=\0\x3C\x50"sv, "o\0t\0h\0e\0r\0=\0\x31\0"sv, "k\0=\0\xB0\x65"sv,
     "\x77\x53=\0\x32\0"sv, "\n\0"sv, "\r\0\n\0"sv},
    {"Utf16BigEndian", TextEncoding::kUtf16Be, "\xFE\xFF", "\0[\x63\xCF\0]"sv, "\0;\0 \x6C\xE8"sv,
     "\0k\0=\x50\x3C"sv, "\0o\0t\0h\0e\0r\0=\0\x31"sv, "\0k\0=\x65\xB0"sv, "\x53\x77\0=\0\x32"sv,
     "\0\n"sv, "\0\r\0\n"sv},
    {"Gb18030", TextEncoding::kGb18030, "", "[\xC3\xE8]", "; \xD7\xA2", "k=\xD6\xB5", "other=1",
     "k=\xD0\xC2", "\xBE\xED=2", "\n", "\r\n"},
};

std::string Joined(std::string_view mark, std::initializer_list<std::string_view> lines,
                   std::string_view end) {
    std::string bytes(mark);
    for (const std::string_view line : lines)
        bytes.append(line).append(end);
    return bytes;
}

class ProfileEncoding : public testing::TestWithParam<EncodingCase> {};

TEST_P(ProfileEncoding, IsFoundReadAndWrittenBackByteForByte) {
    const EncodingCase& c = GetParam();
    for (const std::string_view end : {c.lf, c.crLf}) {
        const std::string bytes = Joined(c.mark, {c.head, c.comment, c.key, c.other}, end);
        EXPECT_EQ(DetectTextEncoding(bytes), c.encoding);
        ProfileFile profile;
        profile.Parse(bytes);
        EXPECT_EQ(profile.GetString(u"描", u"k"), u"值");
        EXPECT_EQ(profile.GetInt(u"描", u"other", 0), 1);
        EXPECT_EQ(profile.SectionNames(), std::vector<std::u16string>{u"描"});
        EXPECT_EQ(profile.ToBytes(), bytes);
    }
}

TEST_P(ProfileEncoding, ChangesAndNewLinesTakeTheEncodingAndLineEndsFound) {
    const EncodingCase& c = GetParam();
    for (const std::string_view end : {c.lf, c.crLf}) {
        ProfileFile profile;
        profile.Parse(Joined(c.mark, {c.head, c.comment, c.key, c.other}, end));
        profile.SetString(u"描", u"k", u"新");
        profile.SetInt(u"描", u"卷", 2);
        EXPECT_EQ(profile.ToBytes(),
                  Joined(c.mark, {c.head, c.comment, c.changedKey, c.other, c.newKey}, end));
    }
}

TEST_P(ProfileEncoding, AnOpenLastLineIsEndedBeforeALineIsAdded) {
    const EncodingCase& c = GetParam();
    ProfileFile profile;
    profile.Parse(Joined(c.mark, {c.head}, c.crLf) + std::string(c.key));
    profile.SetInt(u"描", u"卷", 2);
    EXPECT_EQ(profile.ToBytes(), Joined(c.mark, {c.head, c.key, c.newKey}, c.crLf));
}

INSTANTIATE_TEST_SUITE_P(TextEncoding, ProfileEncoding, testing::ValuesIn(kCases),
                         [](const auto& instance) { return instance.param.name; });

TEST(TextEncoding, AsciiIsUtf8) {
    EXPECT_EQ(DetectTextEncoding("[s]\nk=1\n"), TextEncoding::kUtf8);
    EXPECT_EQ(DetectTextEncoding(""), TextEncoding::kUtf8);
}

TEST(TextEncoding, GbTextIsToldFromUtf8ByBytesThatAreNoUtf8) {
    EXPECT_EQ(DetectTextEncoding("[\xC3\xE8]\n"), TextEncoding::kGb18030);
    // Two letters of UTF-8 or one of GBK: UTF-8 is taken.
    EXPECT_EQ(DetectTextEncoding("[\xD2\xB3]\n"), TextEncoding::kUtf8);
}

TEST(TextEncoding, GbFourByteFormsDecode) {
    // U+1F600 is 94 39 FC 36, and U+00E4 is 81 30 8A 31.
    const std::string bytes = "\x94\x39\xFC\x36\x81\x30\x8A\x31\xD2\xB3";
    EXPECT_EQ(DecodeText(TextEncoding::kGb18030, bytes), u"😀ä页");
    EXPECT_EQ(EncodeText(TextEncoding::kGb18030, u"😀ä页"), bytes);
}

TEST(TextEncoding, BytesWithoutMeaningBecomeReplacementCharacters) {
    EXPECT_EQ(DecodeText(TextEncoding::kGb18030, "a\xFFz"), u"a\uFFFDz");
    EXPECT_EQ(DecodeText(TextEncoding::kGb18030, "a\x81"), u"a\uFFFD");
    EXPECT_EQ(DecodeText(TextEncoding::kUtf16Le, "a\0z"sv), u"a");
    EXPECT_EQ(DecodeText(TextEncoding::kUtf8Mark, "a\xFFz"), u"a\uFFFDz");
}

TEST(TextEncoding, LongGbTextDecodesWhole) {
    std::string bytes;
    for (int i = 0; i < 5000; ++i)
        bytes += "\xD2\xB3";
    EXPECT_EQ(DecodeText(TextEncoding::kGb18030, bytes), std::u16string(5000, u'页'));
    EXPECT_EQ(EncodeText(TextEncoding::kGb18030, std::u16string(5000, u'页')), bytes);
}

TEST(TextEncoding, LineEndsMayDifferInOneFileAndStay) {
    ProfileFile profile;
    profile.Parse("[s]\r\na=1\nb=2\rc=3\r\n");
    EXPECT_EQ(profile.GetInt(u"s", u"b", 0), 2);
    EXPECT_EQ(profile.GetInt(u"s", u"c", 0), 3);
    profile.SetInt(u"s", u"b", 5);
    profile.SetInt(u"s", u"d", 4);
    EXPECT_EQ(profile.ToBytes(), "[s]\r\na=1\nb=5\rc=3\r\nd=4\r\n");
}

TEST(TextEncoding, HalfAUnitAtTheEndDoesNotChangeTheNameBeforeIt) {
    ProfileFile profile;
    profile.Parse("\xFF\xFE[\0a\0]\0]\0x"sv);
    EXPECT_EQ(profile.SectionNames(), std::vector<std::u16string>{u"a]"});
    profile.SetInt(u"a]", u"k", 1);
    EXPECT_EQ(profile.ToBytes(), "\xFF\xFE[\0a\0]\0]\0\n\0k\0=\0\x31\0\n\0"sv);
}

TEST(TextEncoding, UnreadableBytesBesideAChangedKeyStay) {
    ProfileFile profile;
    profile.Parse("; \xFF\x80\n[s]\nk=1\n\xFFjunk\n");
    profile.SetInt(u"s", u"k", 2);
    EXPECT_EQ(profile.ToBytes(), "; \xFF\x80\n[s]\nk=2\n\xFFjunk\n");
}

}  // namespace
}  // namespace velloran
