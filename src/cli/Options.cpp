#include "cli/Options.h"

#include <array>
#include <cassert>
#include <cstdint>

#include "cli/ParameterOptions.h"
#include "codecs/Formats.h"
#include "text/CommandLabels.h"

namespace velloran::cli {

namespace {

using namespace labels;
using enum Takes;
using enum OptionGroup;

std::vector<std::string> Languages() {
    return {"zh", "en"};
}

std::vector<std::string> Shells() {
    return {"bash", "zsh"};
}

std::vector<std::string> StopCodes() {
    std::vector<std::string> words;
    for (const int code : StopCodeNumbers())
        words.push_back(std::to_string(code));
    return words;
}

std::vector<std::string> ExtensionWords() {
    return {TargetExtensionWords().begin(), TargetExtensionWords().end()};
}

std::vector<std::string> SourceFilterPositions() {
    std::vector<std::string> words;
    for (int i = 0; i < SourceFilterCount(); ++i)
        words.push_back(std::to_string(i));
    return words;
}

std::vector<std::string> WhatWords() {
    return {"all", "tab", "before", "after"};
}

std::vector<std::string> ToWords() {
    return {"all", "rest", "every-second"};
}

std::vector<std::string> GeometryWords() {
    return {"auto", "copy", "keep"};
}

std::vector<std::string> SideWords() {
    return {"left", "right"};
}

std::vector<std::string> SortWords() {
    return {"name", "created", "modified"};
}

constexpr int kMostJobs = 1 << 20, kMostPages = 1 << 20;

/// Made at the first call: other tables, as that of the formats, are asked.
const auto& Rows() {
    // clang-format off
static const std::array rows = {
    OptionRow{Option::kHelp, "--help", "", 'h', kNothing, "", kOptionHelp, kGeneral},
    OptionRow{Option::kVersion, "--version", "", 0, kNothing, "", kOptionVersion, kGeneral},
    OptionRow{Option::kLang, "--lang", "", 0, kWord, "LANG", kOptionLang, kGeneral, Completes::kWords, Languages},
    OptionRow{Option::kQuiet, "--quiet", "", 'q', kNothing, "", kOptionQuiet, kGeneral},
    OptionRow{Option::kVerbose, "--verbose", "", 'v', kNothing, "", kOptionVerbose, kGeneral},
    OptionRow{Option::kPrintMan, "--print-man", "", 0, kNothing, "", kOptionPrintMan, kHidden},
    OptionRow{Option::kPrintCompletion, "--print-completion", "", 0, kWord, "SHELL", kOptionPrintCompletion, kHidden, Completes::kWords, Shells},
    OptionRow{Option::kSet, "--set", "", 's', kTexts, "NAME=VALUE", kOptionSet, kParameters, Completes::kParameters},
    OptionRow{Option::kSetting, "--setting", "", 0, kText, "FILE[#SECTION]", kOptionSetting, kParameters, Completes::kFiles},
    OptionRow{Option::kStore, "--settings-store", "", 0, kText, "FILE", kOptionStore, kParameters, Completes::kFiles},
    OptionRow{Option::kNamed, "--named", "", 'n', kText, "NAME", kOptionNamed, kParameters, Completes::kNothing, nullptr, 0, 0, Option::kNone, Option::kSetting},
    OptionRow{Option::kStop, "--stop", "", 0, kWord, "CODE", kOptionStop, kOwn, Completes::kWords, StopCodes},
    OptionRow{Option::kPreview, "--preview", "", 0, kNothing, "", kOptionPreview, kOwn},
    OptionRow{Option::kSaveSetting, "--save-setting", "", 0, kText, "FILE#SECTION", kOptionSaveSetting, kOwn, Completes::kFiles},
    OptionRow{Option::kKeepDpi, "--keep-dpi", "", 0, kNothing, "", kOptionKeepDpi, kOwn},
    OptionRow{Option::kExt, "--ext", "", 0, kWord, "EXT", kOptionExt, kOwn, Completes::kWords, ExtensionWords},
    OptionRow{Option::kFiles, "--files", "", 0, kNumber, "N", kOptionFiles, kOwn, Completes::kWords, SourceFilterPositions, 0, SourceFilterCount() - 1},
    OptionRow{Option::kNoRecurse, "--no-recurse", "", 0, kNothing, "", kOptionNoRecurse, kOwn},
    OptionRow{Option::kSkipColor, "--skip-colour", "--skip-color", 0, kNothing, "", kOptionSkipColor, kOwn},
    OptionRow{Option::kKeepTime, "--keep-time", "", 0, kNothing, "", kOptionKeepTime, kOwn},
    OptionRow{Option::kSkipExisting, "--skip-existing", "", 0, kNothing, "", kOptionSkipExisting, kOwn},
    OptionRow{Option::kList, "--list", "", 0, kText, "FILE", kOptionList, kOwn, Completes::kFiles},
    OptionRow{Option::kNull, "--null", "", '0', kNothing, "", kOptionNull, kOwn, Completes::kNothing, nullptr, 0, 0, Option::kList},
    OptionRow{Option::kJobs, "--jobs", "", 'j', kNumber, "N", kOptionJobs, kOwn, Completes::kNothing, nullptr, 1, kMostJobs},
    OptionRow{Option::kMemory, "--memory", "", 0, kSize, "SIZE", kOptionMemory, kOwn},
    OptionRow{Option::kStrict, "--strict", "", 0, kNothing, "", kOptionStrict, kOwn},
    OptionRow{Option::kLog, "--log", "", 0, kText, "FILE", kOptionLog, kOwn, Completes::kFiles},
    OptionRow{Option::kYes, "--yes", "", 'y', kNothing, "", kOptionYes, kOwn},
    OptionRow{Option::kDryRun, "--dry-run", "", 0, kNothing, "", kOptionDryRun, kOwn, Completes::kNothing, nullptr, 0, 0, Option::kNone, Option::kJsonBatch},
    OptionRow{Option::kJsonBatch, "--json", "", 0, kNothing, "", kOptionJsonBatch, kOwn, Completes::kNothing, nullptr, 0, 0, Option::kNone, Option::kDryRun},
    OptionRow{Option::kProgress, "--progress", "", 0, kNothing, "", kOptionProgress, kOwn},
    OptionRow{Option::kReview, "--review", "", 0, kText, "FILE", kOptionReview, kOwn, Completes::kFiles, nullptr, 0, 0, Option::kNone, Option::kDryRun},
    OptionRow{Option::kCropSummary, "--crop-summary", "", 0, kNothing, "", kOptionCropSummary, kOwn},
    OptionRow{Option::kJson, "--json", "", 0, kNothing, "", kOptionJson, kOwn},
    OptionRow{Option::kByName, "--by-name", "", 0, kNothing, "", kOptionByName, kOwn},
    OptionRow{Option::kOnly, "--only", "", 0, kText, "LIST", kOptionOnly, kOwn},
    OptionRow{Option::kWithoutPage, "--without-page", "", 0, kNothing, "", kOptionWithoutPage, kParameters, Completes::kNothing, nullptr, 0, 0, Option::kNamed},
    OptionRow{Option::kTypes, "--types", "", 0, kText, "LIST", kOptionTypes, kOwn},
    OptionRow{Option::kYesAll, "--yes", "", 'y', kNothing, "", kOptionYesAll, kOwn},
    OptionRow{Option::kFileType, "--type", "", 0, kNumber, "N", kOptionFileType, kOwn, Completes::kNothing, nullptr, 0, 9},
    OptionRow{Option::kSort, "--sort", "", 0, kWord, "ORDER", kOptionSort, kOwn, Completes::kWords, SortWords},
    OptionRow{Option::kDescending, "--descending", "", 0, kNothing, "", kOptionDescending, kOwn},
    OptionRow{Option::kSelect, "--select", "", 0, kText, "WHICH", kOptionSelect, kOwn},
    OptionRow{Option::kPrefix, "--prefix", "", 0, kText, "TEXT", kOptionPrefix, kOwn},
    OptionRow{Option::kSuffix, "--suffix", "", 0, kText, "TEXT", kOptionSuffix, kOwn},
    OptionRow{Option::kDigits, "--digits", "", 0, kNumber, "N", kOptionDigits, kOwn, Completes::kNothing, nullptr, 1, 8},
    OptionRow{Option::kStart, "--start", "", 0, kNumber, "N", kOptionStart, kOwn, Completes::kNothing, nullptr, INT32_MIN, INT32_MAX},
    OptionRow{Option::kStep, "--step", "", 0, kNumber, "N", kOptionStep, kOwn, Completes::kNothing, nullptr, INT32_MIN, INT32_MAX},
    OptionRow{Option::kNoNumber, "--no-number", "", 0, kNothing, "", kOptionNoNumber, kOwn},
    OptionRow{Option::kNoExtension, "--no-extension", "", 0, kNothing, "", kOptionNoExtension, kOwn},
    OptionRow{Option::kMove, "--move", "", 0, kNothing, "", kOptionMove, kOwn},
    OptionRow{Option::kOverwrite, "--overwrite", "", 0, kNothing, "", kOptionOverwrite, kOwn},
    OptionRow{Option::kUndo, "--undo", "", 0, kNothing, "", kOptionUndo, kOwn},
    OptionRow{Option::kDryRunNames, "--dry-run", "", 0, kNothing, "", kOptionDryRun, kOwn},
    OptionRow{Option::kDifference, "--difference", "", 0, kText, "FILE", kOptionDifference, kOwn, Completes::kFiles},
    OptionRow{Option::kAll, "--all", "", 0, kText, "FILE", kOptionAll, kOwn, Completes::kFiles},
    OptionRow{Option::kNonZero, "--nonzero", "", 0, kText, "FILE", kOptionNonZero, kOwn, Completes::kFiles},
    OptionRow{Option::kLevels, "--levels", "", 0, kText, "FILE", kOptionLevels, kOwn, Completes::kFiles},
    OptionRow{Option::kFrequency, "--frequency", "", 0, kText, "FILE", kOptionFrequency, kOwn, Completes::kFiles},
    OptionRow{Option::kFolders, "--folders", "", 0, kNothing, "", kOptionFolders, kOwn},
    OptionRow{Option::kExport, "--export", "", 0, kText, "FILE", kOptionExport, kOwn, Completes::kFiles, nullptr, 0, 0, Option::kFolders},
    OptionRow{Option::kExitCode, "--exit-code", "", 0, kNothing, "", kOptionExitCode, kOwn},
    OptionRow{Option::kProjectValue, "--project", "", 'p', kTexts, "KEY=VALUE", kOptionProjectValue, kOwn},
    OptionRow{Option::kRows, "--rows", "", 0, kText, "LIST", kOptionRows, kOwn},
    OptionRow{Option::kReset, "--reset", "", 0, kNothing, "", kOptionReset, kOwn, Completes::kNothing, nullptr, 0, 0, Option::kRows},
    OptionRow{Option::kFrom, "--from", "", 0, kText, "ROW", kOptionFrom, kOwn},
    OptionRow{Option::kWhat, "--what", "", 0, kWord, "WHAT", kOptionWhat, kOwn, Completes::kWords, WhatWords},
    OptionRow{Option::kTab, "--tab", "", 0, kNumber, "N", kOptionTab, kOwn, Completes::kNothing, nullptr, 1, 5},
    OptionRow{Option::kTo, "--to", "", 0, kWord, "ROWS", kOptionTo, kOwn, Completes::kWords, ToWords},
    OptionRow{Option::kGeometry, "--geometry", "", 0, kWord, "RULE", kOptionGeometry, kOwn, Completes::kWords, GeometryWords},
    OptionRow{Option::kKind, "--kind", "", 0, kNumber, "N", kOptionKind, kOwn, Completes::kNothing, nullptr, 2, 3},
    OptionRow{Option::kBefore, "--before", "", 0, kText, "ROW", kOptionBefore, kOwn},
    OptionRow{Option::kTarget, "--target", "", 0, kText, "DIR", kOptionTarget, kOwn, Completes::kFolders},
    OptionRow{Option::kSide, "--side", "", 0, kWord, "SIDE", kOptionSide, kOwn, Completes::kWords, SideWords},
    OptionRow{Option::kEachPage, "--each-page", "", 0, kNothing, "", kOptionEachPage, kOwn},
    OptionRow{Option::kBothHalves, "--both-halves", "", 0, kNothing, "", kOptionBothHalves, kOwn, Completes::kNothing, nullptr, 0, 0, Option::kNone, Option::kSkipColor},
    OptionRow{Option::kPage, "--page", "", 0, kNothing, "", kOptionPage, kOwn, Completes::kNothing, nullptr, 0, 0, Option::kNone, Option::kByName},
    OptionRow{Option::kPageNumber, "--page", "", 0, kNumber, "N", kOptionPageNumber, kOwn, Completes::kNothing, nullptr, 1, kMostPages},
    OptionRow{Option::kAllPages, "--all-pages", "", 0, kNothing, "", kOptionAllPages, kOwn},
    OptionRow{Option::kStrip, "--strip", "", 0, kNothing, "", kOptionStrip, kOwn},
    OptionRow{Option::kState, "--state", "", 0, kText, "FILE", kOptionState, kOwn, Completes::kFiles},
    OptionRow{Option::kSource1, "--source1", "", 0, kText, "DIR", kOptionSource1, kOwn, Completes::kFolders},
    OptionRow{Option::kSource2, "--source2", "", 0, kText, "DIR", kOptionSource2, kOwn, Completes::kFolders},
    OptionRow{Option::kMergeValue, "--merge", "", 'm', kTexts, "KEY=VALUE", kOptionMergeValue, kOwn},
    OptionRow{Option::kSaveState, "--save-state", "", 0, kText, "FILE", kOptionSaveState, kOwn, Completes::kFiles},
    OptionRow{Option::kPair, "--pair", "", 0, kNothing, "", kOptionPair, kOwn},
};
    // clang-format on
    static_assert(rows.size() == static_cast<std::size_t>(Option::kNone));
    return rows;
}

constexpr Option kGeneralOptions[] = {Option::kHelp, Option::kLang, Option::kQuiet,
                                      Option::kVerbose};
constexpr Option kProgramOptions[] = {Option::kVersion, Option::kPrintMan,
                                      Option::kPrintCompletion};

}  // namespace

const OptionRow& RowOf(Option option) {
    const OptionRow& row = Rows()[static_cast<std::size_t>(option)];
    assert(row.id == option);
    return row;
}

std::string OptionHead(const OptionRow& row) {
    std::string head;
    if (row.letter != 0)
        head += std::string("-") + row.letter + ", ";
    head += row.name;
    if (row.takes != kNothing)
        head.append(" ").append(row.argument);
    return head;
}

std::span<const Option> GeneralOptions() {
    return kGeneralOptions;
}

std::span<const Option> ProgramOptions() {
    return kProgramOptions;
}

}  // namespace velloran::cli
