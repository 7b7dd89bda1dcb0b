#include "cli/Arguments.h"

#include <utility>

namespace velloran::cli {

namespace {

constexpr char kGuard = '\x01';

bool NeedsGuard(std::string_view word) {
    return !word.empty() &&
           (std::string_view("[{+%").find(word.front()) != std::string_view::npos ||
            word.front() == kGuard);
}

}  // namespace

std::vector<std::string> GuardArguments(int count, const char* const* words) {
    std::vector<std::string> guarded;
    for (int i = 1; i < count; ++i) {
        std::string word = words[i];
        if (NeedsGuard(word))
            word.insert(word.begin(), kGuard);
        guarded.push_back(std::move(word));
    }
    return guarded;
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
