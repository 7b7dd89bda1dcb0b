#pragma once

// PARA_TGT_FILES: which extension a result takes, packed into six 4-bit fields.

#include <cstdint>
#include <span>
#include <string_view>

namespace velloran {

enum class TargetFormat : int {
    kAuto = 0,
    kTiff = 1,
    kBmp = 2,
    kPng = 3,
    kGif = 4,
    kWebp = 5,
    kJpeg = 6,
    kJp2 = 7,
};

/// The fields as format ids; a field that held an id which its list does not offer holds the
/// list's default here.
struct TargetRule {
    TargetFormat extension = TargetFormat::kAuto;
    TargetFormat other = TargetFormat::kPng;
    TargetFormat blackWhite = TargetFormat::kTiff;
    TargetFormat gray256 = TargetFormat::kJpeg;
    TargetFormat color24 = TargetFormat::kJpeg;
    bool cropGif = false;
    bool operator==(const TargetRule&) const = default;
};

/// Ids that a field allows, in the order of its combo box.
std::span<const TargetFormat> ExtensionChoices();
std::span<const TargetFormat> OtherChoices();
std::span<const TargetFormat> BlackWhiteChoices();
std::span<const TargetFormat> Gray256Choices();
std::span<const TargetFormat> Color24Choices();

/// To and from the 32-bit value; each replaces an id that is not allowed by the default.
std::int32_t PackTargetRule(const TargetRule& rule);
TargetRule UnpackTargetRule(std::int32_t value);

/// The same by combo box positions, as the dialogs hold them; a position past the list's end
/// stands for the default.
std::int32_t PackTargetRule(int extensionPos, int depth24Pos, int gray256Pos, int otherPos,
                            int bwPos, bool cropGif);
void UnpackTargetRule(std::int32_t value, int& extensionPos, int& depth24Pos, int& gray256Pos,
                      int& otherPos, int& bwPos, bool& cropGif);

/// "tif", "bmp", "png", "gif", "webp", "jpg", "jp2"; empty for kAuto.
std::u16string_view TargetExtension(TargetFormat format);

enum class TargetPreset { kLossless, kSmallFiles, kCommon };  // "无损", "小文件", "大路货"
/// The value that a preset button sets: automatic extension, no GIF crop.
std::int32_t PresetTargetRule(TargetPreset button);

}  // namespace velloran
