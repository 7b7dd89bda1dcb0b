#pragma once

// Planes for the kernels to work on: padded rows, noise and smooth pictures.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "core/PlaneView.h"

namespace velloran::test {

/// Owner of a plane whose rows end in bytes that nobody may touch.
class SamplePlane {
 public:
    static constexpr int kPadding = 5;
    static constexpr std::uint8_t kUntouched = 0xA5;

    SamplePlane(int width, int height, int channels = 1)
        : width_(width),
          height_(height),
          channels_(channels),
          bytes_(static_cast<std::size_t>(Stride() * height), kUntouched) {}

    PlaneView View() { return {bytes_.data(), width_, height_, channels_, Stride()}; }
    ConstPlaneView View() const { return {bytes_.data(), width_, height_, channels_, Stride()}; }
    std::uint8_t& At(int x, int y, int c = 0) {
        return bytes_[static_cast<std::size_t>(y * Stride() + x * channels_ + c)];
    }
    int At(int x, int y, int c = 0) const {
        return bytes_[static_cast<std::size_t>(y * Stride() + x * channels_ + c)];
    }
    /// The sample nearest to a place that may lie outside.
    int Nearest(int x, int y, int c = 0) const {
        return At(std::clamp(x, 0, width_ - 1), std::clamp(y, 0, height_ - 1), c);
    }
    int Width() const { return width_; }
    int Height() const { return height_; }
    int Channels() const { return channels_; }
    bool PaddingIsUntouched() const {
        for (int y = 0; y < height_; ++y)
            for (int i = width_ * channels_; i < Stride(); ++i)
                if (bytes_[static_cast<std::size_t>(y * Stride() + i)] != kUntouched)
                    return false;
        return true;
    }
    bool operator==(const SamplePlane&) const = default;

 private:
    std::ptrdiff_t Stride() const {
        return static_cast<std::ptrdiff_t>(width_) * channels_ + kPadding;
    }

    int width_, height_, channels_;
    std::vector<std::uint8_t> bytes_;
};

enum class Content { kNoise, kSmooth, kBlackAndWhite };
inline constexpr Content kContents[] = {Content::kNoise, Content::kSmooth, Content::kBlackAndWhite};

inline SamplePlane MakeSamples(int width, int height, int channels, Content content,
                               std::uint32_t seed = 1) {
    SamplePlane plane(width, height, channels);
    std::mt19937 random(seed);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < channels; ++c) {
                const auto value = static_cast<int>(random() >> 16 & 255);
                const int wave = static_cast<int>(127.5 + 120 * std::sin(0.11 * x + 0.07 * y + c));
                plane.At(x, y, c) = static_cast<std::uint8_t>(
                    content == Content::kNoise
                        ? value
                        : (content == Content::kSmooth ? wave + (value & 3) : (value & 1) * 255));
            }
    return plane;
}

/// Equal samples; names the first that differ. Padding must be as it was made.
inline void ExpectSameSamples(const SamplePlane& actual, const SamplePlane& expected,
                              int tolerance = 0) {
    ASSERT_EQ(actual.Width(), expected.Width());
    ASSERT_EQ(actual.Height(), expected.Height());
    ASSERT_EQ(actual.Channels(), expected.Channels());
    int named = 0;
    for (int y = 0; y < actual.Height() && named < 5; ++y)
        for (int x = 0; x < actual.Width() && named < 5; ++x)
            for (int c = 0; c < actual.Channels() && named < 5; ++c)
                if (std::abs(actual.At(x, y, c) - expected.At(x, y, c)) > tolerance) {
                    ++named;
                    ADD_FAILURE() << actual.Width() << " x " << actual.Height() << " at (" << x
                                  << ", " << y << ") channel " << c << ": " << actual.At(x, y, c)
                                  << " instead of " << expected.At(x, y, c);
                }
    EXPECT_TRUE(actual.PaddingIsUntouched());
}

}  // namespace velloran::test
