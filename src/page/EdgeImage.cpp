#include "page/EdgeImage.h"

#include <algorithm>
#include <cstdint>

#include "core/GrayDepth.h"
#include "filters/FitIntoBox.h"
#include "filters/Resample.h"
#include "imageproc/GrayMorphology.h"
#include "tone/AutoLevels.h"

namespace velloran {
namespace {

constexpr int kSmallSide = 700;
constexpr int kContrastLevels = 5;  // position in the list of automatic levels

}  // namespace

CDibImage smallGray(const CDibImage& image) {
    const BoxSize fitted =
        FitIntoBox({image.GetWidth(), image.GetHeight()}, {kSmallSide, kSmallSide});
    if (image.GetBpp() == 24 || image.IsGrayScale()) {
        CDibImage small = ResizedCopy(image, fitted.width, fitted.height);
        small.DeleteAlpha();
        return small.IsValid() && ConvertToGray(small) != 0 ? small : CDibImage();
    }
    CDibImage small = image;
    small.DeleteAlpha();
    if (!small.IsValid() || ResizeTo(small, fitted.width, fitted.height) == 0 ||
        ConvertToGray(small) == 0)
        return {};
    return small;
}

void edgeImage(CDibImage& gray, EdgeReach reach) {
    using imageproc::Brick;
    CDibImage upright = imageproc::erodeGray(gray, Brick(QT::QSize{1, 7}), 0);
    CDibImage flat = imageproc::erodeGray(gray, Brick(QT::QSize{reach, 1}), 0);
    AutoLevels(upright, kContrastLevels);
    AutoLevels(flat, kContrastLevels);
    for (int y = 0; y < gray.GetHeight(); ++y) {
        std::uint8_t* row = upright.GetBits(y);
        const std::uint8_t* other = flat.GetBits(y);
        for (int x = 0; x < gray.GetWidth(); ++x)
            row[x] = static_cast<std::uint8_t>(std::max(0, row[x] - other[x]));
    }
    gray = imageproc::closeGray(upright, {1, 19}, 0);
}

}  // namespace velloran
