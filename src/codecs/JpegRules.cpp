#include "codecs/JpegRules.h"

#include <array>

#include "params/ParaBlock.h"

namespace velloran {

JpegRules JpegRulesOf(const CParaBlock& params) {
    const auto group = params.GetGroup(std::array{JPG_RESAMPLE_TYPE, JPG_RESAMPLE_H, JPG_RESAMPLE_V,
                                                  JPG_SRC_SAMPLE, JPG_SRC_QUALITY, JPG_SRC_CODE,
                                                  JPG_OPTIMIZE, JPG_PROGRESSIVE});
    return {group[0], group[1], group[2], group[3], group[4], group[5], group[6], group[7]};
}

}  // namespace velloran
