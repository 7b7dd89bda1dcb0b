#include "documents/book/RowName.h"

#include <cstddef>

#include "text/Text.h"

namespace velloran {

namespace {

constexpr char16_t kByteBase = 0xDC00;

/// Bytes of the well-formed character at the front; 0 for none.
std::size_t CharacterLength(std::string_view bytes) {
    for (std::size_t length = 1; length <= 4 && length <= bytes.size(); ++length)
        if (IsUtf8(bytes.substr(0, length)))
            return length;
    return 0;
}

bool IsHigh(char16_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}

bool IsLow(char16_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

bool IsByte(char16_t unit) {
    return unit >= kByteBase + 0x80 && unit <= kByteBase + 0xFF;
}

}  // namespace

std::u16string TextOfName(std::string_view bytes) {
    if (IsUtf8(bytes))
        return ToUtf16(bytes);
    std::u16string text;
    while (!bytes.empty()) {
        const std::size_t length = CharacterLength(bytes);
        if (length == 0)
            text += static_cast<char16_t>(kByteBase + static_cast<unsigned char>(bytes.front()));
        else
            text += ToUtf16(bytes.substr(0, length));
        bytes.remove_prefix(length == 0 ? 1 : length);
    }
    return text;
}

std::string NameOfText(std::u16string_view text) {
    std::string bytes;
    std::size_t plain = 0;  // where the text begins that is not yet turned
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (IsHigh(text[i]) && i + 1 < text.size() && IsLow(text[i + 1])) {
            ++i;
        } else if (IsByte(text[i])) {
            bytes += ToUtf8(text.substr(plain, i - plain));
            bytes += static_cast<char>(text[i] - kByteBase);
            plain = i + 1;
        }
    }
    return bytes + ToUtf8(text.substr(plain));
}

bool IsOneLine(std::u16string_view text) {
    return text.find_first_of(std::u16string_view(u"\r\n\0", 3)) == std::u16string_view::npos;
}

bool IsInnerName(std::u16string_view text) {
    constexpr std::u16string_view kDividers = u"/\\";
    if (text.empty() || !IsOneLine(text) || kDividers.find(text.front()) != kDividers.npos ||
        (text.size() > 1 && text[1] == u':'))
        return false;
    while (!text.empty()) {
        const std::size_t end = text.find_first_of(kDividers);
        if (text.substr(0, end) == u"..")
            return false;
        text.remove_prefix(end == std::u16string_view::npos ? text.size() : end + 1);
    }
    return true;
}

}  // namespace velloran
