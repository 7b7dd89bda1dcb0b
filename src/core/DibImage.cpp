#include "core/DibImage.h"

#include <algorithm>
#include <new>

#include "core/StepContext.h"

namespace velloran {

CDibImage::CDibImage(const CDibImage& source) : CBaseImage(source) {
    CopySource(source);
}

CDibImage& CDibImage::operator=(const CDibImage& source) {
    if (this == &source)
        return *this;
    CBaseImage::operator=(source);
    CopySource(source);
    return *this;
}

CDibImage& CDibImage::operator=(CDibImage&& from) noexcept {
    Transfer(from);
    return *this;
}

void CDibImage::CopySource(const CDibImage& source) {
    try {
        source_ = source.source_;
    } catch (const std::bad_alloc&) {  // the name's text
        NoteOutOfMemory();
        Destroy();
    }
}

bool CDibImage::CropPerMille(int left, int top, int right, int bottom) {
    if (!IsValid() || (left == 0 && top == 0 && right == 0 && bottom == 0))
        return false;
    return CropInPlace(PerMilleToPixels(GetWidth(), left), PerMilleToPixels(GetHeight(), top),
                       PerMilleToPixels(GetWidth(), right), PerMilleToPixels(GetHeight(), bottom));
}

int PerMilleToPixels(int size, int marginPerMille) {
    const std::int64_t margin = std::clamp(marginPerMille, 0, 1000);
    const std::int64_t pixels = (std::max(size, 0) * margin * 10 + 5) / 10000;
    return pixels < 3 ? 0 : static_cast<int>(pixels);
}

}  // namespace velloran
