#pragma once

// Every option of the program as data: one row an option. The parser, the help, the manual page and
// the completion scripts read it; no second list exists.

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "text/Label.h"

namespace velloran::cli {

enum class Option {
    kHelp,
    kVersion,
    kLang,
    kQuiet,
    kVerbose,
    kPrintMan,
    kPrintCompletion,
    kSet,
    kSetting,
    kStore,
    kNamed,
    kStop,
    kPreview,
    kSaveSetting,
    kKeepDpi,
    kExt,
    kFiles,
    kNoRecurse,
    kSkipColor,
    kKeepTime,
    kSkipExisting,
    kList,
    kNull,
    kJobs,
    kMemory,
    kStrict,
    kLog,
    kYes,
    kDryRun,
    kJsonBatch,
    kProgress,
    kReview,
    kCropSummary,
    kJson,
    kByName,
    kOnly,
    kWithoutPage,
    kTypes,
    kYesAll,
    kFileType,
    kSort,
    kDescending,
    kSelect,
    kPrefix,
    kSuffix,
    kDigits,
    kStart,
    kStep,
    kNoNumber,
    kNoExtension,
    kMove,
    kOverwrite,
    kUndo,
    kDryRunNames,
    kDifference,
    kAll,
    kNonZero,
    kLevels,
    kFrequency,
    kFolders,
    kExport,
    kExitCode,
    kProjectValue,
    kRows,
    kReset,
    kFrom,
    kWhat,
    kTab,
    kTo,
    kGeometry,
    kKind,
    kBefore,
    kTarget,
    kSide,
    kEachPage,
    kBothHalves,
    kPage,
    kPageNumber,
    kAllPages,
    kStrip,
    kState,
    kSource1,
    kSource2,
    kMergeValue,
    kSaveState,
    kPair,
    kNone,  // no option
};

/// What stands behind an option.
enum class Takes {
    kNothing,
    kText,    // the last one wins
    kTexts,   // each counts
    kNumber,  // within the row's limits
    kSize,    // bytes: 500M, 2G
    kWord,    // one of the row's words, whatever the case
};

/// Where the words behind an option or of an operand may come from, for completions.
enum class Completes { kNothing, kFiles, kFolders, kParameters, kWords };

enum class OptionGroup { kOwn, kParameters, kGeneral, kHidden };

struct OptionRow {
    Option id;
    std::string_view name;       // with its dashes
    std::string_view otherName;  // another spelling; may be empty
    char letter;                 // 0 for none
    Takes takes;
    std::string_view argument;  // as the help names it
    Label meaning;
    OptionGroup group;
    Completes completes = Completes::kNothing;
    std::vector<std::string> (*words)() = nullptr;
    int min = 0, max = 0;
    Option needs = Option::kNone, excludes = Option::kNone;
};

const OptionRow& RowOf(Option option);

/// "-s, --set NAME=VALUE"
std::string OptionHead(const OptionRow& row);

/// Options that every command and the program itself take.
std::span<const Option> GeneralOptions();
/// Those of the program alone.
std::span<const Option> ProgramOptions();

}  // namespace velloran::cli
