#pragma once

// The settings that all pages of a run share: a value for each page, and what the first pages found
// for those behind them. Pages that may find something run alone (see BatchWorkers.h), so that the
// others begin with the same values whatever their number at once.

#include <mutex>
#include <utility>

#include "params/Settings.h"
#include "pipeline/FoundValues.h"

namespace velloran {

class RunSettings {
 public:
    /// With `eachPage` what a page finds is its own: no page waits for another.
    explicit RunSettings(Settings settings, bool eachPage = false)
        : settings_(std::move(settings)), eachPage_(eachPage) {}

    Settings Get() const {
        const std::lock_guard hold(lock_);
        return settings_;
    }
    void Take(const FoundValues& found) {
        if (eachPage_)
            return;
        const std::lock_guard hold(lock_);
        found.ApplyTo(settings_.values);
    }
    /// Whether the next page looks for values that the pages behind it share.
    bool HasValuesToFind() const {
        const std::lock_guard hold(lock_);
        return !eachPage_ && velloran::HasValuesToFind(settings_.values);
    }

 private:
    mutable std::mutex lock_;
    Settings settings_;
    bool eachPage_ = false;
};

}  // namespace velloran
