#pragma once

// Text inside the system is UTF-16; this is the border to everything else. Nothing here depends on
// the locale.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velloran {

/// Ill-formed UTF-8 becomes U+FFFD, as does an unpaired surrogate on the way back.
std::u16string ToUtf16(std::string_view utf8);
std::string ToUtf8(std::u16string_view text);
/// Whether the bytes are well-formed UTF-8.
bool IsUtf8(std::string_view bytes);

/// Compared without regard to case: ASCII, Latin-1, Greek and Cyrillic letters fold.
char16_t FoldCase(char16_t unit);
bool EqualIgnoringCase(std::u16string_view a, std::u16string_view b);
bool EqualIgnoringCase(std::string_view asciiA, std::string_view asciiB);

/// Lower-cases A to Z and the letters that FoldCase folds; bytes that are no UTF-8 stay.
std::string LowerCase(std::string_view utf8);

/// Decimal or 0x hexadecimal with an optional sign. Decimal must fit a signed 32-bit integer,
/// hexadecimal is 32 bits: 0xFFFFFFFF is -1. Nothing else may stand before or behind.
std::optional<std::int32_t> ParseInt32(std::string_view text);

}  // namespace velloran
