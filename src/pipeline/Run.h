#pragma once

// One page through the enhancement: what is asked for, and what became of it. Nothing is silent: a
// step that had no memory, or that failed, stands in the report, and its page is not to be written
// or shown as if it were done.

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "core/CancelToken.h"
#include "core/Pipeline.h"
#include "params/Settings.h"
#include "pipeline/Findings.h"
#include "pipeline/FoundValues.h"
#include "pipeline/StepResult.h"

namespace velloran {

class CDibImage;

enum class RunMode {
    kFull,
    kPreview,   // colours are only made to look reduced
    kDescribe,  // no image is touched: each step that would run tells its settings
};

struct RunRequest {
    CDibImage* image = nullptr;  // changed in place; not used when describing
    Settings settings;
    RunMode mode = RunMode::kFull;
    int stop = kStopWhole;
    /// Asked between the steps, and by long operations within them.
    CancelToken cancel;
    /// Asked between the steps too, on the thread of the run; may be empty.
    std::function<bool()> poll;
    /// Told the label of each step as it starts; may be empty.
    LabelFunction label;
    /// What a rotation does at the edges (PARA_DESKEW_EDGE), which need not be that of `settings`.
    std::int32_t deskewEdge = 0;
    /// The automatic searches also tell how sure they are, which takes them several times as long.
    bool wantsSure = false;
};

enum class RunEnd {
    kDone,
    kCancelled,  // the page is in whatever state the last step left it
};

/// A step that was asked to work and did not simply run.
struct StepReport {
    int step = 0;  // 1 to 30; 0 is the page itself, before the first
    StepResult result = StepResult::kLeft;
    std::array<char, 160> text{};  // English, of the exception of a failed step

    std::string_view Reason() const { return text.data(); }
};

class RunReport {
 public:
    RunEnd end = RunEnd::kDone;
    FoundValues found;
    FoundSure sure;       // of what was searched, where the request wants it
    std::u16string text;  // of a describing run

    /// In the order of the run. Kept without an allocation, since memory may be short.
    std::span<const StepReport> Steps() const { return {steps_.data(), count_}; }
    /// Adds to what is known of a step; the worse result stays. kRan adds nothing.
    void Note(int step, StepResult result, std::string_view reason) noexcept;
    /// For callers that could not even give the page to a run.
    void NotePage(StepResult result) noexcept { Note(0, result, {}); }

    /// The worst of the steps: kRan, where none was worse than left, else kNoMemory or kFailed.
    StepResult Worst() const;
    /// No step had no memory or failed. A page is written only when its run was whole and done.
    bool IsWhole() const { return Worst() == StepResult::kRan; }
    /// English, for a log or -v: which step was the worst, and why. Empty for a run that was whole.
    std::string Detail() const;

 private:
    std::array<StepReport, 31> steps_{};
    std::size_t count_ = 0;
};

/// Runs the steps of the table in order. Nothing happens without an image of pixels, unless
/// describing, and with kStopNothing. Throws only what the callbacks of the request throw and,
/// where it describes, std::bad_alloc.
RunReport Run(const RunRequest& request);

}  // namespace velloran
