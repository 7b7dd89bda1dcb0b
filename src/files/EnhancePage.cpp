#include "files/EnhancePage.h"

#include <utility>

#include "files/Transparency.h"

namespace velloran {

RunReport EnhancePage(const LoadPageRequest& load, LoadedPage& page, RunRequest run) {
    run.image = &page.image;
    if (!page.isTransparent)
        return Run(run);
    LoadedPage asLoaded;
    asLoaded.notes = page.notes;
    asLoaded.image = page.image;
    RunReport report;
    if (!asLoaded.image.IsValid()) {
        report.NotePage(StepResult::kNoMemory);
        return report;
    }
    report = Run(run);
    const bool isKept =
        HasTransparency(page.image) && load.keepsTransparency && load.keepsTransparency(page.image);
    if (report.end != RunEnd::kDone || !report.IsWhole() || isKept)
        return report;
    page = std::move(asLoaded);
    if (!LayOnFill(load, page)) {
        report.NotePage(StepResult::kNoMemory);
        return report;
    }
    return Run(run);
}

}  // namespace velloran
