// Habits of headers that a reader counts on.

#include <gtest/gtest.h>

#include "architecture/SourceTree.h"

namespace velloran::test {
namespace {

bool IsHeader(const SourceFile& file) {
    return file.name.ends_with(".h");
}

TEST(Headers, BeginWithPragmaOnce) {
    for (const SourceFile& file : ReadSourceTree())
        if (IsHeader(file)) {
            EXPECT_TRUE(!file.lines.empty() && file.lines[0] == "#pragma once") << file.name;
        }
}

TEST(Headers, SayFirstWhatTheyAreFor) {
    for (const SourceFile& file : ReadSourceTree())
        if (IsHeader(file)) {
            EXPECT_TRUE(file.lines.size() > 2 && file.lines[2].starts_with("// ")) << file.name;
        }
}

TEST(Headers, NeverOpenAWholeNamespace) {
    for (const SourceFile& file : ReadSourceTree())
        if (IsHeader(file)) {
            for (const std::string& line : file.lines)
                EXPECT_EQ(line.find("using namespace"), std::string::npos) << file.name;
        }
}

TEST(SourceFiles, IncludeTheirOwnHeaderFirst) {
    const std::vector<SourceFile> files = ReadSourceTree();
    for (const SourceFile& file : files) {
        if (IsHeader(file))
            continue;
        const std::string own = file.name.substr(0, file.name.size() - 4) + ".h";
        bool hasOwn = false;
        for (const SourceFile& other : files)
            hasOwn = hasOwn || other.name == own;
        if (!hasOwn)
            continue;
        for (const std::string& line : file.lines)
            if (line.starts_with("#include")) {
                EXPECT_EQ(line, "#include \"" + own + "\"") << file.name;
                break;
            }
    }
}

TEST(SourceFiles, HoldOneIdeaAndStayShort) {
    for (const SourceFile& file : ReadSourceTree())
        EXPECT_LE(file.lines.size(), 600U) << file.name << " wants a second room";
}

}  // namespace
}  // namespace velloran::test
