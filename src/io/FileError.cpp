#include "io/FileError.h"

#include <cerrno>
#include <system_error>
#include <utility>

namespace velloran {
namespace {

bool Fail(FileError* error, FileError::Cause cause, std::string detail, FileReason reason) {
    if (error != nullptr && error->cause == FileError::Cause::kNone)
        *error = {cause, std::move(detail), reason};
    return false;
}

std::string WithSystemText(const std::string& what, int code) {
    return what + ": " + std::generic_category().message(code);
}

}  // namespace

bool FailContent(FileError* error, std::string detail, FileReason reason) {
    return Fail(error, FileError::Cause::kContent, std::move(detail), reason);
}

bool FailStorage(FileError* error, std::string detail, FileReason reason) {
    return Fail(error, FileError::Cause::kStorage, std::move(detail), reason);
}

bool FailErrno(FileError* error, const std::string& what) {
    const int code = errno;  // before anything can change it
    return FailStorage(error, WithSystemText(what, code), ReasonOfErrno(code));
}

bool FailReadErrno(FileError* error, const std::string& what) {
    const int code = errno;
    return FailContent(error, WithSystemText(what, code), ReasonOfErrno(code));
}

bool FailDamaged(FileError* error, std::string detail) {
    return FailContent(error, std::move(detail), FileReason::kDamaged);
}

bool FailNoMemory(FileError* error) {
    return FailStorage(error, "out of memory", FileReason::kNoMemory);
}

FileReason ReasonOfErrno(int code) {
    switch (code) {
        case ENOSPC:
        case EDQUOT:
        case EFBIG:  // what a limit of file sizes says
            return FileReason::kNoSpace;
        case EACCES:
        case EPERM:
        case EROFS:
            return FileReason::kNoPermission;
        case ENOENT:
        case ENOTDIR:
        case ELOOP:
            return FileReason::kNoSuchFile;
        case EISDIR:
            return FileReason::kIsFolder;
        case ENXIO:
        case ENODEV:
            return FileReason::kNotPlainFile;
        case EOVERFLOW:
            return FileReason::kTooLarge;
        case ENAMETOOLONG:
            return FileReason::kNameTooLong;
        case EMFILE:
        case ENFILE:
            return FileReason::kTooManyFiles;
        case ENOMEM:
            return FileReason::kNoMemory;
        case EIO:
        case ESTALE:
        case ETIMEDOUT:
        case EREMOTEIO:
            return FileReason::kInputOutput;
        default:
            return FileReason::kUnknown;
    }
}

}  // namespace velloran
