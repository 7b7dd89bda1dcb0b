#include "samples/TextFlow.h"

#include <algorithm>

namespace velloran::samples {

namespace {

constexpr std::u16string_view kClosingMarks = u"，。！？；：、…）";

bool IsClosingMark(char16_t character) {
    return kClosingMarks.find(character) != std::u16string_view::npos;
}

std::vector<FlowLine> FlowChinese(std::u16string_view text, const FlowStyle& style) {
    std::vector<FlowLine> lines;
    std::size_t next = 0;
    while (next < text.size()) {
        const double start = lines.empty() ? style.indent : 0;
        const std::size_t room =
            std::max<std::size_t>(1, static_cast<std::size_t>((style.width - start) / style.size));
        std::size_t count = std::min(room, text.size() - next);
        while (next + count < text.size() && IsClosingMark(text[next + count]))
            ++count;
        FlowLine line;
        line.text = text.substr(next, count);
        const bool full = count >= room;
        const double advance =
            full ? (style.width - start) / static_cast<double>(count) : style.size;
        for (std::size_t i = 0; i < count; ++i)
            line.starts.push_back(start + advance * static_cast<double>(i));
        line.end = start + advance * static_cast<double>(count);
        lines.push_back(std::move(line));
        next += count;
    }
    return lines;
}

FlowLine PlaceLatin(std::u16string text, double start, double spaceStretch, const FlowStyle& style,
                    FontBook& fonts) {
    FlowLine line;
    double x = start;
    for (const char16_t character : text) {
        line.starts.push_back(x);
        x += fonts.Get(style.font, character).advance * style.size;
        if (character == u' ')
            x += spaceStretch;
    }
    line.end = x;
    line.text = std::move(text);
    return line;
}

std::vector<FlowLine> FlowLatin(std::u16string_view text, const FlowStyle& style, FontBook& fonts) {
    std::vector<FlowLine> lines;
    std::u16string current;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(u' '), text.size());
        const std::u16string_view word = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        const double start = lines.empty() ? style.indent : 0;
        std::u16string longer = current;
        if (!longer.empty())
            longer += u' ';
        longer += word;
        const double room = style.width - start;
        if (current.empty() || fonts.TextWidth(style.font, longer) * style.size <= room) {
            current = std::move(longer);
            continue;
        }
        const auto spaces = std::count(current.begin(), current.end(), u' ');
        const double spare = room - fonts.TextWidth(style.font, current) * style.size;
        lines.push_back(PlaceLatin(
            current, start, spaces > 0 ? spare / static_cast<double>(spaces) : 0, style, fonts));
        current = word;
    }
    if (!current.empty())
        lines.push_back(PlaceLatin(current, lines.empty() ? style.indent : 0, 0, style, fonts));
    return lines;
}

}  // namespace

std::vector<FlowLine> FlowParagraph(std::u16string_view text, const FlowStyle& style,
                                    FontBook& fonts) {
    return style.language == Language::kChinese ? FlowChinese(text, style)
                                                : FlowLatin(text, style, fonts);
}

Point MarkShift(char16_t character, Font font, bool vertical, FontBook& fonts) {
    if (character != u'，' && character != u'。')
        return {};
    const Box box = fonts.Get(font, character).outline.GetBounds().Get();
    if (vertical)
        return {0.92 - box.right, -0.8 - box.top};
    return {0.1 - box.left, (character == u'。' ? 0.05 : 0.12) - box.bottom};
}

}  // namespace velloran::samples
