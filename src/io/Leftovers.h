#pragma once

// Temporary files that a run left behind which was killed while it wrote. They carry names of one
// form and are locked as long as their writer lives, so that the next run can tell and remove them.

#include <filesystem>
#include <string_view>

namespace velloran {

/// Whether a name is one that temporary files are given.
bool IsTemporaryName(std::string_view name);

/// A new name of that form; short, so that it fits where the target's own name is as long as names
/// can be.
std::filesystem::path MakeTemporaryName(const std::filesystem::path& folder);

/// Locks an open temporary file until it is closed. False when another process holds it: one that
/// takes it for a leftover. A file system without locks gives true.
bool LockTemporary(int descriptor);

/// Removes the temporary files of a folder that nobody is writing any more; where the file system
/// has no locks, those that are older than a day. Gives their number.
int RemoveLeftovers(const std::filesystem::path& folder);

}  // namespace velloran
