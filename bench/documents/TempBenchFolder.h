#pragma once

// A folder for a benchmark, gone at its end.

#include <stdlib.h>

#include <filesystem>
#include <stdexcept>
#include <string>

namespace velloran::bench {

class TempBenchFolder {
 public:
    TempBenchFolder() {
        std::string name =
            (std::filesystem::temp_directory_path() / "velloran-bench-XXXXXX").native();
        if (::mkdtemp(name.data()) == nullptr)
            throw std::runtime_error("no temporary folder");
        path_ = name;
    }
    ~TempBenchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempBenchFolder(const TempBenchFolder&) = delete;
    TempBenchFolder& operator=(const TempBenchFolder&) = delete;

    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }
    const std::filesystem::path& Path() const { return path_; }

 private:
    std::filesystem::path path_;
};

}  // namespace velloran::bench
