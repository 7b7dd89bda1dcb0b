#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "core/Refusal.h"
#include "core/StepContext.h"
#include "reduce/BilevelRows.h"
#include "reduce/CleanPage.h"

namespace velloran {
namespace {

constexpr int kMaxCells = 31;
constexpr int kMinSide = 10;

/// Cells from the top row of the picture, row by row: 'X' must be black, ' ' white, '?' either;
/// '-' must be black and turns white, '+' must be white and turns black.
struct Pattern {
    std::string_view cells;
    int width, height;

    char At(int x, int y) const { return cells[static_cast<std::size_t>(y * width + x)]; }
};

constexpr Pattern kPatterns[] = {
    {"XXX"
     " - "
     "   ",
     3, 3},
    {"X ?"
     "X  "
     "X- "
     "X- "
     "X  "
     "X ?",
     3, 6},
    {"X ?"
     "X ?"
     "X  "
     "X- "
     "X- "
     "X- "
     "X  "
     "X ?"
     "X ?",
     3, 9},
    {"XX?"
     "XX?"
     "XX "
     "X+ "
     "X+ "
     "X+ "
     "XX "
     "XX?"
     "XX?",
     3, 9},
    {"XX?"
     "XX "
     "X+ "
     "X+ "
     "XX "
     "XX?",
     3, 6},
    {"   "
     "X+X"
     "XXX",
     3, 3},
};

/// One cell of a turned pattern.
struct Cell {
    int x, y;
    char kind;
};

struct TurnedPattern {
    std::array<Cell, kMaxCells> cells;
    int count = 0, width = 0, height = 0;
};

/// The pattern after `turns` quarter turns clockwise; empty for one with too many cells.
TurnedPattern Turn(const Pattern& pattern, int turns) {
    TurnedPattern turned;
    const int cells = pattern.width * pattern.height;
    if (cells > kMaxCells || static_cast<int>(pattern.cells.size()) != cells)
        return turned;
    const bool upright = turns % 2 == 0;
    turned.width = upright ? pattern.width : pattern.height;
    turned.height = upright ? pattern.height : pattern.width;
    for (int y = 0; y < pattern.height; ++y)
        for (int x = 0; x < pattern.width; ++x) {
            const char kind = pattern.At(x, y);
            if (kind == '?')
                continue;
            Cell cell{x, y, kind};
            if (turns == 1)
                cell = {pattern.height - 1 - y, x, kind};
            else if (turns == 2)
                cell = {pattern.width - 1 - x, pattern.height - 1 - y, kind};
            else if (turns == 3)
                cell = {y, pattern.width - 1 - x, kind};
            turned.cells[static_cast<std::size_t>(turned.count++)] = cell;
        }
    return turned;
}

/// ANDs a row of words, moved `by` (0..31) pixels to the left, into `match`; `invert` is all ones
/// to look for white. The row has a word behind its last one.
void MatchCell(const std::uint32_t* row, int words, int by, std::uint32_t invert,
               std::uint32_t* match) {
    if (by == 0) {
        for (int w = 0; w < words; ++w)
            match[w] &= row[w] ^ invert;
        return;
    }
    for (int w = 0; w < words; ++w)
        match[w] &= (row[w] << by | row[w + 1] >> (32 - by)) ^ invert;
}

/// A page of 1-bit rows with a spare word behind each, and the marks of one orientation.
class PatternPage {
 public:
    explicit PatternPage(const CDibImage& image)
        : width_(image.GetWidth()),
          height_(image.GetHeight()),
          words_((width_ + 31) / 32),
          stride_(static_cast<std::size_t>(words_) + 1),
          pixels_(stride_ * static_cast<std::size_t>(height_)),
          marks_(pixels_.size()) {
        const ConstPlaneView plane = TopDownViewOf(image);
        for (int y = 0; y < height_; ++y)
            BlackBits(plane.Row(y).data(), width_, Row(pixels_, y));
        before_ = pixels_;
    }

    /// Finds all places of a pattern, then flips their cells.
    void Apply(const TurnedPattern& pattern) {
        if (pattern.count == 0 || pattern.width > width_ || pattern.height > height_)
            return;
        const int rows = height_ - pattern.height + 1;
        const CancelToken cancel = CurrentCancel();
        for (int y = 0; y < rows; ++y) {
            if (cancel.IsCancelled())
                return;  // marks of before are of another pattern
            MarkRow(pattern, y);
        }
        for (int y = 0; y < rows; ++y)
            FlipRow(pattern, y);
    }

    /// Writes what changed back into the image.
    void WriteTo(CDibImage& image) const {
        const PlaneView plane = TopDownViewOf(image);
        for (int y = 0; y < height_; ++y)
            WriteBlackBits(Row(pixels_, y), Row(before_, y), width_, plane.Row(y).data());
    }

 private:
    template <typename Words>
    auto Row(Words& words, int y) const -> decltype(words.data()) {
        return words.data() + stride_ * static_cast<std::size_t>(y);
    }

    void MarkRow(const TurnedPattern& pattern, int y) {
        std::uint32_t* match = Row(marks_, y);
        for (int w = 0; w < words_; ++w)
            match[w] = ~0U;
        for (int i = 0; i < pattern.count; ++i) {
            const Cell& cell = pattern.cells[static_cast<std::size_t>(i)];
            const bool black = cell.kind == 'X' || cell.kind == '-';
            MatchCell(Row(pixels_, y + cell.y), words_, cell.x, black ? 0U : ~0U, match);
        }
        // Only places where the pattern fits count.
        const int places = width_ - pattern.width + 1;
        for (int w = places / 32; w < words_; ++w)
            match[w] &= w == places / 32 && places % 32 != 0 ? ~(~0U >> (places % 32)) : 0U;
    }

    void FlipRow(const TurnedPattern& pattern, int y) {
        const std::uint32_t* match = Row(marks_, y);
        for (int w = 0; w < words_; ++w) {
            if (match[w] == 0)
                continue;
            for (int i = 0; i < pattern.count; ++i) {
                const Cell& cell = pattern.cells[static_cast<std::size_t>(i)];
                if (cell.kind != '-' && cell.kind != '+')
                    continue;
                std::uint32_t* row = Row(pixels_, y + cell.y) + w;
                const std::uint32_t here = match[w] >> cell.x;
                const std::uint32_t behind = cell.x == 0 ? 0 : match[w] << (32 - cell.x);
                if (cell.kind == '-') {
                    row[0] &= ~here;
                    row[1] &= ~behind;
                } else {
                    row[0] |= here;
                    row[1] |= behind;
                }
            }
        }
    }

    int width_, height_, words_;
    std::size_t stride_;
    std::vector<std::uint32_t> pixels_, before_, marks_;
};

}  // namespace

int SmoothEdges(CDibImage& image) {
    if (!image.IsValid() || image.GetBpp() != 8 || image.GetWidth() < kMinSide ||
        image.GetHeight() < kMinSide)
        return 0;
    return RefuseWhenOutOfMemory([&] {
        PatternPage page(image);
        for (const Pattern& pattern : kPatterns)
            for (int turns = 0; turns < 4; ++turns)
                page.Apply(Turn(pattern, turns));
        page.WriteTo(image);
        return 1;
    });
}

}  // namespace velloran
