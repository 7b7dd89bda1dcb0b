#pragma once

// What the program tells the shell.

namespace velloran::cli {

/// A stop by a signal is 128 and the signal's number.
enum ExitStatus : int {
    kDone = 0,
    kFileFailed = 1,  // a file could not be read or converted; another try will not help
    kWrongUsage = 2,  // nothing was read or written
    kNotWritten = 4,  // a result could not be written; another try may help
    kSignalBase = 128,
};

}  // namespace velloran::cli
