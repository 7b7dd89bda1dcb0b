#pragma once

// A part of another source, as a file that lies inside another one.

#include <algorithm>
#include <cerrno>
#include <span>

#include "io/ByteSource.h"

namespace velloran {

class SubSource : public ByteSource {
 public:
    /// `whole` must outlive this; what reaches beyond it does not exist.
    SubSource(ByteSource& whole, std::uint64_t offset, std::uint64_t size)
        : whole_(whole), offset_(std::min(offset, whole.Size())) {
        SetSize(std::min(size, whole.Size() - offset_));
    }

    std::span<const std::uint8_t> InMemory() const override {
        const std::span<const std::uint8_t> all = whole_.InMemory();
        return all.empty() ? all
                           : all.subspan(static_cast<std::size_t>(offset_),
                                         static_cast<std::size_t>(Size()));
    }

 protected:
    std::ptrdiff_t Read(std::uint64_t offset, std::uint8_t* to, std::size_t size) override {
        const std::size_t came = whole_.ReadAt(offset_ + offset, {to, size});
        if (came > 0 || !whole_.IsUnreadable())
            return static_cast<std::ptrdiff_t>(came);
        errno = EIO;  // the whole keeps its own reason
        return -1;
    }

 private:
    ByteSource& whole_;
    std::uint64_t offset_;
};

}  // namespace velloran
