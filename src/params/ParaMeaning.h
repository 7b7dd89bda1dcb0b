#pragma once

// What the values of a parameter mean: where they are edited, how they are shown, when they count.

#include <array>
#include <cstdint>
#include <limits>
#include <span>
#include <string_view>

#include "text/Label.h"

namespace velloran {

enum ParaIndex : int;

/// The tabs of a page's parameters, in order.
enum class ParaTab { kNone, kPaper, kPage, kLayout, kImage, kOutput };

/// What stands together in a tab or a window.
enum class ParaSet {
    kNoSet,
    kRotation,
    kSplit,
    kCorrection,
    kDeskew,
    kContentBox,
    kPageSize,
    kTone,
    kCurve,
    kAdjust,
    kChannels,
    kSurfaceBlur,
    kUsm,
    kLight,
    kLevels,
    kFileQuality,
    kJpeg,
    kReduction,
    kOptions,  // those of the batch window and the menus that no tab holds
    kBatch,    // which files, and how the new ones are named
    kViewer,
};

/// Of the value as it is shown.
enum class ParaUnit {
    kNoUnit,
    kPercent,
    kPixels,
    kDegrees,
    kPageMeasure,  // centimetres, or pixels as stored: PARA_PAGE_SIZE_UNIT tells
    kDotsPerInch,
    kSeconds,
};

/// shown = (stored * factor + offset) / divisor; the divisor is 1, 10 or 100, and tells how many
/// decimals are shown.
struct ParaScale {
    std::int32_t factor = 1, offset = 0, divisor = 1;

    bool operator==(const ParaScale&) const = default;
};

/// Values from one to another, both included.
struct ParaRange {
    static constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
    static constexpr std::int32_t kHighest = std::numeric_limits<std::int32_t>::max();
    std::int32_t from = 0, to = 0;

    constexpr bool Has(std::int32_t value) const { return value >= from && value <= to; }
};

/// A step of the enhancement (1 to 30) that has work at these values.
struct ParaGate {
    int step = 0;  // 0 is no gate
    ParaRange values{};
};

/// Some bits of a packed value.
struct ParaField {
    std::string_view name;
    int shift = 0, bits = 8;
    bool isSigned = false;
    std::span<const Label> list{};  // texts by the field's value; empty for a number

    constexpr std::int32_t Of(std::int32_t packed) const {
        const auto field = (static_cast<std::uint32_t>(packed) >> shift) & ((1U << bits) - 1);
        const std::uint32_t sign = 1U << (bits - 1);
        return isSigned ? static_cast<std::int32_t>((field ^ sign) - sign)
                        : static_cast<std::int32_t>(field);
    }
};

/// A parameter counts only at certain values of another one.
struct ParaCondition {
    ParaIndex index{};
    std::array<ParaRange, 2> values{};
    int count = 0;  // of the ranges; 0 is no condition

    std::span<const ParaRange> Ranges() const {
        return std::span(values).first(static_cast<std::size_t>(count));
    }
};

/// Names for JSON and the like, in lower case.
std::string_view NameOf(ParaTab tab);
std::string_view NameOf(ParaSet set);
std::string_view NameOf(ParaUnit unit);

}  // namespace velloran
