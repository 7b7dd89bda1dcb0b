#include "text/PathText.h"

#include "text/Text.h"

namespace velloran {

std::u16string PathText(const std::filesystem::path& path) {
    return ToUtf16(path.native());
}

std::string PathUtf8(const std::filesystem::path& path) {
    return ToUtf8(PathText(path));
}

std::filesystem::path PathOf(std::u16string_view text) {
    return ToUtf8(text);
}

}  // namespace velloran
