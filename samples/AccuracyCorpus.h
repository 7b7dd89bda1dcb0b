#pragma once

// The pages on which the accuracy of the automatic steps is measured: every kind of sample page and
// what makes a finding hard, over resolutions, angles and light, some through JPEG.

#include <cstdint>
#include <string>
#include <vector>

#include "samples/SamplePage.h"

namespace velloran::samples {

struct CorpusPage {
    std::string group;  // what is hard about it
    SampleRequest request;
    int jpegQuality = 0;        // the page went through JPEG of this quality; 0: it did not
    bool isEasyGutter = false;  // a spread whose gutter is dark or slanted, without distraction
};

/// `share` takes every n-th page of the whole, for a quick look. The same seed gives the same
/// pages.
std::vector<CorpusPage> AccuracyCorpus(std::uint64_t seed, int share = 1);

}  // namespace velloran::samples
