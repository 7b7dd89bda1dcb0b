#include "params/ProfileStore.h"

#include <gtest/gtest.h>

#include "io/FileError.h"
#include "support/TempFolder.h"
#include "text/ProfileFile.h"
#include "text/Text.h"

namespace velloran {
namespace {

ProfileFile Parsed(std::string_view bytes) {
    ProfileFile profile;
    profile.Parse(bytes);
    return profile;
}

TEST(ProfileStore, AMissingFileIsAnEmptyProfile) {
    const test::TempFolder folder;
    ProfileFile profile = Parsed("[s]\nk=1\n");
    FileError error;
    EXPECT_TRUE(LoadProfile(folder / "none.ini", profile, &error));
    EXPECT_EQ(error.cause, FileError::Cause::kNone);
    EXPECT_EQ(profile.ToBytes(), "");
}

TEST(ProfileStore, AFolderCannotBeRead) {
    const test::TempFolder folder;
    ProfileFile profile;
    FileError error;
    EXPECT_FALSE(LoadProfile(folder.Path(), profile, &error));
    EXPECT_NE(error.cause, FileError::Cause::kNone);
    EXPECT_FALSE(error.detail.empty());
}

TEST(ProfileStore, AFileAtTheSizeLimitIsReadAndOneAboveIsRefused) {
    const test::TempFolder folder;
    std::string bytes(ProfileFile::kMaxBytes, 'x');
    bytes.replace(0, 8, "[s]\nk=1\n");
    test::WriteAll(folder / "a.ini", bytes);
    ProfileFile profile;
    EXPECT_TRUE(LoadProfile(folder / "a.ini", profile));
    EXPECT_EQ(profile.GetInt(u"s", u"k", 0), 1);
    test::WriteAll(folder / "a.ini", bytes + "x");
    FileError error;
    EXPECT_FALSE(LoadProfile(folder / "a.ini", profile, &error));
    EXPECT_EQ(error.cause, FileError::Cause::kContent);
    EXPECT_EQ(profile.ToBytes(), "");
}

TEST(ProfileStore, AFileOfTooManyLinesIsRefused) {
    const test::TempFolder folder;
    test::WriteAll(folder / "a.ini", std::string(ProfileFile::kMaxLines + 1, '\n'));
    ProfileFile profile;
    FileError error;
    EXPECT_FALSE(LoadProfile(folder / "a.ini", profile, &error));
    EXPECT_EQ(error.cause, FileError::Cause::kContent);
    test::WriteAll(folder / "a.ini", std::string(ProfileFile::kMaxLines, '\n'));
    EXPECT_TRUE(LoadProfile(folder / "a.ini", profile));
}

TEST(ProfileStore, WhatIsSavedLoadsAgain) {
    const test::TempFolder folder;
    ProfileFile profile = Parsed("[s]\r\nk=1\r\n");
    profile.SetString(u"s", u"页", u"二");
    EXPECT_TRUE(SaveProfile(profile, folder / "a.ini"));
    EXPECT_EQ(test::ReadAll(folder / "a.ini"), "[s]\r\nk=1\r\n页=二\r\n");
    EXPECT_EQ(folder.AllNames(), std::vector<std::string>{"a.ini"});
    ProfileFile again;
    EXPECT_TRUE(LoadProfile(folder / "a.ini", again));
    EXPECT_EQ(again.GetString(u"s", u"页"), u"二");
}

TEST(ProfileStore, AFailedSaveLeavesTheTargetAsItWas) {
    const test::TempFolder folder;
    std::filesystem::create_directory(folder / "a.ini");
    test::WriteAll(folder / "a.ini" / "inside", "x");
    const ProfileFile profile = Parsed("[s]\nk=1\n");
    FileError error;
    EXPECT_FALSE(SaveProfile(profile, folder / "a.ini", &error));
    EXPECT_EQ(error.cause, FileError::Cause::kStorage);
    EXPECT_FALSE(SaveProfile(profile, folder / "missing" / "a.ini"));
    EXPECT_EQ(folder.AllNames(), (std::vector<std::string>{"a.ini", "a.ini/inside"}));
}

TEST(ProfileStore, ASaveToAFullDiskLeavesTheFileAsItWas) {
    if (!std::filesystem::exists("/dev/full"))
        GTEST_SKIP() << "no /dev/full here";
    FileError error;
    EXPECT_FALSE(SaveProfile(Parsed("[s]\nk=1\n"), "/dev/full", &error));
    EXPECT_EQ(error.cause, FileError::Cause::kStorage);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
}

}  // namespace
}  // namespace velloran
