#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <vector>

#include "reduce/PaletteMakers.h"
#include "support/Images.h"

namespace velloran {
namespace {

/// The network neuron by neuron in 64-bit integers, pixels from a plain array of bytes.
class PlainNetwork {
 public:
    explicit PlainNetwork(int n) : n_(n), neurons_(static_cast<std::size_t>(n)) {
        for (int i = 0; i < n; ++i) {
            neurons_[At(i)].value.fill((i << 12) / n);
            neurons_[At(i)].freq = 65536 / n;
        }
    }

    void Learn(const std::vector<std::uint8_t>& bytes) {
        const std::size_t length = bytes.size(), samples = length / 3;
        const std::size_t delta = samples / 100 == 0 ? 1 : samples / 100;
        std::size_t step = 1509;
        for (const std::size_t prime : {487u, 491u, 499u})
            if (length % prime != 0)
                step = 3 * prime;
        std::int64_t alpha = 1024, radius = std::max(n_ >> 3, n_ < 8 ? 1 : 0) * 64;
        std::size_t pos = 0;
        for (std::size_t i = 1; i <= samples; ++i) {
            const std::array<std::int64_t, 3> input{bytes[pos] * 16, bytes[pos + 1] * 16,
                                                    bytes[pos + 2] * 16};
            const int winner = Contest(input);
            Move(winner, input, alpha, 1024);
            const std::int64_t rad = radius / 64 <= 1 ? 0 : radius / 64;
            for (std::int64_t d = 1; d < rad; ++d) {
                const std::int64_t power = alpha * (((rad * rad - d * d) * 256) / (rad * rad));
                if (winner + d < n_)
                    Move(static_cast<int>(winner + d), input, power, 262144);
                if (winner - d >= 0)
                    Move(static_cast<int>(winner - d), input, power, 262144);
            }
            pos = (pos + step) % length;
            if (i % delta == 0) {
                alpha -= alpha / 30;
                radius -= radius / 30;
            }
        }
    }

    Palette Read() const {
        Palette palette;
        for (const Neuron& neuron : neurons_) {
            std::array<std::uint8_t, 3> level{};
            for (std::size_t c = 0; c < 3; ++c)
                level[c] = static_cast<std::uint8_t>(
                    std::min<std::int64_t>(255, (neuron.value[c] + 8) >> 4));
            palette.push_back({level[0], level[1], level[2], 0});
        }
        return palette;
    }

 private:
    struct Neuron {
        std::array<std::int64_t, 3> value{};
        std::int64_t freq = 0, bias = 0;
    };

    static std::size_t At(int i) { return static_cast<std::size_t>(i); }

    int Contest(const std::array<std::int64_t, 3>& input) {
        int best = 0, bestBiased = 0;
        std::int64_t least = INT64_MAX, leastBiased = INT64_MAX;
        for (int i = 0; i < n_; ++i) {
            Neuron& neuron = neurons_[At(i)];
            std::int64_t distance = 0;
            for (std::size_t c = 0; c < 3; ++c)
                distance += std::abs(neuron.value[c] - input[c]);
            if (distance < least) {
                least = distance;
                best = i;
            }
            if (distance - (neuron.bias >> 12) < leastBiased) {
                leastBiased = distance - (neuron.bias >> 12);
                bestBiased = i;
            }
            const std::int64_t share = neuron.freq >> 10;
            neuron.freq -= share;
            neuron.bias += share << 10;
        }
        neurons_[At(best)].freq += 64;
        neurons_[At(best)].bias -= 65536;
        return bestBiased;
    }

    void Move(int i, const std::array<std::int64_t, 3>& input, std::int64_t strength,
              std::int64_t divisor) {
        for (std::size_t c = 0; c < 3; ++c) {
            std::int64_t& value = neurons_[At(i)].value[c];
            value -= strength * (value - input[c]) / divisor;
        }
    }

    int n_;
    std::vector<Neuron> neurons_;
};

Palette PlainPalette(const CDibImage& image, int colors) {
    std::vector<std::uint8_t> bytes;
    for (int y = image.GetHeight() - 1; y >= 0; --y)  // rows as they are stored
        for (int x = 0; x < image.GetWidth(); ++x) {
            const test::Rgb c = test::PixelAt(image, x, y);
            for (const int level : {c.blue, c.green, c.red})
                bytes.push_back(static_cast<std::uint8_t>(level));
        }
    PlainNetwork network(colors);
    network.Learn(bytes);
    return network.Read();
}

TEST(NeuralPalette, EqualsAPlainNetworkNeuronByNeuron) {
    for (const int colors : {1, 2, 4, 7, 8, 15, 16, 31, 32, 64, 127, 128, 255, 256}) {
        const CDibImage image = test::Noise(41, 23, 24, static_cast<std::uint32_t>(colors));
        EXPECT_EQ(NeuralPalette(image, colors), PlainPalette(image, colors)) << colors;
    }
}

TEST(NeuralPalette, EveryStepLengthCountsDistinctPixels) {
    // Lengths that are multiples of 499, of 499 * 491, and of a row with padding.
    EXPECT_EQ(NeuralPalette(test::Noise(499, 2, 24), 16),
              PlainPalette(test::Noise(499, 2, 24), 16));
    EXPECT_EQ(NeuralPalette(test::Noise(491, 499, 24), 4),
              PlainPalette(test::Noise(491, 499, 24), 4));
}

TEST(NeuralPalette, TinyPagesAreLearntPixelByPixel) {
    for (int width = 1; width <= 17; ++width)
        for (const int height : {1, 2, 7})
            EXPECT_EQ(NeuralPalette(test::Noise(width, height, 24), 16),
                      PlainPalette(test::Noise(width, height, 24), 16));
}

TEST(NeuralPalette, AFlatPageMovesANeuronThere) {
    const Palette palette = NeuralPalette(test::Filled(64, 64, 24, 100), 16);
    EXPECT_EQ(std::count(palette.begin(), palette.end(), (PaletteEntry{100, 100, 100, 0})) > 0,
              true);
    EXPECT_EQ(palette, PlainPalette(test::Filled(64, 64, 24, 100), 16));
}

TEST(NeuralPalette, SmallerDepthsAreWidenedInACopy) {
    for (const int bpp : {1, 4, 8}) {
        CDibImage image = test::Noise(19, 13, bpp);
        for (int i = 0; i < image.GetPaletteCount(); ++i)
            image.GetPalette()[i] = {static_cast<std::uint8_t>(7 * i),
                                     static_cast<std::uint8_t>(11 * i),
                                     static_cast<std::uint8_t>(255 - i), 0};
        const CDibImage before(image);
        EXPECT_EQ(NeuralPalette(image, 8), PlainPalette(image, 8));
        test::ExpectSamePixels(image, before);
    }
}

TEST(NeuralPalette, CountsOutOfRangeGiveNone) {
    for (const int colors : {INT32_MIN, 0, 257})
        EXPECT_TRUE(NeuralPalette(test::Filled(3, 3, 24, 0), colors).empty());
    EXPECT_TRUE(NeuralPalette(CDibImage(), 4).empty());
}

}  // namespace
}  // namespace velloran
