// Crop, quarter turns and mirrors of CBaseImage. Alpha and selection planes go along.

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "core/BaseImage.h"
#include "core/IndexRows.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "core/TransposePixels.h"

namespace velloran {
namespace {

/// Moves the plane's rows together so that only the picture within the margins is left.
void CropPlane(std::uint8_t* plane, int width, int height, int left, int top, int right,
               int bottom) {
    if (plane == nullptr)
        return;
    const std::size_t kept = static_cast<std::size_t>(width) - left - right;
    for (int y = bottom; y < height - top; ++y)
        std::memmove(plane + static_cast<std::size_t>(y - bottom) * kept,
                     plane + static_cast<std::size_t>(y) * width + left, kept);
}

struct SideMargins {
    int left, right;
};

/// What the depth allows to cut from the sides: whole bytes only.
SideMargins RoundedSides(int bpp, int width, std::int64_t left, std::int64_t right) {
    if (bpp == 1) {
        left = (left + 4) / 8 * 8;
        right = (right + 4) / 8 * 8;
        if (left + 8 + right > width)
            return {0, 0};
    } else if (bpp == 4) {
        left &= ~std::int64_t{1};
        right &= ~std::int64_t{1};
        if (left + right + 4 > width)
            return {0, 0};
    }
    return {static_cast<int>(left), static_cast<int>(right)};
}

/// A byte with its 1-bit or 4-bit pixels in the opposite order.
constexpr std::array<std::uint8_t, 256> MirroredBytes(int bpp) {
    std::array<std::uint8_t, 256> table{};
    for (int value = 0; value < 256; ++value)
        for (int at = 0; at < 8; at += bpp)
            table[value] = static_cast<std::uint8_t>(table[value] | (value >> at & ((1 << bpp) - 1))
                                                                        << (8 - bpp - at));
    return table;
}
constexpr auto kMirrored1 = MirroredBytes(1);
constexpr auto kMirrored4 = MirroredBytes(4);

/// Bytes in mirrored order, then the unused bits, which came to the front, are shifted out.
void MirrorPackedRow(std::uint8_t* row, int width, int bpp) {
    const auto& table = bpp == 1 ? kMirrored1 : kMirrored4;
    const std::int64_t bytes = (std::int64_t{width} * bpp + 7) / 8;
    row[bytes - 1] &= LastByteMask(width, bpp);
    for (std::int64_t a = 0, b = bytes - 1; a <= b; ++a, --b) {
        const std::uint8_t first = table[row[b]];
        row[b] = table[row[a]];
        row[a] = first;
    }
    const int unused = static_cast<int>(bytes * 8 - std::int64_t{width} * bpp);
    if (unused == 0)
        return;
    for (std::int64_t i = 0; i < bytes; ++i)
        row[i] = static_cast<std::uint8_t>(row[i] << unused |
                                           (i + 1 < bytes ? row[i + 1] >> (8 - unused) : 0));
}

void MirrorByteRow(std::uint8_t* row, int width) {
    std::uint8_t* end = row + width;
    for (; end - row >= 16; row += 8, end -= 8) {
        std::uint64_t first, last;
        std::memcpy(&first, row, 8);
        std::memcpy(&last, end - 8, 8);
        first = __builtin_bswap64(first);
        last = __builtin_bswap64(last);
        std::memcpy(row, &last, 8);
        std::memcpy(end - 8, &first, 8);
    }
    std::reverse(row, end);
}

void MirrorColorRow(std::uint8_t* row, int width) {
    struct Pixel {
        std::uint8_t bytes[3];
    };
    for (std::uint8_t* end = row + (std::ptrdiff_t{width} - 1) * 3; row < end; row += 3, end -= 3) {
        Pixel first, last;
        std::memcpy(&first, row, 3);
        std::memcpy(&last, end, 3);
        std::memcpy(row, &last, 3);
        std::memcpy(end, &first, 3);
    }
}

void MirrorRow(std::uint8_t* row, int width, int bpp) {
    if (bpp == 8)
        MirrorByteRow(row, width);
    else if (bpp == 24)
        MirrorColorRow(row, width);
    else
        MirrorPackedRow(row, width, bpp);
}

/// Turns rows round, their order, or both, in one pass; a pair of rows at a time.
void FlipRows(std::uint8_t* first, int width, int height, int bpp, std::ptrdiff_t stride,
              FlipMode mode) {
    const bool swapRows = mode != FlipMode::kMirror, mirror = mode != FlipMode::kFlip;
    const std::int64_t rowBytes = (std::int64_t{width} * bpp + 7) / 8;
#pragma omp parallel for schedule(static) if (IsWorthThreads(rowBytes * height, SampleWork::kCopy))
    for (int y = 0; y < (height + 1) / 2; ++y) {
        std::uint8_t* lower = first + y * stride;
        std::uint8_t* upper = first + (height - 1 - y) * stride;
        if (swapRows && lower != upper)
            std::swap_ranges(lower, lower + rowBytes, upper);
        if (mirror) {
            MirrorRow(lower, width, bpp);
            if (lower != upper)
                MirrorRow(upper, width, bpp);
        }
    }
}

/// Rows run from the bottom, so a turn to the left reads the source upside down, and a turn to
/// the right writes the target upside down.
void TurnRows(const PackedRows& source, int bpp, std::uint8_t* target, std::ptrdiff_t targetStride,
              bool left) {
    if (left) {
        const PackedRows upsideDown{source.first + (source.height - 1) * source.stride,
                                    source.width, source.height, -source.stride};
        TransposePixels(upsideDown, bpp, target, targetStride);
    } else {
        TransposePixels(source, bpp, target + (source.width - 1) * targetStride, -targetStride);
    }
}

/// The plane turned; null for a null plane, and for one that finds no memory.
PixelBuffer TurnedPlane(const std::uint8_t* plane, int width, int height, bool left) {
    if (plane == nullptr)
        return nullptr;
    PixelBuffer turned(static_cast<std::uint8_t*>(
        AllocatePixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height))));
    if (turned == nullptr)
        NoteOutOfMemory();
    else
        TurnRows({plane, width, height, width}, 8, turned.get(), height, left);
    return turned;
}

}  // namespace

bool CBaseImage::CropInPlace(int left, int top, int right, int bottom) {
    if (!IsValid() || IsGhost() || left < 0 || top < 0 || right < 0 || bottom < 0)
        return false;
    const int width = GetWidth(), height = GetHeight(), bpp = GetBpp();
    const SideMargins sides = RoundedSides(bpp, width, left, right);
    if (std::int64_t{top} + bottom >= height || std::int64_t{sides.left} + sides.right >= width)
        return false;
    header_.width = width - sides.left - sides.right;
    header_.height = height - top - bottom;
    const std::uint32_t oldEffWidth = effWidth_;
    effWidth_ = static_cast<std::uint32_t>(
        EffectiveWidth(static_cast<std::uint64_t>(header_.width), static_cast<std::uint64_t>(bpp)));
    header_.imageSize = effWidth_ * static_cast<std::uint32_t>(header_.height);
    WriteHeader();
    // The top rows of the picture are the last of the block: they are simply dropped.
    const std::uint8_t* from = bits_ + static_cast<std::size_t>(bottom) * oldEffWidth +
                               static_cast<std::size_t>(std::int64_t{sides.left} * bpp / 8);
    if (sides.left == 0 && sides.right == 0) {
        if (bottom > 0)
            std::memmove(bits_, from, header_.imageSize);
    } else {
        // Only bytes with pixels move: a whole padded row could reach behind the old block.
        const auto bytes = static_cast<std::size_t>((std::int64_t{header_.width} * bpp + 7) / 8);
        const std::uint8_t mask = LastByteMask(header_.width, bpp);
        std::uint8_t* to = bits_;
        for (int y = 0; y < header_.height; ++y, from += oldEffWidth, to += effWidth_) {
            std::memmove(to, from, bytes);
            to[bytes - 1] &= mask;
            std::memset(to + bytes, 0, effWidth_ - bytes);
        }
    }
    CropPlane(alpha_.get(), width, height, sides.left, top, sides.right, bottom);
    if (std::uint8_t* selection = SelectionPlane()) {
        CropPlane(selection, width, height, sides.left, top, sides.right, bottom);
        UpdateSelectionBox();
    }
    return true;
}

bool CBaseImage::Rotate90(bool left) {
    if (!IsValid() || IsGhost())
        return false;
    const int width = GetWidth(), height = GetHeight();
    CBaseImage turned;
    if (turned.Create(height, width, GetBpp(), GetType()) == nullptr)
        return false;
    PixelBuffer alpha = TurnedPlane(alpha_.get(), width, height, left);
    PixelBuffer selection = TurnedPlane(SelectionPlane(), width, height, left);
    if ((alpha == nullptr) != (alpha_ == nullptr) ||
        (selection == nullptr) != (SelectionPlane() == nullptr))
        return false;
    std::memcpy(turned.dib_ + sizeof(BitmapHeader), dib_ + sizeof(BitmapHeader), GetPaletteSize());
    TurnRows({bits_, width, height, static_cast<std::ptrdiff_t>(effWidth_)}, GetBpp(), turned.bits_,
             static_cast<std::ptrdiff_t>(turned.effWidth_), left);
    alpha_ = std::move(alpha);
    TakeBlock(turned);
    if (selection != nullptr) {
        rare_->selection = std::move(selection);
        UpdateSelectionBox();
    }
    return true;
}

bool CBaseImage::Flip(FlipMode mode) {
    if (!IsValid() || IsGhost())
        return false;
    const int width = GetWidth(), height = GetHeight();
    FlipRows(bits_, width, height, GetBpp(), static_cast<std::ptrdiff_t>(effWidth_), mode);
    if (alpha_ != nullptr)
        FlipRows(alpha_.get(), width, height, 8, width, mode);
    if (std::uint8_t* selection = SelectionPlane()) {
        FlipRows(selection, width, height, 8, width, mode);
        UpdateSelectionBox();
    }
    return true;
}

}  // namespace velloran
