#include <cstddef>
#include <cstdint>
#include <span>

#include "codecs/Bmp.h"
#include "core/DibImage.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span bytes(data, size);
    velloran::ImageInfo info;
    if (!velloran::ReadBmpInfo(bytes, info, nullptr))
        return 0;
    if (static_cast<std::int64_t>(info.width) * info.height > 200'000)
        return 0;  // large pictures only cost time
    velloran::CDibImage image;
    velloran::LoadBmpBytes(bytes, image, nullptr);
    return 0;
}
