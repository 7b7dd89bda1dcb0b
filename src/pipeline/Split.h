#pragma once

// What PARA_PAGE_SPLIT_TYPE asks for: which part of a scan of one or two pages is kept.

#include <cstdint>

namespace velloran {

/// Lines between which a page is kept.
enum SplitWork : int {
    kNoSplit = 0,
    kKeepLeftToRight = 1,
    kKeepLeftToMid = 2,
    kKeepMidToRight = 3,
};

/// The work that a split type asks for. The low byte of `type` is the kind of page (1 single, 2
/// and 3 double), bit 8 selects the second page of a double one. Any other kind is no split.
constexpr int effectiveSplit(std::int32_t type) {
    const auto bits = static_cast<std::uint32_t>(type);
    switch (bits & 0xFFU) {
        case 1:
            return kKeepLeftToRight;
        case 2:
        case 3:
            return (bits & 0x100U) == 0 ? kKeepLeftToMid : kKeepMidToRight;
        default:
            return kNoSplit;
    }
}

}  // namespace velloran
