#pragma once

// Reads a source from its beginning on, as decoders do, through a window that stays in the
// processor's cache; a source in memory is its own window.

#include <algorithm>
#include <cstring>
#include <vector>

#include "io/ByteSource.h"

namespace velloran {

class SourceReader {
 public:
    /// Reads up to `limit` bytes of the source, which must outlive this.
    explicit SourceReader(ByteSource& source, std::uint64_t limit = UINT64_MAX)
        : source_(source), end_(std::min(limit, source.Size())) {}

    /// Where the reader ends at the latest.
    std::uint64_t End() const { return end_; }
    /// The place of the next byte.
    std::uint64_t Position() const { return next_ - (window_.size() - taken_); }

    /// The next bytes as they lie, at least one; empty at the end.
    std::span<const std::uint8_t> Take() {
        if (taken_ == window_.size())
            Fill();
        const auto rest = window_.subspan(taken_);
        taken_ = window_.size();
        return rest;
    }

    /// Copies the next bytes; fewer than `count` at the end.
    std::size_t Read(void* to, std::size_t count) {
        std::size_t done = 0;
        while (done < count) {
            if (taken_ == window_.size())
                Fill();
            const std::size_t part = std::min(count - done, window_.size() - taken_);
            if (part == 0)
                break;
            std::memcpy(static_cast<std::uint8_t*>(to) + done, window_.data() + taken_, part);
            taken_ += part;
            done += part;
        }
        return done;
    }

    /// Goes on at another place.
    void SeekTo(std::uint64_t place) {
        window_ = {};
        taken_ = 0;
        next_ = std::min(place, end_);
    }

 private:
    void Fill() {
        window_ = {};
        taken_ = 0;
        if (next_ >= end_)
            return;
        if (const auto all = source_.InMemory(); !all.empty()) {
            window_ = all.subspan(static_cast<std::size_t>(next_),
                                  static_cast<std::size_t>(end_ - next_));
        } else {
            // Heads are short, and many files are asked for nothing else.
            constexpr std::size_t kFirst = std::size_t{1} << 14, kWindow = std::size_t{1} << 17;
            buffer_.resize(static_cast<std::size_t>(
                std::min<std::uint64_t>(buffer_.empty() ? kFirst : kWindow, end_ - next_)));
            window_ = std::span<const std::uint8_t>(buffer_).first(
                source_.ReadAt(next_, std::span<std::uint8_t>(buffer_)));
        }
        next_ += window_.size();
    }

    ByteSource& source_;
    std::uint64_t end_, next_ = 0;  // next_: behind the window
    std::span<const std::uint8_t> window_;
    std::size_t taken_ = 0;
    std::vector<std::uint8_t> buffer_;
};

}  // namespace velloran
