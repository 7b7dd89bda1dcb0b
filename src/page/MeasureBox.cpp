#include "page/MeasureBox.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <new>

#include "core/DibImage.h"
#include "core/Refusal.h"
#include "page/BinaryPage.h"
#include "page/BoxImage.h"
#include "page/InkContrast.h"
#include "page/Shadows.h"
#include "reduce/CleanPage.h"

namespace velloran {
namespace {

constexpr int kGrain = 2;                     // pixels of the copy: less is no ink
constexpr int kLargestSpeckle = 1 << 20;      // pixels: any page is smaller
constexpr int kUsualSpeckle = 8;              // where the request names none
constexpr double kSideTolerance = 1.0 / 400;  // of the page's longer side, for half the trust
constexpr double kLostForHalf = 0.002;        // ink, for half the trust

struct Ink {
    std::int64_t all = 0, outside = 0;
    double contrast = 0;
};

/// Counts ink on the copy in which the content is searched.
Ink CountInk(const CDibImage& image, const ContentBoxRequest& request, const PageBox& box) {
    BoxImage copy;
    if (!prepareBoxImage(image, request, copy))
        throw std::bad_alloc();
    imageproc::BinaryImage content = BinaryOf(copy.page), shadows;
    if (request.removeBlackEdge) {
        const imageproc::BinaryImage all = content;
        removeShadows(all, content, shadows);
        PaintBinary(content, copy.page);
    }
    CleanRequest clean;
    clean.deBlack = request.removeBlackEdge;
    clean.despeckleSize = kGrain;
    CleanComponents(copy.page, nullptr, clean);
    const PageBox& rect = request.searchRect;
    const int left = static_cast<int>((box.left - rect.left) / copy.scaleX);
    const int top = static_cast<int>((box.top - rect.top) / copy.scaleY);
    const int right = static_cast<int>(std::ceil((box.right - rect.left) / copy.scaleX));
    const int bottom = static_cast<int>(std::ceil((box.bottom - rect.top) / copy.scaleY));
    Ink ink;
    ink.contrast = inkContrast(image, rect, copy.page);
    const ConstPlaneView rows = TopDownViewOf(std::as_const(copy.page));
    for (int y = 0; y < rows.height; ++y) {
        const auto row = rows.Row(y);
        const auto black = [](auto from, auto to) { return std::count(from, to, std::uint8_t{0}); };
        const std::int64_t all = black(row.begin(), row.end());
        const bool crosses = y >= top && y < bottom;
        const int end = std::min<int>(right, rows.width);
        const std::int64_t inside =
            crosses && end > left ? black(row.begin() + left, row.begin() + end) : 0;
        ink.all += all;
        ink.outside += all - inside;
    }
    return ink;
}

double Trust(double deviation, double tolerance) {
    const double share = deviation / tolerance;
    return 1 / (1 + share * share);
}

/// Mean trust in the four sides, as another search finds them.
double Agreement(const PageBox& a, const PageBox& b, double tolerance) {
    return (Trust(a.left - b.left, tolerance) + Trust(a.top - b.top, tolerance) +
            Trust(a.right - b.right, tolerance) + Trust(a.bottom - b.bottom, tolerance)) /
           4;
}

/// How far searches agree that take more or less for dirt. Each starts from a box that is not
/// grown, so that only what they take for content matters.
double PeerAgreement(const CDibImage& image, const ContentBoxRequest& request) {
    ContentBoxRequest plain = request;
    plain.compensation = false;
    plain.speckle =
        request.speckle > 0 ? std::min(request.speckle, kLargestSpeckle) : kUsualSpeckle;
    PageBox own;
    findContentBox(image, plain, own);
    const double tolerance =
        std::max(1.0, kSideTolerance * std::max(image.GetWidth(), image.GetHeight()));
    ContentBoxRequest finer = plain, coarser = plain, bands = plain;
    finer.speckle = std::max(1, plain.speckle / 2);
    coarser.speckle = plain.speckle * 2;
    bands.bkMore = !plain.bkMore;
    double worst = 1;
    for (const ContentBoxRequest& peer : {finer, coarser, bands}) {
        PageBox box;
        findContentBox(image, peer, box);
        worst = std::min(worst, Agreement(own, box, tolerance));
    }
    return worst;
}

}  // namespace

int measureContentBox(const CDibImage& image, const ContentBoxRequest& request,
                      BoxFinding& finding) {
    finding = {};
    const int result = findContentBox(image, request, finding.box);
    if (result == 0)
        return 0;
    return RefuseWhenOutOfMemory([&] {
        const Ink ink = CountInk(image, request, finding.box);
        finding.found = ink.all > 0;
        if (!finding.found)
            return 1;
        finding.inkLost = double(ink.outside) / double(ink.all);
        finding.sure = PeerAgreement(image, request) * Trust(finding.inkLost, kLostForHalf) *
                       trustInContrast(ink.contrast);
        return 1;
    });
}

}  // namespace velloran
