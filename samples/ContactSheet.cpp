#include "samples/ContactSheet.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <stdexcept>

#include "core/GrayDepth.h"
#include "imaging/Resize.h"
#include "samples/Coverage.h"
#include "samples/FontBook.h"

namespace velloran::samples {

namespace {

constexpr int kGap = 12;                // around each picture
constexpr std::uint8_t kGround = 0xD8;  // a gray on which white paper shows its edge
constexpr Font kCaptionFont = Font::kHei;

/// Shrinks the picture into the cell; 24 bits.
void FitIntoCell(CDibImage& image, const SheetLayout& layout) {
    if (!image.IsValid())
        throw std::invalid_argument("an empty picture");
    if (ConvertToRgb(image) == 0)
        throw std::bad_alloc();
    const double scale = std::min({1.0, static_cast<double>(layout.cellWidth) / image.GetWidth(),
                                   static_cast<double>(layout.cellHeight) / image.GetHeight()});
    if (scale == 1)
        return;
    const auto shrunk = [scale](int side) {
        return std::max(1, static_cast<int>(std::lround(side * scale)));
    };
    CDibImage small;
    if (small.Create(shrunk(image.GetWidth()), shrunk(image.GetHeight()), 24) == nullptr)
        throw std::bad_alloc();
    ResizeArea(ViewOf(image), ViewOf(small));
    image.Transfer(small);
}

void Place(const CDibImage& picture, CDibImage& sheet, int left, int top) {
    const ConstPlaneView from = TopDownViewOf(picture);
    const PlaneView to = TopDownViewOf(sheet);
    for (int y = 0; y < from.height; ++y) {
        const auto row = from.Row(y);
        std::memcpy(to.Row(top + y).data() + 3 * left, row.data(), row.size());
    }
}

/// One line of black text, cut at `width`.
class CaptionPen {
 public:
    explicit CaptionPen(double size) : size_(size) {}

    void Write(std::u16string_view text, CDibImage& sheet, int left, double baseline, int width) {
        double x = left;
        for (const char16_t character : text) {
            const Glyph& glyph = fonts_.Get(kCaptionFont, character);
            if (x + glyph.advance * size_ > left + width)
                return;
            Path path = glyph.outline;
            for (Contour& contour : path.contours)
                for (Point& point : contour)
                    point = Point{x, baseline} + point * size_;
            Ink(path, sheet);
            x += glyph.advance * size_;
        }
    }

 private:
    void Ink(const Path& path, CDibImage& sheet) {
        if (path.contours.empty())
            return;
        const PlaneView rows = TopDownViewOf(sheet);
        const PixelBox pixels = PixelsAround(path.GetBounds(), rows.width, rows.height);
        if (pixels.IsEmpty())
            return;
        coverage_.Fill(path, pixels);
        for (int y = pixels.top; y < pixels.bottom; ++y)
            for (int x = pixels.left; x < pixels.right; ++x)
                for (int c = 0; c < 3; ++c) {
                    std::uint8_t& sample = rows.Row(y)[3 * x + c];
                    const float bare = 1 - coverage_.Row(y)[x - pixels.left];
                    sample =
                        static_cast<std::uint8_t>(std::clamp(sample * bare + 0.5f, 0.0f, 255.0f));
                }
    }

    double size_;
    FontBook fonts_;
    Coverage coverage_;
};

}  // namespace

CDibImage MakeContactSheet(std::vector<SheetPicture>& pictures, const SheetLayout& layout) {
    if (pictures.empty() || layout.columns < 1 || layout.cellWidth < 1 || layout.cellHeight < 1 ||
        layout.captionSize < 0)
        throw std::invalid_argument("no pictures, or a cell without pixels");
    int width = 0, height = 0;
    for (SheetPicture& picture : pictures) {
        FitIntoCell(picture.image, layout);
        width = std::max(width, picture.image.GetWidth());
        height = std::max(height, picture.image.GetHeight());
    }
    const int count = static_cast<int>(pictures.size());
    const int columns = std::min(layout.columns, count);
    const int rows = (count + columns - 1) / columns;
    const int captionHeight = static_cast<int>(std::ceil(layout.captionSize * 1.4));
    const int stepX = width + kGap, stepY = height + captionHeight + kGap;
    CDibImage sheet;
    if (sheet.Create(columns * stepX + kGap, rows * stepY + kGap, 24) == nullptr)
        throw std::bad_alloc();
    const PlaneView pixels = ViewOf(sheet);
    for (int y = 0; y < pixels.height; ++y)
        std::ranges::fill(pixels.Row(y), kGround);
    CaptionPen pen(layout.captionSize);
    for (int i = 0; i < count; ++i) {
        const int left = kGap + i % columns * stepX, top = kGap + i / columns * stepY;
        Place(pictures[i].image, sheet, left, top);
        if (layout.captionSize > 0)
            pen.Write(pictures[i].caption, sheet, left,
                      top + pictures[i].image.GetHeight() + 1.1 * layout.captionSize, width);
    }
    return sheet;
}

}  // namespace velloran::samples
