#pragma once

// Where the bytes of a picture go: a file that appears whole or not at all, memory, later an
// archive. Seekable and readable, since some libraries go back to what they wrote.

#include <cstddef>
#include <cstdint>

#include "io/FileError.h"

namespace velloran {

class ByteSink {
 public:
    ByteSink() = default;
    virtual ~ByteSink() = default;
    ByteSink(const ByteSink&) = delete;
    ByteSink& operator=(const ByteSink&) = delete;

    /// Writes at the position and moves it on. A failure is kept and makes all that follows fail.
    virtual bool Write(const void* data, std::size_t size) = 0;

    /// Moves the position; places behind the end are filled with zeros by the next write.
    virtual bool Seek(std::uint64_t position) = 0;
    virtual std::uint64_t Position() const = 0;
    virtual std::uint64_t Size() const = 0;
    /// Reads back from the position on; fewer bytes at the end.
    virtual std::size_t Read(void* data, std::size_t size) = 0;

    virtual bool HasFailed() const = 0;
    /// The system's reason of the first failure. Always false.
    virtual bool FailWrite(FileError* error) = 0;
};

}  // namespace velloran
