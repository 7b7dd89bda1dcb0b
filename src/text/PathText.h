#pragma once

// Paths as text that can be shown, and back.

#include <filesystem>
#include <string>
#include <string_view>

namespace velloran {

/// Bytes that are no UTF-8 become U+FFFD.
std::u16string PathText(const std::filesystem::path& path);
std::string PathUtf8(const std::filesystem::path& path);
std::filesystem::path PathOf(std::u16string_view text);

}  // namespace velloran
