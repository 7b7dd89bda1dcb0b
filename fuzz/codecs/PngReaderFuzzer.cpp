// Feeds arbitrary bytes to the Png reader.

#include "codecs/Png.h"
#include "core/DibImage.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::int64_t kPixelLimit = 1 << 20;  // larger ones are slow and show nothing new
    const std::span<const std::uint8_t> bytes(data, size);
    velloran::ImageInfo info;
    const bool head = velloran::ReadPngInfo(bytes, info, nullptr);
    if (std::int64_t{info.width} * info.height > kPixelLimit)
        return 0;
    velloran::CDibImage image;
    velloran::FileError error;
    const bool loaded = velloran::LoadPngBytes(bytes, image, &error);
    // What loads has a head that can be told, and a failure leaves the image alone and says why.
    if (loaded != image.IsValid() || (loaded && !head) ||
        (!loaded && error.cause == velloran::FileError::Cause::kNone))
        __builtin_trap();
    return 0;
}
