#pragma once

// How a step of the enhancement went.

namespace velloran {

/// From good to bad: of two, the later one is what a page is judged by.
enum class StepResult {
    kRan,
    kLeft,      // did not apply: the page is as it was, though its depth may be normalised
    kNoMemory,  // the work, or a part of it, was left undone for want of memory
    kFailed,    // another exception ended it
};

/// What an operation's answer says of its step: non-zero ran, 0 refused.
constexpr StepResult ResultOf(int ran) {
    return ran != 0 ? StepResult::kRan : StepResult::kLeft;
}

}  // namespace velloran
