#include "cli/Arguments.h"

#include <utility>

namespace velloran::cli {

namespace {

constexpr char kGuard = '\x01';

bool NeedsGuard(std::string_view word) {
    return word.empty() || std::string_view("[{+%").find(word.front()) != std::string_view::npos ||
           word.front() == kGuard;
}

}  // namespace

std::vector<std::string> GuardWords(std::vector<std::string> words) {
    bool optionsEnded = false;
    for (std::string& word : words) {
        if (!optionsEnded && word == "--") {
            optionsEnded = true;
            continue;
        }
        const bool isOption = !optionsEnded && word.starts_with("--");
        const std::size_t value = isOption ? word.find('=') : std::string::npos;
        const std::size_t at = value == std::string::npos ? 0 : value + 1;
        if (NeedsGuard(std::string_view(word).substr(at)))
            word.insert(at, 1, kGuard);
    }
    return words;
}

std::string Unguard(std::string word) {
    if (!word.empty() && word.front() == kGuard)
        word.erase(word.begin());
    return word;
}

std::vector<std::string> Unguard(std::vector<std::string> words) {
    for (std::string& word : words)
        word = Unguard(std::move(word));
    return words;
}

}  // namespace velloran::cli
