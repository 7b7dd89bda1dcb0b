#include "documents/measure/FileStats.h"

#include <fmt/format.h>

#include <algorithm>

#include "codecs/ImageInfo.h"
#include "documents/Asker.h"
#include "files/ImageFiles.h"
#include "text/Labels.h"
#include "text/NumberText.h"
#include "text/Text.h"

namespace velloran {

namespace {

constexpr std::u16string_view kLineEnd = u"\r\n";

void Count(std::vector<std::uint32_t>& histogram, std::uint32_t value) {
    if (value < histogram.size())
        ++histogram[value];
}

void AddLine(const Label& label, std::int64_t value, std::u16string& text) {
    text.append(label).append(DecimalText(value)).append(kLineEnd);
}

void AddSize(const Label& label, PageSize size, std::u16string& text) {
    text.append(label).append(DecimalText(size.width)).append(u" x ");
    text.append(DecimalText(size.height)).append(kLineEnd);
}

void AddCommon(const Label& label, const std::optional<CommonValue>& common, std::u16string& text) {
    if (!common)
        return;
    text.append(DecimalText(common->count)).append(label).append(DecimalText(common->value));
    text.append(labels::kStatsShare).append(ToUtf16(fmt::format("{:.2f}%", common->percent)));
    text.append(kLineEnd);
}

}  // namespace

FileStats::FileStats() : widths_(kBins), heights_(kBins), dpis_(kBins) {}

void FileStats::Add(PageSize size, int dpi) {
    ++count_;
    const std::uint64_t area = std::uint64_t{size.width} * size.height;
    if (area > maxArea_) {
        maxArea_ = area;
        maxAreaSize_ = size;
    }
    if (area < minArea_) {
        minArea_ = area;
        minAreaSize_ = size;
    }
    const auto dots = static_cast<std::uint16_t>(dpi);
    maxWidth_ = std::max(maxWidth_, size.width);
    minWidth_ = std::min(minWidth_, size.width);
    maxHeight_ = std::max(maxHeight_, size.height);
    minHeight_ = std::min(minHeight_, size.height);
    maxDpi_ = std::max(maxDpi_, dots);
    minDpi_ = std::min(minDpi_, dots);
    velloran::Count(widths_, size.width);
    velloran::Count(heights_, size.height);
    velloran::Count(dpis_, dots);
}

std::optional<CommonValue> FileStats::CommonOf(const Histogram& histogram) const {
    constexpr std::uint32_t kTooFew = 2;
    if (count_ <= kTooFew)
        return std::nullopt;
    const auto highest = std::ranges::max_element(histogram);  // the first of several
    if (std::uint64_t{*highest} * 2 < count_)
        return std::nullopt;
    return CommonValue{static_cast<std::uint32_t>(highest - histogram.begin()), *highest,
                       100.0 * *highest / count_};
}

std::u16string FileStats::Report() const {
    if (count_ == 0)
        return std::u16string(labels::kStatsNothing);
    std::u16string text;
    AddLine(labels::kStatsCount, count_, text);
    text += kLineEnd;
    AddLine(labels::kStatsMaxWidth, maxWidth_, text);
    AddLine(labels::kStatsMinWidth, minWidth_, text);
    AddCommon(labels::kStatsSameWidth, CommonWidth(), text);
    text += kLineEnd;
    AddLine(labels::kStatsMaxHeight, maxHeight_, text);
    AddLine(labels::kStatsMinHeight, minHeight_, text);
    AddCommon(labels::kStatsSameHeight, CommonHeight(), text);
    text += kLineEnd;
    AddSize(labels::kStatsMaxArea, maxAreaSize_, text);
    AddSize(labels::kStatsMinArea, minAreaSize_, text);
    text += kLineEnd;
    AddLine(labels::kStatsMaxDpi, maxDpi_, text);
    AddLine(labels::kStatsMinDpi, minDpi_, text);
    AddCommon(labels::kStatsSameDpi, CommonDpi(), text);
    return text;
}

StatsOutcome MeasureFolder(const FolderWalk& walk, Asker& asker) {
    StatsOutcome outcome;
    outcome.refusal = RefuseWalk(walk);
    if (!outcome.refusal.empty())
        return outcome;
    const WalkEnd end = WalkFiles(walk, asker, [&](const std::filesystem::path& path) {
        asker.ShowProgress({.path = path.native()});
        int type = kTypeUnknown;
        ImageInfo info;
        FileError error;
        if (ReadImageInfo(path, type, info, &error)) {
            outcome.stats.Add(
                {static_cast<std::uint32_t>(info.width), static_cast<std::uint32_t>(info.height)},
                info.xDpi);
            return;
        }
        ++outcome.failures;
        asker.TellFailure({.path = path.native(),
                           .message = labels::kLoadFailed,
                           .detail = error.detail,
                           .reason = error.reason});
    });
    outcome.failures += end.unreadableFolders;
    outcome.wasStopped = end.wasStopped;
    return outcome;
}

}  // namespace velloran
