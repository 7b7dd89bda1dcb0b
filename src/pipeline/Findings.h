#pragma once

// What the automatic steps find on a page and how sure they are, by the settings of a run.

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

#include "core/CancelToken.h"
#include "dewarping/FindCurves.h"
#include "page/MeasureBox.h"
#include "page/MeasureCorners.h"
#include "page/MeasureSkew.h"
#include "page/MeasureSplit.h"
#include "params/Settings.h"

namespace velloran {

class CDibImage;

enum class Finding { kSkew, kBox, kSplit, kCorners, kCurves, kDark };
inline constexpr std::size_t kFindingCount = 6;
/// As scripts name them: skew, box, split, corners, curves, dark.
std::string_view NameOf(Finding finding);
std::optional<Finding> FindingOfName(std::string_view name);

/// How sure a run was of what it found, 0 to 1, by Finding; absent for what it did not search.
using FoundSure = std::array<std::optional<double>, kFindingCount>;
using WantedFindings = std::array<bool, kFindingCount>;

/// Absent for what was not asked for. What a page is too small for is not found and 0 sure.
struct PageFindings {
    std::optional<SkewFinding> skew;
    std::optional<BoxFinding> box;
    std::optional<SplitFinding> split;
    std::optional<CornersFinding> corners;
    std::optional<dewarping::CurveFinding> curves;
    std::optional<int> darkLevel;
    bool outOfMemory = false;  // some of it could not be measured
};

/// Measures the page as it is; each finding by itself, whatever the settings switch on. Margins,
/// the options of the content box and of the search for curves come from the settings, and the mode
/// of deskew where that is 1 to 3, else 1. Ends early, with findings of no worth, when `cancel`
/// says so.
PageFindings MeasurePage(const CDibImage& image, const ParaValues& values,
                         const WantedFindings& wanted, CancelToken cancel = {});

/// Searches the curves of a page as the settings say. 0 without memory, finding unchanged.
int MeasureCurves(const CDibImage& image, const ParaValues& values,
                  dewarping::CurveFinding& finding);

/// The part of a page in which its skew is measured.
SkewRegion SkewRegionOf(const ParaValues& values);
/// The search for the content of a page of that size.
ContentBoxRequest BoxRequestOf(const ParaValues& values, int width, int height);

}  // namespace velloran
