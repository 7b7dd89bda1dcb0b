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
    explicit RunSettings(Settings settings) : settings_(std::move(settings)) {}

    Settings Get() const {
        const std::lock_guard hold(lock_);
        return settings_;
    }
    void Take(const FoundValues& found) {
        const std::lock_guard hold(lock_);
        found.ApplyTo(settings_.values);
    }
    /// Whether the next page looks for values that the pages behind it share.
    bool HasValuesToFind() const {
        const std::lock_guard hold(lock_);
        return velloran::HasValuesToFind(settings_.values);
    }

 private:
    mutable std::mutex lock_;
    Settings settings_;
};

}  // namespace velloran
