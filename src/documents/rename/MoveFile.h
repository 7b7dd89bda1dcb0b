#pragma once

// One file to another name, which nobody else has.

#include <filesystem>

#include "io/FileError.h"

namespace velloran {

enum class MoveResult { kMoved, kTaken, kFailed };

/// Moves a file, a link itself and not what it leads to. With `replace` a file of that name goes;
/// without it kTaken where one is. Between disks the bytes are copied whole, with their times,
/// before the source is deleted.
MoveResult MoveOneFile(const std::filesystem::path& from, const std::filesystem::path& to,
                       bool replace, FileError* error);

/// Whether two files hold the same bytes.
bool HaveSameBytes(const std::filesystem::path& a, const std::filesystem::path& b);

}  // namespace velloran
