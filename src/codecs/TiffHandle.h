#pragma once

// A libtiff file over a source or a sink, with messages kept for the
// caller instead of printed. Each handle has its own handlers, so threads do not meet.

#include <tiffio.h>

#include <cstdint>

#include "io/FileError.h"

namespace velloran {

class ByteSink;
class ByteSource;

class TiffHandle {
 public:
    /// Opens the first page of a source, which must outlive the handle.
    explicit TiffHandle(ByteSource& source);
    /// Opens a sink for writing in one order of bytes.
    explicit TiffHandle(ByteSink& sink, bool bigEndian = false);
    ~TiffHandle();
    TiffHandle(const TiffHandle&) = delete;
    TiffHandle& operator=(const TiffHandle&) = delete;

    /// Null when the file could not be opened.
    TIFF* Get() const { return tiff_; }
    /// What libtiff complained of first, else `otherwise`. Always false.
    bool Fail(FileError* error, const char* otherwise) const;
    /// What libtiff complained of first; empty when it did not.
    const char* Message() const { return message_; }
    /// Whether bytes were asked for that lie behind the end of the source.
    bool ReadBeyondEnd() const { return readBeyondEnd_; }
    /// Closes a file that was written, which writes what is left.
    void Close();

 private:
    struct Procedures;
    void Open(const char* mode);

    ByteSource* source_ = nullptr;
    ByteSink* sink_ = nullptr;
    std::uint64_t position_ = 0;  // in the source
    bool readBeyondEnd_ = false;
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
