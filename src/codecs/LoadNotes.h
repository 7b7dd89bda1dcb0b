#pragma once

// What a reader tells of a file beside its picture.

#include <memory>
#include <string>
#include <utility>

#include "codecs/Metadata.h"

namespace velloran {

struct LoadNotes {
    bool damaged = false;                      // cut short or damaged, yet readable in part
    std::string reason;                        // of the damage, English; the first that was met
    int pictures = 1;                          // pages or frames in the file; the first one is read
    std::shared_ptr<const Metadata> metadata;  // null where the file has none

    /// Keeps the first reason.
    void NoteDamage(std::string why) {
        if (!damaged)
            reason = std::move(why);
        damaged = true;
    }
    void TakeMetadata(Metadata&& found) {
        if (!found.IsEmpty())
            metadata = std::make_shared<const Metadata>(std::move(found));
    }
};

}  // namespace velloran
