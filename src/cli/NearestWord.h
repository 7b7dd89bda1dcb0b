#pragma once

// The right word behind a misspelt one.

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velloran::cli {

/// Letters to add, leave out, change or swap with their neighbour, until one word is the other;
/// case does not count. (F. J. Damerau, "A technique for computer detection and correction of
/// spelling errors", 1964.)
std::size_t SpellingDistance(std::string_view a, std::string_view b);

/// The nearest of the words, the first of several; empty where none is near: more than a third of
/// the letters would have to change. A word is near each that begins with it.
std::string NearestWord(std::string_view word, std::span<const std::string> words);

/// The question whether the nearest word was meant, in the language in use; empty without one.
std::string Suggestion(std::string_view word, std::span<const std::string> words);

}  // namespace velloran::cli
