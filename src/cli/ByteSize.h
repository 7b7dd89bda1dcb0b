#pragma once

// Sizes of memory as people write them.

#include <cstdint>
#include <optional>
#include <string_view>

namespace velloran::cli {

/// "500M", "2G", "1.5g", "65536": a number, with a letter K, M, G or T for powers of 1024 and a B
/// or iB behind it if wished. Nothing for what is none, not positive, or above 2^62.
std::optional<std::int64_t> ParseByteSize(std::string_view text);

}  // namespace velloran::cli
