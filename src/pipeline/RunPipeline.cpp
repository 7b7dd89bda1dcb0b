// The run as an operation of the block: its values in, what was found back into it.

#include "params/ParaBlock.h"
#include "pipeline/Run.h"

namespace velloran {

void CParaBlock::RunPipeline(CDibImage* image, CancelFunction cancel, void* context,
                             const LabelFunction& label, int stop, std::u16string* text) {
    RunRequest request;
    request.image = image;
    request.settings.values = GetValues();
    request.mode = label ? RunMode::kFull : RunMode::kPreview;
    if (text != nullptr)
        request.mode = RunMode::kDescribe;
    request.stop = stop;
    if (cancel != nullptr)
        request.poll = [cancel, context] { return cancel(context) != 0; };
    request.label = label;
    request.deskewEdge = GlobalBlock().GetPara(PARA_DESKEW_EDGE);
    const RunReport report = Run(request);
    report.found.ApplyTo(*this);
    if (text != nullptr)
        *text += report.text;
}

}  // namespace velloran
