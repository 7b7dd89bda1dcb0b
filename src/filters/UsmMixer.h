#pragma once

// What the unsharp mask makes of a sample and its blur.

#include <array>
#include <cstdint>
#include <memory>

namespace velloran {

/// New sample by [source][blurred].
using UsmTable = std::array<std::array<std::uint8_t, 256>, 256>;

/// `amount` 1..500 percent, `threshold` 0..127: samples that differ from their blur by no more
/// than it stay.
void MakeUsmTable(int amount, int threshold, UsmTable& table);

/// Rows by that table, or by the same in vectors where the processor has them: both cost the same
/// for any amount.
class UsmMixer {
 public:
    /// Throws std::bad_alloc.
    UsmMixer(int amount, int threshold, bool useVectors = HasVectors());

    void Mix(const std::uint8_t* blurred, int count, std::uint8_t* row) const;

    static bool HasVectors();

 private:
    int amount_, threshold_;
    std::unique_ptr<UsmTable> table_;  // null with vectors
};

}  // namespace velloran
