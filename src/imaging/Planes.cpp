#include "imaging/Planes.h"

#include "core/Threads.h"

namespace velloran {

void ExtractChannel(ConstPlaneView pixels, int channel, PlaneView plane) {
#pragma omp parallel for schedule( \
    static) if (IsWorthThreads(std::int64_t{plane.width} * plane.height))
    for (int y = 0; y < plane.height; ++y) {
        const std::uint8_t* from = pixels.Row(y).data() + channel;
        std::uint8_t* out = plane.Row(y).data();
        for (int x = 0; x < plane.width; ++x)
            out[x] = from[3 * x];
    }
}

void InsertChannel(ConstPlaneView plane, int channel, PlaneView pixels) {
#pragma omp parallel for schedule( \
    static) if (IsWorthThreads(std::int64_t{plane.width} * plane.height))
    for (int y = 0; y < plane.height; ++y) {
        const std::uint8_t* from = plane.Row(y).data();
        std::uint8_t* out = pixels.Row(y).data() + channel;
        for (int x = 0; x < plane.width; ++x)
            out[3 * x] = from[x];
    }
}

void WeightedGray(ConstPlaneView pixels, GrayWeights weights, PlaneView gray) {
#pragma omp parallel for schedule( \
    static) if (IsWorthThreads(std::int64_t{gray.width} * gray.height))
    for (int y = 0; y < gray.height; ++y) {
        const std::uint8_t* pixel = pixels.Row(y).data();
        std::uint8_t* out = gray.Row(y).data();
        for (int x = 0; x < gray.width; ++x, pixel += 3) {
            const float level = weights.blue * static_cast<float>(pixel[0]) +
                                weights.green * static_cast<float>(pixel[1]) +
                                weights.red * static_cast<float>(pixel[2]) + 0.5F;
            const float limited = level < 0.0F ? 0.0F : (level > 255.0F ? 255.0F : level);
            out[x] = static_cast<std::uint8_t>(static_cast<int>(limited));
        }
    }
}

}  // namespace velloran
