#pragma once

// The small copy of a page on which its lines are traced, and what of it is ink.

#include <cstdint>
#include <vector>

#include "core/DibImage.h"
#include "core/QtTypes.h"

namespace velloran::dewarping {

/// A page that is cut to its content.
class CEBookPage : public CBaseImage {
 public:
    /// An 8-bit copy; throws std::bad_alloc.
    explicit CEBookPage(const CBaseImage& page);

    /// Keeps the pixels of the box (right and bottom outside). False when nothing would be left.
    bool cropTo(int left, int top, int right, int bottom);
};

/// Pixels of a copy in the picture that it was made of: p * scale + offset.
struct CopyPlace {
    QT::QPointF scale{1, 1}, offset;

    QT::QPointF inPicture(const QT::QPointF& p) const {
        return {p.x * scale.x + offset.x, p.y * scale.y + offset.y};
    }
    /// Of the copy that begins (left, top) pixels further.
    CopyPlace movedBy(int left, int top) const {
        return {scale, inPicture({static_cast<double>(left), static_cast<double>(top)})};
    }
};

enum class CopySize { kFine, kMedium, kSmall };

/// A reduced copy of an 8-bit grey page. Throws std::bad_alloc.
CDibImage prepareTraceImage(const CDibImage& gray, CopySize size, CopyPlace& place);

/// How dark each pixel is beside the paper around it: 0 to 255, the darkness of the page's ink; the
/// top row first.
struct InkPage {
    int width = 0, height = 0;
    std::vector<std::uint8_t> ink;
    double letterHeight = 0;  // of most of the ink, in pixels; 0: there are no letters

    std::uint8_t* row(int y) { return ink.data() + static_cast<std::ptrdiff_t>(y) * width; }
    const std::uint8_t* row(int y) const {
        return ink.data() + static_cast<std::ptrdiff_t>(y) * width;
    }
};

struct InkRequest {
    /// Ink is darker than its paper by this share of the paper's level, in 255ths; from 8 on, light
    /// is even enough to drop what is faint beside the page's ink.
    double sigma = 12;
    /// The page holds text alone: nothing is taken for a picture, a rule or a speck.
    bool clean = false;
};

/// Pictures, rules and specks are left out. Throws std::bad_alloc.
InkPage findInk(ConstPlaneView page, const InkRequest& request);

}  // namespace velloran::dewarping
