#pragma once

// Reads a source from its beginning on, as decoders do, through a window that stays in the
// processor's cache; a source in memory is its own window.

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

#include "io/ByteSource.h"

namespace velloran {

class SourceReader {
 public:
    /// Reads up to `limit` bytes of the source, which must outlive this. Throws std::bad_alloc; all
    /// that follow throw nothing, so that libraries in C may call them.
    explicit SourceReader(ByteSource& source, std::uint64_t limit = UINT64_MAX)
        : source_(source), end_(std::min(limit, source.Size())) {
        if (source.InMemory().empty() && end_ > 0)
            buffer_.reset(new std::uint8_t[Room()]);
    }

    /// Where the reader ends at the latest.
    std::uint64_t End() const { return end_; }
    /// The place of the next byte.
    std::uint64_t Position() const { return next_ - window_.size(); }

    /// The next bytes as they lie, at least one; empty at the end.
    std::span<const std::uint8_t> Take() {
        if (window_.empty())
            Fill();
        return std::exchange(window_, {});
    }

    /// Copies the next bytes; fewer than `count` at the end.
    std::size_t Read(void* to, std::size_t count) {
        std::size_t done = 0;
        while (done < count) {
            if (window_.empty())
                Fill();
            const std::size_t part = std::min(count - done, window_.size());
            if (part == 0)
                break;
            std::memcpy(static_cast<std::uint8_t*>(to) + done, window_.data(), part);
            window_ = window_.subspan(part);
            done += part;
        }
        return done;
    }

    /// Passes over bytes; fewer than `count` at the end.
    std::uint64_t Skip(std::uint64_t count) {
        const std::uint64_t skipped = std::min(count, end_ - Position());
        if (skipped <= window_.size()) {
            window_ = window_.subspan(static_cast<std::size_t>(skipped));
        } else {
            next_ = Position() + skipped;
            window_ = {};
        }
        return skipped;
    }

 private:
    // Heads are short, and many files are asked for nothing else.
    static constexpr std::size_t kFirst = std::size_t{1} << 14, kWindow = std::size_t{1} << 16;

    std::size_t Room() const {
        return static_cast<std::size_t>(std::min<std::uint64_t>(kWindow, end_));
    }

    void Fill() {
        window_ = {};
        if (next_ >= end_)
            return;
        if (buffer_ == nullptr) {
            window_ = source_.InMemory().subspan(static_cast<std::size_t>(next_),
                                                 static_cast<std::size_t>(end_ - next_));
        } else {
            const std::uint64_t wanted =
                std::min<std::uint64_t>({next_ == 0 ? kFirst : kWindow, Room(), end_ - next_});
            const std::size_t came =
                source_.ReadAt(next_, {buffer_.get(), static_cast<std::size_t>(wanted)});
            window_ = {buffer_.get(), came};
        }
        next_ += window_.size();
    }

    ByteSource& source_;
    std::uint64_t end_, next_ = 0;  // next_: behind the window
    std::span<const std::uint8_t> window_;
    std::unique_ptr<std::uint8_t[]> buffer_;
};

}  // namespace velloran
