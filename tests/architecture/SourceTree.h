#pragma once

// The project's own sources, as text.

#include <filesystem>
#include <string>
#include <vector>

namespace velloran::test {

struct SourceFile {
    std::string folder;  // first folder below src/
    std::string name;    // relative to src/
    std::vector<std::string> lines;
};

/// Every header and source file below src/.
std::vector<SourceFile> ReadSourceTree();

/// Every CMakeLists.txt below src/.
std::vector<SourceFile> ReadBuildFiles();

}  // namespace velloran::test
