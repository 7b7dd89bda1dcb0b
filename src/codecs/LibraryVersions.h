#pragma once

// The libraries that read and write pictures, for reports of faults.

#include <string>
#include <vector>

namespace velloran {

struct LibraryVersion {
    std::string name, version;
};

/// As they run, not as they were built against where a library tells.
std::vector<LibraryVersion> LibraryVersions();

}  // namespace velloran
