#pragma once

// Sizes and resolutions of the pictures in a folder: whether a scan is regular.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "documents/measure/FolderWalk.h"

namespace velloran {

class Asker;

struct PageSize {
    std::uint32_t width = 0, height = 0;
    bool operator==(const PageSize&) const = default;
};

/// The value that most files share.
struct CommonValue {
    std::uint32_t value = 0, count = 0;
    double percent = 0;  // of all files
};

class FileStats {
 public:
    FileStats();

    /// A picture; a resolution is held in 16 bits.
    void Add(PageSize size, int dpi);

    std::uint32_t Count() const { return count_; }
    std::uint32_t MaxWidth() const { return maxWidth_; }
    std::uint32_t MinWidth() const { return minWidth_; }
    std::uint32_t MaxHeight() const { return maxHeight_; }
    std::uint32_t MinHeight() const { return minHeight_; }
    PageSize MaxArea() const { return maxAreaSize_; }
    PageSize MinArea() const { return minAreaSize_; }
    int MaxDpi() const { return maxDpi_; }
    int MinDpi() const { return minDpi_; }

    /// The most frequent value, the lowest of several, of more than two files; nothing where it
    /// is that of fewer than half of them.
    std::optional<CommonValue> CommonWidth() const { return CommonOf(widths_); }
    std::optional<CommonValue> CommonHeight() const { return CommonOf(heights_); }
    std::optional<CommonValue> CommonDpi() const { return CommonOf(dpis_); }

    /// The report, its lines ending in CR LF; without a picture the message that says so.
    std::u16string Report() const;

 private:
    using Histogram = std::vector<std::uint32_t>;
    static constexpr std::size_t kBins = 65536;  // wider pages count in no bin

    std::optional<CommonValue> CommonOf(const Histogram& histogram) const;

    std::uint32_t count_ = 0;
    std::uint64_t maxArea_ = 0, minArea_ = UINT64_MAX;
    PageSize maxAreaSize_, minAreaSize_;
    std::uint32_t maxWidth_ = 0, minWidth_ = UINT32_MAX, maxHeight_ = 0, minHeight_ = UINT32_MAX;
    std::uint16_t maxDpi_ = 0, minDpi_ = UINT16_MAX;
    Histogram widths_, heights_, dpis_;
};

struct StatsOutcome {
    std::u16string_view refusal;  // empty where the walk was made
    FileStats stats;
    std::size_t failures = 0;  // files and folders that could not be read, each told
    bool wasStopped = false;
};

/// Measures every picture by its head; no pixels are read. A file whose head tells nothing is told
/// to the asker and not counted.
StatsOutcome MeasureFolder(const FolderWalk& walk, Asker& asker);

}  // namespace velloran
