#pragma once

// Copying a file and its times.

#include <sys/stat.h>

#include <filesystem>
#include <optional>

#include "io/FileError.h"

namespace velloran {

/// Copies the bytes; the target appears whole or not at all. A source that cannot be read is a
/// kContent failure, a target that cannot be written a kStorage one.
bool CopyFileWhole(const std::filesystem::path& source, const std::filesystem::path& target,
                   FileError* error = nullptr);

/// Size and times of a file, or nothing.
std::optional<struct stat> ReadFileStatus(const std::filesystem::path& file);

/// Gives a file the times of access and of modification of a status.
bool SetFileTimes(const std::filesystem::path& file, const struct stat& status);

}  // namespace velloran
