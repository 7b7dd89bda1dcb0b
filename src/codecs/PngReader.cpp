#include "codecs/PngReader.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "codecs/DecodedPage.h"
#include "codecs/ExifBlock.h"
#include "codecs/Png.h"
#include "codecs/PngMetadata.h"
#include "codecs/Upright.h"
#include "core/IndexRows.h"

namespace velloran {
namespace {

constexpr std::int64_t kDeflateRatio = 1032;
constexpr png_alloc_size_t kMaxChunkBytes = 16 << 20;

// Chunks that say nothing a page needs, and those that are read apart; profiles and texts can be
// large and slow.
constexpr char kIgnoredChunks[] =
    "bKGD\0cHRM\0eXIf\0gAMA\0hIST\0iCCP\0iTXt\0oFFs\0pCAL\0sBIT\0sCAL\0sPLT\0sRGB\0sTER\0tEXt\0"
    "tIME\0zTXt";
constexpr int kIgnoredChunkCount = sizeof kIgnoredChunks / 5;

}  // namespace

PngReader::~PngReader() {
    png_destroy_read_struct(&png_, &info_, nullptr);
}

void PngReader::Read(png_structp png, png_bytep to, std::size_t count) {
    static_cast<PngReader*>(png_get_io_ptr(png))->Deliver(to, count);
}

// A pixel chunk that the end of the file cuts is told as long as what is there; libpng would
// otherwise ask for a piece beyond the end and lose all of it.
void PngReader::Deliver(std::uint8_t* to, std::size_t count) {
    if (source_.Read(to, count) < count)
        png_error(png_, "the file breaks off");
    if (position_ == nextChunk_ && count == 8) {
        const std::uint64_t left = source_.End() - position_ - 8;
        const std::uint64_t length = png_get_uint_32(to);
        if (length > left && std::memcmp(to + 4, "IDAT", 4) == 0)
            png_save_uint_32(to, static_cast<png_uint_32>(left));
        if (std::memcmp(to + 4, "acTL", 4) == 0)
            frameCountAt_ = position_ + 8;
        nextChunk_ = position_ + 12 + std::min(length, left);
    } else if (position_ == frameCountAt_ && position_ != 0 && count >= 4) {
        frames_ = static_cast<int>(std::clamp<png_uint_32>(png_get_uint_32(to), 1, 0x7FFFFFFF));
    }
    position_ += count;
}

void PngReader::SetUp() {
    png_set_read_fn(png_, this, &PngReader::Read);
    png_set_user_limits(png_, std::numeric_limits<std::int32_t>::max(),
                        std::numeric_limits<std::int32_t>::max());
    png_set_chunk_malloc_max(png_, kMaxChunkBytes);
    png_set_benign_errors(png_, 1);
    png_set_crc_action(png_, PNG_CRC_DEFAULT, PNG_CRC_QUIET_USE);
    png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_NEVER,
                                reinterpret_cast<png_const_bytep>(kIgnoredChunks),
                                kIgnoredChunkCount);
}

bool PngReader::ReadHead(FileError* error) {
    png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, &message_, OnPngError, OnPngWarning);
    info_ = png_ != nullptr ? png_create_info_struct(png_) : nullptr;
    if (info_ == nullptr)
        return FailNoMemory(error);
    const bool done = RunGuarded(png_, [this] {
        SetUp();
        png_read_info(png_, info_);
        TakeHead();
    });
    if (!done)
        return FailDamaged(error, message_.text);
    const int bits = form_ == Form::kBgra ? 32 : (form_ == Form::kGrayAlpha ? 16 : PageBits());
    if (!IsAcceptableSize(width_, height_, bits))
        return FailContent(error, "the picture is too large", FileReason::kTooLarge);
    metadata_ = ReadPngMetadata(file_);
    orientation_ = ExifOrientation(metadata_.exif);
    return true;
}

void PngReader::TakeHead() {
    png_uint_32 width = 0, height = 0;
    int interlace = 0;
    png_get_IHDR(png_, info_, &width, &height, &bitDepth_, &colorType_, &interlace, nullptr,
                 nullptr);
    width_ = static_cast<int>(width);
    height_ = static_cast<int>(height);
    interlaced_ = interlace != PNG_INTERLACE_NONE;
    channels_ = png_get_channels(png_, info_);
    if (colorType_ == PNG_COLOR_TYPE_PALETTE)
        png_get_PLTE(png_, info_, &palette_, &paletteCount_);
    png_color_16p transparent = nullptr;
    hasTransparency_ =
        png_get_tRNS(png_, info_, &paletteAlpha_, &paletteAlphaCount_, &transparent) != 0;
    if (hasTransparency_ && colorType_ == PNG_COLOR_TYPE_GRAY && bitDepth_ <= 8 &&
        transparent != nullptr)
        transparentGray_ = transparent->gray & ((1 << bitDepth_) - 1);
    png_uint_32 xPerMeter = 0, yPerMeter = 0;
    int unit = PNG_RESOLUTION_UNKNOWN;
    if (png_get_pHYs(png_, info_, &xPerMeter, &yPerMeter, &unit) != 0 &&
        unit == PNG_RESOLUTION_METER) {
        xDpi_ = PlausibleDpi(xPerMeter * 0.0254);
        yDpi_ = PlausibleDpi(yPerMeter * 0.0254);
    }
    ChooseForm();
}

void PngReader::ChooseForm() {
    const bool wideTransparency =
        hasTransparency_ && colorType_ != PNG_COLOR_TYPE_PALETTE && transparentGray_ < 0;
    if (channels_ == 2 || (channels_ == 1 && wideTransparency))
        form_ = Form::kGrayAlpha;
    else if (channels_ == 4 || (channels_ == 3 && wideTransparency))
        form_ = Form::kBgra;
    else if (bitDepth_ == 2)
        form_ = Form::kNibbles;
}

int PngReader::PageBits() const {
    if (channels_ >= 3)
        return 24;
    return bitDepth_ == 1 ? 1 : (bitDepth_ <= 4 ? 4 : 8);
}

ImageInfo PngReader::Info() const {
    ImageInfo info;
    const bool isSideways = SwapsSides(orientation_);
    info.width = isSideways ? height_ : width_;
    info.height = isSideways ? width_ : height_;
    info.bitsPerPixel = bitDepth_ * channels_;
    info.colorsUsed = paletteCount_;
    info.xDpi = isSideways ? yDpi_ : xDpi_;
    info.yDpi = isSideways ? xDpi_ : yDpi_;
    if (colorType_ != PNG_COLOR_TYPE_PALETTE) {
        info.gray = channels_ <= 2 && bitDepth_ >= 8;
        return info;
    }
    info.gray = paletteCount_ == 256;
    for (int i = 0; i < paletteCount_; ++i)
        info.gray =
            info.gray && palette_[i].red == i && palette_[i].green == i && palette_[i].blue == i;
    return info;
}

int PngReader::SourceBits() const {
    return channels_ == 1 && bitDepth_ <= 8 ? PageBits() : bitDepth_ * channels_;
}

void PngReader::FillPalette(CDibImage& page) const {
    if (page.GetBpp() > 8)
        return;
    PaletteEntry* entries = page.GetPalette();
    if (colorType_ == PNG_COLOR_TYPE_PALETTE) {
        const int count = std::min(paletteCount_, page.GetPaletteCount());
        for (int i = 0; i < count; ++i)
            entries[i] = {palette_[i].blue, palette_[i].green, palette_[i].red, 0};
        FillPaletteAlpha(page);
        return;
    }
    page.Fields().backgroundIndex = transparentGray_;
    page.SetGrayPalette();
    if (bitDepth_ == 2) {
        for (int i = 0; i < 4; ++i) {
            const auto level = static_cast<std::uint8_t>(i * 85);
            entries[i] = {level, level, level, 0};
        }
    }
}

// One clear entry among opaque ones is a transparent index. Anything else needs the alpha of
// every entry, which then stands in the palette.
void PngReader::FillPaletteAlpha(CDibImage& page) const {
    const int count = std::min(paletteAlphaCount_, page.GetPaletteCount());
    if (!hasTransparency_ || count == 0)
        return;
    const std::span<const std::uint8_t> alpha(paletteAlpha_, static_cast<std::size_t>(count));
    const auto clear = std::count(alpha.begin(), alpha.end(), 0);
    const auto opaque = std::count(alpha.begin(), alpha.end(), 255);
    if (clear == 1)
        page.Fields().backgroundIndex =
            static_cast<int>(std::find(alpha.begin(), alpha.end(), 0) - alpha.begin());
    if (opaque == count || (clear == 1 && opaque == count - 1))
        return;
    page.Fields().alphaPaletteEnabled = 1;
    for (int i = 0; i < page.GetPaletteCount(); ++i)
        page.GetPalette()[i].reserved = i < count ? alpha[static_cast<std::size_t>(i)] : 255;
}

void PngReader::AskForTransforms() {
    if (bitDepth_ == 16)
        png_set_strip_16(png_);
    if (channels_ >= 3)
        png_set_bgr(png_);
    if (form_ == Form::kNibbles)
        png_set_packing(png_);
    if ((form_ == Form::kGrayAlpha && channels_ == 1) || (form_ == Form::kBgra && channels_ == 3))
        png_set_tRNS_to_alpha(png_);
    png_set_interlace_handling(png_);
    png_read_update_info(png_, info_);
    rowBytes_ = png_get_rowbytes(png_, info_);
}

bool PngReader::ReadPage(CDibImage& page, LoadNotes& notes, FileError* error) {
    const std::int64_t decoded =
        (static_cast<std::int64_t>(width_) * bitDepth_ * channels_ + 7) / 8 * height_;
    if (!IsPlausibleSize(decoded, source_.End(), kDeflateRatio,
                         std::int64_t{4} * width_ * height_ / 3))
        return FailDamaged(error, "the file is too short for its picture");
    const bool withAlpha = form_ == Form::kGrayAlpha || form_ == Form::kBgra;
    if (!CreatePage(width_, height_, PageBits(), withAlpha, page, error))
        return false;
    FillPalette(page);
    if (!RunGuarded(png_, [this] { AskForTransforms(); }))
        return FailDamaged(error, message_.text);

    // The passes of an interlaced picture meet in whole rows, so all of them are kept.
    PixelBuffer scratch;
    if (form_ != Form::kDirect)
        scratch = MakePixelBuffer(rowBytes_ * static_cast<std::size_t>(interlaced_ ? height_ : 1));
    const bool whole = RunGuarded(png_, [&] { DecodeRows(page, scratch.get()); });
    if (rowsDone_ == 0)
        return FailDamaged(error, message_.text);
    if (interlaced_ && scratch != nullptr)
        for (int y = 0; y < rowsDone_; ++y)
            ConvertRow(scratch.get() + static_cast<std::size_t>(y) * rowBytes_, page, y);
    if (!whole)
        WhitenRows(page, rowsDone_);
    // The end of the pixels' data and of the file tells whether all of it is there.
    if (!whole || !RunGuarded(png_, [this] { png_read_end(png_, nullptr); }))
        notes.NoteDamage(message_.text);
    notes.pictures = frames_;
    TurnUpright(page, orientation_);
    SetUprightDpi(page, orientation_, xDpi_, yDpi_);
    return true;
}

void PngReader::DecodeRows(CDibImage& page, std::uint8_t* scratch) {
    if (!interlaced_) {
        for (; rowsDone_ < height_; ++rowsDone_) {
            png_read_row(png_, scratch != nullptr ? scratch : RowFromTop(page, rowsDone_), nullptr);
            if (scratch != nullptr)
                ConvertRow(scratch, page, rowsDone_);
        }
        return;
    }
    // Each pass fills blocks around its pixels, so that a picture that breaks off is coarse
    // below and not holed.
    constexpr int kPasses = 7;
    for (int pass = 0; pass < kPasses; ++pass)
        for (int y = 0; y < height_; ++y) {
            std::uint8_t* row = scratch != nullptr
                                    ? scratch + static_cast<std::size_t>(y) * rowBytes_
                                    : RowFromTop(page, y);
            png_read_row(png_, nullptr, row);
            rowsDone_ = std::max(rowsDone_, y + 1);
        }
}

void PngReader::ConvertRow(const std::uint8_t* from, CDibImage& page, int y) const {
    std::uint8_t* row = RowFromTop(page, y);
    if (form_ == Form::kNibbles) {
        PackIndexRow(from, width_, 4, row);
        return;
    }
    std::uint8_t* alpha = AlphaRowFromTop(page, y);
    if (form_ == Form::kGrayAlpha) {
        for (int x = 0; x < width_; ++x, from += 2) {
            row[x] = from[0];
            alpha[x] = from[1];
        }
        return;
    }
    for (int x = 0; x < width_; ++x, from += 4, row += 3) {
        row[0] = from[0];
        row[1] = from[1];
        row[2] = from[2];
        alpha[x] = from[3];
    }
}

bool LoadPng(ByteSource& source, CDibImage& image, LoadNotes& notes, FileError* error) {
    return LoadWith<PngReader>(source, image, notes, error);
}

bool ReadPngInfo(ByteSource& source, ImageInfo& info, FileError* error) {
    return InfoWith<PngReader>(source, info, error);
}

bool ReadPngNotes(ByteSource& source, LoadNotes& notes, FileError* error) {
    return NotesWith<PngReader>(source, notes, error);
}

}  // namespace velloran
