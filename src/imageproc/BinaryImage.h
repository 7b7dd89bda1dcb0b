#pragma once

// A black-and-white image in 32-bit words, rows from the top, the most significant bit leftmost, 1
// is black. Copies share their pixels until one of them is written to. Bits behind the last column
// are unspecified; every operation masks them.

#include <cstdint>
#include <new>

#include "core/QtTypes.h"

namespace velloran::imageproc {

enum class BwColor { kWhite = 0, kBlack = 1 };

/// What no memory for pixels throws: "bad allocation".
class BadAllocation : public std::bad_alloc {
 public:
    const char* what() const noexcept override { return "bad allocation"; }
};

class BinaryImage {
 public:
    /// A null image.
    BinaryImage() = default;
    /// Uninitialised pixels. A side below 1 throws std::invalid_argument.
    BinaryImage(int width, int height);
    explicit BinaryImage(QT::QSize size) : BinaryImage(size.width, size.height) {}
    BinaryImage(QT::QSize size, BwColor color);
    BinaryImage(const BinaryImage& other) noexcept;
    BinaryImage(BinaryImage&& other) noexcept;
    BinaryImage& operator=(const BinaryImage& other) noexcept;
    BinaryImage& operator=(BinaryImage&& other) noexcept;
    ~BinaryImage();

    void swap(BinaryImage& other) noexcept;

    bool isNull() const { return shared_ == nullptr; }
    int width() const { return width_; }
    int height() const { return height_; }
    int wordsPerLine() const { return wordsPerLine_; }
    QT::QSize size() const { return {width_, height_}; }
    QT::QRect rect() const { return {0, 0, width_ - 1, height_ - 1}; }

    /// Rows of wordsPerLine() words; null for a null image. The writable form clones shared pixels.
    std::uint32_t* data();
    const std::uint32_t* data() const;

    /// Mask of the used bits of a row's last word.
    std::uint32_t lastWordMask() const { return width_ % 32 == 0 ? ~0U : ~(~0U >> (width_ % 32)); }

    bool isBlack(int x, int y) const {
        return (data()[static_cast<std::ptrdiff_t>(y) * wordsPerLine_ + x / 32] >> (31 - x % 32)) &
               1;
    }

    /// On a null image throws std::invalid_argument. The rectangle is cut to the image.
    void fill(BwColor color);
    void fill(const QT::QRect& rect, BwColor color);

    /// Smallest rectangle of the pixels unlike `background`; (0, 0, -1, -1) where there are none.
    QT::QRect contentBoundingBox(BwColor background = BwColor::kWhite) const;

    /// Sizes and used pixels.
    bool operator==(const BinaryImage& other) const;

 private:
    struct SharedData;
    static SharedData* allocate(int wordsPerLine, int height);
    static void release(SharedData* shared) noexcept;

    SharedData* shared_ = nullptr;
    int width_ = 0, height_ = 0, wordsPerLine_ = 0;
};

}  // namespace velloran::imageproc
