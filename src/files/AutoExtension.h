#pragma once

// Which extension a result takes when the user left that to the program.

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace velloran {

class CDibImage;

/// The extension, without its dot, for a position of the list of target extensions (自动, jpg, bmp,
/// png, tif, jp2, gif, webp). Position 0 chooses by the depth of the image and the fields of
/// `packedRule` (PARA_TGT_FILES). Empty for a position outside 0..7 and, at position 0, for an
/// empty image.
std::u16string_view PickAutoExtension(const CDibImage& image, int extensionPosition,
                                      std::int32_t packedRule);

/// The extension, with its dot, of a book page that keeps its source's format where the image's
/// depth suits it: ".gif" for up to 8 bits with `gifFlag`; the source name's own extension as it
/// is spelled; else ".tif" for black and white, ".jpg" for grey and 24 bits, ".png" for the rest.
std::string SameAsSourceExtension(const CDibImage& image, const std::filesystem::path& sourcePath,
                                  bool gifFlag);

}  // namespace velloran
