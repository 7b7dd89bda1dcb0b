#include "documents/rename/RenameJournal.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <span>

#include "io/AtomicFile.h"
#include "io/FileSource.h"

namespace velloran {

namespace {

namespace fs = std::filesystem;
using State = RenameJournal::State;
using Mode = RenameJournal::Mode;

constexpr std::string_view kHead = "velloran rename 1";
constexpr std::array<std::string_view, 3> kStates = {"running", "done", "undoing"};
constexpr std::array<std::string_view, 3> kModes = {"rename", "move", "copy"};
constexpr std::size_t kFields = 9;  // of a row
constexpr std::size_t kMostBytes = std::size_t{1} << 28;

/// Names may hold any byte but NUL and the slash: those that divide the record become %XX.
std::string Escaped(std::string_view name) {
    std::string text;
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte <= 0x20 || byte == 0x7F || c == '%')
            text += fmt::format("%{:02X}", byte);
        else
            text += c;
    }
    return text;
}

std::optional<std::string> Unescaped(std::string_view text) {
    std::string name;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            name += text[i];
            continue;
        }
        unsigned value = 0;
        if (i + 2 >= text.size() ||
            std::from_chars(text.data() + i + 1, text.data() + i + 3, value, 16).ptr !=
                text.data() + i + 3 ||
            value == 0)
            return std::nullopt;
        name += static_cast<char>(value);
        i += 2;
    }
    return name;
}

std::string_view NextPiece(std::string_view& text, char divider) {
    const std::size_t end = text.find(divider);
    const std::string_view piece = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return piece;
}

template <typename Number>
bool ReadNumber(std::string_view text, Number& number) {
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    return failure == std::errc() && end == text.data() + text.size();
}

bool ReadWord(std::string_view word, std::span<const std::string_view> words, int& place) {
    for (std::size_t i = 0; i < words.size(); ++i)
        if (words[i] == word) {
            place = static_cast<int>(i);
            return true;
        }
    return false;
}

/// A name that leads out of its folder is none.
bool IsPlainName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos;
}

std::optional<JournalRow> ParseRow(std::string_view line) {
    std::array<std::string_view, kFields> fields;
    for (std::string_view& field : fields)
        field = NextPiece(line, '\t');
    JournalRow row;
    int stood = 0;
    const auto source = Unescaped(fields[1]), temporary = Unescaped(fields[2]);
    const auto target = Unescaped(fields[3]);
    if (fields[0] != "row" || !line.empty() || !source || !temporary || !target ||
        !IsPlainName(*source) || !IsPlainName(*temporary) || !IsPlainName(*target) ||
        !ReadNumber(fields[4], row.mark.device) || !ReadNumber(fields[5], row.mark.number) ||
        !ReadNumber(fields[6], row.mark.size) || !ReadNumber(fields[7], row.mark.changed) ||
        !ReadNumber(fields[8], stood))
        return std::nullopt;
    row.source = *source;
    row.temporary = *temporary;
    row.target = *target;
    row.targetStood = stood != 0;
    return row;
}

}  // namespace

std::optional<FileMark> MarkOf(const fs::path& file) {
    struct stat status {};
    if (::lstat(file.c_str(), &status) != 0)
        return std::nullopt;
    constexpr std::int64_t kNanoseconds = 1'000'000'000;
    return FileMark{status.st_dev, status.st_ino, static_cast<std::uint64_t>(status.st_size),
                    status.st_mtim.tv_sec * kNanoseconds + status.st_mtim.tv_nsec};
}

std::string JournalText(const RenameJournal& journal) {
    std::string text =
        fmt::format("{}\nstate {}\nmode {}\nsource {}\ntarget {}\n", kHead,
                    kStates[static_cast<std::size_t>(journal.state)],
                    kModes[static_cast<std::size_t>(journal.mode)],
                    Escaped(journal.sourceFolder.native()), Escaped(journal.targetFolder.native()));
    for (const JournalRow& row : journal.rows)
        text +=
            fmt::format("row\t{}\t{}\t{}\t{}\t{}\t{}\t{}\t{}\n", Escaped(row.source),
                        Escaped(row.temporary), Escaped(row.target), row.mark.device,
                        row.mark.number, row.mark.size, row.mark.changed, row.targetStood ? 1 : 0);
    return text + fmt::format("end {}\n", journal.rows.size());
}

std::optional<RenameJournal> ParseJournal(std::string_view text) {
    RenameJournal journal;
    int state = 0, mode = 0;
    if (NextPiece(text, '\n') != kHead)
        return std::nullopt;
    const auto value = [&text](std::string_view key) {
        std::string_view line = NextPiece(text, '\n');
        return NextPiece(line, ' ') == key ? line : std::string_view();
    };
    if (!ReadWord(value("state"), kStates, state) || !ReadWord(value("mode"), kModes, mode))
        return std::nullopt;
    const auto source = Unescaped(value("source")), target = Unescaped(value("target"));
    if (!source || !target || !fs::path(*source).is_absolute() || !fs::path(*target).is_absolute())
        return std::nullopt;
    journal.state = static_cast<State>(state);
    journal.mode = static_cast<Mode>(mode);
    journal.sourceFolder = *source;
    journal.targetFolder = *target;
    while (text.starts_with("row\t")) {
        const std::optional<JournalRow> row = ParseRow(NextPiece(text, '\n'));
        if (!row)
            return std::nullopt;
        journal.rows.push_back(*row);
    }
    if (text != fmt::format("end {}\n", journal.rows.size()))
        return std::nullopt;
    return journal;
}

bool WriteJournal(const RenameJournal& journal, const fs::path& folder, FileError* error) {
    const std::string text = JournalText(journal);
    AtomicFile file(folder / kRenameJournalName);
    if (!file.Open(error))
        return false;
    file.Write(text.data(), text.size());
    return file.Commit(error);
}

JournalFound ReadJournal(const fs::path& folder, RenameJournal& journal) {
    const fs::path file = folder / kRenameJournalName;
    if (!MarkOf(file))
        return JournalFound::kNone;
    FileSource source;
    if (!source.Open(file) || source.Size() > kMostBytes)
        return JournalFound::kBroken;
    const auto bytes = source.AllBytes(nullptr);
    if (!bytes || bytes->size() != source.Size())
        return JournalFound::kBroken;
    std::optional<RenameJournal> parsed =
        ParseJournal({reinterpret_cast<const char*>(bytes->data()), bytes->size()});
    if (!parsed)
        return JournalFound::kBroken;
    journal = std::move(*parsed);
    return JournalFound::kRead;
}

void RemoveJournal(const fs::path& folder) {
    ::unlink((folder / kRenameJournalName).c_str());
}

}  // namespace velloran
