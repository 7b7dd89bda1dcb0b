#include "tone/Vibrance.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>

#include "core/DibImage.h"
#include "core/Rounding.h"
#include "tone/ColorMemo.h"

namespace velloran {
namespace {

// Strengths beyond this change nothing more: a distance of 1 is moved by all levels.
constexpr int kFarthest = 3300000;

using SpreadTable = std::array<std::int32_t, 256>;

SpreadTable MakeSpreadTable(int strength) {
    SpreadTable table;
    const float share = static_cast<float>(std::abs(strength)) * 0.01F;
    for (int d = 0; d < 256; ++d)
        table[static_cast<std::size_t>(d)] = TruncToInt(
            static_cast<double>(static_cast<float>(d) * 16384.0F * share / 127.0F + 0.5F));
    return table;
}

/// `sign` -1 moves the channels away from the highest, 1 towards it.
std::uint32_t Spread(const SpreadTable& table, int sign, const std::uint8_t* pixel) {
    const int most = std::max({pixel[0], pixel[1], pixel[2]});
    const int luma = (pixel[2] + 2 * pixel[1] + pixel[0]) >> 2;
    const std::int64_t k = table[static_cast<std::size_t>(most - luma)];
    std::uint32_t color = 0;
    for (int c = 0; c < 3; ++c) {
        const std::int64_t move = ((most - pixel[c]) * k + 8192) >> 14;
        color |= std::uint32_t{ClampToByte(pixel[c] + sign * move)} << 8 * c;
    }
    return color;
}

}  // namespace

int Vibrance(CDibImage& image, int amount) {
    if (amount == 0 || !image.IsValid() || image.GetBpp() != 24)
        return 0;
    amount = std::clamp(amount, -kFarthest, kFarthest);
    const SpreadTable table = MakeSpreadTable(amount >= 1 ? amount * 2 : amount);
    const int sign = amount >= 1 ? -1 : 1;
    MapColors(ViewOf(image), [&](const std::uint8_t* pixel) { return Spread(table, sign, pixel); });
    return 1;
}

}  // namespace velloran
