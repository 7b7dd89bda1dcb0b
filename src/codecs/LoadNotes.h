#pragma once

// What a reader tells of a file beside its picture.

#include <string>
#include <utility>

namespace velloran {

struct LoadNotes {
    bool damaged = false;  // cut short or damaged, yet readable in part
    std::string reason;    // of the damage, English; the first that was met
    int pictures = 1;      // pages or frames in the file; the first one is read

    /// Keeps the first reason.
    void NoteDamage(std::string why) {
        if (!damaged)
            reason = std::move(why);
        damaged = true;
    }
};

}  // namespace velloran
