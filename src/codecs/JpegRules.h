#pragma once

// The JPG_* parameters: sampling and coding of a JPEG, and what it inherits from its source.

namespace velloran {

class CParaBlock;

struct JpegRules {
    int resampleType = 0;  // 0 automatic, 1 by the two below
    int resampleH = 0, resampleV = 0;
    int sourceSample = 0, sourceQuality = 0, sourceCode = 0;  // inherited where a source has them
    int optimize = 0, progressive = 0;
};

JpegRules JpegRulesOf(const CParaBlock& params);

}  // namespace velloran
