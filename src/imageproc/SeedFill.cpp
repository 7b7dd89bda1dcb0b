#include "imageproc/SeedFill.h"

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <vector>

#include "core/StepContext.h"

namespace velloran::imageproc {
namespace {

/// The runs of `mask` that `seed`, a part of it, touches.
std::uint32_t filledRuns(std::uint32_t seed, std::uint32_t mask) {
    // The carry of an addition runs through a run toward the higher bits, which lie to the left.
    std::uint32_t filled = seed | (mask & ~(mask + seed));
    for (int reach = 1; reach < 32; reach *= 2) {
        filled |= mask & (filled >> reach);
        mask &= mask >> reach;
    }
    return filled;
}

constexpr std::size_t kPollEvery = 4096;  // words

/// Fills word by word. What a word gained waits in `fresh_` until its neighbours have been told;
/// each bit is told once, so that the work grows with the pixels.
class WordFill {
 public:
    /// `filled` is white.
    WordFill(BinaryImage& filled, const BinaryImage& mask, Connectivity connectivity)
        : filled_(filled.data()),
          mask_(mask.data()),
          words_(mask.wordsPerLine()),
          height_(mask.height()),
          lastMask_(mask.lastWordMask()),
          diagonal_(connectivity == Connectivity::k8),
          fresh_(static_cast<std::size_t>(words_) * static_cast<std::size_t>(height_)) {}

    void run(const BinaryImage& seed) {
        const CancelToken cancel = CurrentCancel();
        std::size_t told = 0;
        for (int y = 0; y < height_ && !cancel.IsCancelled(); ++y)
            for (int w = 0; w < words_; ++w) {
                gain(w, y, seed.data()[at(w, y)]);
                // Drained at once: a list of all seeds of a page would be as large as the page.
                while (!waiting_.empty()) {
                    if (++told % kPollEvery == 0 && cancel.IsCancelled())
                        return;
                    tellNext();
                }
            }
    }

 private:
    struct Place {
        int word, row;
    };

    std::size_t at(int w, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(words_) +
               static_cast<std::size_t>(w);
    }

    /// Bits that reach a word from elsewhere; what the mask holds of them spreads in it.
    void gain(int w, int y, std::uint32_t bits) {
        if (bits == 0 || w < 0 || w >= words_ || y < 0 || y >= height_)
            return;
        const std::size_t here = at(w, y);
        const std::uint32_t open = w + 1 == words_ ? mask_[here] & lastMask_ : mask_[here];
        const std::uint32_t reached = bits & open & ~filled_[here];
        if (reached == 0)
            return;
        const std::uint32_t gained = filledRuns(reached, open) & ~filled_[here];
        if (fresh_[here] == 0)
            waiting_.push_back({w, y});
        fresh_[here] |= gained;
        filled_[here] |= gained;
    }

    void tellNext() {
        const Place place = waiting_.back();
        waiting_.pop_back();
        const std::size_t here = at(place.word, place.row);
        const std::uint32_t bits = fresh_[here];
        fresh_[here] = 0;
        const std::uint32_t toLeft = bits >> 31, toRight = bits << 31;
        gain(place.word - 1, place.row, toLeft);
        gain(place.word + 1, place.row, toRight);
        const std::uint32_t straight = diagonal_ ? bits | bits << 1 | bits >> 1 : bits;
        for (const int row : {place.row - 1, place.row + 1}) {
            gain(place.word, row, straight);
            if (diagonal_) {
                gain(place.word - 1, row, toLeft);
                gain(place.word + 1, row, toRight);
            }
        }
    }

    std::uint32_t* filled_;
    const std::uint32_t* mask_;
    int words_, height_;
    std::uint32_t lastMask_;
    bool diagonal_;
    std::vector<std::uint32_t> fresh_;
    std::vector<Place> waiting_;
};

}  // namespace

BinaryImage seedFill(const BinaryImage& seed, const BinaryImage& mask, Connectivity connectivity) {
    if (!(seed.size() == mask.size()))
        throw std::invalid_argument("seedFill: seed and mask have different sizes");
    if (seed.isNull())
        return {};
    BinaryImage filled(seed.size(), BwColor::kWhite);
    WordFill(filled, mask, connectivity).run(seed);
    return filled;
}

}  // namespace velloran::imageproc
