#pragma once

// Two pages joined into one picture. The preview and the run call the same engine; a preview gives
// it reduced pages.

#include <cstdint>

#include "core/DibImage.h"
#include "documents/merge/MergeState.h"

namespace velloran {

/// How one of the two is placed.
struct PairItem {
    std::int32_t offsetH = 0, offsetV = 0, scale = 0;
    std::int32_t deskewType = 0, deskewAngle = 0;  // the angle is that of the turn, afterwards
};

/// Where an item lies on the joined picture, from its top left corner.
struct PairPlace {
    int x = 0, y = 0, width = 0, height = 0;
    bool operator==(const PairPlace&) const = default;
};

struct PairRequest {
    const MergePara* para = nullptr;
    PairItem first, second;
    int bits1 = 24, bits2 = 24;  // of the files, as they stand on the disk
};

struct PairResult {
    CDibImage image;
    PairPlace first, second;
    PairItem firstItem, secondItem;  // with the angles that were found
    int dpi = 0;                     // 0 where only the preview was wanted
};

enum class PairEnd { kDone, kRefused, kNoMemory };

/// Composes, and brings the result to the depth that the sources had. kRefused where either is
/// empty, or where the canvas would be empty or above the picture limits.
PairEnd MergePair(const CDibImage& image1, const CDibImage& image2, const PairRequest& request,
                  PairResult& result);

/// The class of a pair by its larger side: 1 above 6000 pixels, 2 above 3000, else 0; and the
/// factor by which values set on a reduced preview grow.
int SizeClassOf(const CDibImage& image1, const CDibImage& image2);
int FactorOf(int sizeClass);

}  // namespace velloran
