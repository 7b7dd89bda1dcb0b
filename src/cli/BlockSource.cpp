#include "cli/BlockSource.h"

#include <algorithm>
#include <system_error>

#include "cli/Console.h"
#include "cli/NearestWord.h"
#include "cli/OptionParser.h"
#include "cli/ParameterOptions.h"
#include "documents/settings/NamedSettings.h"
#include "files/ProgramPlaces.h"
#include "io/FileError.h"
#include "params/ParaBlock.h"
#include "params/ProfileStore.h"
#include "text/CommandLabels.h"
#include "text/Phrase.h"
#include "text/ProfileFile.h"
#include "text/Text.h"

namespace velloran::cli {

namespace {

namespace fs = std::filesystem;

bool IsPlainFile(const fs::path& file) {
    std::error_code ignored;
    return fs::is_regular_file(file, ignored);
}

/// The first reading whose file exists; else the one that is divided last.
SettingPlace PickReading(const std::string& text) {
    const std::vector<SettingPlace> readings = ReadingsOfSetting(text);
    const auto found =
        std::find_if(readings.begin(), readings.end(),
                     [](const SettingPlace& place) { return IsPlainFile(place.file); });
    if (found != readings.end())
        return *found;
    return readings.size() > 1 ? readings[1] : readings[0];
}

/// What to say of a value in a settings file; empty where it is as the table wants it.
std::string ValueWarning(int index, const ProfileFile& profile, const std::u16string& section,
                         const std::u16string& key) {
    const std::string text = ToUtf8(profile.GetString(section, key).value_or(u""));
    const std::int32_t value = profile.GetInt(section, key, ParaRowOf(index).defaultValue);
    if (!ParseInt32(text))
        return Phrase(labels::kNotANumber, {ParaRowOf(index).name, text, std::to_string(value)});
    return RangeWarning(index, value);
}

/// Warnings for what the section holds, before any value of it is limited.
void WarnOfSection(const fs::path& file, const ProfileFile& profile, const std::u16string& section,
                   std::vector<std::string>& warnings) {
    for (const std::u16string& key : profile.KeyNames(section)) {
        const std::string name = ToUtf8(key);
        std::optional<int> index;  // keys of a settings file ignore case
        for (int i = 0; i < kParaCount && !index; ++i)
            if (EqualIgnoringCase(ParaRowOf(i).name, std::string_view(name)))
                index = i;
        const std::string warning =
            index ? ValueWarning(*index, profile, section, key) : UnknownKeyWarning(name);
        if (!warning.empty())
            warnings.push_back(
                Phrase(labels::kInSetting, {file.native(), ToUtf8(section), warning}));
    }
}

std::string ReadSection(const fs::path& file, const ProfileFile& profile,
                        const std::u16string& section, CParaBlock& block,
                        std::vector<std::string>& warnings) {
    WarnOfSection(file, profile, section, warnings);
    if (!block.ReadFromIni(section, file))
        return Phrase(labels::kUnreadableSettings, {file.native()});
    block.SetName(section);
    return {};
}

std::string OpenProfile(const fs::path& file, ProfileFile& profile) {
    FileError error;
    if (!IsPlainFile(file))
        return Phrase(labels::kNoSettingsFile, {file.native()});
    if (!velloran::LoadProfile(file, profile, &error))
        return Phrase(labels::kUnreadableSettings, {file.native()});
    return {};
}

std::string NoSuchSetting(const fs::path& file, const std::string& name,
                          const ProfileFile& profile) {
    std::vector<std::string> names;
    for (const std::u16string& section : profile.SectionNames())
        names.push_back(ToUtf8(section));
    return Phrase(labels::kNoSetting, {file.native(), name}) + Suggestion(name, names);
}

std::string FillFromSetting(const std::string& text, CParaBlock& block,
                            std::vector<std::string>& warnings) {
    const SettingPlace place = PickReading(text);
    ProfileFile profile;
    if (std::string problem = OpenProfile(place.file, profile); !problem.empty())
        return problem;
    if (place.section) {
        const std::u16string section = ToUtf16(*place.section);
        if (section.empty() || !profile.HasSection(section))
            return NoSuchSetting(place.file, *place.section, profile);
        return ReadSection(place.file, profile, section, block, warnings);
    }
    const std::vector<std::u16string> names = profile.SectionNames();
    if (names.size() != 1)
        return Phrase(labels::kSettingNotNamed, {place.file, std::to_string(names.size())});
    return ReadSection(place.file, profile, names.front(), block, warnings);
}

std::string FillFromStore(const ParameterOptions& options, CParaBlock& block,
                          std::vector<std::string>& warnings) {
    const fs::path store =
        options.storeFile ? fs::path(*options.storeFile) : FindProgramPlaces().namedSettingsToRead;
    ProfileFile profile;
    if (std::string problem = OpenProfile(store, profile); !problem.empty())
        return problem;
    const std::u16string name = ToUtf16(*options.named);
    if (name.empty() || !profile.HasKeys(name))
        return NoSuchSetting(store, *options.named, profile);
    if (std::string problem = ReadSection(store, profile, name, block, warnings); !problem.empty())
        return problem;
    if (options.withoutPage) {
        Settings settings = block.GetSettings();
        ResetPageValues(settings);
        block.AssignValues(settings.values);
    }
    return {};
}

}  // namespace

std::string FillBlock(const ParameterOptions& options, CParaBlock& block,
                      std::vector<std::string>& warnings) {
    block.Reset();
    // The words are judged before any file is looked at.
    std::vector<ParameterSetting> settings;
    for (const std::string& text : options.sets) {
        std::string problem;
        const std::optional<ParameterSetting> setting = ParseParameterSetting(text, problem);
        if (!setting)
            return problem;
        settings.push_back(*setting);
    }
    std::string problem;
    if (options.setting)
        problem = FillFromSetting(*options.setting, block, warnings);
    else if (options.named)
        problem = FillFromStore(options, block, warnings);
    if (!problem.empty())
        return problem;
    for (const ParameterSetting& setting : settings) {
        block.SetPara(setting.index, setting.value);
        if (std::string warning = RangeWarning(setting.index, setting.value); !warning.empty())
            warnings.push_back(std::move(warning));
    }
    return {};
}

bool PrepareGlobalBlock(const ParsedWords& words) {
    const ParameterOptions options{words.Texts(Option::kSet), words.Text(Option::kSetting),
                                   words.Text(Option::kNamed), words.Text(Option::kStore),
                                   words.Has(Option::kWithoutPage)};
    std::vector<std::string> warnings;
    const std::string problem = FillBlock(options, GlobalBlock(), warnings);
    if (!problem.empty()) {
        PrintError(problem);
        return false;
    }
    for (const std::string& warning : warnings)
        PrintWarning(warning);
    return true;
}

std::optional<SettingTarget> FindSettingTarget(const std::string& text) {
    std::vector<SettingPlace> readings = ReadingsOfSetting(text);
    readings.erase(readings.begin());  // the one without a section
    if (readings.empty())
        return std::nullopt;
    const auto found =
        std::find_if(readings.begin(), readings.end(),
                     [](const SettingPlace& place) { return IsPlainFile(place.file); });
    const SettingPlace& place = found == readings.end() ? readings.front() : *found;
    if (!IsSectionName(*place.section))
        return std::nullopt;
    return SettingTarget{place.file, *place.section};
}

}  // namespace velloran::cli
