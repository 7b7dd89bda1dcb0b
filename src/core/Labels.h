#pragma once

// All words that a user sees stand here, so that describe mode, messages and windows cannot
// differ. Texts of the parameter lists stand in the parameter table.

#include <string_view>

namespace velloran::labels {

// Reading and writing files.
inline constexpr std::u16string_view kLoadFailed = u"文件读取失败。";
inline constexpr std::u16string_view kSaveFailed = u"文件存盘失败。";
inline constexpr std::u16string_view kUnwritableType =
    u"抱歉，保存的文件名只能以jpg、jp2、png、bmp或tif为扩展名，请更正。";
inline constexpr std::u16string_view kBmpOnlyFor16Bit =
    u"抱歉，16位色图像只能保存为BMP格式，请重新选择。";
inline constexpr std::u16string_view kReducedTargets =
    u"抱歉，减色后的图像只能保存为PNG、GIF、BMP、TIFF或WEBP，请重新选择。";
inline constexpr std::u16string_view kOnlyJpegAsk = u"图像文件只能保存为Jpeg格式，要继续吗？";
inline constexpr std::u16string_view kInvalidPath = u"路径含无效字符：\r\n";

// The clipboard.
inline constexpr std::u16string_view kClipboardMismatch = u"剪贴板数据格式不符";

}  // namespace velloran::labels
