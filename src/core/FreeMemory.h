#pragma once

// How much memory this process may still take: the least of what the machine has free, what the
// limits of its container leave, and its own limit of address space.

#include <cstdint>
#include <string_view>

namespace velloran {

/// In bytes; 0 where nothing tells.
std::int64_t FreeMemory();

/// The bytes that /proc/meminfo, given as text, calls available; 0 without.
std::int64_t AvailableOfMemInfo(std::string_view memInfo);

/// What a container leaves: limit, use and memory.stat as its files hold them. What the system only
/// keeps of files it can give back counts as free. -1 for no limit.
std::int64_t LeftInContainer(std::string_view limit, std::string_view used, std::string_view stat);

}  // namespace velloran
