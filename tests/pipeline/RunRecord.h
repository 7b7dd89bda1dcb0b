#pragma once

// What a run tells while it goes - labels and polls of cancel, in their order - and what it makes
// of a page.

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "core/DibImage.h"
#include "params/ParaBlock.h"

namespace velloran::test {

inline constexpr const char16_t* kPoll = u"(poll)";

struct RunRecord {
    std::vector<std::u16string> events;
    /// Called with each event; non-zero for a poll abandons the run.
    std::function<int(std::u16string_view)> onEvent;

    int Tell(std::u16string_view event) {
        events.emplace_back(event);
        return onEvent ? onEvent(event) : 0;
    }
    std::vector<std::u16string> Labels() const {
        std::vector<std::u16string> labels;
        for (const std::u16string& event : events)
            if (event != kPoll)
                labels.push_back(event);
        return labels;
    }
    std::size_t PollCount() const { return events.size() - Labels().size(); }
};

inline int TellPoll(void* record) {
    return static_cast<RunRecord*>(record)->Tell(kPoll);
}

/// Runs with labels and cancel going to the record.
inline void Run(CParaBlock& block, CDibImage* image, int stop, RunRecord& record,
                std::u16string* text = nullptr) {
    block.RunPipeline(
        image, TellPoll, &record, [&](std::u16string_view label) { record.Tell(label); }, stop,
        text);
}

/// A whole run that nobody watches.
inline void Run(CParaBlock& block, CDibImage& image) {
    block.RunPipeline(&image, nullptr, nullptr, nullptr, kStopWhole, nullptr);
}

using Values = std::vector<std::pair<ParaIndex, std::int32_t>>;

/// What a whole run with these values makes of a page.
inline CDibImage After(const Values& values, const CDibImage& before) {
    CParaBlock block;
    for (const auto& [index, value] : values)
        block.SetPara(index, value);
    CDibImage image = before;
    Run(block, image);
    return image;
}

}  // namespace velloran::test
