#include "documents/merge/MergePair.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <tuple>
#include <utility>

#include "codecs/ImageInfo.h"
#include "core/GrayDepth.h"
#include "core/StepContext.h"
#include "filters/Resample.h"
#include "page/ContentBox.h"
#include "page/Deskew.h"
#include "page/FillColor.h"
#include "reduce/CountColors.h"
#include "reduce/DecreaseBpp.h"

namespace velloran {

namespace {

constexpr int kEnlarge = 1, kReduce = 2;  // of MergePara::size
constexpr int kLeastDpi = 100, kNarrowDpi = 150, kWideDpi = 300, kNarrowSide = 1200;

/// One of the two, on its way onto the canvas.
struct Side {
    CDibImage image;
    PairItem item;
    int width = 0, height = 0;  // as it will be drawn
};

class Joiner {
 public:
    Joiner(const PairRequest& request, PairResult& result)
        : para_(*request.para), request_(request), result_(result) {}

    PairEnd Join(const CDibImage& image1, const CDibImage& image2) {
        if (!Take(image1, request_.first, one_) || !Take(image2, request_.second, two_))
            return PairEnd::kNoMemory;
        DropOffsets();
        if (!Deskew(one_) || !Deskew(two_) || !TrimInnerSides())
            return PairEnd::kNoMemory;
        ChooseSizes();
        ResetFarOffsets(one_);
        ResetFarOffsets(two_);
        Place();
        if (!IsAcceptableSize(canvasWidth_, canvasHeight_, 24) ||
            !IsAcceptableSize(one_.width, one_.height, 24) ||
            !IsAcceptableSize(two_.width, two_.height, 24))
            return PairEnd::kRefused;
        if (!Draw())
            return PairEnd::kNoMemory;
        result_.dpi = ChooseDpi();
        result_.image.SetXDpi(result_.dpi);
        result_.image.SetYDpi(result_.dpi);
        result_.firstItem = one_.item;
        result_.secondItem = two_.item;
        return ReduceDepth() ? PairEnd::kDone : PairEnd::kNoMemory;
    }

 private:
    /// Whether the pages stand one above the other.
    bool IsUpright() const { return para_.layout == 2 || para_.layout == 3; }
    bool IsTurned() const { return para_.layout == 1 || para_.layout == 3; }

    static bool Take(const CDibImage& image, const PairItem& item, Side& side) {
        side.image = image;
        side.item = item;
        return side.image.IsValid() && EnsureGrayOrRgb(side.image) != 0;
    }

    void DropOffsets() {
        for (Side* side : {&one_, &two_})
            if (para_.size == kEnlarge || para_.size == kReduce)
                (IsUpright() ? side->item.offsetH : side->item.offsetV) = 0;
    }

    /// The angle that turned the page stays in its item, for a change by hand.
    bool Deskew(Side& side) const {
        PairItem& item = side.item;
        if (item.deskewType < kDeskewRows || item.deskewType > kDeskewManual)
            return true;
        if (item.deskewType != kDeskewManual) {
            Skew skew;
            skew.mode = item.deskewType;
            if (findSkew(side.image, skew.angle, skew.confidence, {}, item.deskewType) == 0)
                return false;
            item.deskewAngle = turnOfSkew(skew);
        }
        if (item.deskewAngle == 0)
            return true;
        constexpr int kCubic = 2;
        return rotateKeepSize(side.image, -item.deskewAngle / 100.0, kCubic, kFillEdge,
                              static_cast<std::uint32_t>(para_.fill)) != 0;
    }

    bool TrimInnerSides() {
        if (para_.findContentBox == 0)
            return true;
        // The one on the left or the top loses its right or bottom side, the other its opposite.
        return Trim(one_, /*isBefore=*/!IsTurned()) && Trim(two_, /*isBefore=*/IsTurned());
    }

    bool Trim(Side& side, bool isBefore) const {
        ContentBoxRequest request;
        request.removeBlackEdge = para_.removeBlackEdge != 0;
        request.searchRect = {0, 0, side.image.GetWidth(), side.image.GetHeight()};
        request.speckle = para_.speckleSize;
        request.compensation = para_.speckleCompensation != 0;
        request.bkMore = para_.bkMore != 0;
        PageBox box;
        if (findContentBox(side.image, request, box) == 0)
            return !CurrentCancel().IsCancelled();
        const int right = side.image.GetWidth() - box.right;
        const int bottom = side.image.GetHeight() - box.bottom;
        int cut[4] = {0, 0, 0, 0};
        if (IsUpright())
            (isBefore ? cut[3] : cut[1]) = isBefore ? bottom : box.top;
        else
            (isBefore ? cut[2] : cut[0]) = isBefore ? right : box.left;
        if (cut[0] + cut[1] + cut[2] + cut[3] > 0)
            trimImage(side.image, cut[0], cut[1], cut[2], cut[3]);
        return true;
    }

    void ChooseSizes() {
        for (Side* side : {&one_, &two_}) {
            side->width = side->image.GetWidth();
            side->height = side->image.GetHeight();
            if (para_.size != kEnlarge && para_.size != kReduce) {
                side->width = Grown(side->width, side->item.scale);
                side->height = Grown(side->height, side->item.scale);
            }
        }
        if (para_.size != kEnlarge && para_.size != kReduce)
            return;
        int Side::*across = IsUpright() ? &Side::width : &Side::height;
        int Side::*along = IsUpright() ? &Side::height : &Side::width;
        const int wanted = para_.size == kEnlarge ? std::max(one_.*across, two_.*across)
                                                  : std::min(one_.*across, two_.*across);
        for (Side* side : {&one_, &two_}) {
            if (side->*across == wanted)
                continue;
            const float ratio =
                static_cast<float>(side->*along) / static_cast<float>(side->*across);
            side->*along = std::max(1, static_cast<int>(ratio * static_cast<float>(wanted) + 0.5F));
            side->*across = wanted;
        }
    }

    /// Never empty, and never so large that sums overflow.
    static int Grown(int size, std::int32_t by) {
        constexpr std::int64_t kMostPixels = 1'000'000;
        return static_cast<int>(std::clamp<std::int64_t>(std::int64_t{size} + by, 1, kMostPixels));
    }

    static void ResetFarOffsets(Side& side) {
        if (std::abs(std::int64_t{side.item.offsetH}) >= side.width)
            side.item.offsetH = 0;
        if (std::abs(std::int64_t{side.item.offsetV}) >= side.height)
            side.item.offsetV = 0;
    }

    /// Sizes and offsets by axis: along the join, and across it from the top or the left.
    struct Axis {
        int length = 0, breadth = 0;
        int shiftAlong = 0, shiftAcross = 0;
        int along = 0, across = 0;  // the place
    };
    Axis AxisOf(const Side& side) const {
        return IsUpright() ? Axis{side.height, side.width, side.item.offsetV, side.item.offsetH}
                           : Axis{side.width, side.height, side.item.offsetH, side.item.offsetV};
    }

    void Place() {
        Axis a = AxisOf(one_), b = AxisOf(two_);
        Axis& before = IsTurned() ? b : a;
        Axis& behind = IsTurned() ? a : b;
        const int blank = std::clamp(para_.blank, 0, 100000);
        int length = a.length + b.length + blank;
        const int difference = behind.shiftAlong - before.shiftAlong;
        before.along = 0;
        behind.along = before.length + blank;
        if (para_.extendEdge) {
            length = std::max(1, length + std::abs(difference));
            behind.along += std::max(0, difference);
            before.along += std::max(0, -difference);
        } else {
            before.along += before.shiftAlong;
            behind.along += behind.shiftAlong;
        }
        const int breadth = PlaceAcross(a, b);
        canvasWidth_ = IsUpright() ? breadth : length;
        canvasHeight_ = IsUpright() ? length : breadth;
        result_.first = PlaceOf(a);
        result_.second = PlaceOf(b);
    }

    PairPlace PlaceOf(const Axis& axis) const {
        return IsUpright() ? PairPlace{axis.across, axis.along, axis.breadth, axis.length}
                           : PairPlace{axis.along, axis.across, axis.length, axis.breadth};
    }

    /// The breadth of the canvas.
    int PlaceAcross(Axis& a, Axis& b) const {
        const int larger = std::max(a.breadth, b.breadth);
        const int smaller = std::min(a.breadth, b.breadth);
        const int breadth = para_.size == kReduce ? smaller : larger;
        for (Axis* axis : {&a, &b})
            axis->across = Aligned(breadth - axis->breadth) + axis->shiftAcross;
        if (!para_.extendEdge || para_.size == kEnlarge || para_.size == kReduce)
            return breadth;
        // All of both is seen: what stands out above or to the left moves the other down.
        const int least = std::min(a.across, b.across);
        a.across -= least;
        b.across -= least;
        return std::max(a.across + a.breadth, b.across + b.breadth);
    }

    /// What lies before an item that leaves `rest` pixels free. Bottom and left are the first
    /// choice, so that its meaning turns with the axis.
    int Aligned(int rest) const {
        constexpr int kCentre = 2, kTopOrRight = 1;
        if (para_.align == kCentre)
            return rest / 2;
        const bool atEnd = (para_.align == kTopOrRight) == IsUpright();
        return atEnd ? rest : 0;
    }

    bool Draw() {
        const bool color = one_.image.GetBpp() == 24 || two_.image.GetBpp() == 24;
        CDibImage& canvas = result_.image;
        if (canvas.Create(static_cast<std::uint32_t>(canvasWidth_),
                          static_cast<std::uint32_t>(canvasHeight_), color ? 24 : 8, 0) == nullptr)
            return false;
        if (!color)
            canvas.SetGrayPalette();
        FillWithColor(canvas, static_cast<std::uint32_t>(para_.fill));
        return DrawOne(one_, result_.first, color) && DrawOne(two_, result_.second, color);
    }

    bool DrawOne(Side& side, const PairPlace& place, bool color) {
        CDibImage& image = side.image;
        dpi_ = std::max(dpi_, image.GetXDpi());
        shortSide_ = std::max(shortSide_, std::min(image.GetWidth(), image.GetHeight()));
        if (ResizeTo(image, place.width, place.height) == 0 ||
            (color && image.GetBpp() < 24 && ConvertToRgb(image) == 0))
            return false;
        const PlaneView canvas = TopDownViewOf(result_.image);
        const ConstPlaneView from = TopDownViewOf(std::as_const(image));
        const int left = std::max(0, place.x);
        const int right = std::min(canvas.width, place.x + from.width);
        const auto bytes = static_cast<std::size_t>(canvas.channels);
        for (int y = std::max(0, place.y); y < std::min(canvas.height, place.y + from.height); ++y)
            if (right > left)
                std::memcpy(
                    canvas.Row(y).data() + static_cast<std::size_t>(left) * bytes,
                    from.Row(y - place.y).data() + static_cast<std::size_t>(left - place.x) * bytes,
                    static_cast<std::size_t>(right - left) * bytes);
        return true;
    }

    int ChooseDpi() const {
        if (para_.dpi >= kLeastDpi)
            return para_.dpi;
        if (dpi_ >= kLeastDpi)
            return dpi_;
        return shortSide_ <= kNarrowSide ? kNarrowDpi : kWideDpi;
    }

    /// 24 bits where a file had them, 8 where both had; else by the colours of the result.
    bool ReduceDepth() {
        if (request_.bits1 >= 24 || request_.bits2 >= 24)
            return result_.image.GetBpp() == 24 || ConvertToRgb(result_.image) != 0;
        if (request_.bits1 == 8 && request_.bits2 == 8)
            return ReduceTo(8);
        const int colors = CountColors(result_.image);
        return ReduceTo(colors > 256 ? 24 : colors < 3 ? 1 : colors < 17 ? 4 : 8);
    }

    bool ReduceTo(int bits) {
        CDibImage& image = result_.image;
        if (bits == 24)
            return image.GetBpp() == 24 || ConvertToRgb(image) != 0;
        if (bits == 8 && image.GetBpp() == 8)
            return true;
        if (image.GetBpp() < 24 && bits < 8 && ConvertToRgb(image) == 0)
            return false;
        return IndexByColors(image, bits);
    }

    /// To a palette of the colours that the picture uses, where that holds them; else by the
    /// quantiser of the reduction.
    static bool IndexByColors(CDibImage& image, int bits) {
        const ExactPalette exact =
            CollectExactPalette(image, 1 << bits, DecreaseBppRequest::kNoReservedColor);
        if (exact.palette.empty()) {
            DecreaseBppRequest request;
            constexpr int k256Colors = 3;
            request.color = k256Colors;
            request.sourceBpp = 24;
            return DecreaseBpp(image, /*previewing=*/false, request) != 0;
        }
        CDibImage indexed;
        if (indexed.Create(static_cast<std::uint32_t>(image.GetWidth()),
                           static_cast<std::uint32_t>(image.GetHeight()),
                           static_cast<std::uint32_t>(bits), 0) == nullptr)
            return false;
        PaletteEntry* entries = indexed.GetPalette();
        std::copy(exact.palette.begin(), exact.palette.end(), entries);
        const auto less = [](const PaletteEntry& a, const PaletteEntry& b) {
            return std::tie(a.red, a.green, a.blue) < std::tie(b.red, b.green, b.blue);
        };
        for (int y = 0; y < image.GetHeight(); ++y) {
            const auto row = static_cast<std::uint32_t>(y);
            const std::uint8_t* pixel = image.GetBits(row);
            std::uint8_t* out = indexed.GetBits(row);
            std::memset(out, 0, indexed.GetEffWidth());
            for (int x = 0; x < image.GetWidth(); ++x, pixel += 3) {
                const PaletteEntry color{pixel[0], pixel[1], pixel[2], 0};
                const auto found =
                    std::lower_bound(exact.palette.begin(), exact.palette.end(), color, less);
                const auto index = static_cast<unsigned>(found - exact.palette.begin());
                const int place = x * bits;
                out[place / 8] =
                    static_cast<std::uint8_t>(out[place / 8] | index << (8 - bits - place % 8));
            }
        }
        indexed.SetXDpi(image.GetXDpi());
        indexed.SetYDpi(image.GetYDpi());
        image.Transfer(indexed);
        return true;
    }

    const MergePara& para_;
    const PairRequest& request_;
    PairResult& result_;
    Side one_, two_;
    int canvasWidth_ = 0, canvasHeight_ = 0;
    int dpi_ = 0, shortSide_ = 0;
};

}  // namespace

PairEnd MergePair(const CDibImage& image1, const CDibImage& image2, const PairRequest& request,
                  PairResult& result) try {
    if (!image1.IsValid() || !image2.IsValid())
        return PairEnd::kRefused;
    return Joiner(request, result).Join(image1, image2);
} catch (const std::bad_alloc&) {
    return PairEnd::kNoMemory;
}

int SizeClassOf(const CDibImage& image1, const CDibImage& image2) {
    constexpr int kThresholds[] = {6000, 3000};
    const int side =
        std::max({image1.GetWidth(), image1.GetHeight(), image2.GetWidth(), image2.GetHeight()});
    for (int n = 0; n < 2; ++n)
        if (side > kThresholds[n])
            return n + 1;
    return 0;
}

int FactorOf(int sizeClass) {
    return sizeClass == 1 ? 3 : sizeClass == 2 ? 2 : 1;
}

}  // namespace velloran
