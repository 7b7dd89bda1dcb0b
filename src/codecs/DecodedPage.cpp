#include "codecs/DecodedPage.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

#include "core/IndexRows.h"
#include "core/PaletteSearch.h"

namespace velloran {
namespace {

void ClearPadding(CDibImage& page) {
    const std::size_t bytes =
        (static_cast<std::size_t>(page.GetWidth()) * static_cast<std::size_t>(page.GetBpp()) + 7) /
        8;
    const std::uint8_t mask = LastByteMask(page.GetWidth(), page.GetBpp());
    for (int y = 0; y < page.GetHeight(); ++y) {
        std::uint8_t* row = page.GetBits(y);
        row[bytes - 1] &= mask;
        std::memset(row + bytes, 0, page.GetEffWidth() - bytes);
    }
}

bool IsOpaque(const CDibImage& page) {
    const std::uint8_t* alpha = page.GetAlpha();
    const std::size_t count = static_cast<std::size_t>(page.GetWidth()) * page.GetHeight();
    return std::all_of(alpha, alpha + count, [](std::uint8_t a) { return a == 255; });
}

}  // namespace

bool MayHandOver(const ByteSource& source, LoadNotes& notes) {
    if (source.CameShort())
        notes.NoteDamage("the file was cut short while it was read");
    return !source.IsUnreadable();
}

bool CreatePage(int width, int height, int bpp, bool withAlpha, CDibImage& page, FileError* error) {
    if (page.Create(width, height, bpp) == nullptr || (withAlpha && !page.CreateAlpha()))
        return FailNoMemory(error);
    return true;
}

bool FailNoSuchPage(FileError* error, int pages) {
    return FailContent(error,
                       "the file holds no such page, but " + std::to_string(pages) + " in all",
                       FileReason::kNoSuchPage);
}

std::uint8_t* RowFromTop(CBaseImage& image, int y) {
    return image.GetBits(image.GetHeight() - 1 - y);
}

const std::uint8_t* RowFromTop(const CBaseImage& image, int y) {
    return image.GetBits(image.GetHeight() - 1 - y);
}

std::uint8_t* AlphaRowFromTop(CBaseImage& image, int y) {
    return image.GetAlpha() + static_cast<std::size_t>(image.GetHeight() - 1 - y) *
                                  static_cast<std::size_t>(image.GetWidth());
}

const std::uint8_t* AlphaRowFromTop(const CBaseImage& image, int y) {
    return image.GetAlpha() + static_cast<std::size_t>(image.GetHeight() - 1 - y) *
                                  static_cast<std::size_t>(image.GetWidth());
}

int NearestToWhite(std::span<const PaletteEntry> palette) {
    return NearestIndex(palette, {255, 255, 255, 0});
}

void WhitenRows(CDibImage& page, int firstRow) {
    int value = 255;
    if (page.GetBpp() <= 8) {
        const int index = NearestToWhite(PaletteOf(page));
        const int copies = page.GetBpp() == 1 ? 255 : (page.GetBpp() == 4 ? 17 : 1);
        value = index * copies;
    }
    for (int y = firstRow; y < page.GetHeight(); ++y) {
        std::memset(RowFromTop(page, y), value, page.GetEffWidth());
        if (page.GetAlpha() != nullptr)
            std::memset(AlphaRowFromTop(page, y), 255, static_cast<std::size_t>(page.GetWidth()));
    }
}

void HandOver(CDibImage& page, int sourceBits, int xDpi, int yDpi, CDibImage& image) {
    ClearPadding(page);
    if (page.GetAlpha() != nullptr && IsOpaque(page))
        page.DeleteAlpha();
    page.SetXDpi(xDpi);
    page.SetYDpi(yDpi);
    image = std::move(page);
    image.Source().sourceColours = static_cast<std::uint32_t>(sourceBits);
    image.Source().sourceFlag = static_cast<std::uint32_t>(image.GetXDpi());
    image.Source().jpegHead.reset();
    image.Source().metadata.reset();
}

int PlausibleDpi(double dpi) {
    if (!(dpi >= 0.5 && dpi <= 100000))  // also no number
        return 96;
    return static_cast<int>(dpi + 0.5);
}

bool IsPlausibleSize(std::int64_t decodedBytes, std::uint64_t fileBytes, std::int64_t maxRatio,
                     std::int64_t workBytes) {
    constexpr std::int64_t kAlwaysAllowed = 16 << 20;
    return std::max(decodedBytes, workBytes) <= kAlwaysAllowed ||
           static_cast<std::uint64_t>(decodedBytes / (4 * maxRatio)) <= fileBytes;
}

}  // namespace velloran
