#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <queue>
#include <vector>

#include "core/PixelMemory.h"
#include "core/StepContext.h"
#include "reduce/PaletteMakers.h"

namespace velloran {
namespace {

struct Pixel {
    std::array<std::uint8_t, 3> channel;
};
static_assert(sizeof(Pixel) == 3);

struct Box {
    std::size_t first, count;
    std::array<std::uint8_t, 3> low, high;
    int serial;  // boxes made earlier win ties

    /// The longest side and its channel; the first channel wins ties.
    int LongestChannel() const {
        int best = 0;
        for (int c = 1; c < 3; ++c)
            if (Side(c) > Side(best))
                best = c;
        return best;
    }
    int Side(int c) const {
        return high[static_cast<std::size_t>(c)] - low[static_cast<std::size_t>(c)];
    }
    int LongestSide() const { return Side(LongestChannel()); }
};

struct ShorterBox {
    bool operator()(const Box& a, const Box& b) const {
        const int sideA = a.LongestSide(), sideB = b.LongestSide();
        return sideA != sideB ? sideA < sideB : a.serial > b.serial;
    }
};

using BoxHeap = std::priority_queue<Box, std::vector<Box>, ShorterBox>;

/// Asks after every so many pixels.
class Poll {
 public:
    bool IsCancelled(std::size_t pixel) const {
        return pixel % kEvery == 0 && cancel_.IsCancelled();
    }

 private:
    static constexpr std::size_t kEvery = std::size_t{1} << 18;
    CancelToken cancel_ = CurrentCancel();
};

Box BoundsOf(const Pixel* pixels, std::size_t first, std::size_t count, int serial) {
    // Four runs side by side: one chain of minima would wait for itself at every pixel.
    constexpr std::size_t kRuns = 4;
    std::array<std::array<std::uint8_t, 3>, kRuns> low, high;
    for (std::size_t r = 0; r < kRuns; ++r) {
        low[r].fill(255);
        high[r].fill(0);
    }
    const auto take = [&](std::size_t r, const Pixel& pixel) {
        for (std::size_t c = 0; c < 3; ++c) {
            low[r][c] = std::min(low[r][c], pixel.channel[c]);
            high[r][c] = std::max(high[r][c], pixel.channel[c]);
        }
    };
    std::size_t i = 0;
    const Poll poll;
    for (; i + kRuns <= count && !poll.IsCancelled(i); i += kRuns)
        for (std::size_t r = 0; r < kRuns; ++r)
            take(r, pixels[first + i + r]);
    for (; i < count && count - i < kRuns; ++i)
        take(0, pixels[first + i]);
    for (std::size_t r = 1; r < kRuns; ++r)
        for (std::size_t c = 0; c < 3; ++c) {
            low[0][c] = std::min(low[0][c], low[r][c]);
            high[0][c] = std::max(high[0][c], high[r][c]);
        }
    return {first, count, low[0], high[0], serial};
}

/// Puts the `left` lowest pixels of the box, by one channel, first. Values are bytes, so counting
/// them finds the one at the border; of the pixels that hold it, the first ones go to the left.
void SelectLowest(Pixel* pixels, std::size_t count, std::size_t left, std::size_t channel) {
    std::array<std::size_t, 256> histogram{};
    const Poll poll;
    for (std::size_t i = 0; i < count; ++i) {
        if (poll.IsCancelled(i))
            return;
        ++histogram[pixels[i].channel[channel]];
    }
    std::size_t below = 0;
    int border = 0;
    while (below + histogram[static_cast<std::size_t>(border)] < left)
        below += histogram[static_cast<std::size_t>(border++)];
    std::size_t equalToLeft = left - below;
    const auto belongsLeft = [&](const Pixel& pixel) {
        const int value = pixel.channel[channel];
        if (value == border && equalToLeft > 0) {
            --equalToLeft;
            return true;
        }
        return value < border;
    };
    // What lies left and belongs right changes places with the opposite, in order.
    std::size_t to = left;
    for (std::size_t from = 0; from < left && !poll.IsCancelled(from); ++from) {
        if (belongsLeft(pixels[from]))
            continue;
        while (!belongsLeft(pixels[to]))
            ++to;
        std::swap(pixels[from], pixels[to]);
        ++to;
    }
}

PixelBuffer PackedPixels(const CDibImage& image) {
    const auto width = static_cast<std::size_t>(image.GetWidth());
    const auto height = static_cast<std::size_t>(image.GetHeight());
    PixelBuffer packed = MakePixelBuffer(width * height * 3);
    std::uint8_t* out = packed.get();
    for (int y = 0; y < image.GetHeight(); ++y, out += width * 3) {
        const std::uint8_t* row = image.GetBits(y);
        if (image.GetBpp() == 24)
            std::memcpy(out, row, width * 3);
        else
            for (std::size_t x = 0; x < width; ++x)
                std::memset(out + 3 * x, row[x], 3);
    }
    return packed;
}

PaletteEntry MeanOf(const Pixel* pixels, const Box& box) {
    std::array<std::uint64_t, 3> sum{};
    for (std::size_t i = 0; i < box.count; ++i)
        for (std::size_t c = 0; c < 3; ++c)
            sum[c] += pixels[box.first + i].channel[c];
    return {static_cast<std::uint8_t>(sum[0] / box.count),
            static_cast<std::uint8_t>(sum[1] / box.count),
            static_cast<std::uint8_t>(sum[2] / box.count), 0};
}

}  // namespace

Palette MedianCutPalette(const CDibImage& image, int colors) {
    if (!image.IsValid() || (image.GetBpp() != 8 && image.GetBpp() != 24) || colors < 1)
        return {};
    try {
        PixelBuffer packed = PackedPixels(image);
        auto* pixels = reinterpret_cast<Pixel*>(packed.get());
        const std::size_t count = static_cast<std::size_t>(image.GetWidth()) *
                                  static_cast<std::size_t>(image.GetHeight());
        BoxHeap boxes;
        int serial = 0;
        boxes.push(BoundsOf(pixels, 0, count, serial++));
        const CancelToken cancel = CurrentCancel();
        while (boxes.size() < static_cast<std::size_t>(colors) && boxes.top().count > 1 &&
               !cancel.IsCancelled()) {
            const Box box = boxes.top();
            boxes.pop();
            const std::size_t left = (box.count + 1) / 2;
            SelectLowest(pixels + box.first, box.count, left,
                         static_cast<std::size_t>(box.LongestChannel()));
            boxes.push(BoundsOf(pixels, box.first, left, serial++));
            boxes.push(BoundsOf(pixels, box.first + left, box.count - left, serial++));
        }
        Palette palette;
        for (; !boxes.empty(); boxes.pop())
            palette.push_back(MeanOf(pixels, boxes.top()));
        // A second page must not lie idle while the search for nearest colours takes its memory.
        packed.reset();
        ReleaseKeptPixels();
        return palette;
    } catch (const std::bad_alloc&) {
        NoteOutOfMemory();
        return {};
    }
}

}  // namespace velloran
