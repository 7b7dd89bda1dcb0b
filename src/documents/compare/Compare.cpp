#include "documents/compare/Compare.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <new>
#include <optional>
#include <system_error>

#include "core/GrayDepth.h"
#include "core/StepContext.h"
#include "files/FileIdentity.h"
#include "files/ImageFiles.h"
#include "imaging/Differences.h"
#include "imaging/QualityIndex.h"
#include "reduce/CheckGray.h"
#include "text/DocumentLabels.h"
#include "text/Labels.h"
#include "text/PathText.h"
#include "text/Text.h"

namespace velloran {

namespace {

namespace fs = std::filesystem;

constexpr int kLogOutOfMemoryRow = 6;

PairRefusal Refuse(const Label& message, const fs::path& path = {}, FileError error = {}) {
    return {message, path.native(), std::move(error), false};
}

PairRefusal RefuseUsage(const Label& message, const fs::path& path = {}) {
    return {message, path.native(), {}, true};
}

bool AreOneFile(const fs::path& first, const fs::path& second) {
    const auto a = FindFile(first), b = FindFile(second);
    return EqualIgnoringCase(PathText(first), PathText(second)) && a && b &&
           a->identity == b->identity;
}

std::optional<PairRefusal> LoadOne(const fs::path& file, CDibImage& image) {
    FileError error;
    if (!LoadImageFile(file, image, &error))
        return Refuse(labels::kCompareUnreadable, file, std::move(error));
    if (CheckGray(image, kGrayStrict) == 0)
        return Refuse(labels::kLogRows[kLogOutOfMemoryRow], file);
    return std::nullopt;
}

/// Values by channel in the order in which they are shown, each through `form`.
template <typename Form>
std::string Joined(const DiffStats& stats, Form&& form) {
    std::string text;
    for (int shown = 0; shown < stats.channels; ++shown) {
        const auto channel = static_cast<std::size_t>(stats.channels - 1 - shown);
        text += (shown == 0 ? "" : "/") + form(channel);
    }
    return text;
}

std::string Decimals(const DiffStats& stats, double value) {
    return fmt::format("{:.{}f}", value, stats.channels == 1 ? 4 : 2);
}

}  // namespace

PairRefusal LoadPair(const fs::path& first, const fs::path& second, bool keepsDepth,
                     CDibImage& image1, CDibImage& image2) {
    if (first.empty() || second.empty())
        return RefuseUsage(labels::kCompareChooseFirst);
    if (AreOneFile(first, second))
        return RefuseUsage(labels::kCompareSameFile, second);
    for (const fs::path* file : {&first, &second}) {
        std::error_code ignored;
        if (!fs::exists(*file, ignored))
            return Refuse(labels::kCompareMissing, *file);
    }
    if (std::optional<PairRefusal> refusal = LoadOne(first, image1))
        return std::move(*refusal);
    if (std::optional<PairRefusal> refusal = LoadOne(second, image2))
        return std::move(*refusal);
    if (image1.GetWidth() != image2.GetWidth() || image1.GetHeight() != image2.GetHeight())
        return Refuse(labels::kCompareSizes);
    if (image1.GetBpp() == image2.GetBpp())
        return {};
    if (keepsDepth)
        return Refuse(labels::kCompareDepths);
    for (CDibImage* image : {&image1, &image2})
        if (image->GetBpp() < 24 && ConvertToRgb(*image) == 0)
            return Refuse(labels::kLogRows[kLogOutOfMemoryRow]);
    if (image1.GetBpp() != image2.GetBpp())
        return Refuse(labels::kCompareChannels);
    return {};
}

bool ComputeDiff(const CDibImage& image1, const CDibImage& image2, bool withSimilarity,
                 DiffStats& stats) try {
    const ConstPlaneView a = ViewOf(image1), b = ViewOf(image2);
    const DifferenceCounts counts = CountDifferences(a, b);
    stats = {};
    stats.width = a.width;
    stats.height = a.height;
    stats.channels = a.channels;
    stats.levels = counts.levels;
    stats.differentPixels = counts.differentPixels;
    const auto different = static_cast<double>(counts.differentPixels);
    for (std::size_t c = 0; c < static_cast<std::size_t>(a.channels); ++c) {
        stats.equalSamples[c] = std::exchange(stats.levels[c][0], 0);
        std::uint64_t sum = 0, squares = 0;
        for (std::uint64_t level = 0; level < 256; ++level) {
            sum += level * stats.levels[c][level];
            squares += level * level * stats.levels[c][level];
            if (stats.levels[c][level] > 0)
                stats.maxima[c] = static_cast<int>(level);
        }
        if (counts.differentPixels == 0)
            continue;
        const double mean = static_cast<double>(sum) / different;
        stats.means[c] = mean;
        stats.deviations[c] =
            std::sqrt(std::abs(static_cast<double>(squares) / different - mean * mean));
        if (withSimilarity)
            stats.similarity[c] = static_cast<float>(QualityIndex(a, b, static_cast<int>(c)));
    }
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

bool BuildDiffImage(const CDibImage& image1, const CDibImage& image2, CDibImage& out) {
    if (out.Create(static_cast<std::uint32_t>(image1.GetWidth()),
                   static_cast<std::uint32_t>(image1.GetHeight()),
                   static_cast<std::uint32_t>(image1.GetBpp()), 0) == nullptr)
        return false;
    if (image1.GetBpp() == 8)
        out.SetGrayPalette();
    out.SetXDpi(image1.GetXDpi());
    out.SetYDpi(image1.GetYDpi());
    WriteDifferences(ViewOf(image1), ViewOf(image2), ViewOf(out));
    return true;
}

std::string DifferentText(const DiffStats& stats) {
    return fmt::format("{}, {:.2f}%", stats.differentPixels, stats.PercentDifferent());
}

std::string MaximaText(const DiffStats& stats) {
    return Joined(stats, [&](std::size_t c) { return std::to_string(stats.maxima[c]); });
}

std::string MeansText(const DiffStats& stats) {
    return stats.IsIdentical()
               ? std::string()
               : Joined(stats, [&](std::size_t c) { return Decimals(stats, stats.means[c]); });
}

std::string DeviationsText(const DiffStats& stats) {
    return stats.IsIdentical()
               ? std::string()
               : Joined(stats, [&](std::size_t c) { return Decimals(stats, stats.deviations[c]); });
}

CompareFields FieldsOf(const DiffStats& stats) {
    const bool same = stats.IsIdentical();
    CompareFields fields;
    const auto add = [&fields](const Label& label, std::string value) {
        fields.emplace_back(label, std::move(value));
    };
    add(labels::kComparePixels,
        same ? ToUtf8(labels::kCompareSame)
             : fmt::format("{}x{}={}", stats.width, stats.height, stats.Pixels()));
    add(labels::kCompareDifferent, same ? "" : DifferentText(stats));
    add(labels::kCompareMaximum, same ? "" : MaximaText(stats));
    add(labels::kCompareMean, MeansText(stats));
    add(labels::kCompareDeviation, DeviationsText(stats));
    add(labels::kCompareSimilarity, same ? "" : Joined(stats, [&](std::size_t c) {
            return fmt::format("{:.4f}", static_cast<double>(stats.similarity[c]));
        }));
    return fields;
}

std::string PropertiesText(const CDibImage& image) {
    return fmt::format("{}x{}, {} bpp, {} colors", image.GetWidth(), image.GetHeight(),
                       image.GetBpp(), image.GetPaletteSize() / 4);
}

}  // namespace velloran
