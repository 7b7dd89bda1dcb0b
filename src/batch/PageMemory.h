#pragma once

// What a page of a run is going to take in memory, by the head of its file and what is done to it.

#include <cstdint>
#include <filesystem>

namespace velloran {

class ByteSource;
struct ImageInfo;
struct Settings;

/// Bytes at the peak of a page's conversion: the file, the page itself and the copies that the
/// steps make of it.
std::int64_t PageMemory(const ImageInfo& info, std::int64_t fileSize, const Settings& settings);

/// The same for an open file; 0 for one whose head cannot be read.
std::int64_t PageMemory(ByteSource& source, const std::filesystem::path& name,
                        const Settings& settings);

}  // namespace velloran
