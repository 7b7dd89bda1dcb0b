#include "batch/PageMemory.h"

#include <algorithm>

#include "codecs/Formats.h"
#include "codecs/ImageInfo.h"
#include "files/FileType.h"
#include "io/ByteSource.h"
#include "params/Settings.h"

namespace velloran {

namespace {

constexpr std::int64_t kCopies = 4;        // the page as read, as enhanced, and scratch of a step
constexpr std::int64_t kFloatCopies = 14;  // steps that work on planes of numbers
constexpr std::int64_t kPercent = 100;

bool WorksOnFloats(const Settings& settings) {
    return settings[PARA_LUM_CORRECT] != 0;
}

}  // namespace

std::int64_t PageMemory(const ImageInfo& info, std::int64_t fileSize, const Settings& settings) {
    const std::int64_t samples = info.gray || info.bitsPerPixel <= 1 ? 1 : 3;
    const std::int64_t page = std::int64_t{info.width} * info.height * samples;
    const std::int64_t size = std::clamp<std::int64_t>(settings[PARA_RESIZE], 100, 400);
    const std::int64_t enlarged = page / kPercent * size / kPercent * size;
    return fileSize + enlarged * (WorksOnFloats(settings) ? kFloatCopies : kCopies);
}

std::int64_t PageMemory(ByteSource& source, const std::filesystem::path& name,
                        const Settings& settings) {
    ImageInfo info;
    const Format* format = FindFormat(DetectFileType(source, name));
    if (format == nullptr || format->info == nullptr || !format->info(source, info, nullptr))
        return 0;
    return PageMemory(info, static_cast<std::int64_t>(source.Size()), settings);
}

}  // namespace velloran
