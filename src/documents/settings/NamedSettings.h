#pragma once

// Named sets of parameters: a store holds a section for each, which keeps what differs from the
// defaults. A set that is read leaves split and correction of the page alone unless asked for the
// whole, so that it never carries lines and corners to other pages.

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "io/FileError.h"
#include "params/Settings.h"

namespace velloran {

class Asker;

/// Where sets are written, and where they are read: elsewhere as long as the first is absent.
struct SettingsStore {
    std::filesystem::path file, readFrom;

    SettingsStore(std::filesystem::path both) : file(both), readFrom(std::move(both)) {}
    SettingsStore(std::filesystem::path to, std::filesystem::path from)
        : file(std::move(to)), readFrom(std::move(from)) {}
};

struct SettingsOutcome {
    enum class End {
        kDone,
        kRefused,   // `message` says why
        kDeclined,  // by the user
        kFailed,    // `error`, of the file in `path`
    };
    End end = End::kDone;
    std::u16string message;
    FileError error;
    std::filesystem::path path;
    Settings settings;        // as they hold from now on
    std::u16string selected;  // the set that is shown behind a removal; empty for none
};

/// The names in the order of the store. False, with the reason, where it cannot be read.
bool ListNamedSettings(const SettingsStore& store, std::vector<std::u16string>& names,
                       FileError* error);

/// Without white space at both ends.
std::u16string CleanSettingName(std::u16string_view name);
/// Whether a cleaned name can head a section of the store and be found again.
bool IsSettingName(std::u16string_view name);

/// Sets the parameters that the tabs "paper" and "page" list to their defaults, all but the
/// rotation.
void ResetPageValues(Settings& settings);

/// Stores the values under a name. Asks before it replaces a set whose brightness is not the
/// default; others are replaced unasked, since the store does not keep defaults.
SettingsOutcome SaveNamedSetting(const SettingsStore& store, std::u16string_view name,
                                 const Settings& settings, bool takeAll, Asker& asker);

/// Reads a set; without `takeAll` the page values are defaults.
SettingsOutcome ReadNamedSetting(const SettingsStore& store, std::u16string_view name,
                                 bool takeAll);

/// Asks, then removes the set. `selected` is the first that remains, `settings` its values.
SettingsOutcome DeleteNamedSetting(const SettingsStore& store, std::u16string_view name,
                                   Asker& asker);

}  // namespace velloran
