#include "tone/FloatGaussian.h"

#include <algorithm>
#include <array>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "core/ExactMath.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "tone/GaussianPoles.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "tone/FloatGaussian.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

/// From the positions before: sum over k >= 0.
void StepForward(const Poles& poles, const float* samples, int count, LaneState& state,
                 float* out) {
    const Pole a = poles[0], b = poles[1];
    float* aRe = state.re[0].data();
    float* aIm = state.im[0].data();
    float* bRe = state.re[1].data();
    float* bIm = state.im[1].data();
#pragma GCC ivdep
    for (int i = 0; i < count; ++i) {
        const float aReal = a.re * aRe[i] - a.im * aIm[i] + samples[i];
        const float aImag = a.re * aIm[i] + a.im * aRe[i];
        const float bReal = b.re * bRe[i] - b.im * bIm[i] + samples[i];
        const float bImag = b.re * bIm[i] + b.im * bRe[i];
        aRe[i] = aReal;
        aIm[i] = aImag;
        bRe[i] = bReal;
        bIm[i] = bImag;
        out[i] = (a.amplitudeRe * aReal - a.amplitudeIm * aImag) +
                 (b.amplitudeRe * bReal - b.amplitudeIm * bImag);
    }
}

/// From the positions behind: sum over k >= 1, added to what the way forward gave, in place of the
/// sample.
void StepBack(const Poles& poles, const float* forward, int count, LaneState& state,
              float* samples) {
    const Pole a = poles[0], b = poles[1];
    float* aRe = state.re[0].data();
    float* aIm = state.im[0].data();
    float* bRe = state.re[1].data();
    float* bIm = state.im[1].data();
#pragma GCC ivdep
    for (int i = 0; i < count; ++i) {
        const float sample = samples[i];
        samples[i] = forward[i] + ((a.amplitudeRe * aRe[i] - a.amplitudeIm * aIm[i]) +
                                   (b.amplitudeRe * bRe[i] - b.amplitudeIm * bIm[i]));
        const float aSum = aRe[i] + sample, bSum = bRe[i] + sample;
        const float aImag = a.re * aIm[i] + a.im * aSum;
        const float bImag = b.re * bIm[i] + b.im * bSum;
        aRe[i] = a.re * aSum - a.im * aIm[i];
        bRe[i] = b.re * bSum - b.im * bIm[i];
        aIm[i] = aImag;
        bIm[i] = bImag;
    }
}

/// As if the edge sample had gone on for ever: before the first position, and at the last.
void StartForward(const Poles& poles, const float* edge, int count, LaneState& state) {
    for (std::size_t p = 0; p < poles.size(); ++p)
        for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
            state.re[p][i] = poles[p].steadyRe * edge[i];
            state.im[p][i] = poles[p].steadyIm * edge[i];
        }
}

void StartBack(const Poles& poles, const float* edge, int count, LaneState& state) {
    StartForward(poles, edge, count, state);
    for (std::size_t p = 0; p < poles.size(); ++p)
        for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i)
            state.re[p][i] -= edge[i];  // the steady state without its newest sample
}

/// `samples` are `positions` rows of `count` floats, `stride` apart; `forward` holds kLanes a row.
void FilterLines(const Poles& poles, float* samples, std::ptrdiff_t stride, int positions,
                 int count, float* forward) {
    LaneState state{};
    StartForward(poles, samples, count, state);
    for (int p = 0; p < positions; ++p)
        StepForward(poles, samples + p * stride, count, state,
                    forward + std::ptrdiff_t{p} * kLanes);
    StartBack(poles, samples + (positions - 1) * stride, count, state);
    for (int p = positions - 1; p >= 0; --p)
        StepBack(poles, forward + std::ptrdiff_t{p} * kLanes, count, state, samples + p * stride);
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {
namespace {

HWY_EXPORT(FilterLines);

using Complex = std::complex<double>;

/// The poles alone, as floats. Apart from what is worked out of them: g++ 12 forgets the rounding
/// where it makes vectors of the two poles, and the weights would no longer add up to 1.
[[gnu::noinline]] Poles RoundedPoles(double sigma) {
    constexpr std::array<Complex, 2> kRates = {Complex{-1.783, 0.6318}, Complex{-1.723, 1.997}};
    Poles poles{};
    for (std::size_t i = 0; i < poles.size(); ++i) {
        const Complex rate = kRates[i] / sigma;
        const double size = Exp(rate.real());
        poles[i].re = static_cast<float>(size * Cos(rate.imag()));
        poles[i].im = static_cast<float>(size * Sin(rate.imag()));
    }
    return poles;
}

Poles MakePoles(double sigma) {
    constexpr std::array<Complex, 2> kAmplitudes = {Complex{1.680, -3.735},
                                                    Complex{-0.6803, 0.2598}};
    Poles poles = RoundedPoles(sigma);
    std::array<Complex, 2> rounded;
    double sum = 0;
    for (std::size_t i = 0; i < poles.size(); ++i) {
        rounded[i] = {static_cast<double>(poles[i].re), static_cast<double>(poles[i].im)};
        sum += (kAmplitudes[i] * (1.0 + rounded[i]) / (1.0 - rounded[i])).real();
    }
    for (std::size_t i = 0; i < poles.size(); ++i) {
        const Complex steady = 1.0 / (1.0 - rounded[i]);
        poles[i].amplitudeRe = static_cast<float>(kAmplitudes[i].real() / sum);
        poles[i].amplitudeIm = static_cast<float>(kAmplitudes[i].imag() / sum);
        poles[i].steadyRe = static_cast<float>(steady.real());
        poles[i].steadyIm = static_cast<float>(steady.imag());
    }
    return poles;
}

/// Rows are turned into lanes, filtered and turned back.
void FilterRows(const Poles& poles, ConstFloatView source, FloatView target, int first, int rows,
                float* lanes, float* forward) {
    const int channels = source.channels, width = source.width;
    for (int r = 0; r < rows; ++r) {
        const float* from = source.Row(first + r).data();
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < channels; ++c)
                lanes[std::ptrdiff_t{x} * kLanes + r * channels + c] = *from++;
    }
    HWY_DYNAMIC_DISPATCH(FilterLines)(poles, lanes, kLanes, width, rows * channels, forward);
    for (int r = 0; r < rows; ++r) {
        float* out = target.Row(first + r).data();
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < channels; ++c)
                *out++ = lanes[std::ptrdiff_t{x} * kLanes + r * channels + c];
    }
}

void CopyRows(ConstFloatView source, FloatView target) {
    for (int y = 0; y < source.height; ++y)
        std::copy_n(source.Row(y).data(), source.Row(y).size(), target.Row(y).data());
}

}  // namespace

void FloatGaussian(ConstFloatView source, float sigma, FloatView target) {
    if (source.width < 1 || source.height < 1)
        return;
    if (!(sigma > 0)) {
        CopyRows(source, target);
        return;
    }
    const Poles poles = MakePoles(static_cast<double>(sigma));
    const auto laneSize = static_cast<std::size_t>(std::max(source.width, source.height)) * kLanes;
    std::vector<std::vector<float>> perThread(static_cast<std::size_t>(MaxThreads()),
                                              std::vector<float>(2 * laneSize));
    const std::int64_t work =  // a sample costs some four times what it does in other loops
        std::int64_t{4} * source.width * source.height * source.channels;
    const int rowsAtOnce = kLanes / source.channels;
    const int rowGroups = (source.height + rowsAtOnce - 1) / rowsAtOnce;
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(work))
    for (int group = 0; group < rowGroups; ++group) {
        if (cancel.IsCancelled())
            continue;
        float* lanes = perThread[static_cast<std::size_t>(ThreadNumber())].data();
        const int first = group * rowsAtOnce;
        FilterRows(poles, source, target, first, std::min(rowsAtOnce, source.height - first), lanes,
                   lanes + laneSize);
    }
    const int samples = source.width * source.channels;
    const int strips = (samples + kLanes - 1) / kLanes;
#pragma omp parallel for schedule(static) if (IsWorthThreads(work))
    for (int strip = 0; strip < strips; ++strip) {
        if (cancel.IsCancelled())
            continue;
        HWY_DYNAMIC_DISPATCH(FilterLines)
        (poles, target.first + std::ptrdiff_t{strip} * kLanes, target.stride, target.height,
         std::min(kLanes, samples - strip * kLanes),
         perThread[static_cast<std::size_t>(ThreadNumber())].data());
    }
}

}  // namespace velloran
#endif  // HWY_ONCE
