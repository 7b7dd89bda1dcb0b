#include "files/ProgramPlaces.h"

#include <gtest/gtest.h>

#include "support/AsOtherUser.h"
#include "support/TempFolder.h"

namespace velloran::test {
namespace {

TEST(ProgramPlaces, StandBesideAProgramWhoseFolderCanBeWritten) {
    const TempFolder folder;
    const ProgramPlaces places = PlacesFor(folder / "tool.bin", {"/config", "/state"});
    EXPECT_EQ(places.settings, folder / "tool.ini");
    EXPECT_EQ(places.namedSettings, folder / "tool_Para.ini");
    EXPECT_EQ(places.log, folder / "tool_log.txt");
}

TEST(ProgramPlaces, StandInTheUsersFoldersOtherwise) {
    const TempFolder folder;
    EXPECT_TRUE(TrueAsOtherUser(folder.Path(), [&] {
        const ProgramPlaces places = PlacesFor(folder / "tool", {"/c", "/s"});
        return places.settings == "/c/tool.ini" && places.namedSettings == "/c/tool_Para.ini" &&
               places.log == "/s/tool_log.txt";
    }));
    EXPECT_EQ(PlacesFor(folder / "gone" / "tool", {"/c", "/s"}).log, "/s/tool_log.txt");
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
