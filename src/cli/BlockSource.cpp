#include "cli/BlockSource.h"

#include <fmt/format.h>

#include <algorithm>
#include <system_error>

#include "cli/ParameterOptions.h"
#include "files/ProgramPlaces.h"
#include "io/FileError.h"
#include "params/ParaBlock.h"
#include "params/ProfileStore.h"
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

/// Warnings for what the section holds, before any value of it is limited.
void WarnOfSection(const ProfileFile& profile, const std::u16string& section,
                   std::vector<std::string>& warnings) {
    for (int i = 0; i < kParaCount; ++i) {
        const std::u16string key = ToUtf16(ParaRowOf(i).name);
        if (!profile.GetString(section, key))
            continue;
        const std::string warning = RangeWarning(i, profile.GetInt(section, key, 0));
        if (!warning.empty())
            warnings.push_back(fmt::format("setting \"{}\": {}", ToUtf8(section), warning));
    }
}

std::string ReadSection(const fs::path& file, const ProfileFile& profile,
                        const std::u16string& section, CParaBlock& block,
                        std::vector<std::string>& warnings) {
    WarnOfSection(profile, section, warnings);
    if (!block.ReadFromIni(section, file))
        return fmt::format("{}: cannot be read", file.native());
    block.SetName(section);
    return {};
}

std::string OpenProfile(const fs::path& file, ProfileFile& profile) {
    FileError error;
    if (!IsPlainFile(file))
        return fmt::format("{}: there is no such settings file", file.native());
    if (!velloran::LoadProfile(file, profile, &error))
        return fmt::format("{}: {}", file.native(), error.detail);
    return {};
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
            return fmt::format("{}: there is no setting \"{}\"", place.file, *place.section);
        return ReadSection(place.file, profile, section, block, warnings);
    }
    const std::vector<std::u16string> names = profile.SectionNames();
    if (names.size() != 1)
        return fmt::format("{}: holds {} settings; name one behind a #", place.file, names.size());
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
        return fmt::format("{}: there is no setting \"{}\"", store.native(), *options.named);
    return ReadSection(store, profile, name, block, warnings);
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
