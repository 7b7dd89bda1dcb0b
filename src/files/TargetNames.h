#pragma once

// How a result is called: its source's name in lower case with another extension, and a number
// where two sources would meet.

#include <string>
#include <string_view>

namespace velloran {

/// The first 128 characters in lower case, the rest as it stands; bytes that are no UTF-8 count as
/// one character each and stay.
std::string LowerCaseName(std::string_view name);

/// A name without its extension, and the extension with its dot. The dot at the front of a hidden
/// file's name opens no extension.
struct NameParts {
    std::string_view stem, extension;
};
NameParts SplitName(std::string_view name);

/// ".jpg" for "jpg"; empty stays empty.
std::string DottedExtension(std::u16string_view extension);

/// The stem of a result: the source name's own in lower case, "~number" behind it from 2 on.
std::string TargetStem(std::string_view sourceName, int number);

}  // namespace velloran
