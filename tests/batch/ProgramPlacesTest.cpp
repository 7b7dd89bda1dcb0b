#include "batch/ProgramPlaces.h"

#include <gtest/gtest.h>

#include "AsOtherUser.h"
#include "batch/ProcessorCount.h"
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

TEST(ProcessorCount, QuotasRoundUp) {
    EXPECT_EQ(ProcessorsOfCpuMax("200000 100000"), 2);
    EXPECT_EQ(ProcessorsOfCpuMax("150000 100000"), 2);
    EXPECT_EQ(ProcessorsOfCpuMax("1000 100000"), 1);
    for (const char* none : {"max 100000", "-1 100000", "", "x", "100000", "100000 0", "1 y"})
        EXPECT_EQ(ProcessorsOfCpuMax(none), 0) << none;
    EXPECT_EQ(ProcessorsOfCpuMax("9223372036854775807 1"), 4096);
}

TEST(ProcessorCount, TheEnvironmentGivesItsFirstNumber) {
    EXPECT_EQ(ThreadsOfEnvironment("4"), 4);
    EXPECT_EQ(ThreadsOfEnvironment(" 4,2"), 4);
    for (const char* none : {"", "0", "-3", "many", "4x", "99999999999"})
        EXPECT_EQ(ThreadsOfEnvironment(none), 0) << none;
}

TEST(ProcessorCount, ObeysTheEnvironment) {
    setenv("OMP_NUM_THREADS", "1", 1);
    EXPECT_EQ(CountProcessors(), 1);
    unsetenv("OMP_NUM_THREADS");
    EXPECT_GE(CountProcessors(), 1);
}

}  // namespace
}  // namespace velloran::test
