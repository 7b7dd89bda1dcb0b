#pragma once

// The walker of a batch run: it hands on the files of a tree in the order in which they are going
// to be converted.

#include <cstddef>
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

    /// Files that the filter left out.
    std::size_t CountOtherTypes() const { return otherTypes_; }

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
    void OnOtherFiles(const std::filesystem::path&, std::size_t count) override {
        otherTypes_ += count;
    }

 private:
    std::size_t otherTypes_ = 0;
};

}  // namespace velloran
