#pragma once

// The two rows of error diffusion: channel values in sixteenths, one pixel of margin on either
// side, for the row at hand and the one behind it.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace velloran {

class ErrorRows {
 public:
    /// Throws std::bad_alloc.
    ErrorRows(int width, int channels)
        : channels_(channels),
          current_((static_cast<std::size_t>(width) + 2) * static_cast<std::size_t>(channels)),
          next_(current_.size()) {}

    /// Loads a row of samples as value * 16; errors that were in the buffer go.
    void LoadCurrent(const std::uint8_t* row) { Load(current_, row); }
    void LoadNext(const std::uint8_t* row) { Load(next_, row); }

    void Swap() { std::swap(current_, next_); }

    /// The samples of the current row, without the margin.
    std::int32_t* Current() { return current_.data() + channels_; }

    /// Spreads the error of sample `at` (counted without the margin) by 7, 5, 3 and 1 sixteenths:
    /// to the next pixel, below, below to the left, below to the right.
    void Spread(std::ptrdiff_t at, std::int32_t error) {
        const std::ptrdiff_t here = at + channels_;
        current_[static_cast<std::size_t>(here + channels_)] += 7 * error;
        next_[static_cast<std::size_t>(here)] += 5 * error;
        next_[static_cast<std::size_t>(here - channels_)] += 3 * error;
        next_[static_cast<std::size_t>(here + channels_)] += error;
    }

 private:
    void Load(std::vector<std::int32_t>& buffer, const std::uint8_t* row) {
        const std::size_t margin = static_cast<std::size_t>(channels_);
        // What fell on the margins would add up without bound on a high page.
        std::fill_n(buffer.begin(), margin, 0);
        std::fill_n(buffer.end() - channels_, margin, 0);
        for (std::size_t i = margin; i < buffer.size() - margin; ++i)
            buffer[i] = row[i - margin] * 16;
    }

    std::ptrdiff_t channels_;
    std::vector<std::int32_t> current_, next_;
};

/// A diffused value back as a level: never below 0, sixteenths dropped, at most 255.
constexpr std::int32_t DiffusedLevel(std::int32_t value) {
    if (value < 0)
        return 0;
    return value >> 4 > 255 ? 255 : value >> 4;
}

}  // namespace velloran
