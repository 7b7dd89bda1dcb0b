#include "codecs/ImageInfo.h"

#include "core/BaseImage.h"

namespace velloran {

bool IsAcceptableSize(std::int64_t width, std::int64_t height, int bitsPerPixel) {
    constexpr std::int64_t kMaxSide = 0x7FFFFFFF;
    if (width < 1 || height < 1 || width > kMaxSide || height > kMaxSide || bitsPerPixel < 1 ||
        bitsPerPixel > 256)
        return false;
    if (width > kMaxPixels / height)
        return false;
    const auto rowBytes = static_cast<std::int64_t>(EffectiveWidth(
        static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(bitsPerPixel)));
    return rowBytes <= kMaxImageBytes / height;
}

}  // namespace velloran
