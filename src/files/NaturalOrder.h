#pragma once

// The order in which people expect numbered pages: page2 before page10. It is the same on every
// machine, whatever the locale.

#include <filesystem>
#include <string_view>

namespace velloran {

/// Negative, 0 or positive. Runs of the digits 0 to 9 compare by their value, other characters by
/// code point, ignoring case; bytes that are no UTF-8 come behind all characters. Names that are
/// equal so far compare by their bytes, so that 0 means the same bytes.
int CompareNatural(std::string_view utf8A, std::string_view utf8B);

/// CompareNatural as an order of names or paths.
struct NaturalLess {
    bool operator()(const std::filesystem::path& a, const std::filesystem::path& b) const {
        return CompareNatural(a.native(), b.native()) < 0;
    }
};

}  // namespace velloran
