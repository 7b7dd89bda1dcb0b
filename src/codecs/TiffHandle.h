#pragma once

// A libtiff file over memory or over a file that is being written, with messages kept for the
// caller instead of printed. Each handle has its own handlers, so threads do not meet.

#include <tiffio.h>

#include <cstdint>
#include <span>

#include "io/FileError.h"

namespace velloran {

class AtomicFile;

class TiffHandle {
 public:
    /// Opens the first page of a file in memory, which must outlive the handle.
    explicit TiffHandle(std::span<const std::uint8_t> bytes);
    /// Opens an open file for writing.
    explicit TiffHandle(AtomicFile& file);
    ~TiffHandle();
    TiffHandle(const TiffHandle&) = delete;
    TiffHandle& operator=(const TiffHandle&) = delete;

    /// Null when the file could not be opened.
    TIFF* Get() const { return tiff_; }
    /// What libtiff complained of first, else `otherwise`. Always false.
    bool Fail(FileError* error, const char* otherwise) const;
    bool WriteFailed() const { return writeFailed_; }
    /// The system's reason of the first failed write. Always false.
    bool FailWrite(FileError* error) const;
    /// Closes a file that was written; what fails then counts as a failed write.
    void Close();

 private:
    struct Procedures;
    void Open(const char* mode);
    void NoteWriteFailure();

    std::span<const std::uint8_t> bytes_;
    AtomicFile* file_ = nullptr;
    std::uint64_t position_ = 0;
    bool writeFailed_ = false;
    int writeErrno_ = 0;
    char message_[200] = "";
    TIFF* tiff_ = nullptr;
};

/// A field of the current page, or `otherwise` when the page has none and there is no default.
template <typename Value>
Value TiffField(TIFF* tiff, std::uint32_t tag, Value otherwise) {
    Value value{};
    return TIFFGetFieldDefaulted(tiff, tag, &value) == 1 ? value : otherwise;
}

}  // namespace velloran
