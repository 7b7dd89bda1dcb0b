#include "support/SharedData.h"

#include <cstdlib>

namespace velloran::test {

namespace fs = std::filesystem;

fs::path SharedData() {
    std::error_code ignored;
    if (const char* named = std::getenv("VELLORAN_DATA"))
        return fs::is_directory(named, ignored) ? fs::path(named) : fs::path();
    for (fs::path folder = fs::current_path(); folder != folder.root_path();
         folder = folder.parent_path())
        if (fs::is_directory(folder / "shared" / "data" / "scans", ignored))
            return folder / "shared" / "data";
    return {};
}

}  // namespace velloran::test
