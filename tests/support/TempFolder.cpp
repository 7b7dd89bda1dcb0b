#include "support/TempFolder.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <fstream>
#include <iterator>

namespace velloran::test {

namespace fs = std::filesystem;

TempFolder::TempFolder() {
    std::string pattern = (fs::temp_directory_path() / "velloran-test-XXXXXX").string();
    EXPECT_NE(mkdtemp(pattern.data()), nullptr);
    path_ = pattern;
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    for (fs::recursive_directory_iterator
             it(path_, fs::directory_options::skip_permission_denied, ignored),
         end;
         it != end; it.increment(ignored))
        if (it->is_directory(ignored) && !it->is_symlink(ignored))
            fs::permissions(it->path(), fs::perms::owner_all, ignored);
    fs::remove_all(path_, ignored);
}

std::vector<std::string> TempFolder::AllNames() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(path_))
        names.push_back(entry.path().lexically_relative(path_).string());
    std::sort(names.begin(), names.end());
    return names;
}

std::string ReadAll(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void WriteAll(const fs::path& file, std::string_view bytes) {
    std::ofstream stream(file, std::ios::binary);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    EXPECT_TRUE(stream.good()) << file;
}

}  // namespace velloran::test
