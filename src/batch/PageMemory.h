#pragma once

// What a page of a run is going to take in memory, by the head of its file and what is done to it.

#include <cstdint>
#include <filesystem>

namespace velloran {

class CParaBlock;
struct ImageInfo;

/// Bytes at the peak of a page's conversion: the file, the page itself and the copies that the
/// steps make of it.
std::int64_t PageMemory(const ImageInfo& info, std::int64_t fileSize, const CParaBlock& block);

/// The same for a file; 0 for one whose head cannot be read.
std::int64_t PageMemory(const std::filesystem::path& file, const CParaBlock& block);

}  // namespace velloran
