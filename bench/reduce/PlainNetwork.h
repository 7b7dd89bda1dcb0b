#pragma once

// The self-organising map of NeuralPalette as a loop neuron by neuron: what the vectors are
// measured against.

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <vector>

#include "core/DibImage.h"

namespace velloran::bench {

class PlainNetwork {
 public:
    explicit PlainNetwork(int n) : neurons_(static_cast<std::size_t>(n)) {
        for (int i = 0; i < n; ++i) {
            Neuron& neuron = neurons_[static_cast<std::size_t>(i)];
            neuron.value.fill((i << 12) / n);
            neuron.freq = 65536 / n;
        }
    }

    /// Every pixel once, 499 pixels on from one to the next.
    void Learn(const CDibImage& image) {
        const auto width = static_cast<std::size_t>(image.GetWidth());
        const std::size_t count = width * static_cast<std::size_t>(image.GetHeight());
        int alpha = 1024, radius = static_cast<int>(neurons_.size() >> 3) * 64;
        std::size_t at = 0;
        for (std::size_t i = 1; i <= count; ++i) {
            const std::uint8_t* pixel =
                image.GetBits(static_cast<int>(at / width)) + 3 * (at % width);
            const std::array<int, 3> input{pixel[0] * 16, pixel[1] * 16, pixel[2] * 16};
            const int winner = Contest(input), reach = radius / 64 <= 1 ? 0 : radius / 64;
            Move(winner, input, alpha, 1024);
            for (int d = 1; d < reach; ++d) {
                const int power = alpha * ((reach * reach - d * d) * 256 / (reach * reach));
                Move(winner + d, input, power, 262144);
                Move(winner - d, input, power, 262144);
            }
            at = (at + 499) % count;
            if (i % std::max<std::size_t>(count / 100, 1) == 0) {
                alpha -= alpha / 30;
                radius -= radius / 30;
            }
        }
    }

    int Value(int neuron) const { return neurons_[static_cast<std::size_t>(neuron)].value[0]; }

 private:
    struct Neuron {
        std::array<int, 3> value{};
        int freq = 0, bias = 0;
    };

    int Contest(const std::array<int, 3>& input) {
        std::size_t best = 0, bestBiased = 0;
        int least = std::numeric_limits<int>::max(), leastBiased = least;
        for (std::size_t i = 0; i < neurons_.size(); ++i) {
            Neuron& neuron = neurons_[i];
            const int distance = std::abs(neuron.value[0] - input[0]) +
                                 std::abs(neuron.value[1] - input[1]) +
                                 std::abs(neuron.value[2] - input[2]);
            if (distance < least) {
                least = distance;
                best = i;
            }
            if (distance - (neuron.bias >> 12) < leastBiased) {
                leastBiased = distance - (neuron.bias >> 12);
                bestBiased = i;
            }
            const int share = neuron.freq >> 10;
            neuron.freq -= share;
            neuron.bias += share << 10;
        }
        neurons_[best].freq += 64;
        neurons_[best].bias -= 65536;
        return static_cast<int>(bestBiased);
    }

    void Move(int neuron, const std::array<int, 3>& input, int strength, int divisor) {
        if (neuron < 0 || neuron >= static_cast<int>(neurons_.size()))
            return;
        for (std::size_t c = 0; c < 3; ++c) {
            int& value = neurons_[static_cast<std::size_t>(neuron)].value[c];
            value -= strength * (value - input[c]) / divisor;
        }
    }

    std::vector<Neuron> neurons_;
};

}  // namespace velloran::bench
