#pragma once

// A merge over folders: the list with its roles, and the run that joins pairs and copies what
// stands alone.

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "batch/BatchEngine.h"
#include "documents/merge/MergeState.h"

namespace velloran {

class Asker;

/// How a row takes part.
enum class MergeRole { kInvalid, kSingle, kFirst, kSecond };

/// Roles from the top: checked rows pair, an unchecked one stands alone and ends what was open. In
/// two folders an unchecked row leaves its neighbour alone: pairs are rows that stand side by side
/// in the two folders.
std::vector<MergeRole> RolesOf(const MergeState& state);

/// Lists the folders of the options by their filter, in natural order; two folders row by row. A
/// missing target is proposed: the first folder's name with "_joined" in the system's word.
bool FillMergeList(MergeState& state, FileError* error);
std::u16string ProposedTarget(std::u16string_view source1);

struct MergedTarget {
    std::string path, first, second;  // no second: a copy
    int width = 0, height = 0;
    std::int64_t bytes = 0;
};

struct MergeOutcome {
    enum class End { kDone, kRefused, kNoTarget, kStopped };
    End end = End::kDone;
    std::u16string message;
    FileError error;
    std::size_t files = 0, joined = 0, copied = 0;
    std::vector<BatchFailure> failures;
    std::vector<MergedTarget> targets;
};

/// The run. Measured angles come into the items; their offsets stay as they were given.
MergeOutcome RunMerge(MergeState& state, const Settings& settings, const std::filesystem::path& log,
                      Asker& asker);

/// Joins two files into a third, whose extension decides the type.
MergeOutcome JoinFiles(MergeState& state, const Settings& settings,
                       const std::filesystem::path& first, const std::filesystem::path& second,
                       const std::filesystem::path& out, const std::filesystem::path& log,
                       Asker& asker);

/// The extension, with its dot, of a result whose type is automatic.
std::string AutomaticMergeType(int type1, int type2, const class CDibImage& result);

}  // namespace velloran
