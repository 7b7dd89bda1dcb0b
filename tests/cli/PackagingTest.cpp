// The manual pages and completion scripts are committed as the program prints them; after a change
// of its tables, `cmake --build build/debug --target velloran_packaging` writes them anew.

#include <gtest/gtest.h>

#include "RunProgram.h"
#include "support/TempFolder.h"

namespace velloran::test {
namespace {

std::string Committed(const std::string& name) {
    return ReadAll(std::filesystem::path(VELLORAN_PACKAGING_DIR) / name);
}

TEST(Packaging, ManualPagesAreThoseOfTheTables) {
    EXPECT_EQ(RunProgram({"--print-man", "--lang", "en"}).out, Committed("velloran.1"));
    EXPECT_EQ(RunProgram({"--print-man"}).out, Committed("velloran.zh.1"));
}

TEST(Packaging, CompletionScriptsAreThoseOfTheTables) {
    EXPECT_EQ(RunProgram({"--print-completion", "bash"}).out, Committed("velloran.bash"));
    EXPECT_EQ(RunProgram({"--print-completion", "zsh"}).out, Committed("_velloran"));
}

}  // namespace
}  // namespace velloran::test
