#include "reduce/CountColors.h"

#include <array>
#include <bit>
#include <new>
#include <vector>

#include "core/IndexRows.h"
#include "core/StepContext.h"

namespace velloran {
namespace {

constexpr std::size_t kSetWords = (std::size_t{1} << 24) / 64;

/// A bit for each 24-bit colour.
class ColorSet {
 public:
    void Add(std::uint32_t color) { words_[color >> 6] |= std::uint64_t{1} << (color & 63); }
    bool Has(std::uint32_t color) const { return (words_[color >> 6] >> (color & 63) & 1) != 0; }
    int Count() const {
        int count = 0;
        for (const std::uint64_t word : words_)
            count += std::popcount(word);
        return count;
    }
    /// Calls `use` for each colour in ascending order.
    template <typename Use>
    void ForEach(Use&& use) const {
        for (std::size_t i = 0; i < kSetWords; ++i)
            for (std::uint64_t rest = words_[i]; rest != 0; rest &= rest - 1)
                use(static_cast<std::uint32_t>(i * 64) +
                    static_cast<std::uint32_t>(std::countr_zero(rest)));
    }

    /// All colours 0xRRGGBB of a 24-bit image.
    void AddAll(const CDibImage& image) {
        std::uint32_t last = 0xFFFFFFFF;
        const CancelToken cancel = CurrentCancel();
        for (int y = 0; y < image.GetHeight() && !cancel.IsCancelled(); ++y) {
            const std::uint8_t* pixel = image.GetBits(y);
            for (int x = 0; x < image.GetWidth(); ++x, pixel += 3) {
                const std::uint32_t color =
                    std::uint32_t{pixel[2]} << 16 | std::uint32_t{pixel[1]} << 8 | pixel[0];
                if (color != last)
                    Add(color);
                last = color;
            }
        }
    }

 private:
    std::vector<std::uint64_t> words_ = std::vector<std::uint64_t>(kSetWords);
};

ExactPalette ExactColors(const CDibImage& image, int count, std::uint32_t reservedColor) {
    ExactPalette exact;
    ColorSet colors;
    colors.AddAll(image);
    int total = colors.Count();
    if (reservedColor != 0xFFFFFFFF) {
        const std::uint32_t reserved =
            (reservedColor & 255) << 16 | (reservedColor & 0xFF00) | (reservedColor >> 16 & 255);
        exact.reservedFound = colors.Has(reserved);
        colors.Add(reserved);
        total += exact.reservedFound ? 0 : 1;
    }
    if (total <= count)
        colors.ForEach([&](std::uint32_t color) {
            exact.palette.push_back({static_cast<std::uint8_t>(color),
                                     static_cast<std::uint8_t>(color >> 8),
                                     static_cast<std::uint8_t>(color >> 16), 0});
        });
    return exact;
}

ExactPalette ExactLevels(const CDibImage& image, int count, std::uint32_t reservedColor) {
    ExactPalette exact;
    std::array<bool, 256> used = UsedIndices(image);
    if (reservedColor != 0xFFFFFFFF) {
        exact.reservedFound = used[reservedColor & 255];
        used[reservedColor & 255] = true;
    }
    for (std::size_t level = 0; level < used.size(); ++level)
        if (used[level]) {
            const auto gray = static_cast<std::uint8_t>(level);
            exact.palette.push_back({gray, gray, gray, 0});
        }
    if (exact.palette.size() > static_cast<std::size_t>(count))
        exact.palette.clear();
    return exact;
}

}  // namespace

std::array<bool, 256> UsedIndices(const CDibImage& image) {
    std::array<bool, 256> used{};
    for (int y = 0; y < image.GetHeight(); ++y)
        ForEachIndex(image.GetBits(y), image.GetWidth(), image.GetBpp(),
                     [&](int, int index) { used[static_cast<std::size_t>(index)] = true; });
    return used;
}

int CountColors(const CDibImage& image) {
    if (!image.IsValid())
        return 0;
    if (image.GetBpp() == 24) {
        try {
            ColorSet colors;
            colors.AddAll(image);
            return colors.Count();
        } catch (const std::bad_alloc&) {
            NoteOutOfMemory();
            return 0;
        }
    }
    int count = 0;
    for (const bool used : UsedIndices(image))
        count += used ? 1 : 0;
    return count;
}

ExactPalette CollectExactPalette(const CDibImage& image, int count, std::uint32_t reservedColor) {
    try {
        if (image.IsValid() && image.GetBpp() == 24)
            return ExactColors(image, count, reservedColor);
        if (image.IsGrayScale())
            return ExactLevels(image, count, reservedColor);
    } catch (const std::bad_alloc&) {
        NoteOutOfMemory();
    }
    return {};
}

}  // namespace velloran
