#pragma once

// What a failure was due to, in the language in use.

#include <string>

#include "io/FileError.h"

namespace velloran::cli {

/// Empty where the cause is not known.
std::string CauseText(FileReason reason);

/// Of an error number of the system.
std::string CauseOfErrno(int code);

}  // namespace velloran::cli
