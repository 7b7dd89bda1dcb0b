#include "files/ReplaceRules.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

#include "text/Labels.h"
#include "text/TextEncoding.h"

namespace velloran {

namespace {

constexpr std::size_t kLooked = std::size_t{1} << 18;  // bytes from the front

/// What stands under a name, as far as it matters.
struct Standing {
    bool isFree = false;  // nothing, an empty file, or no file that holds anything
    bool isFolder = false;
    bool isWhole = true;  // `bytes` are all there are
    std::string bytes;
};

std::string ReadFront(int descriptor) {
    std::string bytes(kLooked, '\0');
    std::size_t size = 0;
    while (size < bytes.size()) {
        const ssize_t count = ::read(descriptor, bytes.data() + size, bytes.size() - size);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        size += static_cast<std::size_t>(count);
    }
    bytes.resize(size);
    return bytes;
}

/// Nothing when it is there and cannot be read.
std::optional<Standing> LookAt(const std::filesystem::path& file) {
    Standing standing;
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0) {
        // What cannot be reached is told when it is written.
        standing.isFree = true;
        return standing;
    }
    standing.isFolder = S_ISDIR(status.st_mode);
    standing.isFree = !standing.isFolder && (!S_ISREG(status.st_mode) || status.st_size == 0);
    if (standing.isFree || standing.isFolder)
        return standing;
    const int descriptor = ::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        return std::nullopt;
    standing.bytes = ReadFront(descriptor);
    standing.isWhole = standing.bytes.size() < kLooked;
    ::close(descriptor);
    return standing;
}

bool IsLogRow(std::u16string_view text) {
    return std::any_of(
        std::begin(labels::kLogRows), std::end(labels::kLogRows), [text](const Label& row) {
            return row.In(Language::kChinese) == text || row.In(Language::kEnglish) == text;
        });
}

/// Path, one or two TABs, a text of the log table.
bool IsLogLine(std::u16string_view line) {
    const std::size_t tab = line.rfind(u'\t');
    return tab != std::u16string_view::npos && tab > 0 && IsLogRow(line.substr(tab + 1));
}

std::u16string FromLittleEndian(std::string_view bytes) {
    std::u16string text;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
        text += static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                      static_cast<unsigned char>(bytes[i + 1]) << 8);
    return text;
}

/// The last line may be cut, by a kill or by the limit of what was read.
bool IsOldLog(std::string_view bytes) {
    if (!bytes.starts_with("\xFF\xFE"))
        return false;
    const std::u16string text = FromLittleEndian(bytes.substr(2));
    constexpr std::u16string_view kEnd = u"\r\n";
    std::size_t lines = 0;
    for (std::size_t at = 0; at < text.size(); ++lines) {
        const std::size_t end = text.find(kEnd, at);
        if (end == std::u16string::npos)
            break;
        if (!IsLogLine(std::u16string_view(text).substr(at, end - at)))
            return false;
        at = end + kEnd.size();
    }
    return lines > 0;
}

std::u16string_view Trimmed(std::u16string_view line) {
    constexpr std::u16string_view kBlanks = u" \t\r\uFEFF";
    const std::size_t first = line.find_first_not_of(kBlanks);
    if (first == std::u16string_view::npos)
        return {};
    return line.substr(first, line.find_last_not_of(kBlanks) - first + 1);
}

/// Whether the text holds sections, keys and comments alone, and a section before any key.
bool IsProfileText(std::u16string_view text, bool isWhole) {
    bool hasSection = false;
    while (!text.empty()) {
        const std::size_t end = text.find(u'\n');
        if (end == std::u16string_view::npos && !isWhole)
            break;  // the cut line
        const std::u16string_view line = Trimmed(text.substr(0, end));
        text.remove_prefix(end == std::u16string_view::npos ? text.size() : end + 1);
        if (line.empty() || line.front() == u';' || line.front() == u'#')
            continue;
        const bool isSection = line.size() > 2 && line.front() == u'[' && line.back() == u']';
        if (!isSection && (!hasSection || line.find(u'=', 1) == std::u16string_view::npos))
            return false;
        hasSection = hasSection || isSection;
    }
    return hasSection;
}

}  // namespace

bool CanBeLog(const std::filesystem::path& file) {
    const std::optional<Standing> standing = LookAt(file);
    return standing && !standing->isFolder && (standing->isFree || IsOldLog(standing->bytes));
}

bool CanTakeSetting(const std::filesystem::path& file) {
    const std::optional<Standing> standing = LookAt(file);
    if (!standing || standing->isFolder)
        return false;
    const std::string& bytes = standing->bytes;
    return standing->isFree ||
           IsProfileText(DecodeText(DetectTextEncoding(bytes), bytes), standing->isWhole);
}

}  // namespace velloran
