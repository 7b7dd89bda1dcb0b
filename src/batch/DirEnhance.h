#pragma once

// The walker of a batch run: it hands on the files of a tree in the order in which they are going
// to be converted.

#include <filesystem>
#include <functional>
#include <system_error>

#include "files/SrchDir.h"

namespace velloran {

class CDirEnhance : public CSrchDir {
 public:
    /// Told each file; false ends the walk.
    std::function<bool(const std::filesystem::path&)> onFile;
    /// Told each folder, or rest of one, that cannot be listed.
    std::function<void(const std::filesystem::path&, const std::error_code&)> onUnreadable;

 protected:
    void OnFile(const std::filesystem::path& path, const FindData&) override {
        if (!onFile(path))
            Stop();
    }
    void OnFolderUnreadable(const std::filesystem::path& folder,
                            const std::error_code& reason) override {
        if (onUnreadable)
            onUnreadable(folder, reason);
    }
};

}  // namespace velloran
