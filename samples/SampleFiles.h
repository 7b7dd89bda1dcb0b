#pragma once

// Sets of sample pages as files: 003_comic_screen.jpg and beside it 003_comic_screen.json.

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "samples/SamplePage.h"

namespace velloran::samples {

struct SampleSet {
    std::string name = "demo";
    int count = 0;  // 0: each kind of the set once
    std::uint64_t seed = 1;
    /// Of a single page; default A4 at `dpi`.
    std::optional<int> width = std::nullopt, height = std::nullopt;
    int dpi = 300;
    std::optional<double> angleDegrees = std::nullopt;
    std::string format = "jpg";  // or png, tif
    int quality = 92;
    bool inkMasks = false;
};

/// The pages of the set, without their pictures: kinds in the set's order and again from its
/// start, each with a seed of its own that hangs on the set's seed and the page's number.
/// Pictures of two pages lie across: the longer side is the width. Empty for an unknown set.
std::vector<SampleRequest> RequestsOf(const SampleSet& set);

/// File name without its extension: the number, from 1, and the kind.
std::string SampleName(int number, PageKind kind);

/// Makes and writes page `number` of the set into the folder. Throws what MakeSamplePage throws,
/// and std::runtime_error, with the path, for a file that cannot be written.
void WriteSample(const SampleSet& set, const SampleRequest& request, int number,
                 const std::filesystem::path& folder);

}  // namespace velloran::samples
