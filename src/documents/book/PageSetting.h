#pragma once

// What the book window remembers beside its projects, and the clock of its automatic save.

#include <filesystem>
#include <string>

#include "documents/book/BookApply.h"
#include "io/FileError.h"

namespace velloran {

class ProfileFile;

/// The section "PageSetting" of the program's profile.
struct PageSetting {
    bool autoSave = true;    // at the end
    bool autoLoad = true;    // the folder of the end before, at the start
    int autoSavePeriod = 5;  // minutes; 0 saves at the end alone
    GeometryRule geometry = GeometryRule::kAuto;
    std::u16string source;  // the folder that autoLoad opens

    bool operator==(const PageSetting&) const = default;
};

PageSetting ReadPageSetting(const ProfileFile& profile);
/// Other keys and sections of the profile stay.
void WritePageSetting(const PageSetting& setting, ProfileFile& profile);

/// Counts the minutes of an open project. A window's timer or a test drives it.
class AutoSaveClock {
 public:
    static constexpr int kTickMilliseconds = 60000;

    explicit AutoSaveClock(int period) : period_(period) {}
    /// A minute has gone: whether the project is to be saved now. Once the period is over it is at
    /// every further minute.
    bool Tick() { return period_ > 0 && ++minutes_ >= period_; }

 private:
    int period_ = 0, minutes_ = 0;
};

}  // namespace velloran
