#include <algorithm>
#include <cstdint>
#include <new>

#include "core/StepContext.h"
#include "reduce/NeuralNetwork.h"
#include "reduce/PaletteMakers.h"

namespace velloran {
Palette NeuralPalette(const CDibImage& image, int colors) {
    if (!image.IsValid() || colors < 1 || colors > NeuralNetwork::kMost)
        return {};
    try {
        CDibImage widened;
        if (image.GetBpp() != 24) {
            widened = CDibImage(image);
            if (!widened.IsValid() || !widened.IncreaseBpp24())
                return {};
        }
        NeuralNetwork network(colors);
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
        NoteOutOfMemory();
        return {};
    }
}

}  // namespace velloran
