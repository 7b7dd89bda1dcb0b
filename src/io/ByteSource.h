#pragma once

// Where the bytes of a picture come from: a file, memory, later an archive. Readers take bytes by
// their place and never see more than the source had when it was opened. What another program cuts
// off meanwhile comes short, and what a disk refuses is kept as the reason; neither can end the
// program, and a reader that asks at its end (FailWhenUnreadable, CameShort) misses neither.
//
// A source belongs to one thread at a time.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "io/FileError.h"

namespace velloran {

class ByteSource {
 public:
    ByteSource() = default;
    virtual ~ByteSource() = default;
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;

    /// Bytes, as they were counted when the source was opened.
    std::uint64_t Size() const { return size_; }

    /// Fills `to` from `offset` on. Returns how many bytes came: fewer than asked for at the end,
    /// where the source has become shorter, and where reading fails.
    std::size_t ReadAt(std::uint64_t offset, std::span<std::uint8_t> to);

    /// All bytes where they lie in memory already, else empty.
    virtual std::span<const std::uint8_t> InMemory() const { return {}; }

    /// All bytes in one piece, valid as long as the source: those in memory, else read once and
    /// kept; fewer than Size() where they came short. Nothing, with a reason, where reading fails,
    /// where no byte comes, and without memory.
    std::optional<std::span<const std::uint8_t>> AllBytes(FileError* error);

    /// Whether bytes that Size() promised did not come.
    bool CameShort() const { return cameShort_; }
    /// Whether reading failed for a reason of the system.
    bool IsUnreadable() const { return errno_ != 0; }
    /// Gives the reason when it did. True when nothing failed.
    bool FailWhenUnreadable(FileError* error) const;

 protected:
    void SetSize(std::uint64_t size) { size_ = size; }
    /// Reads up to `size` bytes; 0 at the end, -1 with errno.
    virtual std::ptrdiff_t Read(std::uint64_t offset, std::uint8_t* to, std::size_t size) = 0;
    /// Forgets what was read and what failed, for a source that opens something else.
    void Reset();

 private:
    std::uint64_t size_ = 0;
    bool cameShort_ = false;
    int errno_ = 0;
    struct KeptDeleter {
        void operator()(std::uint8_t* block) const noexcept;
    };
    std::unique_ptr<std::uint8_t[], KeptDeleter> all_;
    std::size_t allSize_ = 0;
};

}  // namespace velloran
