#include "imaging/FilterBands.h"

#include <algorithm>
#include <vector>

#include "core/StepContext.h"
#include "core/Threads.h"
#include "imaging/Reflect.h"
#include "imaging/SampleSums.h"

namespace velloran {
namespace {

constexpr int kStepRows = 16;  // results between two layings-out
constexpr std::int64_t kCacheBytes = 384 * 1024;

std::ptrdiff_t RowStride(std::int64_t samples) {
    return static_cast<std::ptrdiff_t>((samples + kSumBlock - 1) / kSumBlock * kSumBlock);
}

std::int64_t RowSamples(ConstPlaneView pixels) {
    return std::int64_t{pixels.width} * pixels.channels;
}

/// What one thread works with.
struct Band {
    int first, end;                      // rows
    std::vector<std::uint8_t> outside;   // `reach` rows above the band, and as many below it
    std::vector<std::uint16_t> rows;     // widened: the rows of a step and `reach` on either side
    std::vector<std::uint8_t> filtered;  // a row after its columns, then after its row
    std::vector<std::uint16_t> line;     // that row widened, with the pixels beyond its ends
};

class BandFilter {
 public:
    BandFilter(PlaneView pixels, std::span<const std::int32_t> taps, std::int32_t divisor,
               const MixSamples& mix)
        : pixels_(pixels),
          reach_(static_cast<int>(taps.size() / 2)),
          count_(static_cast<int>(RowSamples(pixels))),
          stride_(RowStride(count_)),
          columns_(TapsAt(taps, static_cast<std::int32_t>(stride_)), divisor),
          rows_(TapsAt(taps, pixels.channels), divisor),
          mix_(mix) {
        const int most = IsWorthThreads(pixels) ? MaxThreads() : 1;
        const int bands = std::clamp(pixels.height / (kStepRows + 2 * reach_), 1, most);
        for (int b = 0; b < bands; ++b)
            bands_.push_back(MakeBand(BandEdge(b, bands), BandEdge(b + 1, bands)));
    }

    void Run() {
        const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (bands_.size() > 1)
        for (std::size_t b = 0; b < bands_.size(); ++b)
            RunBand(bands_[b], cancel);
    }

 private:
    int BandEdge(int band, int bands) const {
        return static_cast<int>(std::int64_t{pixels_.height} * band / bands);
    }

    /// Other bands change the rows outside before this one comes to them.
    Band MakeBand(int first, int end) const {
        Band band{first, end, {}, {}, {}, {}};
        for (int k = 0; k < 2 * reach_; ++k) {
            const int y = k < reach_ ? first - reach_ + k : end + k - reach_;
            const auto row = pixels_.Row(Reflect(y, pixels_.height));
            band.outside.insert(band.outside.end(), row.begin(), row.end());
        }
        band.rows.resize(static_cast<std::size_t>(stride_) *
                         static_cast<std::size_t>(kStepRows + 2 * reach_));
        band.filtered.resize(static_cast<std::size_t>(count_));
        band.line.resize(static_cast<std::size_t>(
                             RowStride(count_ + std::int64_t{2} * reach_ * pixels_.channels)) +
                         kSumBlock);
        return band;
    }

    std::uint16_t* RowOf(Band& band, int slot) const {
        return band.rows.data() + stride_ * slot;
    }

    void LayOut(Band& band, int y, int slot) const {
        const std::uint8_t* from =
            y < band.first  ? band.outside.data() + Offset(y - band.first + reach_)
            : y >= band.end ? band.outside.data() + Offset(y - band.end + reach_)
                            : pixels_.Row(y).data();
        Widen(from, count_, RowOf(band, slot));
    }

    std::ptrdiff_t Offset(int row) const {
        return std::ptrdiff_t{row} * count_;
    }

    void RunBand(Band& band, CancelToken cancel) const {
        for (int slot = 0; slot < 2 * reach_; ++slot)
            LayOut(band, band.first - reach_ + slot, slot);
        for (int y = band.first; y < band.end && !cancel.IsCancelled(); y += kStepRows) {
            if (y > band.first)
                std::copy_n(RowOf(band, kStepRows), stride_ * 2 * reach_, RowOf(band, 0));
            const int rows = std::min(kStepRows, band.end - y);
            for (int k = 0; k < rows; ++k)
                LayOut(band, y + reach_ + k, 2 * reach_ + k);
            for (int k = 0; k < rows; ++k)
                MakeRow(band, k, pixels_.Row(y + k).data());
        }
    }

    void MakeRow(Band& band, int slot, std::uint8_t* out) const {
        columns_.Row(RowOf(band, slot), count_, band.filtered.data());
        WidenReflected(band.filtered, pixels_.channels, -reach_, pixels_.width + 2 * reach_,
                       band.line.data());
        if (!mix_) {
            rows_.Row(band.line.data(), count_, out);
            return;
        }
        rows_.Row(band.line.data(), count_, band.filtered.data());
        mix_(band.filtered.data(), count_, out);
    }

    PlaneView pixels_;
    int reach_, count_;
    std::ptrdiff_t stride_;
    SampleSums columns_, rows_;
    const MixSamples& mix_;
    std::vector<Band> bands_;
};

}  // namespace

bool FitsInBands(ConstPlaneView pixels, std::size_t taps) {
    const auto rows = static_cast<std::int64_t>(taps) - 1 + kStepRows;
    return RowStride(RowSamples(pixels)) * rows * 2 <= kCacheBytes;
}

void FilterInBands(PlaneView pixels, std::span<const std::int32_t> taps, std::int32_t divisor,
                   const MixSamples& mix) {
    if (pixels.width > 0 && pixels.height > 0)
        BandFilter(pixels, taps, divisor, mix).Run();
}

}  // namespace velloran
