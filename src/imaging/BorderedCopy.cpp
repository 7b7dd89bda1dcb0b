#include "imaging/BorderedCopy.h"

#include <algorithm>
#include <cstring>

#include "core/StepContext.h"
#include "core/Threads.h"

namespace velloran {
namespace {

/// Repeats a pixel `count` times.
void Repeat(const std::uint8_t* pixel, int count, int channels, std::uint8_t* out) {
    if (channels == 1) {
        std::memset(out, *pixel, static_cast<std::size_t>(count));
        return;
    }
    for (int i = 0; i < count; ++i, out += channels)
        std::memcpy(out, pixel, static_cast<std::size_t>(channels));
}

}  // namespace

BorderedCopy::BorderedCopy(ConstPlaneView source, BorderWidths border) : border_(border) {
    const int width = source.width + border.left + border.right;
    const int height = source.height + border.top + border.bottom;
    const std::ptrdiff_t stride = static_cast<std::ptrdiff_t>(width) * source.channels;
    memory_ = MakePixelBuffer(static_cast<std::size_t>(stride) * static_cast<std::size_t>(height));
    view_ = {memory_.get(), width, height, source.channels, stride};
    Fill(source);
}

void BorderedCopy::Fill(ConstPlaneView source) {
    if (source.width == 0 || source.height == 0)
        return;
    const int channels = source.channels;
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(view_.stride * view_.height))
    for (int y = 0; y < view_.height; ++y) {
        if (cancel.IsCancelled())
            continue;
        const int from = std::clamp(y - border_.top, 0, source.height - 1);
        const std::span<const std::uint8_t> row = source.Row(from);
        std::uint8_t* out = view_.Row(y).data();
        Repeat(row.data(), border_.left, channels, out);
        out += static_cast<std::ptrdiff_t>(border_.left) * channels;
        std::memcpy(out, row.data(), row.size());
        Repeat(row.data() + row.size() - channels, border_.right, channels, out + row.size());
    }
}

}  // namespace velloran
