#pragma once

// Sources that go wrong while they are read.

#include <cerrno>
#include <functional>
#include <string_view>

#include "io/ByteSource.h"

namespace velloran::test {

/// Bytes whose reads a test decides upon: called with the count of reads so far and the bytes
/// asked for, it gives how many of them come (0 is the end) or -1 with errno.
class ScriptedSource : public ByteSource {
 public:
    using Script = std::function<std::ptrdiff_t(int read, std::uint64_t offset, std::size_t size)>;
    ScriptedSource(std::string_view bytes, Script script)
        : bytes_(bytes), script_(std::move(script)) {
        SetSize(bytes.size());
    }
    int Reads() const { return reads_; }

 protected:
    std::ptrdiff_t Read(std::uint64_t offset, std::uint8_t* to, std::size_t size) override {
        const std::ptrdiff_t count = script_(reads_++, offset, size);
        for (std::ptrdiff_t i = 0; i < count; ++i)
            to[i] = static_cast<std::uint8_t>(bytes_[offset + static_cast<std::size_t>(i)]);
        return count;
    }

 private:
    std::string_view bytes_;
    Script script_;
    int reads_ = 0;
};

/// The n-th read (0 is the first) and all later ones fail as a bad disk does.
inline ScriptedSource::Script FailsFrom(int n) {
    return [n](int read, std::uint64_t, std::size_t size) -> std::ptrdiff_t {
        if (read < n)
            return static_cast<std::ptrdiff_t>(size);
        errno = EIO;
        return -1;
    };
}

/// From the n-th read on the source is only `length` bytes long.
inline ScriptedSource::Script ShrinksFrom(int n, std::uint64_t length) {
    return [n, length](int read, std::uint64_t offset, std::size_t size) -> std::ptrdiff_t {
        if (read < n)
            return static_cast<std::ptrdiff_t>(size);
        return offset >= length
                   ? 0
                   : static_cast<std::ptrdiff_t>(std::min<std::uint64_t>(size, length - offset));
    };
}

}  // namespace velloran::test
