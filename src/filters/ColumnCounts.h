#pragma once

// Counts of levels by column, from which the histogram of a sliding window is made: the columns of
// one strip of a channel. Counts of the levels stand in sixteen groups of sixteen, the columns of a
// group side by side, and of each column also the count of each group.

#include <cstdint>
#include <cstring>
#include <vector>

namespace velloran {

inline constexpr int kLevelGroups = 16, kGroupLevels = 16;

/// A column's window has at most 31 samples, which a byte counts.
class ColumnCounts {
 public:
    ColumnCounts() = default;
    explicit ColumnCounts(int maxColumns)
        : bytes_(static_cast<std::size_t>(maxColumns) * (kLevelGroups + 1) * kGroupLevels) {}

    /// `columns` empty columns, at most those of the constructor.
    void Clear(int columns) {
        columns_ = columns;
        groups_ = bytes_.data() + Offset(kLevelGroups, 0);
        std::memset(bytes_.data(), 0, static_cast<std::size_t>(Offset(kLevelGroups + 1, 0)));
    }

    void Add(int column, std::uint8_t level) {
        ++bytes_[static_cast<std::size_t>(Offset(level >> 4, column) + (level & 15))];
        ++groups_[column * kGroupLevels + (level >> 4)];
    }
    void Remove(int column, std::uint8_t level) {
        --bytes_[static_cast<std::size_t>(Offset(level >> 4, column) + (level & 15))];
        --groups_[column * kGroupLevels + (level >> 4)];
    }

    /// Sixteen counts; those of the next column follow.
    const std::uint8_t* Levels(int group, int column) const {
        return bytes_.data() + Offset(group, column);
    }
    const std::uint8_t* Groups(int column) const { return groups_ + column * kGroupLevels; }

 private:
    std::ptrdiff_t Offset(int group, int column) const {
        return (static_cast<std::ptrdiff_t>(group) * columns_ + column) * kGroupLevels;
    }

    std::vector<std::uint8_t> bytes_;
    std::uint8_t* groups_ = nullptr;
    int columns_ = 0;
};

}  // namespace velloran
