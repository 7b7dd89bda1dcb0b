#include "text/NumberText.h"

#include <array>
#include <charconv>

namespace velloran {

namespace {

template <typename Integer>
std::u16string Digits(Integer value, int base) {
    std::array<char, 24> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value, base).ptr;
    return {digits.data(), end};
}

std::u16string FractionText(std::int32_t value, std::int64_t unit) {
    const std::int64_t magnitude = value < 0 ? -std::int64_t{value} : value;
    // unit + the fraction begins with a 1 that holds the place of leading zeros.
    const std::u16string fraction = Digits(unit + magnitude % unit, 10).substr(1);
    return (value < 0 ? u"-" : u"") + Digits(magnitude / unit, 10) + u"." + fraction;
}

}  // namespace

std::u16string DecimalText(std::int64_t value) {
    return Digits(value, 10);
}

std::u16string HexText(std::int32_t value) {
    std::u16string text = Digits(static_cast<std::uint32_t>(value), 16);
    for (char16_t& digit : text) {
        if (digit >= u'a')
            digit = static_cast<char16_t>(digit - u'a' + u'A');
    }
    return text;
}

std::u16string TenthsText(std::int32_t value) {
    return FractionText(value, 10);
}

std::u16string HundredthsText(std::int32_t value) {
    return FractionText(value, 100);
}

}  // namespace velloran
