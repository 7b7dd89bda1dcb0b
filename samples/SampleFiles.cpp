#include "samples/SampleFiles.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <stdexcept>

#include "codecs/Formats.h"
#include "core/DibImage.h"
#include "io/AtomicFile.h"
#include "params/ParaBlock.h"
#include "samples/Random.h"

namespace velloran::samples {

namespace {

[[noreturn]] void ThrowUnwritten(const std::filesystem::path& path, const FileError& error) {
    throw std::runtime_error(path.string() + ": " +
                             (error.detail.empty() ? "cannot be written" : error.detail));
}

void WriteImage(const std::filesystem::path& path, const std::string& format, int quality,
                CDibImage& image) {
    const Format* row = FormatOfName("." + format);
    if (row == nullptr || row->save == nullptr)
        throw std::invalid_argument("unknown format " + format);
    SaveOptions options;
    options.quality = quality;
    options.dpi = image.GetXDpi();
    options.jpeg = JpegRulesOf(CParaBlock());
    FileError error;
    AtomicFile file(path);
    if (!file.Open(&error) || !row->save(file, image, options, &error) || !file.Commit(&error))
        ThrowUnwritten(path, error);
}

void WriteText(const std::filesystem::path& path, const std::string& text) {
    FileError error;
    AtomicFile file(path);
    if (!file.Open(&error) || !file.Write(text.data(), text.size()) || !file.Commit(&error))
        ThrowUnwritten(path, error);
}

}  // namespace

std::vector<SampleRequest> RequestsOf(const SampleSet& set) {
    const std::span<const PageKind> kinds = KindsOfSet(set.name);
    std::vector<SampleRequest> requests;
    if (kinds.empty())
        return requests;
    const std::size_t count = set.count > 0 ? static_cast<std::size_t>(set.count) : kinds.size();
    constexpr double kA4Width = 210 / 25.4, kA4Height = 297 / 25.4;  // inches
    const int width = set.width.value_or(static_cast<int>(std::lround(kA4Width * set.dpi)));
    const int height = set.height.value_or(static_cast<int>(std::lround(kA4Height * set.dpi)));
    for (std::size_t i = 0; i < count; ++i) {
        SampleRequest request;
        request.kind = kinds[i % kinds.size()];
        request.width = IsTwoPages(request.kind) ? std::max(width, height) : width;
        request.height = IsTwoPages(request.kind) ? std::min(width, height) : height;
        request.dpi = set.dpi;
        request.seed = HashAt(set.seed, static_cast<std::int64_t>(i), 0) >> 32;
        request.angleDegrees = set.angleDegrees;
        request.wantInkMask = set.inkMasks;
        requests.push_back(request);
    }
    return requests;
}

std::string SampleName(int number, PageKind kind) {
    char digits[16];
    std::snprintf(digits, sizeof digits, "%03d_", number);
    return digits + std::string(RecipeOf(kind).name);
}

void WriteSample(const SampleSet& set, const SampleRequest& request, int number,
                 const std::filesystem::path& folder) {
    SamplePage page = MakeSamplePage(request);
    const std::string name = SampleName(number, request.kind);
    const std::string imageName = name + "." + set.format;
    // The mask and the truth first: a picture that is there has its truth beside it.
    if (set.inkMasks)
        WriteImage(folder / (name + "_ink.png"), "png", 0, page.inkMask);
    WriteText(folder / (name + ".json"), ToJson(page.truth, imageName));
    WriteImage(folder / imageName, set.format, set.quality, page.image);
}

}  // namespace velloran::samples
