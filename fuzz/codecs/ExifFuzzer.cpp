// EXIF blocks as files hold them: settled for a page, and never longer than before.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "codecs/ExifBlock.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<std::uint8_t> block(data, data + size);
    const int orientation = velloran::ExifOrientation(block);
    velloran::SettleExif({1000, 70000, 300, 600}, block);
    if (orientation < 1 || orientation > 8 || block.size() > size)
        __builtin_trap();
    // What was settled once has its orientation, or never had one.
    if (velloran::IsExif(block) && block.size() == size && velloran::ExifOrientation(block) != 1 &&
        orientation == 1)
        __builtin_trap();
    return 0;
}
