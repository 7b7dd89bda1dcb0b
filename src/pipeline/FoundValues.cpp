#include "pipeline/FoundValues.h"

#include <algorithm>

#include "params/ParaBlock.h"
#include "pipeline/Split.h"

namespace velloran {

namespace {

constexpr int kTrapezoid = 1, kTrapezoidWithSize = 2, kDewarp = 3;  // of PARA_CRT_TYPE

constexpr std::array kSplitLines = {PARA_PAGE_SPLIT_LEFT, PARA_PAGE_SPLIT_RIGHT,
                                    PARA_PAGE_SPLIT_MID};
constexpr std::array kCorners = {PARA_CRT_PT_LT, PARA_CRT_PT_RT, PARA_CRT_PT_RB, PARA_CRT_PT_LB};
constexpr std::array kCurvePoints = {
    PARA_CRT_DEWARPING_TOP_1, PARA_CRT_DEWARPING_TOP_2, PARA_CRT_DEWARPING_TOP_3,
    PARA_CRT_DEWARPING_TOP_4, PARA_CRT_DEWARPING_TOP_5, PARA_CRT_DEWARPING_TOP_6,
    PARA_CRT_DEWARPING_TOP_7, PARA_CRT_DEWARPING_TOP_8, PARA_CRT_DEWARPING_BTM_1,
    PARA_CRT_DEWARPING_BTM_2, PARA_CRT_DEWARPING_BTM_3, PARA_CRT_DEWARPING_BTM_4,
    PARA_CRT_DEWARPING_BTM_5, PARA_CRT_DEWARPING_BTM_6, PARA_CRT_DEWARPING_BTM_7,
    PARA_CRT_DEWARPING_BTM_8};

template <std::size_t N>
bool AllAre(const ParaValues& values, const std::array<ParaIndex, N>& indexes, std::int32_t value) {
    return std::ranges::all_of(indexes, [&](ParaIndex index) { return values[index] == value; });
}

/// Calls `write(indexes, group)` for each group that was found.
template <typename Write>
void ForEachGroup(const FoundValues& found, Write&& write) {
    if (found.splitLines)
        write(kSplitLines, *found.splitLines);
    if (found.corners)
        write(kCorners, *found.corners);
    if (found.curvePoints)
        write(kCurvePoints, *found.curvePoints);
}

}  // namespace

void FoundValues::ApplyTo(ParaValues& values) const {
    ForEachGroup(*this, [&](const auto& indexes, const auto& group) {
        for (std::size_t i = 0; i < indexes.size(); ++i)
            values[static_cast<std::size_t>(indexes[i])] = group[i];
    });
}

void FoundValues::ApplyTo(CParaBlock& block) const {
    ForEachGroup(*this,
                 [&](const auto& indexes, const auto& group) { block.SetGroup(indexes, group); });
}

bool HasValuesToFind(const ParaValues& values) {
    if (effectiveSplit(values[PARA_PAGE_SPLIT_TYPE]) != kNoSplit &&
        (values[PARA_PAGE_SPLIT_RIGHT] == 0 || values[PARA_PAGE_SPLIT_MID] == 0))
        return true;
    switch (values[PARA_CRT_TYPE]) {
        case kTrapezoid:
        case kTrapezoidWithSize:
            return AllAre(values, kCorners, -1);
        case kDewarp:
            // Zero is how a block begins, -1 how a dialog asks for a search.
            return AllAre(values, kCurvePoints, 0) || AllAre(values, kCurvePoints, -1);
        default:
            return false;
    }
}

}  // namespace velloran
