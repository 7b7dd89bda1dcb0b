// What the user reads stands in one place, in every language.

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>

#include "architecture/SourceTree.h"

namespace velloran::test {
namespace {

bool HoldsWords(const SourceFile& file) {
    return file.name.ends_with("Labels.h") || file.folder == "params";
}

/// The line without its comment; a "//" inside quotation marks begins none.
std::string WithoutComment(const std::string& line) {
    bool quoted = false;
    for (std::size_t i = 0; i + 1 < line.size(); ++i) {
        if (line[i] == '\\')
            ++i;
        else if (line[i] == '"')
            quoted = !quoted;
        else if (!quoted && line[i] == '/' && line[i + 1] == '/')
            return line.substr(0, i);
    }
    return line;
}

bool IsAscii(const std::string& text) {
    return std::ranges::all_of(text, [](unsigned char c) { return c < 0x80; });
}

TEST(Words, OfOtherScriptsStandInTheLabelsAndTheParameterTableAlone) {
    for (const SourceFile& file : ReadSourceTree())
        if (!HoldsWords(file)) {
            for (const std::string& line : file.lines)
                EXPECT_TRUE(IsAscii(WithoutComment(line))) << file.name << ": " << line;
        }
}

TEST(Words, OfTheLabelsAreEnglishWhereTheyAreNotChinese) {
    int labels = 0;
    for (const SourceFile& file : ReadSourceTree()) {
        if (!file.name.ends_with("Labels.h"))
            continue;
        std::string text;
        for (const std::string& line : file.lines)
            text += WithoutComment(line) + "\n";
        // Literals side by side are one text; a comma divides the languages.
        text = std::regex_replace(text, std::regex("\"\\s+u\""), "");
        const std::regex label(
            "\\{\\s*u\"((?:[^\"\\\\]|\\\\.)*)\"\\s*(?:,\\s*u\"((?:[^\"\\\\]|\\\\.)*)\"\\s*)?\\}");
        for (std::sregex_iterator at(text.begin(), text.end(), label), end; at != end; ++at) {
            ++labels;
            EXPECT_TRUE((*at)[2].matched || IsAscii((*at)[1])) << file.name << ": " << at->str();
            EXPECT_TRUE(IsAscii((*at)[2])) << file.name << ": " << at->str();
            EXPECT_FALSE((*at)[2].matched && (*at)[2].length() == 0) << at->str();
        }
    }
    EXPECT_GT(labels, 300) << "they were found";
}

/// The files that include a header, by its name as it stands between the marks.
std::vector<std::string> FilesThatInclude(const std::string& header) {
    std::vector<std::string> names;
    for (const SourceFile& file : ReadSourceTree())
        for (const std::string& line : file.lines)
            if (line.starts_with("#include") && line.find(header) != std::string::npos)
                names.push_back(file.name);
    return names;
}

TEST(Libraries, OfOptionsAndJsonAreKnownToOneFileEach) {
    EXPECT_EQ(FilesThatInclude("<CLI/"), std::vector<std::string>{"cli/OptionParser.cpp"});
    EXPECT_EQ(FilesThatInclude("<nlohmann/"), std::vector<std::string>{"cli/Json.cpp"});
}

}  // namespace
}  // namespace velloran::test
