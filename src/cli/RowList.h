#pragma once

// Rows as people name them: "1,3-5,8-", or "all". Rows are numbered from 1 on the command line and
// from 0 inside.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velloran::cli {

/// Each row once, in ascending order; nothing where the text is no list, or names a row that is
/// not among `count`. An open end goes to the last row.
std::optional<std::vector<std::size_t>> ParseRowList(std::string_view text, std::size_t count);

}  // namespace velloran::cli
