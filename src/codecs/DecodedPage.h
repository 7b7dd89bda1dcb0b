#pragma once

// What the readers share: a page that is filled from the top row down and handed over only when
// it is done, so that a failed load leaves the caller's image as it was.
//
// A file that breaks off keeps what came in: whole rows from the top, the rest white. Without one
// whole row the load fails.

#include <cstdint>
#include <new>
#include <span>
#include <stdexcept>
#include <utility>

#include "codecs/ImageInfo.h"
#include "codecs/LoadNotes.h"
#include "core/DibImage.h"
#include "io/ByteSource.h"
#include "io/FileError.h"

namespace velloran {

/// False with a reason when a failed allocation ends `work`, otherwise what it returns.
template <typename Work>
bool FailWhenOutOfMemory(FileError* error, Work&& work) {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return FailNoMemory(error);
    } catch (const std::length_error&) {
        return FailNoMemory(error);
    }
}

/// Runs a reader: what a disk refuses is told before what the decoder made of it, and a failed
/// allocation is a failure. `work` takes a FileError of its own.
template <typename Work>
bool ReadFrom(ByteSource& source, FileError* error, Work&& work) {
    FileError own;
    const bool done = FailWhenOutOfMemory(&own, [&] { return work(&own); });
    return FailWhenOutOfMemory(error, [&] {  // reasons are texts
        if (!source.FailWhenUnreadable(error))
            return false;
        if (!done && error != nullptr && error->cause == FileError::Cause::kNone)
            *error = std::move(own);
        return done;
    });
}

/// Settles a finished page and moves it into `image`: an alpha plane that is opaque throughout
/// goes, row padding becomes 0, the DPI is set, and the source record takes the file's depth and
/// the horizontal DPI. It holds no JPEG head and no metadata any more; its rest stays.
void HandOver(CDibImage& page, int sourceBits, int xDpi, int yDpi, CDibImage& image);

/// Whether a decoded page may be handed over: not when reading failed; a source that others made
/// shorter meanwhile is noted.
bool MayHandOver(const ByteSource& source, LoadNotes& notes);

/// Every reader does the same round its own work: the head first, then a page of its own, which is
/// handed over when all went well. `more` goes to the reader as it is made.
template <typename Reader, typename... More>
bool LoadWith(ByteSource& source, CDibImage& image, LoadNotes& notes, FileError* error,
              More... more) {
    return ReadFrom(source, error, [&](FileError* own) {
        Reader reader(source, more...);
        CDibImage page;
        LoadNotes found;
        if (!reader.ReadHead(own) || !reader.ReadPage(page, found, own))
            return false;
        if constexpr (requires { reader.ReadNotes(found); })
            reader.ReadNotes(found);
        if (!MayHandOver(source, found))
            return false;
        const int sourceBits = reader.SourceBits();
        HandOver(page, sourceBits, page.GetXDpi(), page.GetYDpi(), image);
        image.Source().metadata = found.metadata;
        notes = std::move(found);
        return true;
    });
}

template <typename Reader>
bool InfoWith(ByteSource& source, ImageInfo& info, FileError* error) {
    return ReadFrom(source, error, [&](FileError* own) {
        Reader reader(source);
        if (!reader.ReadHead(own))
            return false;
        info = reader.Info();
        return true;
    });
}

/// What stands beside the picture: what travels with it, and how many pictures there are.
template <typename Reader>
bool NotesWith(ByteSource& source, LoadNotes& notes, FileError* error) {
    return ReadFrom(source, error, [&](FileError* own) {
        Reader reader(source);
        LoadNotes found;
        if (!reader.ReadHead(own))
            return false;
        reader.ReadNotes(found);
        if constexpr (requires { found.pictures = reader.CountPictures(); })
            found.pictures = reader.CountPictures();
        notes = std::move(found);
        return true;
    });
}

/// Makes the block, rows not cleared, and the alpha plane when asked for.
bool CreatePage(int width, int height, int bpp, bool withAlpha, CDibImage& page, FileError* error);

/// A page that the file does not hold. Always false.
bool FailNoSuchPage(FileError* error, int pages);

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

/// A file's resolution as DPI, rounded; 96 when it is no number, below 0.5 or above 100000.
int PlausibleDpi(double dpi);

/// Whether `decodedBytes` may come out of a file of `fileBytes` whose coding shrinks to one
/// maxRatio-th at best. Four times that passes, for files that break off, and so does what takes no
/// more than 16 MiB, `workBytes` where decoding takes more memory than the samples of the file.
bool IsPlausibleSize(std::int64_t decodedBytes, std::uint64_t fileBytes, std::int64_t maxRatio,
                     std::int64_t workBytes = 0);

}  // namespace velloran
