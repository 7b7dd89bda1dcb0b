#include "reduce/NeuralNetwork.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "core/StepContext.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "reduce/NeuralNetwork.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

constexpr int kCycles = 100;
constexpr int kInitialAlpha = 1024;
constexpr int kRadiusShift = 6;
constexpr std::uint64_t kPollEvery = 4096;  // samples

/// Lanes of one vector step of the search.
using Lanes = std::int32_t __attribute__((vector_size(32)));
constexpr int kLanes = 8;

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
Winners Contest(NeuralNetwork& network, int blue, int green, int red) {
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

void MoveWinner(NeuralNetwork& network, int neuron, const std::array<int, 3>& input, int alpha) {
    for (std::size_t c = 0; c < 3; ++c) {
        std::int32_t& value = network.channel[c][static_cast<std::size_t>(neuron)];
        value -= alpha * (value - input[c]) / kInitialAlpha;
    }
}

/// How far the neighbours of a winner move, by their distance from it: power[NeuralNetwork::kMost +
/// d] for neuron winner + d, and 0 for the winner itself, so that one run covers both sides.
struct Neighborhood {
    int reach = 0;
    std::array<std::int32_t, 2 * NeuralNetwork::kMost> power{};

    void Update(int radius, int alpha) {
        reach = radius >> kRadiusShift;
        if (reach <= 1)
            reach = 0;
        const int square = reach * reach;
        for (int i = 1; i < reach; ++i) {
            const int strength = alpha * (((square - i * i) * 256) / square);
            power[static_cast<std::size_t>(NeuralNetwork::kMost + i)] = strength;
            power[static_cast<std::size_t>(NeuralNetwork::kMost - i)] = strength;
        }
    }
};

void MoveRun(std::int32_t* values, const std::int32_t* power, int count, int input) {
    for (int i = 0; i < count; ++i)
        values[i] -= power[i] * (values[i] - input) / 262144;  // below 2^31: 262144 * 4080
}

void MoveNeighbors(NeuralNetwork& network, int neuron, const Neighborhood& near,
                   const std::array<int, 3>& input) {
    const int low = std::max(neuron - near.reach, -1) + 1;
    const int high = std::min(neuron + near.reach, network.count);
    for (std::size_t c = 0; c < 3; ++c)
        MoveRun(&network.channel[c][static_cast<std::size_t>(low)],
                &near.power[static_cast<std::size_t>(NeuralNetwork::kMost + low - neuron)],
                high - low, input[c]);
}

/// Three times a prime that the length is no multiple of.
std::uint64_t StepFor(std::uint64_t length) {
    for (const std::uint64_t prime : {499, 491, 487})
        if (length % prime != 0)
            return 3 * prime;
    return 3 * std::uint64_t{503};
}

void LearnIn(NeuralNetwork& network, const CDibImage& image) {
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
    const CancelToken cancel = CurrentCancel();
    for (std::uint64_t i = 1; i <= samples; ++i) {
        if (i % kPollEvery == 0 && cancel.IsCancelled())
            return;
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
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {
namespace {

HWY_EXPORT(LearnIn);

}  // namespace

void Learn(NeuralNetwork& network, const CDibImage& image) {
    HWY_DYNAMIC_DISPATCH(LearnIn)(network, image);
}

}  // namespace velloran
#endif  // HWY_ONCE
