#include "cli/TextWidth.h"

#include <fmt/format.h>

#include "text/Text.h"

namespace velloran::cli {

namespace {

bool IsWide(char16_t unit) {
    return (unit >= 0x1100 && unit <= 0x115F) || (unit >= 0x2E80 && unit <= 0xA4CF) ||
           (unit >= 0xAC00 && unit <= 0xD7A3) || (unit >= 0xD800 && unit <= 0xDBFF) ||
           (unit >= 0xF900 && unit <= 0xFAFF) || (unit >= 0xFE30 && unit <= 0xFE6F) ||
           (unit >= 0xFF00 && unit <= 0xFF60);
}

/// Marks that must not begin a line.
bool ClosesSomething(char16_t unit) {
    return std::u16string_view(u"\u3001\u3002\uFF0C\uFF1B\uFF1A\uFF09\u201D\uFF1F\uFF01,.;:)")
               .find(unit) != std::u16string_view::npos;
}

bool TurnsWriting(char16_t unit) {
    return unit == 0x200E || unit == 0x200F || (unit >= 0x202A && unit <= 0x202E) ||
           (unit >= 0x2066 && unit <= 0x2069);
}

/// Bytes of the well-formed character that the text begins with; 0 for none.
std::size_t CharacterLength(std::string_view text) {
    for (std::size_t length = 1; length <= 4 && length <= text.size(); ++length)
        if (IsUtf8(text.substr(0, length)))
            return length;
    return 0;
}

}  // namespace

std::size_t WidthOf(char16_t unit) {
    if (unit >= 0xDC00 && unit <= 0xDFFF)
        return 0;  // counted with its first half
    return IsWide(unit) ? 2 : 1;
}

std::size_t WidthOf(std::u16string_view text) {
    std::size_t width = 0;
    for (const char16_t unit : text)
        width += WidthOf(unit);
    return width;
}

std::u16string_view TailThatFits(std::u16string_view text, std::size_t columns) {
    std::size_t at = text.size(), used = 0;
    while (at > 0 && used + WidthOf(text[at - 1]) <= columns)
        used += WidthOf(text[--at]);
    if (at < text.size() && text[at] >= 0xDC00 && text[at] <= 0xDFFF)
        ++at;
    return text.substr(at);
}

std::vector<std::u16string> Wrapped(std::u16string_view text, std::size_t columns) {
    std::vector<std::u16string> lines;
    std::u16string line;
    while (!text.empty()) {
        // A piece is what no line end may cut: a word, or a wide character and what closes behind.
        std::size_t end = 1;
        while (end < text.size() && text[end] != u' ' &&
               (ClosesSomething(text[end]) || !(IsWide(text[end - 1]) || IsWide(text[end]))))
            ++end;
        const std::u16string_view piece = text.substr(0, end);
        if (!line.empty() && WidthOf(line) + WidthOf(piece) > columns) {
            lines.push_back(line);
            line.clear();
        }
        line += line.empty() && piece.front() == u' ' ? piece.substr(1) : piece;
        text.remove_prefix(end);
    }
    lines.push_back(line);
    return lines;
}

std::string WithoutControls(std::string_view text) {
    std::string shown;
    while (!text.empty()) {
        const std::size_t length = CharacterLength(text);
        const auto byte = static_cast<unsigned char>(text.front());
        const std::u16string unit =
            length == 0 ? std::u16string() : ToUtf16(text.substr(0, length));
        if (length == 0 || byte < 0x20 || byte == 0x7F)
            shown += fmt::format("\\x{:02X}", byte);
        else if ((unit[0] >= 0x80 && unit[0] < 0xA0) || TurnsWriting(unit[0]) ||
                 unit[0] == 0x2028 || unit[0] == 0x2029)
            shown += fmt::format("\\u{:04X}", static_cast<unsigned>(unit[0]));
        else
            shown += text.substr(0, length);
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return shown;
}

}  // namespace velloran::cli
