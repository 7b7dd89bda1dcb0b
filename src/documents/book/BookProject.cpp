#include "documents/book/BookProject.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <utility>

#include "documents/book/RowName.h"
#include "params/ParaTable.h"
#include "params/TargetRule.h"
#include "text/NumberText.h"
#include "text/Text.h"
#include "text/TextEncoding.h"

namespace velloran {

namespace {

struct KeyRow {
    std::u16string_view name;
    ProjectKey key;
};
/// Sorted by name.
constexpr KeyRow kKeys[] = {
    {u"iCurItem", ProjectKey::kCurrent},     {u"m_bRename", ProjectKey::kRename},
    {u"m_iDigits", ProjectKey::kDigits},     {u"m_iExt", ProjectKey::kExt},
    {u"m_iStart", ProjectKey::kStart},       {u"m_iStep", ProjectKey::kStep},
    {u"m_iViewType", ProjectKey::kViewType}, {u"m_iZoom", ProjectKey::kZoom},
    {u"m_strPostFix", ProjectKey::kPostfix}, {u"m_strPrefix", ProjectKey::kPrefix},
    {u"m_strTgt", ProjectKey::kTarget},
};
static_assert(std::ranges::is_sorted(kKeys, {}, &KeyRow::name));

struct NamedPara {
    std::u16string name;
    int index = 0;
};

/// The names of the parameters, in the order of the table and in that of the alphabet.
struct ParaNames {
    std::array<std::u16string, kParaCount> byIndex;
    std::vector<NamedPara> sorted;

    ParaNames() {
        for (int i = 0; i < kParaCount; ++i) {
            byIndex[static_cast<std::size_t>(i)] = ToUtf16(ParaRowOf(i).name);
            sorted.push_back({byIndex[static_cast<std::size_t>(i)], i});
        }
        std::ranges::sort(sorted, {}, &NamedPara::name);
    }
    /// The index of a name, -1 for none. Files hold them in the order of the table, so that the
    /// next one behind the last is most often right.
    int Find(std::u16string_view name, int last) const {
        if (last + 1 < kParaCount && byIndex[static_cast<std::size_t>(last) + 1] == name)
            return last + 1;
        const auto found = std::ranges::lower_bound(
            sorted, name, {},
            [](const NamedPara& para) -> std::u16string_view { return para.name; });
        return found != sorted.end() && found->name == name ? found->index : -1;
    }
};

const ParaNames& Names() {
    static const ParaNames names;
    return names;
}

std::u16string_view Trimmed(std::u16string_view text) {
    while (!text.empty() && (text.front() == u' ' || text.front() == u'\t'))
        text.remove_prefix(1);
    while (!text.empty() && (text.back() == u' ' || text.back() == u'\t'))
        text.remove_suffix(1);
    return text;
}

/// Decimal with a sign; what follows the digits is ignored; wraps at 32 bits.
std::int32_t ReadDecimal(std::u16string_view text) {
    text = Trimmed(text);
    const bool negative = !text.empty() && text.front() == u'-';
    if (!text.empty() && (text.front() == u'-' || text.front() == u'+'))
        text.remove_prefix(1);
    std::uint32_t value = 0;
    for (const char16_t unit : text) {
        if (unit < u'0' || unit > u'9')
            break;
        value = value * 10 + static_cast<std::uint32_t>(unit - u'0');
    }
    return static_cast<std::int32_t>(negative ? 0U - value : value);
}

/// A row's number: digits alone, at least 1; 0 for anything else, and for what no file numbers.
std::uint64_t ReadRowNumber(std::u16string_view text) {
    constexpr std::size_t kMostDigits = 18;
    if (text.empty() || text.size() > kMostDigits)
        return 0;
    std::uint64_t value = 0;
    for (const char16_t unit : text) {
        if (unit < u'0' || unit > u'9')
            return 0;
        value = value * 10 + static_cast<std::uint64_t>(unit - u'0');
    }
    return value;
}

/// The text of a file. The usual form is copied in one piece.
std::u16string TextOfBytes(std::string_view bytes) {
    const TextEncoding encoding = DetectTextEncoding(bytes);
    bytes.remove_prefix(TextMark(encoding).size());
    if (encoding != TextEncoding::kUtf16Le || std::endian::native != std::endian::little)
        return DecodeText(encoding, bytes);
    std::u16string text(bytes.size() / 2, u'\0');
    std::memcpy(text.data(), bytes.data(), text.size() * 2);
    return text;
}

class Parser {
 public:
    Parser(const std::filesystem::path& source, const PictureExists& exists) : exists_(exists) {
        project_.source = source;
    }

    std::optional<BookProject> Parse(std::u16string_view text) {
        while (!text.empty()) {
            const std::size_t end = text.find(u'\n');
            std::u16string_view line = text.substr(0, end);
            text.remove_prefix(end == std::u16string_view::npos ? text.size() : end + 1);
            if (line.ends_with(u'\r'))
                line.remove_suffix(1);
            ReadLine(line);
        }
        if (!hasHead_)
            return std::nullopt;
        project_.ext = PackTargetRule(UnpackTargetRule(project_.ext));
        const auto last = static_cast<std::int32_t>(project_.rows.size()) - 1;
        project_.current = std::clamp(project_.current, -1, last);
        return std::move(project_);
    }

 private:
    enum class Section { kNone, kProject, kRow };

    void ReadLine(std::u16string_view line) {
        if (line.starts_with(u'[')) {
            ReadHead(line);
            return;
        }
        const std::size_t equals = line.find(u'=');
        if (equals == std::u16string_view::npos || section_ == Section::kNone)
            return;
        const std::u16string_view key = line.substr(0, equals), value = line.substr(equals + 1);
        if (section_ == Section::kProject)
            ReadProjectKey(key, value);
        else
            ReadPara(Trimmed(key), Trimmed(value));
    }

    void ReadHead(std::u16string_view line) {
        section_ = Section::kNone;
        if (line == u"[Project]") {
            section_ = Section::kProject;
            hasHead_ = true;
            return;
        }
        if (!line.starts_with(u"[P_") || !line.ends_with(u']'))
            return;
        const std::uint64_t number = ReadRowNumber(line.substr(3, line.size() - 4));
        if (number == 0)
            return;
        if (!std::exchange(isSorted_, true))
            std::ranges::stable_sort(numbers_, {}, &NumberedRow::number);
        const auto found = std::ranges::lower_bound(numbers_, number, {}, &NumberedRow::number);
        if (found == numbers_.end() || found->number != number)
            return;
        section_ = Section::kRow;
        row_ = found->row;
        lastPara_ = -1;
    }

    void ReadProjectKey(std::u16string_view key, std::u16string_view value) {
        if (key.starts_with(u"P_")) {
            if (const std::uint64_t number = ReadRowNumber(key.substr(2)); number > 0)
                AddRow(number, value);
            return;
        }
        value = Trimmed(value);
        const std::optional<ProjectKey> known = FindProjectKey(Trimmed(key));
        if (!known || value.empty())
            return;
        if (std::u16string* text = TextOf(project_, *known))
            *text = value;
        else
            *NumberOf(project_, *known) = ReadDecimal(value);
    }

    void AddRow(std::uint64_t number, std::u16string_view value) {
        if (!IsInnerName(value)) {
            project_.refused.emplace_back(value);
            return;
        }
        std::string name = NameOfText(value);
        const std::string asWritten = name;
        std::ranges::replace(name, '\\', '/');
        if (!exists_(name)) {
            // A backslash may be part of the name itself.
            if (name == asWritten || !exists_(asWritten)) {
                project_.missing.push_back(name);
                return;
            }
            name = asWritten;
        }
        numbers_.push_back({number, project_.rows.size()});
        isSorted_ = false;
        project_.rows.push_back({std::move(name), {}, defaults_});
    }

    void ReadPara(std::u16string_view key, std::u16string_view value) {
        const int index = Names().Find(key, lastPara_);
        if (index < 0)
            return;
        lastPara_ = index;
        if (!value.empty())
            project_.rows[row_].values[static_cast<std::size_t>(index)] = ReadDecimal(value);
    }

    struct NumberedRow {
        std::uint64_t number = 0;
        std::size_t row = 0;
    };

    const PictureExists& exists_;
    BookProject project_;
    const ParaValues defaults_ = DefaultParaValues();
    Section section_ = Section::kNone;
    bool hasHead_ = false, isSorted_ = true;
    std::vector<NumberedRow> numbers_;
    std::size_t row_ = 0;
    int lastPara_ = -1;
};

class Writer {
 public:
    void Line(std::u16string_view key, std::u16string_view value) {
        text_.append(key).append(u"=").append(value).append(u"\r\n");
    }
    void Line(std::u16string_view key, std::int64_t value) {
        text_.append(key).append(u"=");
        Number(value);
        text_.append(u"\r\n");
    }
    void Raw(std::u16string_view text) { text_.append(text); }
    void Number(std::int64_t value) { text_.append(DecimalText(value)); }

    std::string Bytes() const {
        std::string bytes(TextMark(TextEncoding::kUtf16Le));
        if constexpr (std::endian::native == std::endian::little)
            bytes.append(reinterpret_cast<const char*>(text_.data()), text_.size() * 2);
        else
            bytes += EncodeText(TextEncoding::kUtf16Le, text_);
        return bytes;
    }

 private:
    std::u16string text_;
};

std::u16string RowText(const std::string& name) {
    std::u16string text = TextOfName(name);
    std::ranges::replace(text, u'/', u'\\');
    return text;
}

void WriteValues(const BookRow& row, std::size_t number, const ParaValues& defaults,
                 Writer& writer) {
    if (row.values == defaults)
        return;
    writer.Raw(u"[P_");
    writer.Number(static_cast<std::int64_t>(number));
    writer.Raw(u"]\r\n");
    for (std::size_t i = 0; i < defaults.size(); ++i)
        if (row.values[i] != defaults[i])
            writer.Line(Names().byIndex[i], row.values[i]);
}

}  // namespace

std::optional<ProjectKey> FindProjectKey(std::u16string_view key) {
    const auto* const found = std::ranges::lower_bound(kKeys, key, {}, &KeyRow::name);
    if (found == std::end(kKeys) || found->name != key)
        return std::nullopt;
    return found->key;
}

std::u16string* TextOf(BookProject& project, ProjectKey key) {
    switch (key) {
        case ProjectKey::kTarget:
            return &project.target;
        case ProjectKey::kPrefix:
            return &project.prefix;
        case ProjectKey::kPostfix:
            return &project.postfix;
        default:
            return nullptr;
    }
}

std::int32_t* NumberOf(BookProject& project, ProjectKey key) {
    switch (key) {
        case ProjectKey::kViewType:
            return &project.viewType;
        case ProjectKey::kZoom:
            return &project.zoom;
        case ProjectKey::kRename:
            return &project.rename;
        case ProjectKey::kDigits:
            return &project.digits;
        case ProjectKey::kStart:
            return &project.start;
        case ProjectKey::kStep:
            return &project.step;
        case ProjectKey::kExt:
            return &project.ext;
        case ProjectKey::kCurrent:
            return &project.current;
        default:
            return nullptr;
    }
}

std::string ProjectBytes(const BookProject& project) {
    Writer writer;
    writer.Raw(u"[Project]\r\n");
    writer.Line(u"m_strTgt", project.target);
    writer.Line(u"m_strPrefix", project.prefix);
    writer.Line(u"m_strPostFix", project.postfix);
    writer.Line(u"m_iViewType", project.viewType);
    writer.Line(u"m_iZoom", project.zoom);
    writer.Line(u"m_bRename", project.rename);
    writer.Line(u"m_iDigits", project.digits);
    writer.Line(u"m_iStart", project.start);
    writer.Line(u"m_iStep", project.step);
    writer.Line(u"m_iExt", project.ext);
    writer.Line(u"iCurItem", project.current);
    for (std::size_t i = 0; i < project.rows.size(); ++i) {
        writer.Raw(u"P_");
        writer.Number(static_cast<std::int64_t>(i) + 1);
        writer.Line(u"", RowText(project.rows[i].source));
    }
    const ParaValues defaults = DefaultParaValues();
    for (std::size_t i = 0; i < project.rows.size(); ++i)
        WriteValues(project.rows[i], i + 1, defaults, writer);
    return writer.Bytes();
}

std::optional<BookProject> ParseProject(std::string_view bytes, const std::filesystem::path& source,
                                        const PictureExists& exists) {
    return Parser(source, exists).Parse(TextOfBytes(bytes));
}

}  // namespace velloran
