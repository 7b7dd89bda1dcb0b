#pragma once

// Profile files on disk: settings of the program, named sets of parameters.

#include <filesystem>

namespace velloran {

class ProfileFile;
struct FileError;

/// Reads a file. A missing file is an empty profile and success. False, profile empty, with the
/// reason in `error` when it cannot be read, is larger than ProfileFile::kMaxBytes or has more than
/// kMaxLines lines.
bool LoadProfile(const std::filesystem::path& file, ProfileFile& profile,
                 FileError* error = nullptr);

/// Writes whole or not at all.
bool SaveProfile(const ProfileFile& profile, const std::filesystem::path& file,
                 FileError* error = nullptr);

}  // namespace velloran
