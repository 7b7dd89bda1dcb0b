#include "text/ProfileFile.h"

#include <algorithm>
#include <set>

#include "text/NumberText.h"
#include "text/Text.h"

namespace velloran {

namespace {

bool IsBlank(char16_t unit) {
    return unit <= u' ';
}

std::u16string_view Trim(std::u16string_view text) {
    while (!text.empty() && IsBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && IsBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

bool IsQuoted(std::u16string_view text) {
    return text.size() >= 2 && text.front() == text.back() &&
           (text.front() == u'"' || text.front() == u'\'');
}

/// One line, without blanks at its ends: what a name or value can be.
std::u16string Clean(std::u16string_view text) {
    std::u16string clean(text);
    for (char16_t& unit : clean) {
        if (unit == u'\r' || unit == u'\n' || unit == u'\0')
            unit = u' ';
    }
    return std::u16string(Trim(clean));
}

/// A value whose ends would be lost on reading stands in quotation marks.
std::u16string ValueText(std::u16string_view value) {
    std::u16string text(value);
    std::replace_if(
        text.begin(), text.end(),
        [](char16_t unit) { return unit == u'\r' || unit == u'\n' || unit == u'\0'; }, u' ');
    if (Trim(text).size() != text.size() || IsQuoted(text))
        return u'"' + text + u'"';
    return text;
}

/// The name in a head. A bracket may stand in the name when one ends the line.
std::optional<std::u16string_view> HeadName(std::u16string_view trimmed) {
    if (!trimmed.starts_with(u'['))
        return std::nullopt;
    const std::size_t close = trimmed.ends_with(u']') ? trimmed.size() - 1 : trimmed.find(u']');
    if (close == std::u16string_view::npos || close == 0)
        return std::nullopt;
    return Trim(trimmed.substr(1, close - 1));
}

struct LineExtent {
    std::size_t length;     // bytes, with the end
    std::size_t endLength;  // bytes of the line end, 0 for an open last line
};

/// The first line of `bytes`, which is not empty. CR LF, LF and CR end lines.
LineExtent FirstLine(std::string_view bytes, TextEncoding encoding) {
    const bool wide = encoding == TextEncoding::kUtf16Le || encoding == TextEncoding::kUtf16Be;
    const std::size_t step = wide ? 2 : 1;
    const std::size_t low = encoding == TextEncoding::kUtf16Be ? 1 : 0;
    const auto isUnit = [&](std::size_t at, char wanted) {
        return at + step <= bytes.size() && bytes[at + low] == wanted &&
               (!wide || bytes[at + 1 - low] == '\0');
    };
    for (std::size_t at = 0; at + step <= bytes.size(); at += step) {
        if (isUnit(at, '\n'))
            return {at + step, step};
        if (isUnit(at, '\r')) {
            const std::size_t end = isUnit(at + step, '\n') ? 2 * step : step;
            return {at + end, end};
        }
    }
    return {bytes.size(), 0};
}

std::int32_t LeadingInt(std::u16string_view text) {
    while (!text.empty() && IsBlank(text.front()))
        text.remove_prefix(1);
    const bool negative = text.starts_with(u'-');
    if (negative || text.starts_with(u'+'))
        text.remove_prefix(1);
    const bool hexadecimal = text.starts_with(u"0x") || text.starts_with(u"0X");
    if (hexadecimal)
        text.remove_prefix(2);
    std::uint32_t value = 0;
    for (const char16_t unit : text) {
        const char16_t lower = FoldCase(unit);
        std::uint32_t digit = 16;
        if (unit >= u'0' && unit <= u'9')
            digit = unit - u'0';
        else if (lower >= u'a' && lower <= u'f')
            digit = lower - u'a' + 10U;
        if (digit >= (hexadecimal ? 16U : 10U))
            break;
        value = value * (hexadecimal ? 16U : 10U) + digit;
    }
    return static_cast<std::int32_t>(negative ? 0U - value : value);
}

std::u16string Folded(std::u16string_view text) {
    std::u16string folded(text);
    std::ranges::transform(folded, folded.begin(), FoldCase);
    return folded;
}

}  // namespace

void ProfileFile::Parse(std::string_view bytes) {
    encoding_ = DetectTextEncoding(bytes);
    lineEnd_ = u"\n";
    lines_.clear();
    bytes.remove_prefix(TextMark(encoding_).size());
    bool endFound = false;
    while (!bytes.empty() && lines_.size() < kMaxLines) {
        const LineExtent extent = FirstLine(bytes, encoding_);
        const std::string_view line = bytes.substr(0, extent.length);
        lines_.push_back(ReadLine(line, extent.endLength));
        if (!endFound && extent.endLength > 0) {
            endFound = true;
            lineEnd_ = DecodeText(encoding_, line.substr(line.size() - extent.endLength));
        }
        bytes.remove_prefix(extent.length);
    }
    if (!bytes.empty())
        lines_.push_back({LineKind::kOther, std::string(bytes), {}, {}});
}

std::string ProfileFile::ToBytes() const {
    std::string bytes(TextMark(encoding_));
    for (const Line& line : lines_)
        bytes += line.bytes;
    return bytes;
}

std::vector<std::u16string> ProfileFile::SectionNames() const {
    std::vector<std::u16string> names;
    std::set<std::u16string> known;
    for (const Line& line : lines_) {
        if (line.kind == LineKind::kHead && known.insert(Folded(line.name)).second)
            names.push_back(line.name);
    }
    return names;
}

bool ProfileFile::HasSection(std::u16string_view section) const {
    return FindHead(section).has_value();
}

bool ProfileFile::HasKeys(std::u16string_view section) const {
    const std::u16string wanted = Clean(section);
    bool inside = false;
    for (const Line& line : lines_) {
        if (line.kind == LineKind::kHead)
            inside = EqualIgnoringCase(line.name, wanted);
        else if (inside && line.kind == LineKind::kKey)
            return true;
    }
    return false;
}

std::optional<std::u16string> ProfileFile::GetString(std::u16string_view section,
                                                     std::u16string_view key) const {
    const std::optional<std::size_t> found = FindKey(section, key);
    if (!found)
        return std::nullopt;
    const std::u16string& value = lines_[*found].value;
    return IsQuoted(value) ? value.substr(1, value.size() - 2) : value;
}

std::vector<std::u16string> ProfileFile::KeyNames(std::u16string_view section) const {
    const std::u16string wanted = Clean(section);
    std::vector<std::u16string> names;
    bool inside = false;
    for (const Line& line : lines_) {
        if (line.kind == LineKind::kHead)
            inside = EqualIgnoringCase(line.name, wanted);
        const auto isSame = [&](const std::u16string& name) {
            return EqualIgnoringCase(name, line.name);
        };
        if (inside && line.kind == LineKind::kKey && std::ranges::none_of(names, isSame))
            names.push_back(line.name);
    }
    return names;
}

std::int32_t ProfileFile::GetInt(std::u16string_view section, std::u16string_view key,
                                 std::int32_t fallback) const {
    const std::optional<std::u16string> value = GetString(section, key);
    return value && !value->empty() ? LeadingInt(*value) : fallback;
}

void ProfileFile::SetString(std::u16string_view section, std::u16string_view key,
                            std::u16string_view value) {
    const std::u16string name = Clean(key);
    if (name.empty() || name.find(u'=') != std::u16string::npos ||
        std::u16string_view(u";#[").find(name.front()) != std::u16string_view::npos)
        return;
    const std::u16string text = ValueText(value);
    if (const std::optional<std::size_t> found = FindKey(section, name)) {
        ChangeValue(lines_[*found], text);
        return;
    }
    const std::optional<std::size_t> found = FindHead(section);
    const std::size_t head = found ? *found : AppendHead(section);
    std::size_t position = EndOfSection(head);
    while (position > head + 1 && lines_[position - 1].kind != LineKind::kKey)
        --position;
    InsertLine(position, name + u'=' + text);
}

void ProfileFile::SetInt(std::u16string_view section, std::u16string_view key, std::int32_t value) {
    SetString(section, key, DecimalText(value));
}

void ProfileFile::DeleteKey(std::u16string_view section, std::u16string_view key) {
    const std::u16string wantedSection = Clean(section);
    const std::u16string wantedKey = Clean(key);
    bool inside = false;
    std::erase_if(lines_, [&](const Line& line) {
        if (line.kind == LineKind::kHead)
            inside = EqualIgnoringCase(line.name, wantedSection);
        return inside && line.kind == LineKind::kKey && EqualIgnoringCase(line.name, wantedKey);
    });
}

void ProfileFile::DeleteSection(std::u16string_view section) {
    const std::u16string wanted = Clean(section);
    std::vector<Line> kept;
    for (std::size_t i = 0; i < lines_.size();) {
        if (lines_[i].kind != LineKind::kHead || !EqualIgnoringCase(lines_[i].name, wanted)) {
            kept.push_back(std::move(lines_[i++]));
            continue;
        }
        const std::size_t head = i;
        i = EndOfSection(head);
        if (i < lines_.size()) {
            while (i > head + 1 && lines_[i - 1].kind == LineKind::kComment)
                --i;
        }
    }
    lines_ = std::move(kept);
}

void ProfileFile::ReplaceSection(std::u16string_view section, std::span<const KeyAndValue> keys) {
    const std::optional<std::size_t> place = FindHead(section);
    DeleteSection(section);
    if (keys.empty())
        return;
    if (place && *place < lines_.size()) {
        InsertLine(*place, u"[" + Clean(section) + u"]");
        InsertLine(*place + 1, {});
    }
    for (const auto& [key, value] : keys)
        SetString(section, key, value);
}

ProfileFile::Line ProfileFile::ReadLine(std::string_view bytes, std::size_t endLength) const {
    const std::u16string text = DecodeText(encoding_, bytes.substr(0, bytes.size() - endLength));
    const std::u16string_view trimmed = Trim(text);
    Line line{LineKind::kOther, std::string(bytes), {}, {}};
    if (trimmed.empty()) {
        line.kind = LineKind::kBlank;
    } else if (trimmed.front() == u';' || trimmed.front() == u'#') {
        line.kind = LineKind::kComment;
    } else if (const auto name = HeadName(trimmed)) {
        line.kind = LineKind::kHead;
        line.name = Clean(*name);
    } else if (const std::size_t equals = trimmed.find(u'=');
               equals != std::u16string_view::npos && equals > 0 && trimmed.front() != u'[') {
        line.kind = LineKind::kKey;
        line.name = Clean(trimmed.substr(0, equals));
        line.value = Trim(trimmed.substr(equals + 1));
    }
    return line;
}

ProfileFile::Line ProfileFile::NewLine(std::u16string_view text) const {
    const std::u16string end(lineEnd_);
    const std::string bytes = EncodeText(encoding_, std::u16string(text) + end);
    return ReadLine(bytes, EncodeText(encoding_, end).size());
}

std::optional<std::size_t> ProfileFile::FindHead(std::u16string_view section) const {
    const std::u16string wanted = Clean(section);
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        if (lines_[i].kind == LineKind::kHead && EqualIgnoringCase(lines_[i].name, wanted))
            return i;
    }
    return std::nullopt;
}

std::optional<std::size_t> ProfileFile::FindKey(std::u16string_view section,
                                                std::u16string_view key) const {
    const std::u16string wantedSection = Clean(section);
    const std::u16string wantedKey = Clean(key);
    bool inside = false;
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        const Line& line = lines_[i];
        if (line.kind == LineKind::kHead)
            inside = EqualIgnoringCase(line.name, wantedSection);
        else if (inside && line.kind == LineKind::kKey && EqualIgnoringCase(line.name, wantedKey))
            return i;
    }
    return std::nullopt;
}

std::size_t ProfileFile::EndOfSection(std::size_t head) const {
    std::size_t end = head + 1;
    while (end < lines_.size() && lines_[end].kind != LineKind::kHead)
        ++end;
    return end;
}

void ProfileFile::ChangeValue(Line& line, std::u16string_view value) const {
    if (line.value == value)
        return;
    // Blanks around the equals sign and behind the value stay.
    const std::u16string text = DecodeText(encoding_, line.bytes);
    const std::size_t equals = text.find(u'=');
    std::size_t begin = equals + 1;
    while (!line.value.empty() && IsBlank(text[begin]))
        ++begin;
    const std::u16string changed =
        text.substr(0, begin) + std::u16string(value) + text.substr(begin + line.value.size());
    line.bytes = EncodeText(encoding_, changed);
    line.value = value;
}

void ProfileFile::InsertLine(std::size_t position, std::u16string_view text) {
    if (position > 0) {
        // A last line that the file left open gets its end now.
        std::string& before = lines_[position - 1].bytes;
        if (FirstLine(before, encoding_).endLength == 0) {
            if (encoding_ == TextEncoding::kUtf16Le || encoding_ == TextEncoding::kUtf16Be)
                before.resize(before.size() / 2 * 2);
            before += EncodeText(encoding_, lineEnd_);
        }
    }
    lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(position), NewLine(text));
}

std::size_t ProfileFile::AppendHead(std::u16string_view section) {
    if (!lines_.empty() && lines_.back().kind != LineKind::kBlank)
        InsertLine(lines_.size(), {});
    InsertLine(lines_.size(), u"[" + Clean(section) + u"]");
    return lines_.size() - 1;
}

}  // namespace velloran
