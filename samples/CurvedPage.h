#pragma once

// Pages of open books that curl, of all strengths and kinds, with their truth: what the search for
// a page's curves is measured by.

#include <cstdint>
#include <string>

#include "samples/SamplePage.h"
#include "samples/Texts.h"

namespace velloran::samples {

enum class CurlStrength { kFlat, kGentle, kMedium, kStrong };
constexpr int kCurlStrengthCount = 4;

struct CurvedRequest {
    CurlStrength strength = CurlStrength::kMedium;
    Language language = Language::kLatin;
    bool sparse = false;    // few, short lines with much paper between
    bool pictures = false;  // printed in halftone, between the lines
    bool tilted = false;    // seen from one side: in perspective, too
    bool cut = false;       // paper to all edges of the picture
    LightKind light = LightKind::kEven;
    int dpi = 150;
    std::uint64_t seed = 1;
};

/// Request `index` of a corpus that mixes all of it; every four follow the strengths in order.
CurvedRequest CurvedRequestAt(int index, int dpi, std::uint64_t seed);

/// "strong_latin_sparse_pictures" and the like.
std::string NameOf(const CurvedRequest& request);
std::string NameOf(CurlStrength strength);

/// An A4 picture at the request's resolution. Throws as MakeSamplePage.
SamplePage MakeCurvedPage(const CurvedRequest& request);

}  // namespace velloran::samples
