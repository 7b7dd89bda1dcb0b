#include "text/ProfileFile.h"

#include <gtest/gtest.h>

#include "text/Text.h"

namespace velloran {
namespace {

using namespace std::string_view_literals;

ProfileFile Parsed(std::string_view bytes) {
    ProfileFile profile;
    profile.Parse(bytes);
    return profile;
}

/// The value as UTF-8, "(none)" for an absent key.
std::string Value(const ProfileFile& profile, std::u16string_view section,
                  std::u16string_view key) {
    const auto value = profile.GetString(section, key);
    return value ? ToUtf8(*value) : "(none)";
}

std::string Names(const ProfileFile& profile) {
    std::u16string names;
    for (const std::u16string& name : profile.SectionNames())
        names += name + u'|';
    return ToUtf8(names);
}

TEST(ProfileFile, ReadsKeysOfSectionsWithoutRegardToCase) {
    const ProfileFile profile = Parsed("[One]\nKey=a b\n[two]\nkey=c\n");
    EXPECT_EQ(Value(profile, u"one", u"KEY"), "a b");
    EXPECT_EQ(Value(profile, u"TWO", u"key"), "c");
    EXPECT_EQ(Value(profile, u"two", u"other"), "(none)");
    EXPECT_EQ(Value(profile, u"three", u"key"), "(none)");
}

TEST(ProfileFile, BlanksAroundNamesAndValuesDoNotCount) {
    const ProfileFile profile = Parsed("  [ One ]  \n\t key \t=  a b \t\n");
    EXPECT_EQ(Value(profile, u"One", u"key"), "a b");
    EXPECT_EQ(Value(profile, u" one ", u" key "), "a b");
}

TEST(ProfileFile, QuotationMarksAroundAValueDoNotCount) {
    const ProfileFile profile = Parsed("[s]\na=\" x \"\nb='y'\nc=\"z\nd=\"\"\ne=\"\nn=\"12\"\n");
    EXPECT_EQ(Value(profile, u"s", u"a"), " x ");
    EXPECT_EQ(Value(profile, u"s", u"b"), "y");
    EXPECT_EQ(Value(profile, u"s", u"c"), "\"z");
    EXPECT_EQ(Value(profile, u"s", u"d"), "");
    EXPECT_EQ(Value(profile, u"s", u"e"), "\"");
    EXPECT_EQ(profile.GetInt(u"s", u"n", 0), 12);
}

TEST(ProfileFile, TheFirstEqualsSignParts) {
    EXPECT_EQ(Value(Parsed("[s]\na=b=c\n"), u"s", u"a"), "b=c");
}

TEST(ProfileFile, CommentsAndLinesWithoutEqualsSignAreNoKeys) {
    const ProfileFile profile = Parsed("[s]\n;a=1\n # b=2\nc\n=3\n\n");
    EXPECT_FALSE(profile.HasKeys(u"s"));
    EXPECT_TRUE(profile.HasSection(u"s"));
    EXPECT_EQ(Value(profile, u"s", u";a"), "(none)");
    EXPECT_EQ(Value(profile, u"s", u""), "(none)");
}

TEST(ProfileFile, KeysBeforeTheFirstSectionBelongToNone) {
    const ProfileFile profile = Parsed("a=1\n[s]\nb=2\n");
    EXPECT_EQ(Value(profile, u"", u"a"), "(none)");
    EXPECT_EQ(Value(profile, u"s", u"a"), "(none)");
    EXPECT_EQ(Value(profile, u"s", u"b"), "2");
}

TEST(ProfileFile, TheFirstOfTwoEqualKeysWinsAndEqualSectionsCountAsOne) {
    const ProfileFile profile = Parsed("[s]\na=1\nA=2\n[t]\n[S]\na=3\nb=4\n");
    EXPECT_EQ(Value(profile, u"s", u"a"), "1");
    EXPECT_EQ(Value(profile, u"s", u"b"), "4");
    EXPECT_EQ(Names(profile), "s|t|");
    EXPECT_FALSE(profile.HasKeys(u"t"));
}

TEST(ProfileFile, ASectionNameMayHoldABracketWhenOneEndsTheLine) {
    EXPECT_EQ(Names(Parsed("[a]b]\n[c] ; note\n[open\n[]\n")), "a]b|c||");
}

TEST(ProfileFile, AZeroInANameCountsAsABlank) {
    const ProfileFile profile = Parsed("[a\0b]\nk\0y=1\n"sv);
    EXPECT_EQ(Names(profile), "a b|");
    EXPECT_TRUE(profile.HasSection(profile.SectionNames().front()));
    EXPECT_EQ(Value(profile, u"a b", u"k y"), "1");
}

struct IntCase {
    const char* name;
    std::string_view text;
    std::int32_t expected;
};
void PrintTo(const IntCase& c, std::ostream* out) {
    *out << c.name;
}

class ProfileInt : public testing::TestWithParam<IntCase> {};

TEST_P(ProfileInt, ReadsAsThePlatformReadsIt) {
    const ProfileFile profile = Parsed("[s]\nk=" + std::string(GetParam().text) + "\n");
    EXPECT_EQ(profile.GetInt(u"s", u"k", 77), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    ProfileFile, ProfileInt,
    testing::Values(IntCase{"Plain", "120", 120}, IntCase{"Negative", "-1", -1},
                    IntCase{"Plus", "+5", 5}, IntCase{"LeadingBlanks", "  \t 9", 9},
                    IntCase{"TextBehindIsIgnored", "12px", 12},
                    IntCase{"CommentBehindIsIgnored", "12 ; note", 12},
                    IntCase{"FractionIsIgnored", "3.9", 3}, IntCase{"NoDigits", "abc", 0},
                    IntCase{"SignAlone", "-", 0}, IntCase{"SecondSign", "--5", 0},
                    IntCase{"Hexadecimal", "0x1F", 31}, IntCase{"HexadecimalEnds", "0x1G", 1},
                    IntCase{"AllOnes", "0xFFFFFFFF", -1}, IntCase{"NegativeHex", "-0x10", -16},
                    IntCase{"Empty", "", 77}, IntCase{"Largest", "2147483647", INT32_MAX},
                    IntCase{"Smallest", "-2147483648", INT32_MIN},
                    IntCase{"WrapsOnce", "4294967297", 1},
                    IntCase{"WrapsOften", "123456789012345678901234567890", 1312754386}),
    [](const auto& instance) { return instance.param.name; });

TEST(ProfileFile, AnAbsentKeyGivesTheFallback) {
    EXPECT_EQ(Parsed("[s]\n").GetInt(u"s", u"k", -5), -5);
    EXPECT_EQ(Parsed("").GetInt(u"s", u"k", -5), -5);
}

TEST(ProfileFile, ANewFileIsWrittenInUtf8WithLf) {
    ProfileFile profile;
    profile.SetString(u"扫描", u"名", u"页");
    profile.SetInt(u"b", u"k", -3);
    EXPECT_EQ(profile.ToBytes(), "[扫描]\n名=页\n\n[b]\nk=-3\n");
}

TEST(ProfileFile, AChangedValueLeavesTheRestOfItsLine) {
    ProfileFile profile = Parsed("[s]\r\n  Key  =  old  \r\nempty=\r\n; end\r\n");
    profile.SetString(u"S", u"KEY", u"new value");
    profile.SetString(u"s", u"empty", u"x");
    EXPECT_EQ(profile.ToBytes(), "[s]\r\n  Key  =  new value  \r\nempty=x\r\n; end\r\n");
}

TEST(ProfileFile, SettingTheSameValueChangesNothing) {
    const std::string_view bytes = "[s]\nk = 5 \n";
    ProfileFile profile = Parsed(bytes);
    profile.SetInt(u"s", u"k", 5);
    EXPECT_EQ(profile.ToBytes(), bytes);
}

TEST(ProfileFile, ANewKeyStandsBehindTheLastOfItsSection) {
    ProfileFile profile = Parsed("[s]\na=1\n; note\n\n[t]\nb=2");
    profile.SetString(u"s", u"c", u"3");
    profile.SetString(u"t", u"d", u"4");
    EXPECT_EQ(profile.ToBytes(), "[s]\na=1\nc=3\n; note\n\n[t]\nb=2\nd=4\n");
}

TEST(ProfileFile, ValuesWhoseEndsWouldBeLostAreQuoted) {
    for (const char16_t* text : {u" a", u"a ", u"\"a\"", u"'a'", u" "}) {
        ProfileFile profile;
        profile.SetString(u"s", u"k", text);
        EXPECT_EQ(Value(Parsed(profile.ToBytes()), u"s", u"k"), ToUtf8(text));
    }
}

TEST(ProfileFile, ALineEndInANameOrValueDoesNotMakeALine) {
    ProfileFile profile;
    profile.SetString(u"a]\n[b", u"k\nx", u"1\r\n[evil]\ny=2");
    const ProfileFile again = Parsed(profile.ToBytes());
    EXPECT_EQ(Names(again), "a] [b|");
    EXPECT_EQ(Value(again, u"a]\n[b", u"k\nx"), "1  [evil] y=2");
}

TEST(ProfileFile, WhatCannotStandAsAKeyIsNotWritten) {
    ProfileFile profile = Parsed("[s]\n");
    for (const char16_t* key : {u"", u"  ", u"a=b", u";a", u"#a", u"[a"})
        profile.SetString(u"s", key, u"1");
    EXPECT_EQ(profile.ToBytes(), "[s]\n");
}

TEST(ProfileFile, ADeletedKeyIsGoneWhereverItStands) {
    ProfileFile profile = Parsed("[s]\na=1\nb=2\nA=3\n[t]\na=4\n[s]\na=5\n");
    profile.DeleteKey(u"s", u"a");
    EXPECT_EQ(profile.ToBytes(), "[s]\nb=2\n[t]\na=4\n[s]\n");
}

TEST(ProfileFile, ADeletedSectionIsGoneWhereverItStands) {
    ProfileFile profile = Parsed("; top\n[s]\na=1\n; in\n\n; of t\n[t]\nb=2\n[S]\nc=3\n; tail\n");
    profile.DeleteSection(u"s");
    EXPECT_EQ(profile.ToBytes(), "; top\n; of t\n[t]\nb=2\n");
    profile.DeleteSection(u"none");
    EXPECT_EQ(profile.ToBytes(), "; top\n; of t\n[t]\nb=2\n");
}

TEST(ProfileFile, AReplacedSectionKeepsItsPlace) {
    ProfileFile profile = Parsed("[a]\nx=1\n[s]\nold=1\n[b]\ny=2\n");
    const ProfileFile::KeyAndValue keys[] = {{u"new", u"5"}, {u"k", u"6"}};
    profile.ReplaceSection(u"s", keys);
    EXPECT_EQ(profile.ToBytes(), "[a]\nx=1\n[s]\nnew=5\nk=6\n\n[b]\ny=2\n");
    profile.ReplaceSection(u"b", keys);
    EXPECT_EQ(profile.ToBytes(), "[a]\nx=1\n[s]\nnew=5\nk=6\n\n[b]\nnew=5\nk=6\n");
    profile.ReplaceSection(u"a", {});
    EXPECT_EQ(profile.ToBytes(), "[s]\nnew=5\nk=6\n\n[b]\nnew=5\nk=6\n");
}

TEST(ProfileFile, IllFormedFilesAreKeptByteForByte) {
    for (const std::string_view bytes :
         {"\0\0\0"sv, "[\n]\n==\n[[[[\n"sv, "\xFF\xFE"sv, "\xFF\xFE["sv, "\xFE\xFF\0[\0a\0]\0"sv,
          "\xEF\xBB\xBF\xFF\xFE=\n"sv, "[s]\na\0=1\0\n"sv, "\r\r\r\n\n\r"sv,
          "\x81\n[\x81]\n\x81=\x81"sv, "\xFF\xFE[\0s\0]\0\n\0\x00\xD8=\0\x01\xDC"sv}) {
        EXPECT_EQ(Parsed(bytes).ToBytes(), bytes);
        ProfileFile profile = Parsed(bytes);
        EXPECT_EQ(Value(profile, u"new section", u"k"), "(none)");
        profile.SetString(u"new section", u"k", u"v");
        EXPECT_EQ(Value(Parsed(profile.ToBytes()), u"new section", u"k"), "v");
        EXPECT_TRUE(profile.ToBytes().starts_with(bytes.substr(0, bytes.size() / 2 * 2)));
    }
}

TEST(ProfileFile, ManyEqualSectionsAndKeysAreDeletedInOnePass) {
    std::string bytes;
    for (int i = 0; i < 200000; ++i)
        bytes += "[s]\nk=1\n";
    ProfileFile profile = Parsed(bytes);
    profile.DeleteKey(u"s", u"k");
    EXPECT_FALSE(profile.HasKeys(u"s"));
    profile.DeleteSection(u"s");
    EXPECT_EQ(profile.ToBytes(), "");
}

}  // namespace
}  // namespace velloran
