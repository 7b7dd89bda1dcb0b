#pragma once

// Bytes that lie in memory already.

#include <cstring>

#include "io/ByteSource.h"

namespace velloran {

class MemorySource : public ByteSource {
 public:
    /// `bytes` must outlive this.
    explicit MemorySource(std::span<const std::uint8_t> bytes) : bytes_(bytes) {
        SetSize(bytes.size());
    }

    std::span<const std::uint8_t> InMemory() const override { return bytes_; }

 protected:
    std::ptrdiff_t Read(std::uint64_t offset, std::uint8_t* to, std::size_t size) override {
        std::memcpy(to, bytes_.data() + offset, size);
        return static_cast<std::ptrdiff_t>(size);
    }

 private:
    std::span<const std::uint8_t> bytes_;
};

}  // namespace velloran
