#include "params/ParaMeaning.h"

namespace velloran {

std::string_view NameOf(ParaTab tab) {
    constexpr std::string_view kNames[] = {"none", "paper", "page", "layout", "image", "output"};
    return kNames[static_cast<std::size_t>(tab)];
}

std::string_view NameOf(ParaSet set) {
    constexpr std::string_view kNames[] = {
        "none",   "rotation", "split",  "correction", "deskew",      "contentBox", "pageSize",
        "tone",   "curve",    "adjust", "channels",   "surfaceBlur", "usm",        "light",
        "levels", "quality",  "jpeg",   "reduction",  "options",     "batch",      "viewer"};
    static_assert(std::size(kNames) == static_cast<std::size_t>(ParaSet::kViewer) + 1);
    return kNames[static_cast<std::size_t>(set)];
}

std::string_view NameOf(ParaUnit unit) {
    constexpr std::string_view kNames[] = {"none",        "percent",     "pixels", "degrees",
                                           "pageMeasure", "dotsPerInch", "seconds"};
    return kNames[static_cast<std::size_t>(unit)];
}

}  // namespace velloran
