#pragma once

// The --json forms: keys in the order of their writing, UTF-8; bytes of a path that are no UTF-8
// become U+FFFD.

#include <nlohmann/json.hpp>

#include "cli/Console.h"

namespace velloran::cli {

using Json = nlohmann::ordered_json;

inline void PrintJson(const Json& json) {
    Print(json.dump(2, ' ', /*ensure_ascii=*/false, Json::error_handler_t::replace) + "\n");
}

}  // namespace velloran::cli
