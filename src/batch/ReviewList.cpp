#include "batch/ReviewList.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <system_error>

#include "io/AtomicFile.h"

namespace velloran {

namespace {

constexpr int kMille = 1000;

std::string Escaped(std::string_view path) {
    std::string text;
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F || c == '\\')
            text += fmt::format("\\x{:02X}", byte);
        else
            text += c;
    }
    return text;
}

/// A whole line of a list: a path, the name of a finding and a number from 0 to 1.
bool IsLine(std::string_view line) {
    const std::size_t last = line.rfind('\t');
    if (last == line.npos || last == 0)
        return false;
    const std::size_t first = line.rfind('\t', last - 1);
    if (first == line.npos || !FindingOfName(line.substr(first + 1, last - first - 1)))
        return false;
    const std::string_view sure = line.substr(last + 1);
    return sure.size() == 5 && (sure.starts_with("0.") || sure == "1.000");
}

}  // namespace

void ReviewList::Add(std::string_view path, const FoundSure& sure) {
    for (std::size_t i = 0; i < sure.size(); ++i)
        if (sure[i])
            lines_.push_back({Escaped(path), static_cast<Finding>(i),
                              static_cast<int>(std::lround(*sure[i] * kMille))});
}

std::string ReviewList::Text() const {
    std::vector<const Line*> order;
    for (const Line& line : lines_)
        order.push_back(&line);
    std::stable_sort(order.begin(), order.end(),
                     [](const Line* a, const Line* b) { return a->sureMille < b->sureMille; });
    std::string text;
    for (const Line* line : order)
        text += fmt::format("{}\t{}\t{}.{:03}\n", line->path, NameOf(line->finding),
                            line->sureMille / kMille, line->sureMille % kMille);
    return text;
}

bool ReviewList::Write(const std::filesystem::path& file, FileError* error) const {
    AtomicFile out(file);
    const std::string text = Text();
    return out.Open(error) && (out.Write(text.data(), text.size()) || out.FailWrite(error)) &&
           out.Commit(error);
}

bool CanBeReview(const std::filesystem::path& file) {
    std::error_code ignored;
    const auto status = std::filesystem::status(file, ignored);
    if (!std::filesystem::exists(status))
        return true;
    if (!std::filesystem::is_regular_file(status))
        return false;
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(std::fopen(file.c_str(), "rbe"),
                                                                 &std::fclose);
    if (!stream)
        return false;
    constexpr std::size_t kLongestLine = 1 << 16;
    std::string start(kLongestLine, '\0');
    start.resize(std::fread(start.data(), 1, start.size(), stream.get()));
    const std::size_t end = start.find('\n');
    return start.empty() || (end != start.npos && IsLine(std::string_view(start).substr(0, end)));
}

}  // namespace velloran
