#pragma once

// Smooth random fields for paper and tables, and the noise of a sensor.

#include <cstdint>
#include <span>

namespace velloran::samples {

/// Adds amplitude * value to each pixel of row y, value noise from -1 to 1 on a lattice of
/// `cellX` x `cellY` pixels.
void AddCloudRow(std::uint64_t seed, int y, double cellX, double cellY, float amplitude,
                 std::span<float> row);

/// Nearly normal, mean 0, standard deviation 1, cut at about 3.5; hangs on place and seed alone.
float NoiseAt(std::uint64_t seed, int x, int y);

}  // namespace velloran::samples
