#include "codecs/TiffSamples.h"

#include <algorithm>
#include <cstring>

#include "codecs/ColorProfile.h"
#include "codecs/DecodedPage.h"
#include "core/IndexRows.h"

namespace velloran {
namespace {

using Kind = TiffFormat::Kind;

/// Keeps the high byte of samples of 16 bits, in place.
void KeepHighBytes(std::uint8_t* samples, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        std::uint16_t sample;
        std::memcpy(&sample, samples + 2 * i, 2);
        samples[i] = static_cast<std::uint8_t>(sample >> 8);
    }
}

}  // namespace

std::uint8_t UnmultipliedSample(unsigned sample, unsigned alpha) {
    if (alpha == 0)
        return static_cast<std::uint8_t>(sample);
    return static_cast<std::uint8_t>(std::min(255u, (sample * 255 + alpha / 2) / alpha));
}

TiffSamples::TiffSamples(const TiffFormat& format, const InkConverter& inks, CDibImage& page)
    : format_(format),
      inks_(inks),
      page_(page),
      width_(static_cast<std::size_t>(format.width)),
      stride_(static_cast<std::size_t>(format.samples)),
      inversion_(page.GetBpp() == 8 && format.photometric == PHOTOMETRIC_MINISWHITE ? 255 : 0) {}

std::uint8_t* TiffSamples::Target(int y, std::size_t rowBytes) {
    if (format_.kind == Kind::kIndexed && format_.bits != 2)
        return RowFromTop(page_, y);
    scratch_.resize(rowBytes);
    return scratch_.data();
}

void TiffSamples::Take(std::uint8_t* samples, int y) {
    std::uint8_t* row = RowFromTop(page_, y);
    if (format_.bits == 16)
        KeepHighBytes(samples, width_ * stride_);
    switch (format_.kind) {
        case Kind::kIndexed:
            TakeIndexed(samples, row);
            return;
        case Kind::kRgb:
            TakeRgb(samples, row);
            break;
        case Kind::kCmyk:
            TakeCmyk(samples, row);
            break;
        default:
            TakeGray(samples, row);
    }
    if (format_.alphaSample >= 0)
        TakeAlpha(samples, row, AlphaRowFromTop(page_, y));
}

void TiffSamples::TakeIndexed(const std::uint8_t* samples, std::uint8_t* row) {
    if (format_.bits == 2) {
        narrow_.resize(width_);
        UnpackIndexRow(samples, format_.width, 2, narrow_.data());
        PackIndexRow(narrow_.data(), format_.width, 4, row);
    } else if (samples != row) {
        std::memcpy(row, samples, (width_ * static_cast<std::size_t>(format_.bits) + 7) / 8);
    }
    if (inversion_ != 0)
        std::transform(row, row + width_, row,
                       [](std::uint8_t level) { return static_cast<std::uint8_t>(~level); });
}

void TiffSamples::TakeGray(const std::uint8_t* samples, std::uint8_t* row) const {
    for (std::size_t x = 0; x < width_; ++x)
        row[x] = samples[x * stride_] ^ inversion_;
}

void TiffSamples::TakeRgb(const std::uint8_t* samples, std::uint8_t* row) const {
    for (std::size_t x = 0; x < width_; ++x, samples += stride_, row += 3) {
        row[0] = samples[2];
        row[1] = samples[1];
        row[2] = samples[0];
    }
}

void TiffSamples::TakeCmyk(const std::uint8_t* samples, std::uint8_t* row) {
    narrow_.resize(width_ * 4);
    for (std::size_t x = 0; x < width_; ++x)
        std::memcpy(narrow_.data() + 4 * x, samples + x * stride_, 4);
    inks_.ConvertRow(narrow_.data(), row, format_.width);
}

void TiffSamples::TakeAlpha(const std::uint8_t* samples, std::uint8_t* row,
                            std::uint8_t* alpha) const {
    for (std::size_t x = 0; x < width_; ++x)
        alpha[x] = samples[x * stride_ + static_cast<std::size_t>(format_.alphaSample)];
    // Palette indices and inks are not multiplied.
    if (!format_.associatedAlpha || format_.kind == Kind::kCmyk ||
        format_.photometric == PHOTOMETRIC_PALETTE)
        return;
    const std::size_t channels = format_.kind == Kind::kRgb ? 3 : 1;
    for (std::size_t i = 0; i < width_ * channels; ++i)
        row[i] = UnmultipliedSample(row[i], alpha[i / channels]);
}

}  // namespace velloran
