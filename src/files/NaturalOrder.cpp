#include "files/NaturalOrder.h"

#include <algorithm>
#include <cstdint>

#include "text/Text.h"

namespace velloran {

namespace {

constexpr char32_t kFirstStrayByte = 0x110000;  // behind the last code point

bool IsDigit(char byte) {
    return byte >= '0' && byte <= '9';
}

bool IsContinuation(char byte) {
    return (static_cast<std::uint8_t>(byte) & 0xC0) == 0x80;
}

/// Takes the first character off `text`: a code point, or a byte that begins none.
char32_t TakeCharacter(std::string_view& text) {
    const auto lead = static_cast<std::uint8_t>(text.front());
    const std::size_t length = lead < 0x80   ? 1
                               : lead < 0xC2 ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF5 ? 4
                                             : 0;
    const bool whole = length > 0 && length <= text.size() &&
                       std::all_of(text.begin() + 1, text.begin() + length, IsContinuation);
    if (!whole) {
        text.remove_prefix(1);
        return kFirstStrayByte + lead;
    }
    constexpr std::uint8_t kLeadBits[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
    char32_t code = lead & kLeadBits[length];
    for (std::size_t i = 1; i < length; ++i)
        code = code << 6 | (static_cast<std::uint8_t>(text[i]) & 0x3F);
    text.remove_prefix(length);
    return code < 0x10000 ? FoldCase(static_cast<char16_t>(code)) : code;
}

/// Takes a run of digits off `text`, without its leading zeros; "0" gives an empty number.
std::string_view TakeNumber(std::string_view& text) {
    const auto end = std::find_if_not(text.begin(), text.end(), IsDigit);
    std::string_view number = text.substr(0, static_cast<std::size_t>(end - text.begin()));
    text.remove_prefix(number.size());
    number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
    return number;
}

int CompareNumbers(std::string_view a, std::string_view b) {
    if (a.size() != b.size())
        return a.size() < b.size() ? -1 : 1;
    return a.compare(b);
}

}  // namespace

int CompareNatural(std::string_view utf8A, std::string_view utf8B) {
    std::string_view a = utf8A, b = utf8B;
    while (!a.empty() && !b.empty()) {
        if (IsDigit(a.front()) && IsDigit(b.front())) {
            if (const int order = CompareNumbers(TakeNumber(a), TakeNumber(b)); order != 0)
                return order;
            continue;
        }
        const char32_t charA = TakeCharacter(a), charB = TakeCharacter(b);
        if (charA != charB)
            return charA < charB ? -1 : 1;
    }
    if (a.empty() != b.empty())
        return a.empty() ? -1 : 1;
    return utf8A.compare(utf8B);
}

}  // namespace velloran
