#pragma once

// Why a file could not be read or written, for the front end to tell.

#include <string>

namespace velloran {

struct FileError {
    enum class Cause {
        kNone,
        kContent,  // the file's or the picture's own; another try will not help
        kStorage,  // no space, no permission, I/O error: another try may help
    };
    Cause cause = Cause::kNone;
    std::string detail;  // English, from the library or the system; may be empty
};

/// Fills `error` when it is given and still holds no cause. Always false, to be returned.
bool FailContent(FileError* error, std::string detail);
bool FailStorage(FileError* error, std::string detail);
/// The same with the text of errno behind `what`.
bool FailErrno(FileError* error, const std::string& what);

}  // namespace velloran
