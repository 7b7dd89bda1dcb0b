#pragma once

// A written file appears whole or not at all: it is written beside its target under a temporary
// name and renamed over it. Every writer of the system goes through here.

#include <cstddef>
#include <cstdio>
#include <filesystem>

#include "core/FileError.h"

namespace velloran {

class AtomicFile {
  public:
    /// Nothing is touched before Open.
    explicit AtomicFile(std::filesystem::path target);
    /// Without a Commit the target stays as it was and the temporary file goes.
    ~AtomicFile();
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    /// Creates the temporary file in the target's folder. A target that is a folder, a missing
    /// or closed folder and a full disk are refused with a kStorage reason.
    bool Open(FileError* error);

    /// The open file, positioned at its end; also seekable and readable, as libtiff wants it.
    std::FILE* Stream() const { return stream_; }

    /// Writes bytes; a failure is kept and makes Commit fail.
    bool Write(const void* data, std::size_t size);

    /// Flushes, closes and renames over the target. A target that existed keeps its permissions;
    /// a target that is a symbolic link keeps the link and changes the file behind it.
    bool Commit(FileError* error);

  private:
    std::filesystem::path target_;
    std::filesystem::path temporary_;
    std::FILE* stream_ = nullptr;
    bool failed_ = false;
    int errnoOfFailure_ = 0;
};

}  // namespace velloran
