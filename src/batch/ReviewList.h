#pragma once

// The pages of a run that a person should look at: what automatic steps found, and how sure they
// are, least sure first. A file of lines: path, finding, sure, with TAB between.

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "io/FileError.h"
#include "pipeline/Findings.h"

namespace velloran {

class ReviewList {
 public:
    /// What was found on a page. Pages are added in the order of the run.
    void Add(std::string_view path, const FoundSure& sure);

    /// The lines, least sure first, in the order of the run where they are alike. `sure` has three
    /// decimals. Control characters of a path and the backslash stand as \xNN.
    std::string Text() const;

    /// Writes the lines, whole or not at all.
    bool Write(const std::filesystem::path& file, FileError* error) const;

 private:
    struct Line {
        std::string path;
        Finding finding{};
        int sureMille = 0;
    };
    std::vector<Line> lines_;
};

/// Whether a file may be replaced by such a list: it is not there, empty, or a list of before.
bool CanBeReview(const std::filesystem::path& file);

}  // namespace velloran
