#pragma once

// EXIF as it lies in memory: directories of entries that point into one block. The block is changed
// in place, entry by entry, so that everything else in it, known or not, stays where it was: the
// notes of camera makers hold places counted from the block's beginning.

#include <cstdint>
#include <span>
#include <vector>

namespace velloran {

/// Whether bytes begin as a block does: a byte order mark, 42, and the place of a directory.
bool IsExif(std::span<const std::uint8_t> exif);

/// 1..8; 1 where the block says nothing, or nonsense.
int ExifOrientation(std::span<const std::uint8_t> exif);

struct ExifPage {
    int width = 0, height = 0;
    int xDpi = 96, yDpi = 96;
};
/// Makes the block true of a page that lies upright: orientation 1, sizes and resolution where the
/// block has them. The thumbnail, which shows the picture as it was, goes.
void SettleExif(const ExifPage& page, std::vector<std::uint8_t>& exif);

}  // namespace velloran
