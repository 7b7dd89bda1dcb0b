#pragma once

// A merge as its user set it up: folders, options and, for each file, how it is moved, scaled and
// turned. It is kept in a .vlm file, which is a profile: a section for the options, and one a row.

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "io/FileError.h"
#include "params/Settings.h"
#include "text/ProfileFile.h"

namespace velloran {

/// The options, as [Main] holds them.
struct MergePara {
    std::u16string source1, source2, target;
    std::int32_t sourceFiles = 0;  // position of the filter
    std::int32_t targetFile = 0;   // 0 automatic, jpg, bmp, png, tif, jp2, webp
    std::int32_t twoSources = 0;
    std::int32_t layout = 0;  // 0 left-right, 1 right-left, 2 top-bottom, 3 bottom-top
    std::int32_t align = 0;   // 0 bottom or left, 1 top or right, 2 centred
    std::int32_t size = 0;    // where sizes differ: 0 fill, 1 enlarge, 2 reduce
    std::int32_t jpegQuality = 70, jp2Rate = 15;
    std::int32_t blank = 0;  // pixels between the two
    std::int32_t dpi = 0;
    std::int32_t showBox = 1, findContentBox = 0, removeBlackEdge = 1, speckleSize = 8;
    std::int32_t speckleCompensation = 1, bkMore = 0;
    std::int32_t fill = 0xFFFFFF;  // 0x00BBGGRR
    /// JPG_RESAMPLE_TYPE to JPG_PROGRESSIVE; a negative one leaves the parameter as it is.
    std::array<std::int32_t, 8> jpeg{-1, -1, -1, -1, -1, -1, -1, -1};
    bool extendEdge = false;  // not kept in the file
};

struct MergeItem {
    std::string name;                       // in its folder, as the bytes of the disk
    int folder = 0;                         // 0 the first, 1 the second
    std::int32_t offsetH = 0, offsetV = 0;  // pixels, down is positive
    std::int32_t scale = 0;                 // pixels more in width and height
    std::int32_t deskewType = 0;            // 0 none, 1 to 3 automatic, 4 by hand
    std::int32_t deskewAngle = 0;           // hundredths of a degree
    bool checked = true;
};

struct MergeState {
    MergePara para;
    std::vector<MergeItem> items;
};

/// Sets an option by its key in [Main], ignoring case. False for a key that is none, and for a text
/// that is no number where one is wanted.
bool SetMergeKey(std::u16string_view key, std::u16string_view value, MergePara& para);
std::vector<std::u16string> MergeKeys();

/// The options of a profile over those given.
void ReadMergeOptions(const ProfileFile& profile, MergePara& para);
/// The values of the items by name and folder; reading stops at one without a name. A file called
/// like the section of the options has no values.
void ReadMergeItems(const ProfileFile& profile, std::vector<MergeItem>& items);

/// Puts the state into a profile; other sections stay.
void WriteMergeState(const MergeState& state, ProfileFile& profile);

/// The JPEG parameters of a run: those of `base`, but for the options that are not negative.
void ApplyJpegOptions(const MergePara& para, Settings& base);

}  // namespace velloran
