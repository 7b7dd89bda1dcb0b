#pragma once

// A folder with sources for a run of `velloran batch`, and what the run made of them.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "RunProgram.h"
#include "core/DibImage.h"
#include "files/ImageFiles.h"
#include "params/ParaBlock.h"
#include "support/Images.h"
#include "support/TempFolder.h"
#include "text/Text.h"

namespace velloran::test {

using Names = std::vector<std::string>;

/// A run log: the mark, then the text in UTF-16.
inline std::string RunLogOf(std::string_view utf8) {
    std::string bytes = "\xFF\xFE";
    for (const char16_t unit : ToUtf16(utf8)) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

class BatchFolder : public testing::Test {
 protected:
    void SetUp() override {
        std::filesystem::permissions(folder_.Path(), std::filesystem::perms(0755));
        std::filesystem::create_directories(Source());
    }
    std::filesystem::path Source() const { return folder_ / "src"; }
    std::filesystem::path Target() const { return folder_ / "out"; }

    Outcome Run(std::vector<std::string> arguments, Surroundings around = {}) const {
        arguments.insert(arguments.begin(), "batch");
        if (std::find(arguments.begin(), arguments.end(), "--log") == arguments.end())
            arguments.insert(arguments.end(), {"--log", "log.txt"});
        around.folder = folder_.Path();
        return RunProgram(arguments, around);
    }
    static Names FilesIn(const std::filesystem::path& folder) {
        Names names;
        std::error_code missing;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder, missing))
            if (!entry.is_directory())
                names.push_back(entry.path().lexically_relative(folder).native());
        std::sort(names.begin(), names.end());
        return names;
    }
    static void WriteFlat(const std::filesystem::path& file, int gray) {
        std::filesystem::create_directories(file.parent_path());
        CDibImage page = Filled(16, 16, 8, static_cast<std::uint8_t>(gray));
        const CParaBlock block;
        ASSERT_TRUE(SaveImageFile(file, page, 90, 96, 2, false, block));
    }
    static int GrayOf(const std::filesystem::path& file) {
        CDibImage page;
        EXPECT_TRUE(LoadImageFile(file, page)) << file;
        return page.IsValid() ? PixelAt(page, 3, 3).red : -1;
    }

    TempFolder folder_;
};

}  // namespace velloran::test
