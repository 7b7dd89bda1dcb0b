#include "core/BaseImage.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "core/PictureLimits.h"
#include "core/StepContext.h"

namespace velloran {
namespace {

constexpr const char* kNoSize = "CBaseImage::Create : width and height must be greater than zero";
constexpr const char* kNoMemory = "CBaseImage::Create can't allocate memory";
constexpr std::uint64_t kLargestBlock = std::uint64_t{2} << 30;

int RoundedDepth(int bpp) {
    if (bpp < 2)
        return 1;
    if (bpp < 5)
        return 4;
    return bpp > 8 ? 24 : 8;
}

std::uint32_t PaletteCountOf(int bpp) {
    return bpp == 24 ? 0u : 1u << bpp;
}

/// round(dpi * 10000 / 254), as far as the header's field can hold it.
std::int32_t PixelsPerMeter(std::int32_t dpi) {
    const std::int64_t value = (std::int64_t{dpi} * 10000 + 127) / 254;
    return static_cast<std::int32_t>(
        std::min<std::int64_t>(value, std::numeric_limits<std::int32_t>::max()));
}

bool IsGrayLevel(const PaletteEntry& entry, int level) {
    return entry.blue == level && entry.green == level && entry.red == level;
}

/// Levels evenly from black to white; palettes have 2, 16 or 256 entries.
int GrayOfIndex(int index, int count) {
    return index * (255 / (count - 1));
}

/// A new plane; without memory null, and a note of it.
PixelBuffer TryPlane(std::size_t bytes) {
    PixelBuffer plane(static_cast<std::uint8_t*>(AllocatePixels(bytes)));
    if (plane == nullptr)
        NoteOutOfMemory();
    return plane;
}

/// Files hold whole rows, so what lies behind the last pixel must not be left to chance.
void ZeroRowEnds(std::uint8_t* bits, const BitmapHeader& header, std::uint32_t effWidth) {
    if (static_cast<std::uint64_t>(header.width) * header.bitCount % 32 == 0)
        return;
    for (std::int32_t y = 0; y < header.height; ++y)
        std::memset(bits + (y + std::uint64_t{1}) * effWidth - 4, 0, 4);
}

}  // namespace

CBaseImage::CBaseImage(const CBaseImage& source) {
    Copy(source);
}

CBaseImage::CBaseImage(CBaseImage&& from) noexcept {
    TakeFrom(from);
}

CBaseImage& CBaseImage::operator=(const CBaseImage& source) {
    Copy(source);
    return *this;
}

CBaseImage& CBaseImage::operator=(CBaseImage&& from) noexcept {
    Transfer(from);
    return *this;
}

CBaseImage::~CBaseImage() {
    if (ghost_ == nullptr)
        FreePixels(dib_);
}

bool CBaseImage::Destroy() {
    if (ghost_ != nullptr)
        return false;
    if (rare_ != nullptr) {
        rare_->layers.clear();
        rare_->selection.reset();
    }
    alpha_.reset();
    FreePixels(dib_);
    dib_ = bits_ = nullptr;
    header_ = {};
    effWidth_ = 0;
    return true;
}

bool CBaseImage::Transfer(CBaseImage& from) {
    if (this == &from)
        return true;
    if (ghost_ != nullptr)
        return false;
    const auto old = std::move(rare_);  // `from` may be one of its layers
    if (!Destroy())
        return false;
    TakeFrom(from);
    return true;
}

void CBaseImage::TakeFrom(CBaseImage& from) noexcept {
    dib_ = from.dib_;
    header_ = from.header_;
    effWidth_ = from.effWidth_;
    bits_ = from.bits_;
    ghost_ = from.ghost_;
    lastError_ = from.lastError_;
    fields_ = from.fields_;
    alpha_ = std::move(from.alpha_);
    rare_ = std::move(from.rare_);
    if (rare_ != nullptr)
        for (const auto& layer : rare_->layers)
            layer->parent_ = this;
    from.ResetToEmpty();
}

void CBaseImage::ResetToEmpty() noexcept {
    dib_ = bits_ = nullptr;
    header_ = {};
    effWidth_ = 0;
    ghost_ = nullptr;
    lastError_ = "";
    fields_ = {};
    alpha_.reset();
    rare_.reset();
}

namespace {

/// Header, palette and rows. No product can pass 64 bits: a row has at most 6 GiB, and there are at
/// most 2^31.
std::uint64_t BlockBytes(int width, int height, int depth) {
    const std::uint64_t rowBytes =
        EffectiveWidth(static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(depth));
    return sizeof(BitmapHeader) + static_cast<std::uint64_t>(PaletteCountOf(depth)) * 4 +
           rowBytes * static_cast<std::uint64_t>(height);
}

}  // namespace

void CBaseImage::WriteHeader() noexcept {
    if (dib_ != nullptr && ghost_ == nullptr)
        std::memcpy(dib_, &header_, sizeof header_);
}

bool CBaseImage::CanCreate(std::int64_t width, std::int64_t height, int bpp) {
    constexpr std::int64_t kLongestSide = std::numeric_limits<std::int32_t>::max();
    if (width < 1 || height < 1 || width > kLongestSide || height > kLongestSide ||
        width * height > kMaxPicturePixels)
        return false;
    return BlockBytes(static_cast<int>(width), static_cast<int>(height), RoundedDepth(bpp)) <=
           kLargestBlock;
}

void* CBaseImage::Create(int width, int height, int bpp, std::uint32_t type) {
    const bool hadAlpha = alpha_ != nullptr;
    if (!Destroy())
        return nullptr;
    if (width < 1 || height < 1) {
        lastError_ = kNoSize;
        return nullptr;
    }
    const int depth = RoundedDepth(bpp);
    const std::uint64_t rowBytes =
        EffectiveWidth(static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(depth));
    const std::uint32_t head = sizeof(BitmapHeader) + PaletteCountOf(depth) * 4;
    const std::uint64_t blockBytes = BlockBytes(width, height, depth);
    if (blockBytes <= kLargestBlock)
        dib_ = static_cast<std::uint8_t*>(AllocatePixels(blockBytes));
    if (dib_ == nullptr) {
        NoteOutOfMemory();
        lastError_ = kNoMemory;
        return nullptr;
    }
    header_.width = width;
    header_.height = height;
    header_.bitCount = static_cast<std::uint16_t>(depth);
    header_.imageSize = static_cast<std::uint32_t>(blockBytes - head);
    header_.xPixelsPerMeter = PixelsPerMeter(fields_.xDpi);
    header_.yPixelsPerMeter = PixelsPerMeter(fields_.yDpi);
    header_.colorsUsed = PaletteCountOf(depth);
    effWidth_ = static_cast<std::uint32_t>(rowBytes);
    bits_ = dib_ + head;
    fields_.type = type;
    ForgetLastColor();
    std::memset(dib_, 0, head);
    ZeroRowEnds(bits_, header_, effWidth_);
    WriteHeader();
    if (hadAlpha && !CreateAlpha()) {
        Destroy();
        lastError_ = kNoMemory;
    }
    return dib_;
}

bool CBaseImage::Copy(const CBaseImage& source, bool copyPixels, bool copySelection,
                      bool copyAlpha) {
    if (this == &source || source.ghost_ == this)
        return IsValid();
    if (ghost_ != nullptr)
        return false;
    const auto old = std::move(rare_);  // `source` may be one of its layers
    alpha_.reset();
    lastError_ = source.lastError_;
    fields_ = source.fields_;
    const bool hasFields = CopyRare(source);
    if (!source.IsValid() || !hasFields) {
        Destroy();
        if (!hasFields)
            lastError_ = kNoMemory;
        return false;
    }
    if (Create(source.GetWidth(), source.GetHeight(), source.GetBpp(), source.GetType()) == nullptr)
        return false;
    const std::size_t bytes =
        copyPixels ? GetDibSize() : sizeof(BitmapHeader) + source.GetPaletteSize();
    std::memcpy(dib_, source.dib_, bytes);
    header_ = source.header_;
    WriteHeader();
    const auto copyPlane = [this](const std::uint8_t* plane, PixelBuffer& target) {
        target = TryPlane(PlaneSize());
        if (target != nullptr)
            std::memcpy(target.get(), plane, PlaneSize());
        return target != nullptr;
    };
    const bool selection = copySelection && source.GetSelection() != nullptr;
    if (!selection && rare_)
        rare_->fields.selectionBox = {};
    const bool alpha = copyAlpha && source.GetAlpha() != nullptr;
    if ((selection &&
         (OwnRare() == nullptr || !copyPlane(source.GetSelection(), rare_->selection))) ||
        (alpha && !copyPlane(source.GetAlpha(), alpha_))) {
        Destroy();
        lastError_ = kNoMemory;
        return false;
    }
    return true;
}

bool CBaseImage::CopyInfo(const CBaseImage& source) {
    if (IsValid() || ghost_ != nullptr || !CopyRare(source))
        return false;
    header_ = source.header_;
    effWidth_ = source.effWidth_;
    lastError_ = source.lastError_;
    fields_ = source.fields_;
    return true;
}

void CBaseImage::Ghost(const CBaseImage& source) {
    // A ghost of a ghost looks at the owner, which alone has to live on.
    const CBaseImage* owner = source.ghost_ != nullptr ? source.ghost_ : &source;
    if (owner == this || this == &source)
        return;
    if (ghost_ == nullptr)
        Destroy();
    rare_.reset();
    dib_ = source.dib_;
    header_ = source.header_;
    effWidth_ = source.effWidth_;
    bits_ = source.bits_;
    lastError_ = source.lastError_;
    fields_ = source.fields_;
    ghost_ = owner;
}

const CBaseImage::Rare* CBaseImage::FindRare() const noexcept {
    return rare_ == nullptr && ghost_ != nullptr ? ghost_->FindRare() : rare_.get();
}

/// A ghost begins with the fields of its owner.
CBaseImage::Rare* CBaseImage::OwnRare() noexcept {
    if (rare_ == nullptr) {
        const RareImageFields fields = RareFields();
        rare_.reset(new (std::nothrow) Rare);
        if (rare_ != nullptr)
            rare_->fields = fields;
        else
            NoteOutOfMemory();
    }
    return rare_.get();
}

/// The fields alone; planes and layers stay with their image.
bool CBaseImage::CopyRare(const CBaseImage& source) noexcept {
    if (source.FindRare() == nullptr && rare_ == nullptr)
        return true;
    if (OwnRare() == nullptr)
        return false;
    rare_->fields = source.RareFields();
    return true;
}

const RareImageFields& CBaseImage::RareFields() const noexcept {
    static constexpr RareImageFields kDefaults;
    const Rare* rare = FindRare();
    return rare == nullptr ? kDefaults : rare->fields;
}

RareImageFields* CBaseImage::MakeRareFields() {
    Rare* rare = OwnRare();
    return rare == nullptr ? nullptr : &rare->fields;
}

void CBaseImage::ForgetLastColor() noexcept {
    if (rare_ != nullptr)
        rare_->fields.lastColorValid = 0;
}

bool CBaseImage::TakePixels(CBaseImage& from) noexcept {
    if (this == &from || ghost_ != nullptr || from.ghost_ != nullptr || !from.IsValid())
        return false;
    if (header_.width != from.header_.width || header_.height != from.header_.height) {
        alpha_ = std::move(from.alpha_);
        DeleteSelection();
    }
    TakeBlock(from);
    return true;
}

void CBaseImage::TakeBlock(CBaseImage& from) noexcept {
    FreePixels(dib_);
    dib_ = from.dib_;
    bits_ = from.bits_;
    header_ = from.header_;
    effWidth_ = from.effWidth_;
    header_.xPixelsPerMeter = PixelsPerMeter(fields_.xDpi);
    header_.yPixelsPerMeter = PixelsPerMeter(fields_.yDpi);
    ForgetLastColor();
    WriteHeader();
    from.ResetToEmpty();
}

bool CBaseImage::CreateFromArray(const std::uint8_t* bits, int width, int height, int bpp,
                                 std::ptrdiff_t stride, bool bottomUp) {
    const bool knownDepth = bpp == 1 || bpp == 4 || bpp == 8 || bpp == 24 || bpp == 32;
    if (bits == nullptr || !knownDepth || width < 1 || height < 1 || ghost_ != nullptr)
        return false;
    const std::int64_t rowBytes = (std::int64_t{width} * bpp + 7) / 8;
    if (height > 1 && stride < rowBytes && stride > -rowBytes)
        return false;
    alpha_.reset();
    if (Create(width, height, bpp) == nullptr)
        return false;
    if (bpp == 32 && !CreateAlpha()) {
        Destroy();
        lastError_ = kNoMemory;
        return false;
    }
    SetGrayPalette();
    for (int y = 0; y < height; ++y) {
        const std::uint8_t* source = bits + (bottomUp ? y : height - 1 - y) * stride;
        std::uint8_t* target = GetBits(y);
        if (bpp < 32) {
            std::memcpy(target, source, static_cast<std::size_t>(rowBytes));
            continue;
        }
        std::uint8_t* alpha = alpha_.get() + static_cast<std::size_t>(y) * width;
        for (int x = 0; x < width; ++x, source += 4, target += 3) {
            std::memcpy(target, source, 3);
            alpha[x] = source[3];
        }
    }
    return true;
}

std::size_t CBaseImage::GetDibSize() const {
    return IsValid() ? sizeof(BitmapHeader) + GetPaletteSize() + header_.imageSize : 0;
}

std::uint8_t* CBaseImage::GetBits(int row) {
    if (bits_ == nullptr || row < 0 || row >= header_.height)
        return nullptr;
    return bits_ + static_cast<std::size_t>(row) * effWidth_;
}

const std::uint8_t* CBaseImage::GetBits(int row) const {
    if (bits_ == nullptr || row < 0 || row >= header_.height)
        return nullptr;
    return bits_ + static_cast<std::size_t>(row) * effWidth_;
}

PaletteEntry* CBaseImage::GetPalette() {
    if (dib_ == nullptr || header_.colorsUsed == 0)
        return nullptr;
    return reinterpret_cast<PaletteEntry*>(dib_ + sizeof(BitmapHeader));
}

const PaletteEntry* CBaseImage::GetPalette() const {
    if (dib_ == nullptr || header_.colorsUsed == 0)
        return nullptr;
    return reinterpret_cast<const PaletteEntry*>(dib_ + sizeof(BitmapHeader));
}

void CBaseImage::SetGrayPalette() {
    PaletteEntry* palette = GetPalette();
    if (palette == nullptr)
        return;
    const int count = GetPaletteCount();
    for (int i = 0; i < count; ++i) {
        const auto level = static_cast<std::uint8_t>(GrayOfIndex(i, count));
        palette[i] = {level, level, level, 0};
    }
    ForgetLastColor();
}

bool CBaseImage::HasGrayPalette() const {
    const PaletteEntry* palette = GetPalette();
    for (int i = 0; palette != nullptr && i < GetPaletteCount(); ++i)
        if (!IsGrayLevel(palette[i], GrayOfIndex(i, GetPaletteCount())))
            return false;
    return palette != nullptr;
}

bool CBaseImage::IsBW() const {
    const PaletteEntry* palette = GetPalette();
    if (palette == nullptr || header_.bitCount != 1)
        return false;
    return (IsGrayLevel(palette[0], 0) && IsGrayLevel(palette[1], 255)) ||
           (IsGrayLevel(palette[0], 255) && IsGrayLevel(palette[1], 0));
}

void CBaseImage::SetXDpi(int dpi) {
    fields_.xDpi = dpi < 1 ? 96 : dpi;
    header_.xPixelsPerMeter = PixelsPerMeter(fields_.xDpi);
    WriteHeader();
}

void CBaseImage::SetYDpi(int dpi) {
    fields_.yDpi = dpi < 1 ? 96 : dpi;
    header_.yPixelsPerMeter = PixelsPerMeter(fields_.yDpi);
    WriteHeader();
}

void CBaseImage::Clear(std::uint8_t value) {
    if (bits_ == nullptr)
        return;
    if (header_.bitCount == 1)
        value = value != 0 ? 255 : 0;
    if (header_.bitCount == 4)
        value = static_cast<std::uint8_t>((value & 15) * 17);
    std::memset(bits_, value, header_.imageSize);
}

std::size_t CBaseImage::PlaneSize() const {
    return static_cast<std::size_t>(header_.width) * static_cast<std::size_t>(header_.height);
}

bool CBaseImage::CreateAlpha() {
    if (!IsValid() || ghost_ != nullptr)
        return false;
    if (alpha_ == nullptr)
        alpha_ = TryPlane(PlaneSize());
    if (alpha_ != nullptr)
        std::memset(alpha_.get(), 255, PlaneSize());
    return alpha_ != nullptr;
}

bool CBaseImage::CreateSelection() {
    if (!IsValid() || ghost_ != nullptr || OwnRare() == nullptr)
        return false;
    PixelBuffer& selection = rare_->selection;
    if (selection == nullptr)
        selection = TryPlane(PlaneSize());
    if (selection != nullptr)
        std::memset(selection.get(), 0, PlaneSize());
    rare_->fields.selectionBox = {};
    return selection != nullptr;
}

void CBaseImage::DeleteSelection() {
    if (rare_ == nullptr)
        return;
    rare_->selection.reset();
    rare_->fields.selectionBox = {};
}

void CBaseImage::UpdateSelectionBox() {
    SelectionBox box{header_.width, header_.height, 0, 0};
    const std::uint8_t* row = GetSelection();
    for (int y = 0; row != nullptr && y < header_.height; ++y, row += header_.width)
        for (int x = 0; x < header_.width; ++x)
            if (row[x] != 0) {
                box = {std::min(box.left, x), std::min(box.top, y), std::max(box.right, x + 1),
                       y + 1};
            }
    if (rare_ != nullptr || box.right > 0)
        if (Rare* rare = OwnRare())
            rare->fields.selectionBox = box.right > 0 ? box : SelectionBox{};
}

CBaseImage* CBaseImage::GetLayer(int index) const {
    if (index < 0 || index >= GetLayerCount())
        return nullptr;
    return rare_->layers[static_cast<std::size_t>(index)].get();
}

bool CBaseImage::AddLayer(std::unique_ptr<CBaseImage> layer) {
    if (layer == nullptr || OwnRare() == nullptr)
        return false;
    try {
        rare_->layers.push_back(std::move(layer));
    } catch (const std::bad_alloc&) {
        NoteOutOfMemory();
        return false;
    }
    rare_->layers.back()->parent_ = this;
    return true;
}

namespace {

template <typename View, typename Image>
View StoredRows(Image& image) {
    if (!image.IsValid() || (image.GetBpp() != 8 && image.GetBpp() != 24))
        return {};
    return {image.GetBits(), image.GetWidth(), image.GetHeight(), image.GetBpp() / 8,
            static_cast<std::ptrdiff_t>(image.GetEffWidth())};
}

}  // namespace

PlaneView ViewOf(CBaseImage& image) {
    return StoredRows<PlaneView>(image);
}
ConstPlaneView ViewOf(const CBaseImage& image) {
    return StoredRows<ConstPlaneView>(image);
}
PlaneView TopDownViewOf(CBaseImage& image) {
    return ViewOf(image).UpsideDown();
}
ConstPlaneView TopDownViewOf(const CBaseImage& image) {
    return ViewOf(image).UpsideDown();
}

}  // namespace velloran
