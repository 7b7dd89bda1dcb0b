#pragma once

// Numbers as text, the same under every locale. Fractions are exact: the values are integers in
// units of the last decimal.

#include <cstdint>
#include <string>

namespace velloran {

/// "-12"
std::u16string DecimalText(std::int64_t value);
/// The 32 bits in capitals without leading zeros: -1 is "FFFFFFFF".
std::u16string HexText(std::int32_t value);
/// A value in tenths with one decimal: -5 is "-0.5".
std::u16string TenthsText(std::int32_t value);
/// A value in hundredths with two decimals: 1234 is "12.34".
std::u16string HundredthsText(std::int32_t value);

}  // namespace velloran
