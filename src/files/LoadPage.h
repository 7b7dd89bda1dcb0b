#pragma once

// The one way in which pages come to an enhancement: opened, known by content, decoded, laid on the
// fill colour where their transparency cannot be kept, judged for grey.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

#include "codecs/LoadNotes.h"
#include "core/DibImage.h"
#include "io/FileError.h"

namespace velloran {

class ByteSource;
struct Settings;

/// Whether what an image becomes can be transparent; asked with the image as it is at that time.
using KeepsTransparency = std::function<bool(const CDibImage& image)>;

struct LoadPageRequest {
    int grayJudgement = 0;  // PARA_DECREASE_CHECK_GRAY
    bool reverseCmyk = false;
    PaletteEntry fill{255, 255, 255, 0};
    KeepsTransparency keepsTransparency;  // empty: never
    int page = 1;                         // of those that the file holds
    bool strip = false;                   // leaves profile, EXIF and XMP behind
};

struct LoadedPage {
    CDibImage image;
    LoadNotes notes;
    int ownDpi = 0;              // of the file; 0 where it tells none
    bool isTransparent = false;  // still, in an alpha plane
};

/// What the settings say of it.
LoadPageRequest LoadRequestFor(const Settings& settings, KeepsTransparency keepsTransparency);

/// False, page empty, where the source cannot be read. `name` is its path, which is not opened.
bool LoadPage(ByteSource& source, const std::filesystem::path& name, const LoadPageRequest& request,
              LoadedPage& page, FileError* error);
/// The same for a file, which is opened once.
bool LoadPage(const std::filesystem::path& file, const LoadPageRequest& request, LoadedPage& page,
              FileError* error);

/// Keeps the transparency of a page in its alpha plane, or lays it on the fill colour where the
/// request keeps none. 0 without memory.
int SettleTransparency(const LoadPageRequest& request, LoadedPage& page);

/// Lays the page on the fill colour and judges it anew, for pages that a run made opaque or whose
/// target turned out to hold no transparency. 0 without memory.
int LayOnFill(const LoadPageRequest& request, LoadedPage& page);

/// A COLORREF value (PARA_FILL_BLANK_COLOR) as a palette entry.
PaletteEntry EntryOfColor(std::int32_t color);

}  // namespace velloran
