#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>

#include "core/SimdTarget.h"
#include "reduce/PaletteMakers.h"

namespace velloran {
namespace {

constexpr int kMaxNeurons = 256;
constexpr int kCycles = 100;
constexpr int kInitialAlpha = 1024;
constexpr int kRadiusShift = 6;

/// Lanes of one vector step of the search.
using Lanes = std::int32_t __attribute__((vector_size(32)));
constexpr int kLanes = 8;

/// Neurons side by side, channels apart, so that the search runs over vectors of them. What lies
/// behind the last neuron is so far away that it never wins.
struct Network {
    alignas(32) std::array<std::array<std::int32_t, kMaxNeurons>, 3> channel;
    alignas(32) std::array<std::int32_t, kMaxNeurons> freq, bias;
    int count;

    explicit Network(int neurons) : count(neurons) {
        for (int i = 0; i < kMaxNeurons; ++i) {
            const auto at = static_cast<std::size_t>(i);
            const bool used = i < neurons;
            for (auto& values : channel)
                values[at] = used ? (i << 12) / neurons : 1 << 27;
            freq[at] = used ? 65536 / neurons : 0;
            bias[at] = 0;
        }
    }
};

struct Winners {
    int best, bestBias;
};

const Lanes& At(const std::int32_t* from) {
    return *reinterpret_cast<const Lanes*>(from);
}

// Inlined always: vectors must not cross a call between code for different processors.
[[gnu::always_inline]] inline void AddDistance(Lanes& sum, const Lanes& a, const Lanes& b) {
    const Lanes difference = a - b, sign = difference >> 31;
    sum += (difference ^ sign) - sign;
}

/// The lane with the smallest value, the smallest neuron winning ties.
int FirstOfSmallest(const Lanes& value, const Lanes& neuron) {
    int lane = 0;
    for (int i = 1; i < kLanes; ++i)
        if (value[i] < value[lane] || (value[i] == value[lane] && neuron[i] < neuron[lane]))
            lane = i;
    return neuron[lane];
}

/// Finds the nearest neuron and the nearest one after the bias, and ages all of them.
VELLORAN_SIMD_CLONES
Winners Contest(Network& network, int blue, int green, int red) {
    constexpr std::int32_t kFar = std::numeric_limits<std::int32_t>::max();
    const Lanes zero{};
    const Lanes b = zero + blue, g = zero + green, r = zero + red;
    Lanes neuron{0, 1, 2, 3, 4, 5, 6, 7};
    Lanes least = zero + kFar, leastBiased = zero + kFar, best = zero, bestBiased = zero;
    for (int i = 0; i < network.count; i += kLanes, neuron += kLanes) {
        Lanes distance = zero;
        AddDistance(distance, At(&network.channel[0][i]), b);
        AddDistance(distance, At(&network.channel[1][i]), g);
        AddDistance(distance, At(&network.channel[2][i]), r);
        Lanes& bias = *reinterpret_cast<Lanes*>(&network.bias[i]);
        Lanes& freq = *reinterpret_cast<Lanes*>(&network.freq[i]);
        const Lanes biased = distance - (bias >> 12);
        const Lanes nearer = distance < least, nearerBiased = biased < leastBiased;
        least = nearer ? distance : least;
        best = nearer ? neuron : best;
        leastBiased = nearerBiased ? biased : leastBiased;
        bestBiased = nearerBiased ? neuron : bestBiased;
        const Lanes share = freq >> 10;
        freq -= share;
        bias += share << 10;
    }
    const Winners winners{FirstOfSmallest(least, best), FirstOfSmallest(leastBiased, bestBiased)};
    network.freq[static_cast<std::size_t>(winners.best)] += 64;
    network.bias[static_cast<std::size_t>(winners.best)] -= 65536;
    return winners;
}

void MoveNeuron(Network& network, int neuron, const std::array<int, 3>& input, int strength,
                int divisor) {
    for (std::size_t c = 0; c < 3; ++c) {
        std::int32_t& value = network.channel[c][static_cast<std::size_t>(neuron)];
        value -= static_cast<std::int32_t>(std::int64_t{strength} * (value - input[c]) / divisor);
    }
}

/// How far the neighbours of a winner move, by their distance from it.
struct Neighborhood {
    int reach = 0;
    std::array<int, kMaxNeurons> power{};

    void Update(int radius, int alpha) {
        reach = radius >> kRadiusShift;
        if (reach <= 1)
            reach = 0;
        const int square = reach * reach;
        for (int i = 0; i < reach; ++i)
            power[static_cast<std::size_t>(i)] = alpha * (((square - i * i) * 256) / square);
    }
};

void MoveNeighbors(Network& network, int neuron, const Neighborhood& near,
                   const std::array<int, 3>& input) {
    const int low = std::max(neuron - near.reach, -1);
    const int high = std::min(neuron + near.reach, network.count);
    int up = neuron + 1, down = neuron - 1;
    for (std::size_t i = 1; up < high || down > low; ++i) {
        const int strength = near.power[i];
        if (up < high)
            MoveNeuron(network, up++, input, strength, 262144);
        if (down > low)
            MoveNeuron(network, down--, input, strength, 262144);
    }
}

/// Three times a prime that the length is no multiple of.
std::uint64_t StepFor(std::uint64_t length) {
    for (const std::uint64_t prime : {499, 491, 487})
        if (length % prime != 0)
            return 3 * prime;
    return 3 * std::uint64_t{503};
}

void Learn(Network& network, const CDibImage& image) {
    const std::uint64_t rowBytes = 3 * static_cast<std::uint64_t>(image.GetWidth());
    const std::uint64_t length = rowBytes * static_cast<std::uint64_t>(image.GetHeight());
    const std::uint64_t samples = length / 3;
    const std::uint64_t delta = std::max<std::uint64_t>(samples / kCycles, 1);
    const std::uint64_t step = StepFor(length);
    int alpha = kInitialAlpha;
    int radius = (network.count < 8 ? 1 : network.count >> 3) << kRadiusShift;
    Neighborhood near;
    near.Update(radius, alpha);
    std::uint64_t position = 0;
    for (std::uint64_t i = 1; i <= samples; ++i) {
        const std::uint8_t* pixel =
            image.GetBits(static_cast<int>(position / rowBytes)) + position % rowBytes;
        const std::array<int, 3> input{pixel[0] * 16, pixel[1] * 16, pixel[2] * 16};
        const int winner = Contest(network, input[0], input[1], input[2]).bestBias;
        MoveNeuron(network, winner, input, alpha, kInitialAlpha);
        if (near.reach != 0)
            MoveNeighbors(network, winner, near, input);
        position += step;
        while (position >= length)
            position -= length;
        if (i % delta == 0) {
            alpha -= alpha / 30;
            radius -= radius / 30;
            near.Update(radius, alpha);
        }
    }
}

}  // namespace

Palette NeuralPalette(const CDibImage& image, int colors) {
    if (!image.IsValid() || colors < 1 || colors > kMaxNeurons)
        return {};
    try {
        CDibImage widened;
        if (image.GetBpp() != 24) {
            widened = CDibImage(image);
            if (!widened.IsValid() || !widened.IncreaseBpp24())
                return {};
        }
        Network network(colors);
        Learn(network, image.GetBpp() == 24 ? image : widened);
        Palette palette;
        palette.reserve(static_cast<std::size_t>(colors));
        for (std::size_t i = 0; i < static_cast<std::size_t>(colors); ++i) {
            const auto level = [&](std::size_t c) {
                return static_cast<std::uint8_t>(
                    std::clamp((network.channel[c][i] + 8) >> 4, 0, 255));
            };
            palette.push_back({level(0), level(1), level(2), 0});
        }
        return palette;
    } catch (const std::bad_alloc&) {
        return {};
    }
}

}  // namespace velloran
