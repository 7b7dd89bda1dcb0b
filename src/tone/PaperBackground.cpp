#include "tone/PaperBackground.h"

#include "core/PlaneView.h"
#include "core/Threads.h"
#include "filters/SmoothPlane.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "tone/PaperBackground.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

/// Interpolated samples stay between 0 and 255.
void RoundRow(const float* row, int count, std::uint8_t* out) {
    for (int i = 0; i < count; ++i)
        out[i] = static_cast<std::uint8_t>(static_cast<int>(row[i] + 0.5F));
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {
namespace {

HWY_EXPORT(RoundRow);

constexpr int kSmallestSmoothed = 4;

FloatPlane Smoothed(std::vector<std::uint8_t>& samples, int columns, int rows, double radius) {
    if (columns >= kSmallestSmoothed && rows >= kSmallestSmoothed)
        SmoothRowsAndColumns({samples.data(), columns, rows, 1, columns}, radius);
    FloatPlane plane(columns, rows);
    float* out = plane.View().first;
    for (const std::uint8_t sample : samples)
        *out++ = sample;
    return plane;
}

}  // namespace

PaperBackground::PaperBackground(std::vector<std::uint8_t> samples, int columns, int rows,
                                 double smoothRadius, int width, int height)
    : small_(Smoothed(samples, columns, rows, smoothRadius)),
      width_(width),
      enlarged_(small_.View(), width, height) {
    const auto count = static_cast<std::size_t>(width);
    perThread_.assign(static_cast<std::size_t>(MaxThreads()),
                      RowScratch{std::vector<float>(enlarged_.ScratchSize()),
                                 std::vector<float>(count), std::vector<std::uint8_t>(count)});
}

const std::uint8_t* PaperBackground::Row(int y) {
    RowScratch& scratch = perThread_[static_cast<std::size_t>(ThreadNumber())];
    enlarged_.Row(y, scratch.blended.data(), scratch.row.data());
    HWY_DYNAMIC_DISPATCH(RoundRow)(scratch.row.data(), width_, scratch.samples.data());
    return scratch.samples.data();
}

}  // namespace velloran
#endif  // HWY_ONCE
