#include "cli/Commands.h"

#include <algorithm>

#include "text/CommandLabels.h"

namespace velloran::cli {

namespace {

using namespace labels;

std::vector<std::string> BookVerbNames() {
    return {"open", "show", "set", "apply", "split", "add", "remove", "move", "convert", "preview"};
}

std::vector<std::string> SettingsVerbs() {
    return {"list", "show", "save", "delete"};
}

constexpr Operand kEnhanceOperands[] = {
    {"INPUT", /*isMany=*/false, Completes::kFiles, kOperandInput},
    {"OUTPUT", /*isMany=*/false, Completes::kFiles, kOperandOutput}};
constexpr Operand kBatchOperands[] = {
    {"SOURCE", /*isMany=*/false, Completes::kFolders, kOperandSource},
    {"TARGET", /*isMany=*/false, Completes::kFolders, kOperandTarget}};
constexpr Operand kFileOperands[] = {{"FILE", /*isMany=*/true, Completes::kFiles, kOperandFiles}};

constexpr Option kEnhanceOptions[] = {Option::kStop,  Option::kPreview,    Option::kKeepDpi,
                                      Option::kStrip, Option::kPageNumber, Option::kSaveSetting,
                                      Option::kSet,   Option::kSetting,    Option::kStore,
                                      Option::kNamed, Option::kWithoutPage};
constexpr Option kBatchOptions[] = {
    Option::kExt,      Option::kFiles,    Option::kNoRecurse,    Option::kSkipColor,
    Option::kKeepTime, Option::kKeepDpi,  Option::kSkipExisting, Option::kList,
    Option::kNull,     Option::kJobs,     Option::kMemory,       Option::kStrict,
    Option::kLog,      Option::kYes,      Option::kDryRun,       Option::kJsonBatch,
    Option::kProgress, Option::kReview,   Option::kEachPage,     Option::kBothHalves,
    Option::kStrip,    Option::kAllPages, Option::kSet,          Option::kSetting,
    Option::kStore,    Option::kNamed,    Option::kWithoutPage};
constexpr Option kDescribeOptions[] = {Option::kCropSummary, Option::kSet,   Option::kSetting,
                                       Option::kStore,       Option::kNamed, Option::kWithoutPage};
constexpr Option kParamsOptions[] = {Option::kJson};
constexpr Option kInfoOptions[] = {Option::kJson};
constexpr Option kMeasureOptions[] = {Option::kOnly,       Option::kJson,  Option::kSet,
                                      Option::kSetting,    Option::kStore, Option::kNamed,
                                      Option::kWithoutPage};
constexpr Option kDetectOptions[] = {Option::kByName, Option::kPage};

constexpr Operand kSettingsOperands[] = {
    {"VERB", /*isMany=*/false, Completes::kWords, kOperandSettingsVerb, /*isOptional=*/false,
     SettingsVerbs},
    {"NAME", /*isMany=*/false, Completes::kNothing, kOperandSettingName, /*isOptional=*/true}};
constexpr Operand kFolderOperand[] = {
    {"FOLDER", /*isMany=*/false, Completes::kFolders, kOperandFolder}};
constexpr Operand kSetDpiOperands[] = {
    {"DPI", /*isMany=*/false, Completes::kNothing, kOperandDpi},
    {"FOLDER", /*isMany=*/false, Completes::kFolders, kOperandFolder}};
constexpr Option kSettingsOptions[] = {Option::kYesAll, Option::kSet,   Option::kSetting,
                                       Option::kStore,  Option::kNamed, Option::kWithoutPage};
constexpr Option kStatsOptions[] = {Option::kTypes, Option::kNoRecurse, Option::kJson};
constexpr Option kSetDpiOptions[] = {Option::kTypes, Option::kNoRecurse, Option::kLog,
                                     Option::kJson};

constexpr Operand kRenameOperands[] = {
    {"FOLDER", /*isMany=*/false, Completes::kFolders, kOperandRenameFolder},
    {"TARGET", /*isMany=*/false, Completes::kFolders, kOperandRenameTarget, /*isOptional=*/true}};
constexpr Option kRenameOptions[] = {
    Option::kFileType,    Option::kSort,   Option::kDescending, Option::kSelect, Option::kPrefix,
    Option::kSuffix,      Option::kDigits, Option::kStart,      Option::kStep,   Option::kNoNumber,
    Option::kNoExtension, Option::kMove,   Option::kOverwrite,  Option::kUndo,   Option::kYesAll,
    Option::kDryRunNames, Option::kLog};

constexpr Operand kCompareOperands[] = {
    {"FILE1", /*isMany=*/false, Completes::kFiles, kOperandCompare1},
    {"FILE2", /*isMany=*/false, Completes::kFiles, kOperandCompare2}};
constexpr Option kCompareOptions[] = {
    Option::kDifference, Option::kAll,    Option::kNonZero,  Option::kLevels, Option::kFrequency,
    Option::kFolders,    Option::kExport, Option::kExitCode, Option::kJobs,   Option::kJson};

constexpr Operand kBookOperands[] = {
    {"VERB", /*isMany=*/false, Completes::kWords, kOperandBookVerb, /*isOptional=*/false,
     BookVerbNames},
    {"SOURCE", /*isMany=*/false, Completes::kFolders, kOperandSource},
    {"WORD", /*isMany=*/true, Completes::kFiles, kOperandBookWords, /*isOptional=*/true}};
constexpr Option kBookOptions[] = {
    Option::kProjectValue, Option::kRows,  Option::kReset,    Option::kFrom,  Option::kWhat,
    Option::kTab,          Option::kTo,    Option::kGeometry, Option::kKind,  Option::kBefore,
    Option::kTarget,       Option::kSide,  Option::kYesAll,   Option::kJobs,  Option::kLog,
    Option::kJson,         Option::kSet,   Option::kSetting,  Option::kStore, Option::kNamed,
    Option::kWithoutPage,  Option::kReview};

constexpr Operand kMergeOperands[] = {
    {"WORD", /*isMany=*/true, Completes::kFiles, kOperandMergeWords, /*isOptional=*/true}};
constexpr Option kMergeOptions[] = {Option::kState,  Option::kSource1,    Option::kSource2,
                                    Option::kTarget, Option::kMergeValue, Option::kSaveState,
                                    Option::kPair,   Option::kLog,        Option::kJson};

constexpr Command kCommands[] = {
    {"enhance", kCommandEnhance, kDetailsEnhance, kEnhanceOperands, kEnhanceOptions, RunEnhance},
    {"batch", kCommandBatch, kDetailsBatch, kBatchOperands, kBatchOptions, RunBatchCommand},
    {"describe", kCommandDescribe, kDetailsDescribe, {}, kDescribeOptions, RunDescribe},
    {"params", kCommandParams, kDetailsParams, {}, kParamsOptions, RunParams},
    {"info", kCommandInfo, kDetailsInfo, kFileOperands, kInfoOptions, RunInfo},
    {"detect", kCommandDetect, kDetailsDetect, kFileOperands, kDetectOptions, RunDetect},
    {"measure", kCommandMeasure, kDetailsMeasure, kFileOperands, kMeasureOptions, RunMeasure},
    {"book", kCommandBook, kDetailsBook, kBookOperands, kBookOptions, RunBook},
    {"merge", kCommandMerge, kDetailsMerge, kMergeOperands, kMergeOptions, RunMergeCommand},
    {"compare", kCommandCompare, kDetailsCompare, kCompareOperands, kCompareOptions, RunCompare},
    {"rename", kCommandRename, kDetailsRename, kRenameOperands, kRenameOptions, RunRenameCommand},
    {"stats", kCommandStats, kDetailsStats, kFolderOperand, kStatsOptions, RunStats},
    {"set-dpi", kCommandSetDpi, kDetailsSetDpi, kSetDpiOperands, kSetDpiOptions, RunSetDpi},
    {"settings", kCommandSettings, kDetailsSettings, kSettingsOperands, kSettingsOptions,
     RunSettings},
};

}  // namespace

std::span<const Command> Commands() {
    return kCommands;
}

const Command* FindCommand(std::string_view name) {
    const auto* const found = std::ranges::find(kCommands, name, &Command::name);
    return found == std::end(kCommands) ? nullptr : found;
}

std::vector<Option> OptionsOf(const Command& command) {
    std::vector<Option> options(command.options.begin(), command.options.end());
    options.insert(options.end(), GeneralOptions().begin(), GeneralOptions().end());
    return options;
}

}  // namespace velloran::cli
