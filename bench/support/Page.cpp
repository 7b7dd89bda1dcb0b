#include "support/Page.h"

#ifdef __GLIBC__
#include <malloc.h>
#endif

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>

namespace velloran::bench {
namespace {

std::uint32_t Next(std::uint32_t& state) {
    state ^= state << 13;
    state ^= state >> 17;
    return state ^= state << 5;
}

bool IsInk(int x, int y) {
    const int line = y % 62, column = x % 41;
    if (line > 36 || column > 30 || (x / 41 + y / 62) % 9 == 0)
        return false;
    return line % 12 < 4 || column % 13 < 4;  // strokes of a character cell
}

/// A line of /proc/self/status, in bytes.
std::int64_t StatusBytes(const std::string& key) {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        std::int64_t kilobytes = 0;
        if (word == key && status >> kilobytes)
            return kilobytes * 1024;
    }
    return -1;
}

}  // namespace

CDibImage ScannedPage(int bpp, int width, int height) {
    CDibImage image;
    if (image.Create(width, height, bpp) == nullptr)
        return image;
    if (bpp == 8)
        image.SetGrayPalette();
    std::uint32_t state = 2463534242U;
    for (int y = 0; y < height; ++y) {
        std::uint8_t* out = image.GetBits(y);
        for (int x = 0; x < width; ++x) {
            const int light = 225 - 40 * x / width - 20 * y / height;
            const int noise = static_cast<int>(Next(state) & 7) - 4;
            const int level = std::clamp((IsInk(x, y) ? light / 4 : light) + noise, 0, 255);
            for (int c = 0; c < bpp / 8; ++c)  // old paper is a little yellow
                *out++ = static_cast<std::uint8_t>(std::clamp(level - 12 + 8 * c, 0, 255));
        }
    }
    return image;
}

CDibImage NoisePage(int bpp, int width, int height) {
    CDibImage image;
    if (image.Create(width, height, bpp) == nullptr)
        return image;
    if (bpp == 8)
        image.SetGrayPalette();
    std::uint32_t state = 88172645U;
    for (int y = 0; y < height; ++y) {
        std::uint8_t* out = image.GetBits(y);
        for (int x = 0; x < width * bpp / 8; ++x)
            *out++ = static_cast<std::uint8_t>(Next(state) >> 8);
    }
    return image;
}

std::size_t PageBytes(const CDibImage& page) {
    return static_cast<std::size_t>(page.GetEffWidth()) *
           static_cast<std::size_t>(page.GetHeight());
}

void CopyPixels(const CDibImage& from, CDibImage& to) {
    std::memcpy(to.GetBits(0), from.GetBits(0), PageBytes(from));
}

std::int64_t PeakBytes(const std::function<void()>& work) {
#ifdef __GLIBC__
    malloc_trim(0);  // freed memory that is still held would hide what the work takes
#endif
    if (!(std::ofstream("/proc/self/clear_refs") << 5 << std::flush))  // the peak starts anew
        return -1;
    const std::int64_t before = StatusBytes("VmRSS:");
    work();
    const std::int64_t peak = StatusBytes("VmHWM:");
    return before < 0 || peak < 0 ? -1 : peak - before;
}

}  // namespace velloran::bench
