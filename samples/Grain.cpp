#include "samples/Grain.h"

#include <cmath>

#include "samples/Random.h"

namespace velloran::samples {

namespace {

double Smooth(double t) {
    return t * t * (3 - 2 * t);
}

double LatticeValue(std::uint64_t seed, std::int64_t x, std::int64_t y) {
    return static_cast<double>(HashAt(seed, x, y) >> 11) * 0x1p-52 - 1;
}

}  // namespace

void AddCloudRow(std::uint64_t seed, int y, double cellX, double cellY, float amplitude,
                 std::span<float> row) {
    const double down = y / cellY;
    const auto latticeY = static_cast<std::int64_t>(std::floor(down));
    const double weightY = Smooth(down - static_cast<double>(latticeY));
    const auto column = [&](std::int64_t latticeX) {
        return LatticeValue(seed, latticeX, latticeY) * (1 - weightY) +
               LatticeValue(seed, latticeX, latticeY + 1) * weightY;
    };
    std::int64_t current = 0;
    double left = column(0), right = column(1);
    for (std::size_t x = 0; x < row.size(); ++x) {
        const double across = static_cast<double>(x) / cellX;
        const auto latticeX = static_cast<std::int64_t>(across);
        if (latticeX != current) {
            current = latticeX;
            left = column(current);
            right = column(current + 1);
        }
        const double weightX = Smooth(across - static_cast<double>(current));
        row[x] += amplitude * static_cast<float>(left + (right - left) * weightX);
    }
}

float NoiseAt(std::uint64_t seed, int x, int y) {
    const std::uint64_t bits = HashAt(seed, x, y);
    const auto sum = static_cast<float>((bits & 0xFFFF) + ((bits >> 16) & 0xFFFF) +
                                        ((bits >> 32) & 0xFFFF) + (bits >> 48));
    // Four uniform values of 0 to 65535: mean 131070, standard deviation 65536 / sqrt(3).
    return (sum - 131070.0F) * (1.7320508F / 65536.0F);
}

}  // namespace velloran::samples
