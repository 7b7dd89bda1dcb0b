#pragma once

// Scores what the automatic steps find on a page of known truth.

#include <optional>
#include <string>
#include <vector>

#include "samples/AccuracyCorpus.h"

namespace velloran::samples {

/// The rows of the table of accuracy.
enum class AccuracyRow {
    kSkew,        // degrees
    kBox,         // the worst side, in pixels at 300 dpi
    kBoxInk,      // share of the content's ink cut
    kGutterEasy,  // share of the width
    kGutterHard,
    kCorners,  // share of the diagonal
};
inline constexpr int kAccuracyRows = 6;

struct AccuracyRowText {
    const char* finding;
    const char* pages;
    double tolerance;
    double scale;  // what is printed for 1
    const char* unit;
    double wantedPercent;  // of the pages within tolerance
};
const AccuracyRowText& TextOf(AccuracyRow row);

/// A finding on a page that holds what is sought, or on one that does not (no row: whatever is
/// found is wrong).
struct AccuracyScore {
    std::string finding, group;
    std::optional<AccuracyRow> row;
    double error = 0;
    bool isGood = false;
    std::optional<double> sure;  // absent where the row only repeats a finding
};

/// Draws the page and scores every finding on it.
std::vector<AccuracyScore> ScorePage(const CorpusPage& page);

}  // namespace velloran::samples
