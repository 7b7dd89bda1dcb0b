#include "files/TargetNames.h"

#include <cstddef>

#include "text/Text.h"

namespace velloran {

namespace {

constexpr std::size_t kLowerCaseLimit = 128;  // characters

bool IsContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/// Length in bytes of the sequence that a lead byte announces; 1 for anything else.
std::size_t SequenceLength(char lead) {
    const auto byte = static_cast<unsigned char>(lead);
    if (byte >= 0xF0 && byte <= 0xF4)
        return 4;
    if (byte >= 0xE0 && byte < 0xF0)
        return 3;
    return byte >= 0xC2 && byte < 0xE0 ? 2 : 1;
}

/// Bytes of the first `limit` characters.
std::size_t BytesOfCharacters(std::string_view name, std::size_t limit) {
    std::size_t at = 0;
    for (std::size_t count = 0; count < limit && at < name.size(); ++count) {
        const std::size_t end = std::min(name.size(), at + SequenceLength(name[at]));
        ++at;
        while (at < end && IsContinuation(name[at]))
            ++at;
    }
    return at;
}

}  // namespace

std::string LowerCaseName(std::string_view name) {
    const std::size_t cut = BytesOfCharacters(name, kLowerCaseLimit);
    return LowerCase(name.substr(0, cut)) + std::string(name.substr(cut));
}

std::string DottedExtension(std::u16string_view extension) {
    std::string dotted;
    if (!extension.empty())
        dotted.append(".").append(ToUtf8(extension));
    return dotted;
}

NameParts SplitName(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0)
        return {name, {}};
    return {name.substr(0, dot), name.substr(dot)};
}

std::string TargetStem(std::string_view sourceName, int number) {
    std::string stem = LowerCaseName(SplitName(sourceName).stem);
    if (number > 1)
        stem.append("~").append(std::to_string(number));
    return stem;
}

}  // namespace velloran
