#pragma once

// A folder of its own for a test, gone with all that is in it at the end; and whole-file reads and
// writes.

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace velloran::test {

class TempFolder {
 public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& Path() const { return path_; }
    std::filesystem::path operator/(const std::filesystem::path& name) const {
        return path_ / name;
    }
    /// Names of all entries below the folder, hidden ones too, relative and sorted.
    std::vector<std::string> AllNames() const;

 private:
    std::filesystem::path path_;
};

std::string ReadAll(const std::filesystem::path& file);
void WriteAll(const std::filesystem::path& file, std::string_view bytes);

}  // namespace velloran::test
