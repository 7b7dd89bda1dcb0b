#pragma once

// What the readers share: a page that is filled from the top row down and handed over only when
// it is done, so that a failed load leaves the caller's image as it was.
//
// A file that breaks off keeps what came in: whole rows from the top, the rest white. Without one
// whole row the load fails.

#include <cstdint>
#include <filesystem>
#include <span>

#include "core/DibImage.h"
#include "io/FileError.h"

namespace velloran {

using BytesLoader = bool (*)(std::span<const std::uint8_t> bytes, CDibImage& image,
                             FileError* error);

/// Maps the file and gives its bytes to `load`. A failed allocation inside ends in false.
bool LoadMapped(const std::filesystem::path& path, CDibImage& image, FileError* error,
                BytesLoader load);

/// False with a reason when a failed allocation ends `work`, otherwise what it returns.
template <typename Work>
bool FailWhenOutOfMemory(FileError* error, Work&& work) {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return FailContent(error, "out of memory");
    } catch (const std::length_error&) {
        return FailContent(error, "out of memory");
    }
}

/// Makes the block, rows not cleared, and the alpha plane when asked for.
bool CreatePage(int width, int height, int bpp, bool withAlpha, CDibImage& page, FileError* error);

/// Row y counted from the top of the picture; 0 <= y < height.
std::uint8_t* RowFromTop(CBaseImage& image, int y);
const std::uint8_t* RowFromTop(const CBaseImage& image, int y);
std::uint8_t* AlphaRowFromTop(CBaseImage& image, int y);
const std::uint8_t* AlphaRowFromTop(const CBaseImage& image, int y);

/// Rows from firstRow (from the top) to the bottom become white, or the palette entry nearest to
/// white; their alpha becomes opaque.
void WhitenRows(CDibImage& page, int firstRow);

/// The entry nearest to white by squared distance, the lower index on a tie.
int NearestToWhite(std::span<const PaletteEntry> palette);

/// Settles a finished page and moves it into `image`: an alpha plane that is opaque throughout
/// goes, row padding becomes 0, the DPI is set, and the source record takes the file's depth and
/// the horizontal DPI. The rest of the source record stays.
void HandOver(CDibImage& page, int sourceBits, int xDpi, int yDpi, CDibImage& image);

/// A file's resolution as DPI, rounded; 96 when it is no number, below 0.5 or above 100000.
int PlausibleDpi(double dpi);

/// Whether `decodedBytes` may come out of a file of `fileBytes` whose coding shrinks to one
/// maxRatio-th at best. Four times that passes, for files that break off, and so do 64 MiB.
bool IsPlausibleSize(std::int64_t decodedBytes, std::size_t fileBytes, std::int64_t maxRatio);

}  // namespace velloran
