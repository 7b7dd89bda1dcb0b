#include "documents/settings/NamedSettings.h"

#include <system_error>
#include <utility>

#include "documents/Asker.h"
#include "files/FileCopy.h"
#include "files/ProgramPlaces.h"
#include "params/ParaBlock.h"
#include "params/ProfileStore.h"
#include "text/ProfileFile.h"

namespace velloran {

namespace {

namespace fs = std::filesystem;
using End = SettingsOutcome::End;

bool IsSpace(char16_t unit) {
    return unit == u' ' || (unit >= u'\t' && unit <= u'\r') || unit == u'\u00A0' ||
           unit == u'\u3000';
}

SettingsOutcome Refused(const Label& message) {
    SettingsOutcome outcome;
    outcome.end = End::kRefused;
    outcome.message = message;
    return outcome;
}

SettingsOutcome Failed(FileError error, fs::path path) {
    SettingsOutcome outcome;
    outcome.end = End::kFailed;
    outcome.error = std::move(error);
    outcome.path = std::move(path);
    return outcome;
}

/// A set that was stored before there was a store at this place is taken along.
bool BringStore(const SettingsStore& store, FileError* error) {
    std::error_code ignored;
    if (store.file == store.readFrom || fs::exists(store.file, ignored) ||
        !fs::exists(store.readFrom, ignored))
        return true;
    return CopyFileWhole(store.readFrom, store.file, error);
}

fs::path PlaceToRead(const SettingsStore& store) {
    std::error_code ignored;
    return fs::exists(store.file, ignored) ? store.file : store.readFrom;
}

Settings ValuesOf(const fs::path& file, std::u16string_view name) {
    CParaBlock block;
    block.ReadFromIni(name, file);
    block.SetName(name);
    return block.GetSettings();
}

}  // namespace

bool ListNamedSettings(const SettingsStore& store, std::vector<std::u16string>& names,
                       FileError* error) {
    ProfileFile profile;
    names.clear();
    if (!LoadProfile(PlaceToRead(store), profile, error))
        return false;
    names = profile.SectionNames();
    return true;
}

std::u16string CleanSettingName(std::u16string_view name) {
    while (!name.empty() && IsSpace(name.front()))
        name.remove_prefix(1);
    while (!name.empty() && IsSpace(name.back()))
        name.remove_suffix(1);
    return std::u16string(name);
}

bool IsSettingName(std::u16string_view name) {
    return !name.empty() &&
           name.find_first_of(std::u16string_view(u"\r\n]\0", 4)) == std::u16string_view::npos;
}

void ResetPageValues(Settings& settings) {
    for (const ParaTab tab : {ParaTab::kPaper, ParaTab::kPage})
        for (const ParaIndex index : ParaIndexesOf(tab))
            if (index != PARA_ROATE)
                settings.Set(index, ParaRowOf(index).defaultValue);
}

SettingsOutcome SaveNamedSetting(const SettingsStore& store, std::u16string_view typedName,
                                 const Settings& settings, bool takeAll, Asker& asker) {
    const std::u16string name = CleanSettingName(typedName);
    if (!IsSettingName(name))
        return Refused(labels::kSettingWantsName);
    ProfileFile profile;
    FileError error;
    if (!LoadProfile(PlaceToRead(store), profile, &error))
        return Failed(std::move(error), PlaceToRead(store));
    constexpr std::int32_t kAbsent = -1;
    const bool exists = profile.GetInt(name, u"PARA_BRIGHTNESS", kAbsent) != kAbsent;
    if (exists && !asker.AskYesNo(labels::kSettingExistsAsk)) {
        SettingsOutcome outcome;
        outcome.end = End::kDeclined;
        return outcome;
    }
    CParaBlock block;
    block.AssignValues(settings.values);
    block.SetName(name);
    if (!BringStore(store, &error) || !block.WriteToIni(name, store.file, &error))
        return Failed(std::move(error), store.file);
    SettingsOutcome outcome;
    outcome.settings = block.GetSettings();
    if (!takeAll)
        ResetPageValues(outcome.settings);
    return outcome;
}

SettingsOutcome ReadNamedSetting(const SettingsStore& store, std::u16string_view typedName,
                                 bool takeAll) {
    const std::u16string name = CleanSettingName(typedName);
    if (name.empty())
        return Refused(labels::kSettingReadNothing);
    ProfileFile profile;
    FileError error;
    const fs::path place = PlaceToRead(store);
    if (!LoadProfile(place, profile, &error))
        return Failed(std::move(error), place);
    SettingsOutcome outcome;
    outcome.settings = ValuesOf(place, name);
    if (!takeAll)
        ResetPageValues(outcome.settings);
    return outcome;
}

SettingsOutcome DeleteNamedSetting(const SettingsStore& store, std::u16string_view typedName,
                                   Asker& asker) {
    const std::u16string name = CleanSettingName(typedName);
    if (name.empty())
        return Refused(labels::kSettingDeleteNothing);
    SettingsOutcome outcome;
    if (!asker.AskYesNo(labels::kSettingDeleteAsk)) {
        outcome.end = End::kDeclined;
        return outcome;
    }
    ProfileFile profile;
    FileError error;
    if (!BringStore(store, &error))
        return Failed(std::move(error), store.file);
    if (!LoadProfile(store.file, profile, &error))
        return Failed(std::move(error), store.file);
    profile.DeleteSection(name);
    if (!SaveProfile(profile, store.file, &error))
        return Failed(std::move(error), store.file);
    const std::vector<std::u16string> names = profile.SectionNames();
    if (!names.empty()) {
        outcome.selected = names.front();
        outcome.settings = ValuesOf(store.file, names.front());
    }
    return outcome;
}

}  // namespace velloran
