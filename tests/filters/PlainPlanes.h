#pragma once

// An image as planes of plain numbers, for second formulations that give no thought to speed. Row 0
// is the first stored row.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "core/DibImage.h"
#include "support/Images.h"

namespace velloran::test {

struct PlainPlane {
    int width = 0, height = 0;
    std::vector<int> samples;

    int& At(int x, int y) { return samples[static_cast<std::size_t>(y * width + x)]; }
    int At(int x, int y) const { return samples[static_cast<std::size_t>(y * width + x)]; }
    /// The border repeated.
    int Clamped(int x, int y) const {
        return At(std::clamp(x, 0, width - 1), std::clamp(y, 0, height - 1));
    }
};

inline std::vector<PlainPlane> PlanesOf(const CDibImage& image) {
    const int channels = image.GetBpp() == 24 ? 3 : 1;
    std::vector<PlainPlane> planes;
    for (int c = 0; c < channels; ++c) {
        PlainPlane plane{image.GetWidth(), image.GetHeight(), {}};
        for (int y = 0; y < plane.height; ++y)
            for (int x = 0; x < plane.width; ++x)
                plane.samples.push_back(image.GetBits(y)[x * channels + c]);
        planes.push_back(plane);
    }
    return planes;
}

/// `image` with each plane replaced by what `change` makes of it.
inline CDibImage WithPlanes(const CDibImage& image,
                            const std::function<PlainPlane(const PlainPlane&)>& change) {
    CDibImage changed = image;
    std::vector<PlainPlane> planes = PlanesOf(image);
    for (PlainPlane& plane : planes)
        plane = change(plane);
    const int channels = static_cast<int>(planes.size());
    for (int c = 0; c < channels; ++c)
        for (int y = 0; y < image.GetHeight(); ++y)
            for (int x = 0; x < image.GetWidth(); ++x)
                changed.GetBits(y)[x * channels + c] =
                    static_cast<std::uint8_t>(planes[static_cast<std::size_t>(c)].At(x, y));
    return changed;
}

/// Waves of all levels, other ones in each channel.
inline CDibImage Smooth(int width, int height, int bpp) {
    CDibImage image = Filled(width, height, bpp, 0);
    const int channels = bpp / 8;
    for (int y = 0; y < height; ++y)
        for (int i = 0; i < width * channels; ++i)
            image.GetBits(y)[i] = static_cast<std::uint8_t>(std::lround(
                127.5 + 127.5 * std::sin((i / channels) / 6.0 + y / 9.0 + i % channels)));
    return image;
}

/// Two neighbouring levels at random: means lie close to the middle between two levels.
inline CDibImage TwoLevels(int width, int height, int bpp, int level) {
    CDibImage image = Noise(width, height, bpp, 77);
    for (int y = 0; y < height; ++y)
        for (int i = 0; i < width * bpp / 8; ++i)
            image.GetBits(y)[i] = static_cast<std::uint8_t>(level + (image.GetBits(y)[i] & 1));
    return image;
}

/// Every size from 1 x 1 to 17 x 17, noise or smooth, grey or colour in turn, and a larger one of
/// each.
inline void ForEachPicture(const std::function<void(const CDibImage&, int number)>& trial) {
    int number = 0;
    for (int height = 1; height <= 17; ++height)
        for (int width = 1; width <= 17; ++width, ++number) {
            SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height));
            const int bpp = number / 2 % 2 == 0 ? 8 : 24;
            trial(number % 2 == 0 ? Noise(width, height, bpp, static_cast<unsigned>(number) + 1)
                                  : Smooth(width, height, bpp),
                  number);
        }
    for (const int bpp : {8, 24}) {
        SCOPED_TRACE("larger, " + std::to_string(bpp) + " bits");
        trial(Noise(83, 61, bpp, 5), number++);
        trial(Smooth(83, 61, bpp), number++);
        trial(TwoLevels(83, 61, bpp, 127), number++);
    }
}

}  // namespace velloran::test
