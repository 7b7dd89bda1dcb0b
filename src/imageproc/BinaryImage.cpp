#include "imageproc/BinaryImage.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <utility>

namespace velloran::imageproc {

struct BinaryImage::SharedData {
    std::atomic<std::uint32_t> count{1};
    std::uint32_t* words() { return reinterpret_cast<std::uint32_t*>(this + 1); }
    const std::uint32_t* words() const { return reinterpret_cast<const std::uint32_t*>(this + 1); }
};

namespace {

std::size_t WordCount(int wordsPerLine, int height) {
    return static_cast<std::size_t>(wordsPerLine) * static_cast<std::size_t>(height);
}

}  // namespace

BinaryImage::SharedData* BinaryImage::allocate(int wordsPerLine, int height) {
    const std::size_t bytes = sizeof(SharedData) + 4 * WordCount(wordsPerLine, height);
    void* memory = ::operator new(bytes, std::nothrow);
    if (memory == nullptr)
        throw BadAllocation();
    return new (memory) SharedData;
}

void BinaryImage::release(SharedData* shared) noexcept {
    if (shared != nullptr && shared->count.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        shared->~SharedData();
        ::operator delete(shared);
    }
}

BinaryImage::BinaryImage(int width, int height) {
    if (width < 1 || height < 1)
        throw std::invalid_argument("BinaryImage dimensions are wrong");
    const int words = width / 32 + (width % 32 != 0);
    shared_ = allocate(words, height);
    width_ = width;
    height_ = height;
    wordsPerLine_ = words;
}

BinaryImage::BinaryImage(QT::QSize size, BwColor color) : BinaryImage(size) {
    fill(color);
}

BinaryImage::BinaryImage(const BinaryImage& other) noexcept
    : shared_(other.shared_),
      width_(other.width_),
      height_(other.height_),
      wordsPerLine_(other.wordsPerLine_) {
    if (shared_ != nullptr)
        shared_->count.fetch_add(1, std::memory_order_relaxed);
}

BinaryImage::BinaryImage(BinaryImage&& other) noexcept {
    swap(other);
}

BinaryImage& BinaryImage::operator=(const BinaryImage& other) noexcept {
    BinaryImage taken(other);
    swap(taken);
    return *this;
}

BinaryImage& BinaryImage::operator=(BinaryImage&& other) noexcept {
    BinaryImage taken(std::move(other));
    swap(taken);
    return *this;
}

BinaryImage::~BinaryImage() {
    release(shared_);
}

void BinaryImage::swap(BinaryImage& other) noexcept {
    std::swap(shared_, other.shared_);
    std::swap(width_, other.width_);
    std::swap(height_, other.height_);
    std::swap(wordsPerLine_, other.wordsPerLine_);
}

std::uint32_t* BinaryImage::data() {
    if (shared_ == nullptr)
        return nullptr;
    if (shared_->count.load(std::memory_order_acquire) > 1) {
        SharedData* own = allocate(wordsPerLine_, height_);
        std::memcpy(own->words(), shared_->words(), 4 * WordCount(wordsPerLine_, height_));
        release(std::exchange(shared_, own));
    }
    return shared_->words();
}

const std::uint32_t* BinaryImage::data() const {
    return shared_ == nullptr ? nullptr : shared_->words();
}

void BinaryImage::fill(BwColor color) {
    if (isNull())
        throw std::invalid_argument("Attempt to fill a null BinaryImage!");
    std::fill_n(data(), WordCount(wordsPerLine_, height_), color == BwColor::kBlack ? ~0U : 0U);
}

void BinaryImage::fill(const QT::QRect& rect, BwColor color) {
    if (isNull())
        throw std::invalid_argument("Attempt to fill a null BinaryImage!");
    const int left = std::max(rect.left, 0), right = std::min(rect.right, width_ - 1);
    const int top = std::max(rect.top, 0), bottom = std::min(rect.bottom, height_ - 1);
    if (left > right || top > bottom)
        return;
    const int firstWord = left / 32, lastWord = right / 32;
    const std::uint32_t firstMask = ~0U >> (left % 32);
    const std::uint32_t lastMask = ~0U << (31 - right % 32);
    std::uint32_t* words = data();
    for (int y = top; y <= bottom; ++y) {
        std::uint32_t* line = words + static_cast<std::ptrdiff_t>(y) * wordsPerLine_;
        for (int w = firstWord; w <= lastWord; ++w) {
            std::uint32_t mask = ~0U;
            if (w == firstWord)
                mask &= firstMask;
            if (w == lastWord)
                mask &= lastMask;
            line[w] = color == BwColor::kBlack ? line[w] | mask : line[w] & ~mask;
        }
    }
}

QT::QRect BinaryImage::contentBoundingBox(BwColor background) const {
    const QT::QRect none{0, 0, -1, -1};
    if (isNull())
        return none;
    const std::uint32_t invert = background == BwColor::kBlack ? ~0U : 0U;
    QT::QRect box{std::numeric_limits<int>::max(), -1, -1, -1};
    for (int y = 0; y < height_; ++y) {
        const std::uint32_t* line = data() + static_cast<std::ptrdiff_t>(y) * wordsPerLine_;
        const auto wordAt = [&](int w) {
            return (line[w] ^ invert) & (w == wordsPerLine_ - 1 ? lastWordMask() : ~0U);
        };
        int first = 0;
        while (first < wordsPerLine_ && wordAt(first) == 0)
            ++first;
        if (first == wordsPerLine_)
            continue;
        int last = wordsPerLine_ - 1;
        while (wordAt(last) == 0)
            --last;
        if (box.top < 0)
            box.top = y;
        box.bottom = y;
        box.left = std::min(box.left, first * 32 + std::countl_zero(wordAt(first)));
        box.right = std::max(box.right, last * 32 + 31 - std::countr_zero(wordAt(last)));
    }
    return box.top < 0 ? none : box;
}

bool BinaryImage::operator==(const BinaryImage& other) const {
    if (width_ != other.width_ || height_ != other.height_)
        return false;
    if (shared_ == other.shared_)
        return true;
    if (isNull() || other.isNull())
        return false;
    for (int y = 0; y < height_; ++y) {
        const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(y) * wordsPerLine_;
        const std::uint32_t *a = data() + at, *b = other.data() + at;
        if (!std::equal(a, a + wordsPerLine_ - 1, b))
            return false;
        if (((a[wordsPerLine_ - 1] ^ b[wordsPerLine_ - 1]) & lastWordMask()) != 0)
            return false;
    }
    return true;
}

}  // namespace velloran::imageproc
