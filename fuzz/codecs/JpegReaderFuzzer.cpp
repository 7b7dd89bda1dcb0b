#include <cstddef>
#include <cstdint>
#include <span>

#include "codecs/Jpeg.h"
#include "core/DibImage.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span bytes(data, size);
    velloran::ImageInfo info;
    int bits = 0, dpi = 0;
    velloran::ReadJpegHeader(bytes, bits, dpi);
    if (!velloran::ReadJpegInfo(bytes, info, nullptr))
        return 0;
    if (static_cast<std::int64_t>(info.width) * info.height > 200'000)
        return 0;  // large pictures only cost time
    velloran::CDibImage image;
    velloran::LoadJpegBytes(bytes, image, /*reverseCmyk=*/size % 2 != 0, nullptr);
    return 0;
}
