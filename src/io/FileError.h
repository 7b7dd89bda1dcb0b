#pragma once

// Why a file could not be read or written, for the front end to tell.

#include <string>

namespace velloran {

/// What stood in the way, so that a front end can name it in the language in use.
enum class FileReason {
    kUnknown,
    kNoSpace,         // the disk, a quota or a limit of file sizes is full
    kNoPermission,    // also a file system that is read only
    kNoSuchFile,      // the file or a folder on the way to it
    kIsFolder,        // a folder where a file is wanted
    kNotPlainFile,    // a pipe, a device, a socket
    kEmpty,           // no bytes, or no picture
    kDamaged,         // cut short or not what its head says
    kKindNotRead,     // a type or a kind of it that has no reader
    kKindNotWritten,  // what the target's type cannot hold, or a type that is never written
    kTooLarge,        // beyond the readers' limits or those of the target's type
    kNameTooLong,
    kTooManyFiles,  // open at once
    kNoMemory,
    kInputOutput,  // the disk or the network failed
    kHoldsPdf,     // pages of another kind than pictures
    kPdfTooLarge,  // the same, and more than is ever read
    kHoldsHtml,    // what a server said in place of a page
    kLocked,       // a page that its publisher locked
    kNoSuchPage,   // of those that a file holds
};

struct FileError {
    enum class Cause {
        kNone,
        kContent,  // the file's or the picture's own; another try will not help
        kStorage,  // no space, no permission, no memory, I/O error: another try may help
    };
    Cause cause = Cause::kNone;
    std::string detail;  // English, from the library or the system; may be empty
    FileReason reason = FileReason::kUnknown;
};

/// Fills `error` when it is given and still holds no cause. Always false, to be returned.
bool FailContent(FileError* error, std::string detail, FileReason reason = FileReason::kUnknown);
bool FailStorage(FileError* error, std::string detail, FileReason reason = FileReason::kUnknown);
/// A storage failure with the text of errno behind `what`, and the reason that errno stands for.
bool FailErrno(FileError* error, const std::string& what);
/// The same for a source, which is a content failure whatever the reason.
bool FailReadErrno(FileError* error, const std::string& what);
/// A content failure of a picture that is cut or damaged.
bool FailDamaged(FileError* error, std::string detail);
/// Want of memory, in reading and in writing: a storage failure, since another try may help.
bool FailNoMemory(FileError* error);

/// The reason that an error number of the system stands for.
FileReason ReasonOfErrno(int code);

}  // namespace velloran
