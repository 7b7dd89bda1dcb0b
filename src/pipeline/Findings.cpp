#include "pipeline/Findings.h"

#include <algorithm>

#include "core/DibImage.h"
#include "core/Refusal.h"
#include "core/StepContext.h"
#include "page/DarkLevel.h"

namespace velloran {
namespace {

constexpr std::array<std::string_view, kFindingCount> kNames = {"skew",    "box",    "split",
                                                                "corners", "curves", "dark"};

std::int32_t ValueOf(const ParaValues& values, ParaIndex index) {
    return values[static_cast<std::size_t>(index)];
}

}  // namespace

std::string_view NameOf(Finding finding) {
    return kNames[static_cast<std::size_t>(finding)];
}

std::optional<Finding> FindingOfName(std::string_view name) {
    const auto* const found = std::find(kNames.begin(), kNames.end(), name);
    if (found == kNames.end())
        return std::nullopt;
    return static_cast<Finding>(found - kNames.begin());
}

SkewRegion SkewRegionOf(const ParaValues& values) {
    return {ValueOf(values, PARA_CROPPING_P_LEFT), ValueOf(values, PARA_CROPPING_P_TOP),
            ValueOf(values, PARA_CROPPING_P_RIGHT), ValueOf(values, PARA_CROPPING_P_BOTTOM)};
}

ContentBoxRequest BoxRequestOf(const ParaValues& values, int width, int height) {
    const SkewRegion margins = SkewRegionOf(values);
    PageBox cut;
    marginsToPixels(width, height, margins.left, margins.top, margins.right, margins.bottom,
                    cut.left, cut.top, cut.right, cut.bottom);
    ContentBoxRequest request;
    request.searchRect = {cut.left, cut.top, width - cut.right, height - cut.bottom};
    request.removeBlackEdge = ValueOf(values, PARA_CBF_REMOVE_BLACK_EDGE) != 0;
    request.speckle = ValueOf(values, PARA_CBF_SPECKLE_SIZE);
    request.compensation = ValueOf(values, PARA_CBF_SPECKLE_COMPENSATION) != 0;
    request.bkMore = ValueOf(values, PARA_CBF_BK_MORE) != 0;
    return request;
}

int MeasureCurves(const CDibImage& image, const ParaValues& values,
                  dewarping::CurveFinding& finding) {
    return RefuseWhenOutOfMemory([&] {
        // Whatever curves are set, the page is asked: the methods that look only where none are
        // set trace like the others.
        const int method = ValueOf(values, PARA_CRT_DEWARPING_TYPE) % dewarping::kOnlyWhenUnset;
        finding = dewarping::measureCurves(std::max(method, 0), image,
                                           ValueOf(values, PARA_CRT_DEWARPING_ILLUM));
        return 1;
    });
}

PageFindings MeasurePage(const CDibImage& image, const ParaValues& values,
                         const WantedFindings& wanted, CancelToken cancel) {
    const auto wants = [&](Finding finding) {
        return wanted[static_cast<std::size_t>(finding)] && !cancel.IsCancelled();
    };
    const StepContext context(cancel);
    PageFindings findings;
    if (!image.IsValid())
        return findings;
    if (wants(Finding::kSkew)) {
        const std::int32_t asked = ValueOf(values, PARA_DESKEW);
        const int mode = asked >= kDeskewRows && asked <= kDeskewBoth ? asked : kDeskewRows;
        measureSkew(image, SkewRegionOf(values), mode, findings.skew.emplace());
    }
    if (wants(Finding::kBox))
        measureContentBox(image, BoxRequestOf(values, image.GetWidth(), image.GetHeight()),
                          findings.box.emplace());
    if (wants(Finding::kSplit))
        measureSplit(image, findings.split.emplace());
    if (wants(Finding::kCorners))
        measureCorners(image, 0, 0, findings.corners.emplace());
    if (wants(Finding::kCurves))
        MeasureCurves(image, values, findings.curves.emplace());
    if (wants(Finding::kDark))
        findings.darkLevel = findDarkLevel(image);
    findings.outOfMemory = context.IsOutOfMemory();
    return findings;
}

}  // namespace velloran
