#pragma once

// Which file a path leads to, by whatever way: its device and its number there.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>

namespace velloran {

struct FileIdentity {
    std::uint64_t device = 0, number = 0;
    bool operator==(const FileIdentity&) const = default;
};

/// A file that is there, with the time of its last change in nanoseconds since 1970.
struct StandingFile {
    FileIdentity identity;
    std::int64_t changed = 0;
};

/// Links are followed; nothing where the path leads to no file.
std::optional<StandingFile> FindFile(const std::filesystem::path& path);

}  // namespace velloran

template <>
struct std::hash<velloran::FileIdentity> {
    std::size_t operator()(const velloran::FileIdentity& identity) const noexcept {
        return std::hash<std::uint64_t>()(identity.number * 31 + identity.device);
    }
};
