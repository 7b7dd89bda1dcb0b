#include "core/FreeMemory.h"

#include <sys/resource.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace velloran {

namespace {

constexpr std::int64_t kNoLimit = -1;
/// Groups of the older layout without a limit hold a number near the largest.
constexpr std::int64_t kAbsurd = std::int64_t{1} << 60;

std::string ReadText(const std::filesystem::path& file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

/// The number at the front, behind blanks; -1 for none.
std::int64_t NumberAt(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    std::int64_t number = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    return failure == std::errc{} ? number : -1;
}

/// The number behind a word that begins a line; 0 without.
std::int64_t NumberOf(std::string_view text, std::string_view word) {
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        const std::string_view line = text.substr(at, end - at);
        if (line.starts_with(word))
            return std::max<std::int64_t>(0, NumberAt(line.substr(word.size())));
        at = end + 1;
    }
    return 0;
}

/// The lesser of two, of which a negative one is no limit.
std::int64_t Lesser(std::int64_t a, std::int64_t b) {
    if (a < 0 || b < 0)
        return std::max(a, b);
    return std::min(a, b);
}

std::int64_t LeftInGroup(const std::filesystem::path& folder, const char* limit, const char* used) {
    return LeftInContainer(ReadText(folder / limit), ReadText(folder / used),
                           ReadText(folder / "memory.stat"));
}

/// The least from a group up to the root.
std::int64_t LeftInGroups(const std::filesystem::path& root, const std::string& group,
                          const char* limit, const char* used) {
    std::filesystem::path folder = root / std::filesystem::path(group).relative_path();
    std::int64_t least = kNoLimit;
    while (true) {
        least = Lesser(least, LeftInGroup(folder, limit, used));
        if (folder == root || folder == folder.parent_path())
            return least;
        folder = folder.parent_path();
    }
}

std::int64_t LeftInContainers() {
    const std::filesystem::path root = "/sys/fs/cgroup";
    std::ifstream groups("/proc/self/cgroup");
    std::int64_t least = kNoLimit;
    for (std::string line; std::getline(groups, line);) {
        if (line.starts_with("0::/"))
            least =
                Lesser(least, LeftInGroups(root, line.substr(3), "memory.max", "memory.current"));
        else if (const std::size_t at = line.find(":memory:"); at != std::string::npos)
            least = Lesser(least, LeftInGroups(root / "memory", line.substr(at + 8),
                                               "memory.limit_in_bytes", "memory.usage_in_bytes"));
    }
    return least;
}

std::int64_t LeftOfAddressSpace() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY)
        return kNoLimit;
    const std::int64_t used = NumberOf(ReadText("/proc/self/status"), "VmSize:") * 1024;
    return std::max<std::int64_t>(0, static_cast<std::int64_t>(limit.rlim_cur) - used);
}

}  // namespace

std::int64_t AvailableOfMemInfo(std::string_view memInfo) {
    return NumberOf(memInfo, "MemAvailable:") * 1024;
}

std::int64_t LeftInContainer(std::string_view limit, std::string_view used, std::string_view stat) {
    const std::int64_t most = NumberAt(limit);
    if (most < 0 || most >= kAbsurd)
        return kNoLimit;
    const std::int64_t kept =
        std::max(NumberOf(stat, "inactive_file"), NumberOf(stat, "total_inactive_file"));
    const std::int64_t held = std::max<std::int64_t>(0, NumberAt(used) - kept);
    return std::max<std::int64_t>(0, most - held);
}

std::int64_t FreeMemory() {
    const std::int64_t machine = AvailableOfMemInfo(ReadText("/proc/meminfo"));
    std::int64_t least = machine > 0 ? machine : kNoLimit;
    least = Lesser(least, LeftInContainers());
    least = Lesser(least, LeftOfAddressSpace());
    return std::max<std::int64_t>(0, least);
}

}  // namespace velloran
