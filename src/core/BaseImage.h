#pragma once

// The bitmap under every image of the system: one heap block that holds a 40-byte header, the
// palette and the pixel rows exactly as they lie in a bitmap file. Rows run bottom row first, each
// padded to 4 bytes; 1, 4, 8 or 24 bits a pixel, 24-bit pixels in the order blue, green, red. At
// 1 bit the most significant bit is the leftmost pixel, at 4 bits the high nibble. Alpha and
// selection are planes of their own, one byte a pixel, rows in the same order as the pixel rows.
//
// An image has no lock and belongs to one thread at a time. Copies are deep, moving is Transfer.

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "core/PixelMemory.h"
#include "core/PlaneView.h"

namespace velloran {

/// The head of the block, as it lies in memory and in a file.
struct BitmapHeader {
    std::uint32_t size = 40;
    std::int32_t width = 0, height = 0;
    std::uint16_t planes = 1, bitCount = 0;
    std::uint32_t compression = 0, imageSize = 0;
    std::int32_t xPixelsPerMeter = 0, yPixelsPerMeter = 0;
    std::uint32_t colorsUsed = 0, colorsImportant = 0;
};
static_assert(sizeof(BitmapHeader) == 40);

struct PaletteEntry {
    std::uint8_t blue = 0, green = 0, red = 0, reserved = 0;
    bool operator==(const PaletteEntry&) const = default;
};
static_assert(sizeof(PaletteEntry) == 4);

/// Bounding box of the selected pixels, in pixels from the left and from the first stored row;
/// right and bottom lie outside. All 0 without a selection.
struct SelectionBox {
    std::int32_t left = 0, top = 0, right = 0, bottom = 0;
    bool operator==(const SelectionBox&) const = default;
};

/// What an image carries beside its pixels; copied as one group.
struct ImageFields {
    std::uint32_t type = 0;             // file type id
    std::int32_t backgroundIndex = -1;  // transparent palette index, -1 for none
    PaletteEntry backgroundColor;
    std::int32_t xDpi = 96, yDpi = 96;
    std::uint8_t quality = 90, alphaPaletteEnabled = 0;
};

/// Fields of the image that few pictures set; copied with the others.
struct RareImageFields {
    SelectionBox selectionBox;
    std::int32_t progress = 0, escape = 0;
    std::uint8_t jpegScale = 1;
    std::int32_t frame = 0, frameCount = 0;
    std::uint32_t frameDelay = 0;
    std::uint8_t alphaMax = 255, enabled = 1;
    std::int32_t xOffset = 0, yOffset = 0;
    std::array<std::uint32_t, 6> codecOption{};
    PaletteEntry lastColor;  // cache of the nearest-colour search
    std::uint8_t lastColorIndex = 0, lastColorValid = 0;
    std::uint32_t flags = 0;
};

enum class FlipMode { kFlip = 0, kMirror = 1, kUpsideDown = 2 };

class CBaseImage {
 public:
    CBaseImage() = default;
    CBaseImage(const CBaseImage& source);
    CBaseImage(CBaseImage&& from) noexcept;
    CBaseImage& operator=(const CBaseImage& source);
    CBaseImage& operator=(CBaseImage&& from) noexcept;
    virtual ~CBaseImage();

    /// Frees layers, planes and the block. A ghost frees nothing and gives false.
    virtual bool Destroy();

    /// Destroys this image, takes header, fields and pointers of `from` and leaves it empty.
    /// A layer keeps its parent. Nothing happens when both are the same object, or when this is a
    /// ghost (false).
    virtual bool Transfer(CBaseImage& from);

    /// A new block; palette and row padding zero, pixels not cleared. `bpp` is rounded: below 2
    /// gives 1, below 5 gives 4, above 8 gives 24, else 8. Refuses sides below 1 and blocks above 2
    /// GiB, and says so in GetLastError; the image is then empty. Keeps DPI and the other fields.
    /// An alpha plane that exists takes the new size, opaque. Returns the block, null when refused.
    void* Create(int width, int height, int bpp, std::uint32_t type = 0);
    /// Whether a picture may have such a size: sides of at least 1, at most kMaxPicturePixels and a
    /// block that Create takes.
    static bool CanCreate(std::int64_t width, std::int64_t height, int bpp);

    /// Deep copy of header, fields and the parts asked for; without pixels the rows stay
    /// undefined. Layers are not copied. False when `source` is empty or memory runs out, and the
    /// image is then empty; false for a ghost, which stays.
    bool Copy(const CBaseImage& source, bool copyPixels = true, bool copySelection = true,
              bool copyAlpha = true);

    /// Copies header values and fields of `source` into an empty image; false when not empty.
    bool CopyInfo(const CBaseImage& source);

    /// Makes this a shallow view of `source`, which must outlive it; frees nothing later. The
    /// pixels may be painted through it, geometry and depth refuse.
    void Ghost(const CBaseImage& source);

    /// Takes over the block of `from` (size, depth, palette, rows) in place of this image's own and
    /// leaves `from` empty. Fields, DPI and layers stay; planes stay where the size is the same,
    /// and where it is not, the alpha plane of `from` is taken over. False, both unchanged, when
    /// `from` is empty or the same object, or either is a ghost.
    bool TakePixels(CBaseImage& from) noexcept;

    /// Copies an array of 1, 4, 8, 24 or 32 bits a pixel with rows `stride` bytes apart, the
    /// top row first unless `bottomUp`. 32 bits set the alpha plane from the fourth byte; 8 bits
    /// and fewer take the grey palette. `bits` must not lie in this image. False, image unchanged,
    /// for null, another depth, no size or rows that overlap; false, image empty, without memory.
    bool CreateFromArray(const std::uint8_t* bits, int width, int height, int bpp,
                         std::ptrdiff_t stride, bool bottomUp);

    bool IsValid() const { return dib_ != nullptr; }
    bool IsGhost() const { return ghost_ != nullptr; }
    int GetWidth() const { return header_.width; }
    int GetHeight() const { return header_.height; }
    int GetBpp() const { return header_.bitCount; }
    std::uint32_t GetEffWidth() const { return effWidth_; }
    std::uint32_t GetType() const { return fields_.type; }
    const BitmapHeader& GetHeader() const { return header_; }

    /// The block: header, palette, rows, as a bitmap file holds them behind its 14 first bytes.
    const std::uint8_t* GetDib() const { return dib_; }
    std::size_t GetDibSize() const;

    /// Stored row `row`, 0 is the bottom row of the picture; null when empty or out of range.
    std::uint8_t* GetBits(int row = 0);
    const std::uint8_t* GetBits(int row = 0) const;

    /// Null when there is none (24 bits).
    PaletteEntry* GetPalette();
    const PaletteEntry* GetPalette() const;
    std::uint32_t GetPaletteSize() const { return header_.colorsUsed * 4; }  // bytes
    int GetPaletteCount() const { return static_cast<int>(header_.colorsUsed); }

    /// Entry i becomes the grey i * (255 / (n - 1)).
    void SetGrayPalette();
    /// The palette that SetGrayPalette makes; false without a palette.
    bool HasGrayPalette() const;
    /// 8 bits with a palette of entries (i, i, i).
    bool IsGrayScale() const { return GetBpp() == 8 && HasGrayPalette(); }
    /// 1 bit with one entry black and the other white, in either order.
    bool IsBW() const;

    int GetXDpi() const { return fields_.xDpi; }
    int GetYDpi() const { return fields_.yDpi; }
    /// A value below 1 sets 96. The header takes round(dpi * 10000 / 254) pixels a metre.
    void SetXDpi(int dpi);
    void SetYDpi(int dpi);

    /// Why the last Create failed; empty where it did not.
    const char* GetLastError() const { return lastError_; }
    static const char* GetVersion() { return "CBaseImage 5.99c"; }

    /// Fills all rows: at 1 bit any non-zero byte is 255, at 4 bits the low nibble twice.
    void Clear(std::uint8_t value);

    /// Palette image to 24 bits through the palette. True when the image has 24 bits afterwards;
    /// an image that has no palette stays. A transparent index becomes the transparent colour.
    bool IncreaseBpp24();

    /// Cuts pixels from each side inside the block; nothing is allocated. At 1 bit left and right
    /// round to multiples of 8 (4 and more go up), at 4 bits to even numbers. False, and the
    /// image stays, for an empty image, a ghost, negative values, or a cut that would leave
    /// nothing. When the rounded left and right would leave less than a byte, only rows are cut.
    bool CropInPlace(int left, int top, int right, int bottom);

    /// A quarter turn, to the left or to the right; palette, resolutions (each as it is) and planes
    /// go along. False, image unchanged, when empty, a ghost or without memory.
    bool Rotate90(bool left);
    /// Turns top and bottom round, left and right, or both; in place. False when empty or a ghost.
    bool Flip(FlipMode mode);

    ImageFields& Fields() { return fields_; }
    const ImageFields& Fields() const { return fields_; }
    /// The defaults where the image has none of its own.
    const RareImageFields& RareFields() const noexcept;
    /// Makes them the image's own; null without memory.
    RareImageFields* MakeRareFields();

    /// width * height bytes, or null.
    std::uint8_t* GetAlpha() { return AlphaPlane(); }
    const std::uint8_t* GetAlpha() const { return AlphaPlane(); }
    std::uint8_t* GetSelection() { return SelectionPlane(); }
    const std::uint8_t* GetSelection() const { return SelectionPlane(); }
    /// Makes the plane, all 255 (alpha) or all 0 (selection); false when empty, a ghost or no
    /// memory.
    bool CreateAlpha();
    bool CreateSelection();
    void DeleteAlpha() { alpha_.reset(); }
    void DeleteSelection();
    /// Sets the selection box to the box of the non-zero bytes of the selection plane.
    void UpdateSelectionBox();

    CBaseImage* GetParent() const { return parent_; }
    int GetLayerCount() const {
        return rare_ != nullptr ? static_cast<int>(rare_->layers.size()) : 0;
    }
    CBaseImage* GetLayer(int index) const;
    /// Takes the image over as the last layer; false, and the layer is freed, for null or without
    /// memory.
    bool AddLayer(std::unique_ptr<CBaseImage> layer);

 private:
    /// What few images have, apart, so that an image is small to move and to copy.
    struct Rare {
        RareImageFields fields;
        PixelBuffer selection;
        std::vector<std::unique_ptr<CBaseImage>> layers;
    };

    /// The image's own, or that of the image that a ghost looks at; null where there is none.
    const Rare* FindRare() const noexcept;
    /// Makes it where it is missing; null without memory.
    Rare* OwnRare() noexcept;
    void TakeFrom(CBaseImage& from) noexcept;
    void TakeBlock(CBaseImage& from) noexcept;
    void ResetToEmpty() noexcept;
    void WriteHeader() noexcept;
    std::size_t PlaneSize() const;
    std::uint8_t* AlphaPlane() const { return ghost_ ? ghost_->AlphaPlane() : alpha_.get(); }
    std::uint8_t* SelectionPlane() const {
        if (ghost_ != nullptr)
            return ghost_->SelectionPlane();
        return rare_ != nullptr ? rare_->selection.get() : nullptr;
    }
    bool CopyRare(const CBaseImage& source) noexcept;
    void ForgetLastColor() noexcept;

    std::uint8_t* dib_ = nullptr;  // owned, except by a ghost
    BitmapHeader header_;
    std::uint32_t effWidth_ = 0;
    std::uint8_t* bits_ = nullptr;
    const CBaseImage* ghost_ = nullptr;
    CBaseImage* parent_ = nullptr;
    const char* lastError_ = "";  // never allocated: it tells of memory that ran out
    ImageFields fields_;
    PixelBuffer alpha_;
    std::unique_ptr<Rare> rare_;  // made when something in it is wanted
};

/// Bytes of a stored row: ((width * bpp + 31) / 32) * 4.
constexpr std::uint64_t EffectiveWidth(std::uint64_t width, std::uint64_t bpp) {
    return (width * bpp + 31) / 32 * 4;
}

/// View of an 8-bit (1 channel) or 24-bit (3 channels) image, stored rows, the bottom row first.
/// An image of another depth, or an empty one, gives an empty view.
PlaneView ViewOf(CBaseImage& image);
ConstPlaneView ViewOf(const CBaseImage& image);
/// The same with the top row of the picture first (negative stride).
PlaneView TopDownViewOf(CBaseImage& image);
ConstPlaneView TopDownViewOf(const CBaseImage& image);

}  // namespace velloran
