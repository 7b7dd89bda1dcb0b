#include "filters/KernelDepth.h"

#include "core/DibImage.h"
#include "core/GrayDepth.h"

namespace velloran {

int EnsureKernelDepth(CDibImage& image) {
    if (!image.IsValid())
        return 0;
    if (image.GetBpp() == 24 || image.IsGrayScale())
        return 1;
    return image.GetBpp() < 8 ? ConvertToGray(image) : ConvertToRgb(image);
}

}  // namespace velloran
