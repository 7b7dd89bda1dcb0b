#include "cli/Commands.h"

#include <algorithm>

#include "text/CommandLabels.h"

namespace velloran::cli {

namespace {

using namespace labels;

constexpr Operand kEnhanceOperands[] = {
    {"INPUT", /*isMany=*/false, Completes::kFiles, kOperandInput},
    {"OUTPUT", /*isMany=*/false, Completes::kFiles, kOperandOutput}};
constexpr Operand kBatchOperands[] = {
    {"SOURCE", /*isMany=*/false, Completes::kFolders, kOperandSource},
    {"TARGET", /*isMany=*/false, Completes::kFolders, kOperandTarget}};
constexpr Operand kFileOperands[] = {{"FILE", /*isMany=*/true, Completes::kFiles, kOperandFiles}};

constexpr Option kEnhanceOptions[] = {Option::kStop,        Option::kPreview, Option::kKeepDpi,
                                      Option::kSaveSetting, Option::kSet,     Option::kSetting,
                                      Option::kStore,       Option::kNamed};
constexpr Option kBatchOptions[] = {
    Option::kExt,      Option::kFiles,   Option::kNoRecurse,    Option::kSkipColor,
    Option::kKeepTime, Option::kKeepDpi, Option::kSkipExisting, Option::kList,
    Option::kNull,     Option::kJobs,    Option::kMemory,       Option::kStrict,
    Option::kLog,      Option::kYes,     Option::kDryRun,       Option::kJsonBatch,
    Option::kProgress, Option::kReview,  Option::kSet,          Option::kSetting,
    Option::kStore,    Option::kNamed};
constexpr Option kDescribeOptions[] = {Option::kCropSummary, Option::kSet, Option::kSetting,
                                       Option::kStore, Option::kNamed};
constexpr Option kParamsOptions[] = {Option::kJson};
constexpr Option kInfoOptions[] = {Option::kJson};
constexpr Option kMeasureOptions[] = {Option::kOnly,    Option::kJson,  Option::kSet,
                                      Option::kSetting, Option::kStore, Option::kNamed};
constexpr Option kDetectOptions[] = {Option::kByName};

constexpr Command kCommands[] = {
    {"enhance", kCommandEnhance, kDetailsEnhance, kEnhanceOperands, kEnhanceOptions, RunEnhance},
    {"batch", kCommandBatch, kDetailsBatch, kBatchOperands, kBatchOptions, RunBatchCommand},
    {"describe", kCommandDescribe, kDetailsDescribe, {}, kDescribeOptions, RunDescribe},
    {"params", kCommandParams, kDetailsParams, {}, kParamsOptions, RunParams},
    {"info", kCommandInfo, kDetailsInfo, kFileOperands, kInfoOptions, RunInfo},
    {"detect", kCommandDetect, kDetailsDetect, kFileOperands, kDetectOptions, RunDetect},
    {"measure", kCommandMeasure, kDetailsMeasure, kFileOperands, kMeasureOptions, RunMeasure},
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
