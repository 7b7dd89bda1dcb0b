#pragma once

// Makes one sample page in memory, with all that is known of it.

#include <cstdint>
#include <optional>

#include "core/DibImage.h"
#include "samples/PageKinds.h"
#include "samples/Truth.h"

namespace velloran::samples {

struct SampleRequest {
    PageKind kind = PageKind::kTextChinese;
    int width = 2480, height = 3508, dpi = 300;
    std::uint64_t seed = 1;
    /// Instead of the kind's own: -5 to 5, positive clockwise. Nothing to curled and projected
    /// pages, which are not turned.
    std::optional<double> angleDegrees = std::nullopt;
    /// Also makes SamplePage::inkMask.
    bool wantInkMask = false;
    /// Instead of the one of the kind.
    std::optional<PageRecipe> recipe = std::nullopt;
};

struct SamplePage {
    /// 24-bit colour, 8-bit grey or 1 bit, as the kind is; DPI set.
    CDibImage image;
    /// 8-bit grey: how much of each pixel is covered by ink of any colour, 255 is all. Empty
    /// unless asked for.
    CDibImage inkMask;
    Truth truth;
};

constexpr int kSmallestSide = 96, kLargestSide = 20000;
constexpr double kLargestTurn = 5;

/// The same request gives the same page, byte for byte, for any number of threads. Throws
/// std::invalid_argument for a size below kSmallestSide or above kLargestSide, a resolution
/// outside 30 to 2400 or an angle beyond kLargestTurn, FontMissing, and std::bad_alloc.
SamplePage MakeSamplePage(const SampleRequest& request);

}  // namespace velloran::samples
