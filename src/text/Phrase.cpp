#include "text/Phrase.h"

#include "text/Text.h"

namespace velloran {

std::string Phrase(const Label& label, std::initializer_list<std::string_view> parts) {
    const std::string pattern = ToUtf8(label.Text());
    std::string text;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const bool isGap = pattern[i] == '{' && i + 2 < pattern.size() && pattern[i + 2] == '}' &&
                           pattern[i + 1] >= '0' &&
                           static_cast<std::size_t>(pattern[i + 1] - '0') < parts.size();
        if (!isGap) {
            text += pattern[i];
            continue;
        }
        text += parts.begin()[pattern[i + 1] - '0'];
        i += 2;
    }
    return text;
}

}  // namespace velloran
