#pragma once

// How the text of a profile file stands in its bytes: which encoding it is, and the way from and to
// UTF-16. Text decodes line by line, so that bytes which mean nothing spoil one line only.

#include <string>
#include <string_view>

namespace velloran {

enum class TextEncoding { kUtf8, kUtf8Mark, kUtf16Le, kUtf16Be, kGb18030 };

/// By the mark; without one UTF-8 when the bytes are well-formed, otherwise GB18030.
TextEncoding DetectTextEncoding(std::string_view bytes);

/// The mark that a file of the encoding begins with, empty for none.
std::string_view TextMark(TextEncoding encoding);

/// Bytes that mean nothing in the encoding become U+FFFD; the odd last byte of UTF-16 text is none.
std::u16string DecodeText(TextEncoding encoding, std::string_view bytes);

/// Without a mark. An unpaired surrogate becomes U+FFFD, in UTF-16 it stays.
std::string EncodeText(TextEncoding encoding, std::u16string_view text);

}  // namespace velloran
