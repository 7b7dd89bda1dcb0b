#include "batch/FoundValues.h"

#include <algorithm>

#include "params/ParaBlock.h"
#include "pipeline/Split.h"

namespace velloran {

namespace {

constexpr int kTrapezoid = 1, kTrapezoidWithSize = 2, kDewarp = 3;  // of PARA_CRT_TYPE

bool AllAre(const ParaValues& values, int first, int last, std::int32_t value) {
    return std::all_of(values.begin() + first, values.begin() + last + 1,
                       [value](std::int32_t v) { return v == value; });
}

}  // namespace

bool HasValuesToFind(const CParaBlock& block) {
    const ParaValues values = block.GetValues();
    if (effectiveSplit(values[PARA_PAGE_SPLIT_TYPE]) != kNoSplit &&
        (values[PARA_PAGE_SPLIT_RIGHT] == 0 || values[PARA_PAGE_SPLIT_MID] == 0))
        return true;
    switch (values[PARA_CRT_TYPE]) {
        case kTrapezoid:
        case kTrapezoidWithSize:
            return AllAre(values, PARA_CRT_PT_LT, PARA_CRT_PT_LB, -1);
        case kDewarp:
            // Zero is how a block begins, -1 how a dialog asks for a search.
            return AllAre(values, PARA_CRT_DEWARPING_TOP_1, PARA_CRT_DEWARPING_BTM_8, 0) ||
                   AllAre(values, PARA_CRT_DEWARPING_TOP_1, PARA_CRT_DEWARPING_BTM_8, -1);
        default:
            return false;
    }
}

}  // namespace velloran
