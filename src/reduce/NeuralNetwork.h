#pragma once

// The self-organising map under the palette of the neural network.

#include <array>
#include <cstdint>

#include "core/DibImage.h"

namespace velloran {

/// Neurons side by side, channels apart, so that the search runs over vectors of them. What lies
/// behind the last neuron is so far away that it never wins.
///
/// The published network holds a bias beside each frequency. Whatever a frequency loses or gains,
/// its bias gains or loses 1024 times, so bias = 1024 * (firstFreq - freq), and is not held.
struct NeuralNetwork {
    static constexpr int kMost = 256;

    alignas(32) std::array<std::array<std::int32_t, kMost>, 3> channel;
    alignas(32) std::array<std::int32_t, kMost> freq;
    int count, firstFreq;

    explicit NeuralNetwork(int neurons) : count(neurons), firstFreq(65536 / neurons) {
        for (int i = 0; i < kMost; ++i) {
            const auto at = static_cast<std::size_t>(i);
            const bool used = i < neurons;
            for (auto& values : channel)
                values[at] = used ? (i << 12) / neurons : 1 << 27;
            freq[at] = used ? firstFreq : 0;
        }
    }
};

/// Shows the network every pixel of a 24-bit image once.
void Learn(NeuralNetwork& network, const CDibImage& image);

}  // namespace velloran
