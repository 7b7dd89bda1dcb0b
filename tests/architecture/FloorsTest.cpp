// The folders of src/ stand on floors: an include or a link goes to a lower floor, never up, and
// never across to a floor-mate.

#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "architecture/SourceTree.h"

namespace velloran::test {
namespace {

const std::map<std::string, int> kFloors = {
    {"io", 1},        {"text", 1},  {"mcalc", 1},      {"core", 1},      {"params", 1},
    {"imageproc", 2}, {"spfit", 2}, {"imaging", 2},    {"codecs", 2},    {"filters", 3},
    {"reduce", 3},    {"tone", 4},  {"page", 5},       {"dewarping", 6}, {"pipeline", 7},
    {"files", 8},     {"batch", 9}, {"documents", 10}, {"cli", 11},      {"app", 11},
};

/// The ground floor has steps of its own: what each of its rooms may use of the others.
const std::map<std::string, std::set<std::string>> kGroundFloor = {
    {"params", {"text", "core", "io"}},
    {"core", {"io"}},
};

bool MayUse(const std::string& from, const std::string& to) {
    if (from == to || kFloors.at(to) < kFloors.at(from))
        return true;
    const auto steps = kGroundFloor.find(from);
    return steps != kGroundFloor.end() && steps->second.contains(to);
}

/// Complaints about the quoted includes of a file.
std::vector<std::string> IncludeFaults(const SourceFile& file) {
    static const std::regex include(R"(^\s*#\s*include\s*"([^"/]+)/[^"]*")");
    std::vector<std::string> faults;
    for (const std::string& line : file.lines) {
        std::smatch match;
        if (!std::regex_search(line, match, include))
            continue;
        const std::string to = match[1];
        if (!kFloors.contains(to) || !MayUse(file.folder, to))
            faults.push_back(file.name + ": " + line);
    }
    return faults;
}

/// Complaints about the DEPENDS of a build file.
std::vector<std::string> LinkFaults(const SourceFile& file) {
    std::vector<std::string> faults;
    std::string text;
    for (const std::string& line : file.lines)
        text += line.substr(0, line.find('#')) + "\n";
    std::istringstream words(std::regex_replace(text, std::regex("[()]"), " ) "));
    bool inDepends = false;
    for (std::string word; words >> word;) {
        if (word == "DEPENDS") {
            inDepends = true;
        } else if (word == "SOURCES" || word == "PRIVATE_DEPENDS" || word == ")") {
            inDepends = false;
        } else if (inDepends || word.starts_with("velloran_")) {
            const std::string to = word.starts_with("velloran_") ? word.substr(9) : word;
            if (kFloors.contains(to) && !MayUse(file.folder, to))
                faults.push_back(file.name + ": " + word);
            else if (inDepends && !kFloors.contains(to))
                faults.push_back(file.name + ": unknown folder " + word);
        }
    }
    return faults;
}

TEST(Floors, EveryFolderHasAFloor) {
    for (const SourceFile& file : ReadSourceTree())
        EXPECT_TRUE(kFloors.contains(file.folder)) << file.name;
}

TEST(Floors, IncludesGoDownOnly) {
    const std::vector<SourceFile> files = ReadSourceTree();
    EXPECT_GT(files.size(), 30U);
    for (const SourceFile& file : files)
        for (const std::string& fault : IncludeFaults(file))
            ADD_FAILURE() << fault;
}

TEST(Floors, LinksGoDownOnly) {
    const std::vector<SourceFile> files = ReadBuildFiles();
    EXPECT_GT(files.size(), 5U);
    for (const SourceFile& file : files)
        if (file.name != "CMakeLists.txt")
            for (const std::string& fault : LinkFaults(file))
                ADD_FAILURE() << fault;
}

TEST(Floors, AClimbingIncludeIsFound) {
    const SourceFile climbing{"core", "core/X.h", {"#include \"files/FileType.h\""}};
    const SourceFile crossing{"filters", "filters/X.h", {"#include \"reduce/Palette.h\""}};
    const SourceFile idle{"text", "text/X.h", {"#include \"io/AtomicFile.h\""}};
    const SourceFile step{"params", "params/X.h", {"#include \"io/AtomicFile.h\""}};
    const SourceFile falling{"tone", "tone/X.h", {"#include \"core/DibImage.h\""}};
    EXPECT_EQ(IncludeFaults(climbing).size(), 1U);
    EXPECT_EQ(IncludeFaults(crossing).size(), 1U);
    EXPECT_EQ(IncludeFaults(idle).size(), 1U);
    EXPECT_EQ(IncludeFaults(step).size(), 0U);
    EXPECT_EQ(IncludeFaults(falling).size(), 0U);
}

TEST(Floors, AClimbingLinkIsFound) {
    const SourceFile climbing{
        "core", "core/CMakeLists.txt", {"velloran_library(core SOURCES X.cpp DEPENDS batch)"}};
    const SourceFile falling{
        "batch", "batch/CMakeLists.txt", {"velloran_library(batch SOURCES X.cpp DEPENDS core)"}};
    EXPECT_EQ(LinkFaults(climbing).size(), 1U);
    EXPECT_EQ(LinkFaults(falling).size(), 0U);
}

TEST(Floors, OpenCvIsAPeerOfBenchmarksAlone) {
    for (const SourceFile& file : ReadSourceTree())
        for (const std::string& line : file.lines)
            EXPECT_EQ(line.find("opencv2/"), std::string::npos) << file.name;
    for (const SourceFile& file : ReadBuildFiles())
        for (const std::string& line : file.lines)
            EXPECT_EQ(line.find("velloran_opencv"), std::string::npos) << file.name;
}

TEST(Floors, OnlyWindowsIncludeQt) {
    static const std::regex qt(R"(^\s*#\s*include\s*<Q[A-Z])");
    for (const SourceFile& file : ReadSourceTree())
        for (const std::string& line : file.lines)
            if (std::regex_search(line, qt)) {
                EXPECT_EQ(file.folder, "app") << file.name;
            }
}

}  // namespace
}  // namespace velloran::test
