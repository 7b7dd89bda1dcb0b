#include "reduce/CheckGray.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "core/DibImage.h"
#include "core/GrayDepth.h"

namespace velloran {
namespace {

constexpr int kTolerance = 5;
// Pixels of three bytes and vector registers of 16 to 64 bytes meet at this length.
constexpr int kStep = 192;

/// Bytes of a row whose next byte, and next but one, belong to the same pixel: 255, otherwise 0.
struct PartnerMasks {
    std::array<std::uint8_t, kStep> next{}, nextButOne{};
};
constexpr PartnerMasks kPartners = [] {
    PartnerMasks masks;
    for (int i = 0; i < kStep; ++i) {
        masks.next[i] = i % 3 < 2 ? 255 : 0;
        masks.nextButOne[i] = i % 3 == 0 ? 255 : 0;
    }
    return masks;
}();

std::uint8_t Distance(std::uint8_t a, std::uint8_t b) {
    return static_cast<std::uint8_t>(std::max(a, b) - std::min(a, b));
}

/// The largest difference between two channels of a pixel. The bulk compares each byte with the
/// two behind it, so that the loop runs over bytes as they lie and not over pixels: testing a
/// colour so costs less than remembering whether it was tested before.
int LargestDifference(const std::uint8_t* row, int width) {
    const std::int64_t bytes = std::int64_t{width} * 3;
    std::uint8_t largest = 0;
    std::int64_t at = 0;
    for (; at + kStep + 2 <= bytes; at += kStep) {
        const std::uint8_t* from = row + at;
        std::uint8_t inStep = 0;
        for (int i = 0; i < kStep; ++i) {
            const std::uint8_t one =
                static_cast<std::uint8_t>(Distance(from[i], from[i + 1]) & kPartners.next[i]);
            const std::uint8_t two =
                static_cast<std::uint8_t>(Distance(from[i], from[i + 2]) & kPartners.nextButOne[i]);
            inStep = std::max(inStep, std::max(one, two));
        }
        largest = std::max(largest, inStep);
    }
    for (; at < bytes; at += 3)
        largest = std::max({largest, Distance(row[at], row[at + 1]), Distance(row[at], row[at + 2]),
                            Distance(row[at + 1], row[at + 2])});
    return largest;
}

}  // namespace

bool IsGrayWithin(const CDibImage& image, int tolerance) {
    if (!image.IsValid())
        return false;
    if (image.GetBpp() != 24)
        return UsesOnlyGrayEntries(image, tolerance + 1);
    for (int y = 0; y < image.GetHeight(); ++y)
        if (LargestDifference(image.GetBits(y), image.GetWidth()) > tolerance)
            return false;
    return true;
}

int CheckGray(CDibImage& image, int mode) {
    if (!image.IsValid())
        return 0;
    const bool judged = mode == kGrayTolerant || mode == kGrayStrict;
    if (image.GetBpp() > 8 && !judged)
        return 1;
    if (IsGrayWithin(image, mode == kGrayTolerant ? kTolerance : 0))
        return ConvertToGray(image);
    return ConvertToRgb(image);
}

}  // namespace velloran
