#include "tone/SmoothSurface.h"

#include <algorithm>
#include <cstddef>

#include "mcalc/LeastSquares.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "tone/SmoothSurface.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

void EvaluateRow(const float* a, float step, float low, float high, int width,
                 std::uint8_t* levels) {
    const float a0 = a[0], a1 = a[1], a2 = a[2], a3 = a[3], a4 = a[4];
    for (int i = 0; i < width; ++i) {
        const float x = static_cast<float>(i) * step - 1.0F;
        const float value = (((a4 * x + a3) * x + a2) * x + a1) * x + a0;
        const float limited = value < low ? low : (value > high ? high : value);
        levels[i] = static_cast<std::uint8_t>(static_cast<int>(limited + 0.5F));
    }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {
namespace {

HWY_EXPORT(EvaluateRow);

constexpr std::size_t kSamplesPerTerm = 6;

constexpr std::size_t TermCount(int order) {
    return static_cast<std::size_t>((order + 1) * (order + 2) / 2);
}

int OrderFor(std::size_t samples) {
    int order = SmoothSurface::kOrder;
    while (order > 0 && samples < kSamplesPerTerm * TermCount(order))
        --order;
    return order;
}

/// The middle of the page is 0, which keeps the powers apart from each other.
double Centered(double coordinate) {
    return 2 * coordinate - 1;
}

/// Powers of x, for each power of y, to the order in both together.
void TermsAt(const SurfaceSample& sample, int order, std::vector<double>& terms) {
    terms.clear();
    double powerOfY = 1;
    for (int j = 0; j <= order; ++j, powerOfY *= Centered(sample.y)) {
        double term = powerOfY;
        for (int i = 0; i + j <= order; ++i, term *= Centered(sample.x))
            terms.push_back(term);
    }
}

/// By the normal equations: between -1 and 1 so low powers are far enough apart for them, and the
/// samples are many.
std::vector<double> NormalSolution(const std::vector<SurfaceSample>& samples, int order) {
    const std::size_t count = TermCount(order);
    std::vector<double> matrix(count * count, 0.0), rightSide(count, 0.0), terms;
    for (const SurfaceSample& sample : samples) {
        TermsAt(sample, order, terms);
        for (std::size_t i = 0; i < count; ++i) {
            for (std::size_t j = 0; j <= i; ++j)
                matrix[i * count + j] += terms[i] * terms[j];
            rightSide[i] += terms[i] * sample.value;
        }
    }
    for (std::size_t i = 0; i < count; ++i)
        for (std::size_t j = i + 1; j < count; ++j)
            matrix[i * count + j] = matrix[j * count + i];
    return mcalc::leastSquares(std::move(matrix), std::move(rightSide), count, count);
}

}  // namespace

SmoothSurface::SmoothSurface(const std::vector<SurfaceSample>& samples) {
    if (samples.empty()) {
        coefficients_[0][0] = 255;
        return;
    }
    const auto [low, high] = std::ranges::minmax(samples, {}, &SurfaceSample::value);
    lowest_ = std::clamp(low.value, 0.0, 255.0);
    highest_ = std::clamp(high.value, 0.0, 255.0);
    const int order = OrderFor(samples.size());
    const std::vector<double> solution = NormalSolution(samples, order);
    auto next = solution.begin();
    for (int j = 0; j <= order; ++j)
        for (int i = 0; i + j <= order; ++i)
            coefficients_[static_cast<std::size_t>(j)][static_cast<std::size_t>(i)] = *next++;
}

SmoothSurface::Polynomial SmoothSurface::AlongRow(double y) const {
    Polynomial row{};
    double power = 1;
    for (const Polynomial& terms : coefficients_) {
        for (std::size_t i = 0; i < row.size(); ++i)
            row[i] += power * terms[i];
        power *= Centered(y);
    }
    return row;
}

double SmoothSurface::At(double x, double y) const {
    const Polynomial row = AlongRow(y);
    double value = 0;
    for (std::size_t i = row.size(); i-- > 0;)
        value = value * Centered(x) + row[i];
    return std::clamp(value, lowest_, highest_);
}

void SmoothSurface::Row(double y, int width, std::uint8_t* levels) const {
    const Polynomial row = AlongRow(y);
    std::array<float, kOrder + 1> terms{};
    for (std::size_t i = 0; i < terms.size(); ++i)
        terms[i] = static_cast<float>(row[i]);
    HWY_DYNAMIC_DISPATCH(EvaluateRow)
    (terms.data(), width > 1 ? 2.0F / static_cast<float>(width - 1) : 0.0F,
     static_cast<float>(lowest_), static_cast<float>(highest_), width, levels);
}

}  // namespace velloran
#endif  // HWY_ONCE
