#pragma once

// How two pictures of the same size differ, pixel by pixel.

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/DibImage.h"
#include "io/FileError.h"

namespace velloran {

/// Of a pair that can be compared: both grey, or both in colour.
struct DiffStats {
    int width = 0, height = 0, channels = 1;
    std::uint64_t differentPixels = 0;
    /// By channel as the bytes lie: blue, green, red, or grey alone.
    std::array<int, 3> maxima{};
    std::array<std::array<std::uint64_t, 256>, 3> levels{};  // of differences 1 to 255; 0 is empty
    std::array<std::uint64_t, 3> equalSamples{};             // of difference 0
    std::array<double, 3> means{}, deviations{};             // over the pixels that differ
    std::array<float, 3> similarity{};

    bool IsIdentical() const { return differentPixels == 0; }
    std::uint64_t Pixels() const {
        return static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height);
    }
    double PercentDifferent() const {
        return 100.0 * static_cast<double>(differentPixels) / static_cast<double>(Pixels());
    }
};

/// Why a pair cannot be compared.
struct PairRefusal {
    std::u16string_view message;  // empty where it can
    std::string path;             // of the file at fault, where one is
    FileError error;
    bool isUsage = false;  // no file was read
};

/// Loads both with a strict test for grey. Pairs of two depths are widened to 24 bits unless
/// `keepsDepth`, which refuses them.
PairRefusal LoadPair(const std::filesystem::path& first, const std::filesystem::path& second,
                     bool keepsDepth, CDibImage& image1, CDibImage& image2);

/// False without memory. Similarity, which takes longest, is left out where it is not asked for.
bool ComputeDiff(const CDibImage& image1, const CDibImage& image2, bool withSimilarity,
                 DiffStats& stats);

/// |a - b| as a picture of the same depth; a grey one has the grey palette. False without memory.
bool BuildDiffImage(const CDibImage& image1, const CDibImage& image2, CDibImage& out);

/// The fields of the window: label, and value in the order red, green, blue. Of identical pictures
/// the first says so and the others are empty.
using CompareFields = std::vector<std::pair<std::u16string, std::string>>;
CompareFields FieldsOf(const DiffStats& stats);

/// The parts of the fields, which the list of a folder comparison shows too.
std::string DifferentText(const DiffStats& stats);
std::string MaximaText(const DiffStats& stats);
std::string MeansText(const DiffStats& stats);
std::string DeviationsText(const DiffStats& stats);

/// "2480x3508, 24 bpp, 0 colors"
std::string PropertiesText(const CDibImage& image);

}  // namespace velloran
