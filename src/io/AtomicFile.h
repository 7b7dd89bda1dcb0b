#pragma once

// A written file appears whole or not at all: it is written beside its target under a temporary
// name, or none where the file system allows that, and put in the target's place when it is
// complete. Every file that the system writes goes through here.

#include <cstddef>
#include <cstdio>
#include <filesystem>

#include "io/ByteSink.h"
#include "io/FileError.h"

namespace velloran {

class AtomicFile : public ByteSink {
 public:
    /// Nothing is touched before Open.
    explicit AtomicFile(std::filesystem::path target);
    /// Without a Commit the target stays as it was and the temporary file goes.
    ~AtomicFile() override;

    /// Creates the temporary file in the target's folder. A target that is a folder, a device or
    /// a pipe, one that may not be written, a missing or closed folder and a full disk are
    /// refused with a kStorage reason, a name that is too long with a kContent one.
    bool Open(FileError* error);

    /// The open file, at its beginning; seekable and readable, as libtiff wants it. Null before
    /// Open and after Commit. Libraries may write to it: Commit sees their failures too.
    std::FILE* Stream() const { return stream_; }

    /// Writes bytes; a failure is kept and makes all that follows fail.
    bool Write(const void* data, std::size_t size) override;

    bool Seek(std::uint64_t position) override;
    std::uint64_t Position() const override;
    std::uint64_t Size() const override;
    std::size_t Read(void* data, std::size_t size) override;
    bool HasFailed() const override { return failed_; }
    bool FailWrite(FileError* error) override;

    /// Flushes, closes and puts the file in its place. A target that existed keeps its
    /// permissions and, as far as the user may set them, owner, group and extended attributes; a
    /// target that is a symbolic link keeps the link and changes the file behind it. Where a write
    /// failed, the reason is kStorage with the system's text.
    bool Commit(FileError* error);

 private:
    bool CheckTarget(FileError* error);
    bool FlushAll();
    bool Publish();
    void NoteFailure();
    void Abandon();

    std::filesystem::path target_;
    std::filesystem::path file_;       // the target behind its links
    std::filesystem::path temporary_;  // empty while the file has no name
    std::FILE* stream_ = nullptr;
    bool replaces_ = false;
    bool failed_ = false;
    int errnoOfFailure_ = 0;
};

}  // namespace velloran
