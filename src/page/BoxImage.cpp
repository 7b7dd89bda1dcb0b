#include "page/BoxImage.h"

#include <algorithm>

#include "core/GrayDepth.h"
#include "core/GrayRows.h"
#include "core/Rounding.h"
#include "core/Threads.h"
#include "filters/Resample.h"
#include "page/SkewScore.h"
#include "reduce/Binarize.h"

namespace velloran {
namespace {

constexpr int kWolfBlack = 50, kWolfWhite = 254;
constexpr int kLeastSpeckle = 4;

struct Preparation {
    double scale = 1;
    int window = 151;
    bool halves = false;  // once more behind the threshold
};

Preparation ChoosePreparation(int longerSide, bool bkMore) {
    if (!bkMore)
        return {longerSide > 1500 ? longerSide / 1500.0 : 1.0, 151, false};
    if (longerSide >= 2400)
        return {longerSide / 2400.0, 251, true};
    return longerSide < 1201 ? Preparation{1.0, 101, false}
                             : Preparation{longerSide / 1200.0, 151, false};
}

/// The grey of a part of a colour page, without a copy of its colours.
bool GrayPart(const CDibImage& image, const PageBox& part, CDibImage& page) {
    if (page.Create(part.Width(), part.Height(), 8) == nullptr)
        return false;
    page.SetGrayPalette();
    const ConstPlaneView colors = TopDownViewOf(image);
    const PlaneView gray = TopDownViewOf(page);
#pragma omp parallel for schedule(static) if (IsWorthThreads(gray))
    for (int y = 0; y < gray.height; ++y)
        GrayOfColors(colors.Row(part.top + y).data() + 3 * std::ptrdiff_t{part.left}, gray.width,
                     gray.Row(y).data());
    return true;
}

bool CutGray(const CDibImage& image, const PageBox& part, CDibImage& page) {
    if (image.GetBpp() == 24)
        return GrayPart(image, part, page);
    page = image;
    if (!page.IsValid())
        return false;
    page.DeleteAlpha();
    const int right = image.GetWidth() - part.right, bottom = image.GetHeight() - part.bottom;
    // Below 8 bits a cut keeps whole bytes, so the depth changes first.
    if (page.GetBpp() < 8 && ConvertToGray(page) == 0)
        return false;
    const bool cuts = part.left != 0 || part.top != 0 || right != 0 || bottom != 0;
    if (cuts && trimImage(page, part.left, part.top, right, bottom) == 0)
        return false;
    return ConvertToGray(page) != 0;
}

}  // namespace

bool prepareBoxImage(const CDibImage& image, const ContentBoxRequest& request, BoxImage& copy) {
    const PageBox& part = request.searchRect;
    if (part.Width() < 1 || part.Height() < 1 || !CutGray(image, part, copy.page))
        return false;
    const Preparation preparation =
        ChoosePreparation(std::max(image.GetWidth(), image.GetHeight()), request.bkMore);
    const int width = std::max(1, static_cast<int>(part.Width() / preparation.scale));
    const int height = std::max(1, static_cast<int>(part.Height() / preparation.scale));
    if (preparation.scale > 1 && ResizeTo(copy.page, width, height) == 0)
        return false;
    if (!WolfThreshold(copy.page, preparation.window, preparation.window, kWolfBlack, kWolfWhite,
                       /*keepDepth=*/true))
        return false;
    copy.speckle = request.speckle;
    if (preparation.halves) {
        halve(copy.page, 1);
        copy.speckle = std::max(kLeastSpeckle, RoundHalf(copy.speckle * 1200.0 / 1500.0));
    }
    copy.scaleX = static_cast<double>(part.Width()) / copy.page.GetWidth();
    copy.scaleY = static_cast<double>(part.Height()) / copy.page.GetHeight();
    return true;
}

}  // namespace velloran
