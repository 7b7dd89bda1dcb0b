#include "architecture/SourceTree.h"

#include <algorithm>
#include <fstream>
#include <functional>

namespace velloran::test {
namespace {

namespace fs = std::filesystem;

std::vector<SourceFile> ReadFiles(const std::function<bool(const fs::path&)>& wanted) {
    const fs::path root = fs::path(VELLORAN_SOURCE_DIR) / "src";
    std::vector<SourceFile> files;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        if (!entry.is_regular_file() || !wanted(entry.path()))
            continue;
        SourceFile file;
        const fs::path relative = entry.path().lexically_relative(root);
        file.folder = relative.begin()->string();
        file.name = relative.generic_string();
        std::ifstream stream(entry.path());
        for (std::string line; std::getline(stream, line);)
            file.lines.push_back(line);
        files.push_back(std::move(file));
    }
    std::sort(files.begin(), files.end(),
              [](const SourceFile& a, const SourceFile& b) { return a.name < b.name; });
    return files;
}

}  // namespace

std::vector<SourceFile> ReadSourceTree() {
    return ReadFiles([](const fs::path& path) {
        return path.extension() == ".h" || path.extension() == ".cpp";
    });
}

std::vector<SourceFile> ReadBuildFiles() {
    return ReadFiles([](const fs::path& path) { return path.filename() == "CMakeLists.txt"; });
}

}  // namespace velloran::test
