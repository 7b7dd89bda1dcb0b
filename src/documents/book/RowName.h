#pragma once

// Names of files as the text of a project holds them: UTF-16, folders divided by backslashes. Bytes
// that are no UTF-8 travel as single low surrogates (0xDC00 and the byte), so that every name comes
// back as it was.

#include <filesystem>
#include <string>
#include <string_view>

namespace velloran {

/// Bytes to text and back, folders divided by slashes on both sides.
std::u16string TextOfName(std::string_view bytes);
std::string NameOfText(std::u16string_view text);

/// Whether a relative path stays in its folder: not absolute on any system, no "..", no NUL, no
/// line end, not empty.
bool IsInnerName(std::u16string_view text);

/// Whether a text can be a value of a project: no line end, no NUL.
bool IsOneLine(std::u16string_view text);

}  // namespace velloran
