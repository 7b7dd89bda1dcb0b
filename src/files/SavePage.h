#pragma once

// The one way in which pages become files: the rules that refuse a target, and the write itself.
// Documents and runs over folders put their own words to a refusal.

#include <cstdint>
#include <filesystem>

#include "files/LoadPage.h"
#include "io/FileError.h"

namespace velloran {

class CDibImage;
struct Settings;

enum class SaveRefusal {
    kNone,
    kWantsBmp,            // the 16-bit depths
    kWantsReducedTarget,  // a palette or a reduction that the type cannot hold
};

/// Before the run: whether the target's type, by its extension, can hold the colour depth
/// (position of PARA_COLOR).
SaveRefusal RefuseColor(const std::filesystem::path& target, int color);
/// After the run: whether it can hold what the page became.
SaveRefusal RefuseResult(const std::filesystem::path& target, const CDibImage& result);

/// Whether a file of this type keeps the transparency of such an image.
bool KeepsAlpha(const std::filesystem::path& target, const CDibImage& image);

/// How a page is written.
struct PageTarget {
    int quality = 70;
    int dpi = 300;  // 0..8000
    int color = 2;  // position of PARA_COLOR
    bool cropGif = false;
    bool keepDpi = false;  // the source's own resolution, where it has one
};
/// As the settings say.
PageTarget PageTargetOf(const Settings& settings);

/// Writes a page. The image may take the DPI written and be normalised in depth.
bool SavePage(const std::filesystem::path& file, const PageTarget& target, LoadedPage& page,
              const Settings& settings, FileError* error);

}  // namespace velloran
