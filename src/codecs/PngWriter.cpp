#include <png.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "codecs/DecodedPage.h"
#include "codecs/EncodedPage.h"
#include "codecs/Png.h"
#include "codecs/PngGuard.h"
#include "codecs/PngMetadata.h"
#include "core/DibImage.h"
#include "core/IndexRows.h"
#include "io/ByteSink.h"

namespace velloran {
namespace {

/// What the file holds, and what a row has to become for it.
struct PngPlan {
    enum class Row { kAsIs, kGrayAlpha, kPaletteBgra, kBgra };
    Row row = Row::kAsIs;
    int colorType = PNG_COLOR_TYPE_PALETTE;
    int bitDepth = 8;
    bool invertMono = false;    // 1 bit with white first
    int transparentLevel = -1;  // of a grey file
    int paletteCount = 0;
    std::array<png_color, 256> palette{};
    int alphaCount = 0;
    std::array<png_byte, 256> alpha{};
    std::vector<PngChunk> chunks;  // of what travels along
};

void WriteBytes(png_structp png, png_bytep data, std::size_t count) {
    if (!static_cast<ByteSink*>(png_get_io_ptr(png))->Write(data, count))
        png_error(png, "write failed");
}

// The file is flushed once, when it is whole.
void FlushNothing(png_structp) {}

/// One more than the highest index in use, at least 1.
int UsedPaletteCount(const CDibImage& image) {
    std::array<bool, 256> used{};
    std::vector<std::uint8_t> indices(static_cast<std::size_t>(image.GetWidth()));
    for (int y = 0; y < image.GetHeight(); ++y) {
        UnpackIndexRow(image.GetBits(y), image.GetWidth(), image.GetBpp(), indices.data());
        for (const std::uint8_t index : indices)
            used[index] = true;
    }
    int count = image.GetPaletteCount();
    while (count > 1 && !used[static_cast<std::size_t>(count) - 1])
        --count;
    return count;
}

/// A palette that was made anew after loading has no alpha, whatever the flag says.
bool HasPaletteAlpha(const CDibImage& image) {
    const PaletteEntry* entries = image.GetPalette();
    return image.Fields().alphaPaletteEnabled != 0 &&
           std::any_of(entries, entries + image.GetPaletteCount(),
                       [](const PaletteEntry& entry) { return entry.reserved != 0; });
}

void PlanPalette(const CDibImage& image, PngPlan& plan) {
    const int background = image.Fields().backgroundIndex;
    plan.paletteCount = UsedPaletteCount(image);
    if (background < image.GetPaletteCount())
        plan.paletteCount = std::max(plan.paletteCount, background + 1);
    const PaletteEntry* entries = image.GetPalette();
    plan.alpha.fill(255);
    if (background >= 0 && background < plan.paletteCount) {
        plan.alpha[static_cast<std::size_t>(background)] = 0;
        plan.alphaCount = background + 1;
    }
    for (int i = 0; i < plan.paletteCount; ++i)
        plan.palette[static_cast<std::size_t>(i)] = {entries[i].red, entries[i].green,
                                                     entries[i].blue};
    if (!HasPaletteAlpha(image))
        return;
    plan.alphaCount = plan.paletteCount;
    for (int i = 0; i < plan.paletteCount; ++i)
        plan.alpha[static_cast<std::size_t>(i)] =
            std::min(plan.alpha[static_cast<std::size_t>(i)], entries[i].reserved);
}

PngPlan PlanFor(const CDibImage& image, bool grayTransparent) {
    PngPlan plan;
    const bool grayRamp = image.HasGrayPalette();
    if (image.GetAlpha() != nullptr) {
        const bool gray = image.GetBpp() == 8 && grayRamp;
        plan.colorType = gray ? PNG_COLOR_TYPE_GRAY_ALPHA : PNG_COLOR_TYPE_RGB_ALPHA;
        plan.row = gray ? PngPlan::Row::kGrayAlpha
                        : (image.GetBpp() == 24 ? PngPlan::Row::kBgra : PngPlan::Row::kPaletteBgra);
        return plan;
    }
    if (image.GetBpp() == 24) {
        plan.colorType = PNG_COLOR_TYPE_RGB;
        return plan;
    }
    plan.bitDepth = image.GetBpp();
    const int background = image.Fields().backgroundIndex;
    plan.invertMono = image.IsBW() && !grayRamp;
    if (HasPaletteAlpha(image) || !(grayRamp || plan.invertMono)) {
        plan.invertMono = false;
        PlanPalette(image, plan);
        return plan;
    }
    plan.colorType = PNG_COLOR_TYPE_GRAY;
    if (background >= 0 && background < image.GetPaletteCount())
        plan.transparentLevel = plan.invertMono ? 1 - background : background;
    else if (grayTransparent && image.IsGrayScale())
        plan.transparentLevel = 255;
    return plan;
}

void PlaceAlphaRow(const CDibImage& image, const PngPlan& plan, int y, std::uint8_t* out) {
    const std::uint8_t* row = RowFromTop(image, y);
    const std::uint8_t* alpha = AlphaRowFromTop(image, y);
    const int width = image.GetWidth();
    if (plan.row == PngPlan::Row::kGrayAlpha) {
        for (int x = 0; x < width; ++x, out += 2) {
            out[0] = row[x];
            out[1] = alpha[x];
        }
        return;
    }
    if (plan.row == PngPlan::Row::kBgra) {
        for (int x = 0; x < width; ++x, out += 4, row += 3) {
            std::memcpy(out, row, 3);
            out[3] = alpha[x];
        }
        return;
    }
    // The indices go to the last quarter and are read before they are overwritten.
    std::uint8_t* indices = out + 3 * static_cast<std::size_t>(width);
    UnpackIndexRow(row, width, image.GetBpp(), indices);
    for (int x = 0; x < width; ++x, out += 4) {
        const PaletteEntry entry = image.GetPalette()[indices[x]];
        out[0] = entry.blue;
        out[1] = entry.green;
        out[2] = entry.red;
        out[3] = alpha[x];
    }
}

/// A row whose last byte holds no stray bits, so that equal images give equal files.
const std::uint8_t* TidyRow(const CDibImage& image, int y, std::uint8_t* scratch) {
    const std::uint8_t* row = RowFromTop(image, y);
    const std::size_t bits = static_cast<std::size_t>(image.GetWidth()) * image.GetBpp();
    if (bits % 8 == 0)
        return row;
    std::memcpy(scratch, row, bits / 8 + 1);
    scratch[bits / 8] &= LastByteMask(image.GetWidth(), image.GetBpp());
    return scratch;
}

// Measured on scans: grey keeps its size within 1 percent of level 6 at less than half the time,
// colour within 4 percent. Palette pages are fast anyway.
void ChooseEffort(png_structp png, int colorType) {
    constexpr std::size_t kBufferBytes = 1 << 16;
    png_set_compression_buffer_size(png, kBufferBytes);
    if (colorType == PNG_COLOR_TYPE_PALETTE)
        return;
    if ((colorType & PNG_COLOR_MASK_COLOR) == 0) {
        png_set_compression_level(png, 4);
        return;
    }
    png_set_compression_level(png, 5);
    png_set_compression_strategy(png, Z_DEFAULT_STRATEGY);
}

void WriteHead(png_structp png, png_infop info, const CDibImage& image, const PngPlan& plan) {
    png_set_user_limits(png, 0x7FFFFFFF, 0x7FFFFFFF);
    png_set_IHDR(png, info, static_cast<png_uint_32>(image.GetWidth()),
                 static_cast<png_uint_32>(image.GetHeight()), plan.bitDepth, plan.colorType,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (plan.paletteCount > 0)
        png_set_PLTE(png, info, plan.palette.data(), plan.paletteCount);
    if (plan.alphaCount > 0)
        png_set_tRNS(png, info, plan.alpha.data(), plan.alphaCount, nullptr);
    if (plan.transparentLevel >= 0) {
        png_color_16 level{};
        level.gray = static_cast<png_uint_16>(plan.transparentLevel);
        png_set_tRNS(png, info, nullptr, 1, &level);
    }
    png_set_pHYs(png, info, static_cast<png_uint_32>(image.GetXDpi() / 0.0254 + 0.5),
                 static_cast<png_uint_32>(image.GetYDpi() / 0.0254 + 0.5), PNG_RESOLUTION_METER);
    if (plan.bitDepth == 8)
        ChooseEffort(png, plan.colorType);
    png_write_info_before_PLTE(png, info);
    for (const PngChunk& chunk : plan.chunks)
        png_write_chunk(png, reinterpret_cast<png_const_bytep>(chunk.name.data()),
                        chunk.bytes.data(), chunk.bytes.size());
    png_write_info(png, info);
    if (plan.invertMono)
        png_set_invert_mono(png);
    if ((plan.colorType & PNG_COLOR_MASK_COLOR) != 0 && plan.paletteCount == 0)
        png_set_bgr(png);
}

void WriteRows(png_structp png, png_infop info, const CDibImage& image, const PngPlan& plan,
               std::uint8_t* scratch) {
    WriteHead(png, info, image, plan);
    for (int y = 0; y < image.GetHeight(); ++y) {
        if (plan.row == PngPlan::Row::kAsIs) {
            png_write_row(png, TidyRow(image, y, scratch));
        } else {
            PlaceAlphaRow(image, plan, y, scratch);
            png_write_row(png, scratch);
        }
    }
    png_write_end(png, nullptr);
}

bool Code(const CDibImage& image, bool grayTransparent, ByteSink& sink, FileError* error) {
    PngPlan plan = PlanFor(image, grayTransparent);
    const bool fileHasColor = (plan.colorType & PNG_COLOR_MASK_COLOR) != 0;
    plan.chunks = PngChunksOf(MetadataToWrite(image, fileHasColor));
    std::vector<std::uint8_t> scratch(static_cast<std::size_t>(image.GetWidth()) * 4);
    PngMessage message;
    png_structp png =
        png_create_write_struct(PNG_LIBPNG_VER_STRING, &message, OnPngError, OnPngWarning);
    png_infop info = png != nullptr ? png_create_info_struct(png) : nullptr;
    bool done = false;
    if (info != nullptr) {
        png_set_write_fn(png, &sink, WriteBytes, FlushNothing);
        done = RunGuarded(png, [&] { WriteRows(png, info, image, plan, scratch.data()); });
    }
    const bool created = info != nullptr;
    png_destroy_write_struct(&png, &info);
    if (!created)
        return FailNoMemory(error);
    return done || FailCoding(sink, error, message.text);
}

}  // namespace

bool SavePng(ByteSink& sink, CDibImage& image, int dpi, bool grayTransparent, FileError* error) {
    return SaveWith(image, error, [&] {
        image.SetXDpi(dpi);
        image.SetYDpi(dpi);
        return Code(image, grayTransparent, sink, error);
    });
}

}  // namespace velloran
