#pragma once

// One resolution for all pictures of a folder, without touching their pixels. A file is either
// wholly changed or as it was, whatever ends the run.

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "documents/measure/FolderWalk.h"

namespace velloran {

class Asker;

inline constexpr int kMostDpi = 8000;

struct DpiRequest {
    FolderWalk walk;
    int dpi = 0;                // 0 removes the resolution
    bool keepTimes = false;     // files keep their times
    std::filesystem::path log;  // of files that failed
};

struct DpiFailure {
    std::string path;
    std::u16string_view message;  // of the run log
    bool storage = false;         // could not be written: another try may help
};

struct DpiOutcome {
    std::u16string refusal;  // empty where the run was made
    std::size_t files = 0;   // that the walk found
    std::size_t changed = 0;
    std::vector<DpiFailure> failures;
    bool wasStopped = false;
};

/// Why a resolution is refused; empty where it is not.
std::u16string RefuseDpi(int dpi);

/// The run. Files whose content is of another type are passed over.
DpiOutcome SetFolderDpi(const DpiRequest& request, Asker& asker);

}  // namespace velloran
