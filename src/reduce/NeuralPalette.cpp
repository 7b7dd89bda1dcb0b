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
///
/// The published network holds a bias beside each frequency. Whatever a frequency loses or gains,
/// its bias gains or loses 1024 times, so bias = 1024 * (firstFreq - freq), and is not held.
struct Network {
    alignas(32) std::array<std::array<std::int32_t, kMaxNeurons>, 3> channel;
    alignas(32) std::array<std::int32_t, kMaxNeurons> freq;
    int count, firstFreq;

    explicit Network(int neurons) : count(neurons), firstFreq(65536 / neurons) {
        for (int i = 0; i < kMaxNeurons; ++i) {
            const auto at = static_cast<std::size_t>(i);
            const bool used = i < neurons;
            for (auto& values : channel)
                values[at] = used ? (i << 12) / neurons : 1 << 27;
            freq[at] = used ? firstFreq : 0;
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
    const Lanes difference = a - b;
    sum += difference < 0 ? -difference : difference;
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
    const Lanes firstFreq = zero + network.firstFreq;
    Lanes neuron{0, 1, 2, 3, 4, 5, 6, 7};
    Lanes least = zero + kFar, leastBiased = zero + kFar, best = zero, bestBiased = zero;
    for (int i = 0; i < network.count; i += kLanes, neuron += kLanes) {
        Lanes distance = zero;
        AddDistance(distance, At(&network.channel[0][i]), b);
        AddDistance(distance, At(&network.channel[1][i]), g);
        AddDistance(distance, At(&network.channel[2][i]), r);
        Lanes& freq = *reinterpret_cast<Lanes*>(&network.freq[i]);
        const Lanes biased = distance - ((firstFreq - freq) >> 2);  // bias >> 12
        const Lanes nearer = distance < least, nearerBiased = biased < leastBiased;
        least = nearer ? distance : least;
        best = nearer ? neuron : best;
        leastBiased = nearerBiased ? biased : leastBiased;
        bestBiased = nearerBiased ? neuron : bestBiased;
        freq -= freq >> 10;
    }
    const Winners winners{FirstOfSmallest(least, best), FirstOfSmallest(leastBiased, bestBiased)};
    network.freq[static_cast<std::size_t>(winners.best)] += 64;
    return winners;
}

void MoveWinner(Network& network, int neuron, const std::array<int, 3>& input, int alpha) {
    for (std::size_t c = 0; c < 3; ++c) {
        std::int32_t& value = network.channel[c][static_cast<std::size_t>(neuron)];
        value -= alpha * (value - input[c]) / kInitialAlpha;
    }
}

/// How far the neighbours of a winner move, by their distance from it: power[kMaxNeurons + d] for
/// neuron winner + d, and 0 for the winner itself, so that one run covers both sides.
struct Neighborhood {
    int reach = 0;
    std::array<std::int32_t, 2 * kMaxNeurons> power{};

    void Update(int radius, int alpha) {
        reach = radius >> kRadiusShift;
        if (reach <= 1)
            reach = 0;
        const int square = reach * reach;
        for (int i = 1; i < reach; ++i) {
            const int strength = alpha * (((square - i * i) * 256) / square);
            power[static_cast<std::size_t>(kMaxNeurons + i)] = strength;
            power[static_cast<std::size_t>(kMaxNeurons - i)] = strength;
        }
    }
};

VELLORAN_SIMD_CLONES
void MoveRun(std::int32_t* values, const std::int32_t* power, int count, int input) {
    for (int i = 0; i < count; ++i)
        values[i] -= power[i] * (values[i] - input) / 262144;  // below 2^31: 262144 * 4080
}

void MoveNeighbors(Network& network, int neuron, const Neighborhood& near,
                   const std::array<int, 3>& input) {
    const int low = std::max(neuron - near.reach, -1) + 1;
    const int high = std::min(neuron + near.reach, network.count);
    for (std::size_t c = 0; c < 3; ++c)
        MoveRun(&network.channel[c][static_cast<std::size_t>(low)],
                &near.power[static_cast<std::size_t>(kMaxNeurons + low - neuron)], high - low,
                input[c]);
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
        MoveWinner(network, winner, input, alpha);
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
