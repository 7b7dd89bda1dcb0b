#include "pipeline/Describe.h"

#include "params/ParaBlock.h"

namespace velloran {

std::u16string CParaBlock::Describe() const {
    std::u16string text;
    // A copy: the text is of one moment, and a run may write to its block.
    CParaBlock block(*this);
    DescribeGrayTest(block, text);
    DescribeCmyk(block, text);
    block.RunPipeline(/*image=*/nullptr, /*cancel=*/nullptr, /*context=*/nullptr, /*label=*/{},
                      kStopWhole, &text);
    return text;
}

}  // namespace velloran
