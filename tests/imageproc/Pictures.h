#pragma once

// Binary pictures as text: '#' is black, anything else white.

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "imageproc/BinaryImage.h"

namespace velloran::imageproc::test {

using Picture = std::vector<std::string>;

inline BinaryImage FromPicture(const Picture& rows) {
    BinaryImage image({static_cast<int>(rows.at(0).size()), static_cast<int>(rows.size())},
                      BwColor::kWhite);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (rows[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] == '#')
                image.fill({x, y, x, y}, BwColor::kBlack);
    return image;
}

inline Picture ToPicture(const BinaryImage& image) {
    Picture rows;
    for (int y = 0; y < image.height(); ++y) {
        rows.emplace_back();
        for (int x = 0; x < image.width(); ++x)
            rows.back() += image.isBlack(x, y) ? '#' : '.';
    }
    return rows;
}

/// About one pixel in `sparseness` is black; the bits behind the last column are noise.
inline BinaryImage RandomImage(int width, int height, std::uint32_t seed, int sparseness = 2) {
    BinaryImage image(width, height);
    std::mt19937 random(seed);
    std::uint32_t* words = image.data();
    for (int i = 0; i < image.wordsPerLine() * height; ++i) {
        words[i] = 0;
        for (int bit = 0; bit < 32; ++bit)
            words[i] = words[i] << 1 | (random() % static_cast<unsigned>(sparseness) == 0 ? 1 : 0);
    }
    return image;
}

}  // namespace velloran::imageproc::test
