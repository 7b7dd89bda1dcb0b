#include "text/Text.h"

#include <charconv>

namespace velloran {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

struct Utf8Step {
    char32_t point;
    std::size_t length;  // bytes taken, at least 1
    bool valid;
};

/// The code point at the start of `bytes`, which is not empty. An ill-formed sequence takes the
/// bytes that could have begun a code point, so that the one behind it is not swallowed.
Utf8Step DecodeUtf8(std::string_view bytes) {
    const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    const unsigned lead = byteAt(0);
    if (lead < 0x80)
        return {lead, 1, true};
    if (lead < 0xC2 || lead > 0xF4)
        return {kReplacement, 1, false};
    const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    // The second byte's range keeps out overlong forms, surrogates and what lies above U+10FFFF.
    unsigned low = lead == 0xE0 ? 0xA0U : lead == 0xF0 ? 0x90U : 0x80U;
    unsigned high = lead == 0xED ? 0x9FU : lead == 0xF4 ? 0x8FU : 0xBFU;
    char32_t point = lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if (i >= bytes.size() || byteAt(i) < low || byteAt(i) > high)
            return {kReplacement, i, false};
        point = (point << 6) | (byteAt(i) & 0x3FU);
        low = 0x80;
        high = 0xBF;
    }
    return {point, length, true};
}

void AppendUtf16(char32_t point, std::u16string& text) {
    if (point < 0x10000) {
        text += static_cast<char16_t>(point);
        return;
    }
    text += static_cast<char16_t>(0xD7C0 + (point >> 10));
    text += static_cast<char16_t>(0xDC00 + (point & 0x3FF));
}

void AppendUtf8(char32_t point, std::string& bytes) {
    const auto add = [&](char32_t value) { bytes += static_cast<char>(value); };
    if (point < 0x80) {
        add(point);
        return;
    }
    if (point < 0x800) {
        add(0xC0 | (point >> 6));
    } else if (point < 0x10000) {
        add(0xE0 | (point >> 12));
        add(0x80 | ((point >> 6) & 0x3F));
    } else {
        add(0xF0 | (point >> 18));
        add(0x80 | ((point >> 12) & 0x3F));
        add(0x80 | ((point >> 6) & 0x3F));
    }
    add(0x80 | (point & 0x3F));
}

bool IsHighSurrogate(char16_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}
bool IsLowSurrogate(char16_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

bool IsEven(char16_t unit) {
    return unit % 2 == 0;
}

/// Cyrillic beyond the two plain alphabets: capitals and small letters stand in pairs.
char16_t FoldCyrillicPair(char16_t unit) {
    if (unit == 0x04C0)
        return 0x04CF;
    if (unit >= 0x04C1 && unit <= 0x04CE)
        return IsEven(unit) ? unit : static_cast<char16_t>(unit + 1);
    const bool pairs = (unit >= 0x0460 && unit <= 0x0481) || (unit >= 0x048A && unit <= 0x04BF) ||
                       (unit >= 0x04D0 && unit <= 0x052F);
    return pairs && IsEven(unit) ? static_cast<char16_t>(unit + 1) : unit;
}

char16_t FoldGreek(char16_t unit) {
    if (unit >= 0x0391 && unit <= 0x03AB && unit != 0x03A2)
        return static_cast<char16_t>(unit + 0x20);
    switch (unit) {
        case 0x0386:
            return 0x03AC;
        case 0x0388:
            return 0x03AD;
        case 0x0389:
            return 0x03AE;
        case 0x038A:
            return 0x03AF;
        case 0x038C:
            return 0x03CC;
        case 0x038E:
            return 0x03CD;
        case 0x038F:
            return 0x03CE;
        default:
            return unit;
    }
}

template <typename Unit>
bool EqualFolded(std::basic_string_view<Unit> a, std::basic_string_view<Unit> b) {
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (FoldCase(static_cast<char16_t>(a[i])) != FoldCase(static_cast<char16_t>(b[i])))
            return false;
    }
    return true;
}

}  // namespace

std::u16string ToUtf16(std::string_view utf8) {
    std::u16string text;
    text.reserve(utf8.size());
    while (!utf8.empty()) {
        const Utf8Step step = DecodeUtf8(utf8);
        AppendUtf16(step.point, text);
        utf8.remove_prefix(step.length);
    }
    return text;
}

std::string ToUtf8(std::u16string_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t point = text[i];
        if (IsHighSurrogate(text[i]) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
            point = 0x10000 + ((point - 0xD800) << 10) + (text[i + 1] - 0xDC00U);
            ++i;
        } else if (IsHighSurrogate(text[i]) || IsLowSurrogate(text[i])) {
            point = kReplacement;
        }
        AppendUtf8(point, bytes);
    }
    return bytes;
}

bool IsUtf8(std::string_view bytes) {
    while (!bytes.empty()) {
        const Utf8Step step = DecodeUtf8(bytes);
        if (!step.valid)
            return false;
        bytes.remove_prefix(step.length);
    }
    return true;
}

char16_t FoldCase(char16_t unit) {
    if (unit < 0x80)
        return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 0x20) : unit;
    if (unit >= 0x00C0 && unit <= 0x00DE && unit != 0x00D7)
        return static_cast<char16_t>(unit + 0x20);
    if (unit >= 0x0386 && unit <= 0x03AB)
        return FoldGreek(unit);
    if (unit >= 0x0400 && unit <= 0x040F)
        return static_cast<char16_t>(unit + 0x50);
    if (unit >= 0x0410 && unit <= 0x042F)
        return static_cast<char16_t>(unit + 0x20);
    return unit >= 0x0460 && unit <= 0x052F ? FoldCyrillicPair(unit) : unit;
}

bool EqualIgnoringCase(std::u16string_view a, std::u16string_view b) {
    return EqualFolded(a, b);
}

bool EqualIgnoringCase(std::string_view asciiA, std::string_view asciiB) {
    if (asciiA.size() != asciiB.size())
        return false;
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    for (std::size_t i = 0; i < asciiA.size(); ++i) {
        if (lower(asciiA[i]) != lower(asciiB[i]))
            return false;
    }
    return true;
}

std::string LowerCase(std::string_view utf8) {
    std::string lower;
    lower.reserve(utf8.size());
    while (!utf8.empty()) {
        const Utf8Step step = DecodeUtf8(utf8);
        if (step.valid && step.point < 0x10000)
            AppendUtf8(FoldCase(static_cast<char16_t>(step.point)), lower);
        else
            lower += utf8.substr(0, step.length);
        utf8.remove_prefix(step.length);
    }
    return lower;
}

std::optional<std::int32_t> ParseInt32(std::string_view text) {
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+'))
        text.remove_prefix(1);
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (hexadecimal)
        text.remove_prefix(2);
    // Unsigned: a second sign is no digit then.
    std::uint32_t magnitude = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, magnitude, hexadecimal ? 16 : 10);
    if (error != std::errc() || stop != end)
        return std::nullopt;
    if (!hexadecimal && magnitude > (negative ? 0x80000000U : 0x7FFFFFFFU))
        return std::nullopt;
    return static_cast<std::int32_t>(negative ? 0U - magnitude : magnitude);
}

}  // namespace velloran
