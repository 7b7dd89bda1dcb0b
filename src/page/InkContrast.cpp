#include "page/InkContrast.h"

#include <algorithm>
#include <cstdint>

#include "page/EdgeImage.h"

namespace velloran {
namespace {

constexpr double kGrainLevels = 6, kInkLevels = 18;

struct Mean {
    std::int64_t sum = 0, count = 0;
    void Add(int value) {
        sum += value;
        ++count;
    }
    double Value() const { return double(sum) / double(count); }
};

}  // namespace

double inkContrast(const CDibImage& image, const PageBox& part, const CDibImage& blackWhite) {
    const CDibImage gray = smallGray(image);
    if (!gray.IsValid())
        return 0;  // a thin strip, or no memory, which has been noted
    const ConstPlaneView levels = TopDownViewOf(gray), ink = TopDownViewOf(blackWhite);
    const double scaleX = double(image.GetWidth()) / gray.GetWidth();
    const double scaleY = double(image.GetHeight()) / gray.GetHeight();
    Mean black, white;
    for (int y = 0; y < levels.height; ++y) {
        const double inPartY = ((y + 0.5) * scaleY - part.top) / part.Height();
        if (inPartY < 0 || inPartY >= 1)
            continue;
        const auto inkRow = ink.Row(static_cast<int>(inPartY * ink.height));
        const auto row = levels.Row(y);
        for (int x = 0; x < levels.width; ++x) {
            const double inPartX = ((x + 0.5) * scaleX - part.left) / part.Width();
            if (inPartX < 0 || inPartX >= 1)
                continue;
            const auto at = static_cast<std::size_t>(inPartX * ink.width);
            (inkRow[at] == 0 ? black : white).Add(row[static_cast<std::size_t>(x)]);
        }
    }
    return black.count == 0 || white.count == 0 ? 0 : white.Value() - black.Value();
}

double trustInContrast(double levels) {
    return std::clamp((levels - kGrainLevels) / (kInkLevels - kGrainLevels), 0.0, 1.0);
}

}  // namespace velloran
