#pragma once

// Real pictures for trials, kept beside the project and not in it. Tests that want them skip where
// the folder is absent. VELLORAN_DATA names another place.

#include <filesystem>

namespace velloran::test {

/// The folder that holds scans/, photos/ and depths/, or an empty path.
std::filesystem::path SharedData();

}  // namespace velloran::test
