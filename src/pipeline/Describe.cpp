#include "pipeline/Describe.h"

#include "params/ParaBlock.h"
#include "pipeline/Run.h"

namespace velloran {

std::u16string CParaBlock::Describe() const {
    RunRequest request;
    request.mode = RunMode::kDescribe;
    request.settings.values = GetValues();
    std::u16string text;
    DescribeGrayTest(request.settings.values, text);
    DescribeCmyk(request.settings.values, text);
    return text + Run(request).text;
}

}  // namespace velloran
