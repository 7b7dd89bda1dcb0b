#pragma once

// The manual page, from the tables of commands and options, in the language in use.

#include <string>

namespace velloran::cli {

/// In roff with the man macros.
std::string ManualPage();

}  // namespace velloran::cli
