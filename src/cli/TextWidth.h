#pragma once

// How much room a text takes on a screen, where the wide scripts take two columns a character.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace velloran::cli {

std::size_t WidthOf(char16_t unit);
std::size_t WidthOf(std::u16string_view text);

/// The end of a text, as much as fits.
std::u16string_view TailThatFits(std::u16string_view text, std::size_t columns);

/// Lines of at most so many columns, broken at blanks and beside wide characters; a word that is
/// longer stands over the edge.
std::vector<std::u16string> Wrapped(std::u16string_view text, std::size_t columns);

/// A name as a terminal may show it: control characters, marks that turn the direction of writing,
/// and bytes that are no UTF-8 as \xNN or \uNNNN.
std::string WithoutControls(std::string_view text);

}  // namespace velloran::cli
