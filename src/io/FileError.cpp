#include "io/FileError.h"

#include <cerrno>
#include <system_error>
#include <utility>

namespace velloran {
namespace {

bool Fail(FileError* error, FileError::Cause cause, std::string detail) {
    if (error != nullptr && error->cause == FileError::Cause::kNone) {
        error->cause = cause;
        error->detail = std::move(detail);
    }
    return false;
}

}  // namespace

bool FailContent(FileError* error, std::string detail) {
    return Fail(error, FileError::Cause::kContent, std::move(detail));
}

bool FailStorage(FileError* error, std::string detail) {
    return Fail(error, FileError::Cause::kStorage, std::move(detail));
}

bool FailErrno(FileError* error, const std::string& what) {
    const int code = errno;  // before anything can change it
    return FailStorage(error, what + ": " + std::generic_category().message(code));
}

}  // namespace velloran
