#pragma once

// Bytes that stay in memory.

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <span>
#include <stdexcept>
#include <vector>

#include "io/ByteSink.h"

namespace velloran {

class MemorySink : public ByteSink {
 public:
    /// More bytes than `limit` are a full disk.
    explicit MemorySink(std::uint64_t limit = std::numeric_limits<std::uint64_t>::max())
        : limit_(limit) {}

    bool Write(const void* data, std::size_t size) override {
        if (reason_ != FileReason::kUnknown)
            return false;
        if (size > limit_ || position_ > limit_ - size)
            return Fail(FileReason::kNoSpace);
        try {
            if (position_ + size > bytes_.size())
                bytes_.resize(static_cast<std::size_t>(position_) + size);
        } catch (const std::bad_alloc&) {
            return Fail(FileReason::kNoMemory);
        } catch (const std::length_error&) {
            return Fail(FileReason::kNoMemory);
        }
        if (size > 0)
            std::memcpy(bytes_.data() + position_, data, size);
        position_ += size;
        return true;
    }
    bool Seek(std::uint64_t position) override {
        position_ = position;
        return true;
    }
    std::uint64_t Position() const override { return position_; }
    std::uint64_t Size() const override { return bytes_.size(); }
    std::size_t Read(void* data, std::size_t size) override {
        const std::uint64_t from = std::min<std::uint64_t>(position_, bytes_.size());
        const auto count =
            static_cast<std::size_t>(std::min<std::uint64_t>(size, bytes_.size() - from));
        if (count > 0)
            std::memcpy(data, bytes_.data() + from, count);
        position_ = from + count;
        return count;
    }
    bool HasFailed() const override { return reason_ != FileReason::kUnknown; }
    bool FailWrite(FileError* error) override {
        return FailStorage(error,
                           reason_ == FileReason::kNoMemory ? "cannot write: out of memory"
                                                            : "cannot write: no space left",
                           reason_);
    }

    std::span<const std::uint8_t> Bytes() const { return bytes_; }

 private:
    bool Fail(FileReason reason) {
        reason_ = reason;
        return false;
    }

    std::vector<std::uint8_t> bytes_;
    std::uint64_t position_ = 0, limit_;
    FileReason reason_ = FileReason::kUnknown;
};

}  // namespace velloran
