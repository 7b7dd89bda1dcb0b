#include "files/LoadPage.h"

#include <new>
#include <utility>

#include "codecs/Formats.h"
#include "files/ImageFiles.h"
#include "files/Transparency.h"
#include "io/FileSource.h"
#include "params/Settings.h"
#include "reduce/CheckGray.h"

namespace velloran {

namespace {

bool IsKept(const LoadPageRequest& request, const CDibImage& image) {
    return request.keepsTransparency && request.keepsTransparency(image);
}

/// Readers give 96 for files that tell no resolution, and JPEG files may hold the ratio of the
/// sides in its place.
int OwnDpi(const CDibImage& image) {
    constexpr int kUntold = 96, kRatio = 1;
    const int dpi = image.GetXDpi();
    return dpi == kUntold || dpi <= kRatio ? 0 : dpi;
}

}  // namespace

bool LoadPage(const std::filesystem::path& file, const LoadPageRequest& request, LoadedPage& page,
              FileError* error) {
    FileSource source;
    if (source.Open(file, error))
        return LoadPage(source, file, request, page, error);
    page = LoadedPage();
    return false;
}

bool LoadPage(ByteSource& source, const std::filesystem::path& name, const LoadPageRequest& request,
              LoadedPage& page, FileError* error) {
    page = LoadedPage();
    LoadOptions options;
    options.reverseCmyk = request.reverseCmyk;
    options.page = request.page;
    if (!LoadImageFrom(source, name, options, page.image, page.notes, error))
        return false;
    if (request.strip)
        page.image.Source().metadata.reset();
    page.ownDpi = OwnDpi(page.image);
    page.isTransparent = HasTransparency(page.image);
    if (page.isTransparent && !MoveTransparencyToPlane(page.image)) {
        page.image.Destroy();
        return FailNoMemory(error);
    }
    CheckGray(page.image, request.grayJudgement);
    if (SettleTransparency(request, page))
        return true;
    page.image.Destroy();
    return FailNoMemory(error);
}

LoadPageRequest LoadRequestFor(const Settings& settings, KeepsTransparency keepsTransparency) {
    return {settings[PARA_DECREASE_CHECK_GRAY], settings[PARA_REVERSE_CMYK] != 0,
            EntryOfColor(settings[PARA_FILL_BLANK_COLOR]), std::move(keepsTransparency)};
}

int SettleTransparency(const LoadPageRequest& request, LoadedPage& page) {
    if (!page.isTransparent)
        return 1;
    return IsKept(request, page.image) ? MoveTransparencyToPlane(page.image)
                                       : LayOnFill(request, page);
}

int LayOnFill(const LoadPageRequest& request, LoadedPage& page) {
    if (!LayOnColor(page.image, request.fill))
        return 0;
    CheckGray(page.image, request.grayJudgement);
    page.isTransparent = false;
    return 1;
}

PaletteEntry EntryOfColor(std::int32_t color) {
    const auto value = static_cast<std::uint32_t>(color);
    return {static_cast<std::uint8_t>(value >> 16), static_cast<std::uint8_t>(value >> 8),
            static_cast<std::uint8_t>(value), 0};
}

}  // namespace velloran
