#include "files/ProgramPlaces.h"

#include <gtest/gtest.h>

#include "support/AsOtherUser.h"
#include "support/TempFolder.h"

namespace velloran::test {
namespace {

TEST(ProgramPlaces, StandBesideAProgramWhoseFolderCanBeWritten) {
    const TempFolder folder;
    const ProgramPlaces places = PlacesFor(folder / "tool.bin", {"/config", "/state"});
    EXPECT_EQ(places.settings, folder / "VelloranPro.ini");
    EXPECT_EQ(places.namedSettings, folder / "VelloranPro_Para.ini");
    EXPECT_EQ(places.log, folder / "VelloranPro_log.txt");
}

TEST(ProgramPlaces, StandInTheUsersFoldersOtherwise) {
    const TempFolder folder;
    EXPECT_TRUE(TrueAsOtherUser(folder.Path(), [&] {
        const ProgramPlaces places = PlacesFor(folder / "tool", {"/c", "/s"});
        return places.settings == "/c/VelloranPro.ini" &&
               places.namedSettings == "/c/VelloranPro_Para.ini" &&
               places.log == "/s/VelloranPro_log.txt";
    }));
    EXPECT_EQ(PlacesFor(folder / "gone" / "tool", {"/c", "/s"}).log, "/s/VelloranPro_log.txt");
}

TEST(ProgramPlaces, NothingIsWrittenIntoTheBinOfAnInstallation) {
    const TempFolder folder;
    for (const char* name : {"bin", "sbin", "games"}) {
        std::filesystem::create_directory(folder / name);
        const ProgramPlaces places = PlacesFor(folder / name / "tool", {"/c", "/s"});
        EXPECT_EQ(places.log, "/s/VelloranPro_log.txt");
        EXPECT_EQ(places.settings, "/c/VelloranPro.ini");
    }
}

TEST(ProgramPlaces, FilesOfBeforeAreReadWhereTheNewAreAbsent) {
    const TempFolder folder;
    const UserFolders user{folder / "config", folder / "state"};
    std::filesystem::create_directories(folder / "config");
    std::filesystem::create_directories(folder / "bin");
    const auto places = [&] { return PlacesFor(folder / "bin" / "tool", user); };
    EXPECT_EQ(places().namedSettingsToRead, folder / "config" / "VelloranPro_Para.ini");
    WriteAll(folder / "config" / "tool_Para.ini", "[a]\n");
    EXPECT_EQ(places().namedSettingsToRead, folder / "config" / "tool_Para.ini");
    EXPECT_EQ(places().namedSettings, folder / "config" / "VelloranPro_Para.ini");
    WriteAll(folder / "bin" / "tool_Para.ini", "[a]\n");
    EXPECT_EQ(places().namedSettingsToRead, folder / "bin" / "tool_Para.ini");
    WriteAll(folder / "config" / "VelloranPro_Para.ini", "[a]\n");
    EXPECT_EQ(places().namedSettingsToRead, folder / "config" / "VelloranPro_Para.ini");
    WriteAll(folder / "bin" / "tool.ini", "[a]\n");
    EXPECT_EQ(places().settingsToRead, folder / "bin" / "tool.ini");
}

TEST(ProgramPlaces, UserFoldersFollowTheEnvironmentWhenItIsAbsolute) {
    setenv("XDG_CONFIG_HOME", "/conf", 1);
    setenv("XDG_STATE_HOME", "relative", 1);
    setenv("HOME", "/home/reader", 1);
    const UserFolders folders = FindUserFolders();
    EXPECT_EQ(folders.config, "/conf/VelloranPro");
    EXPECT_EQ(folders.state, "/home/reader/.local/state/VelloranPro");
    unsetenv("XDG_CONFIG_HOME");
    unsetenv("XDG_STATE_HOME");
    EXPECT_EQ(FindUserFolders().config, "/home/reader/.config/VelloranPro");
}

}  // namespace
}  // namespace velloran::test
