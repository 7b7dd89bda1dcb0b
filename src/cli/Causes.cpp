#include "cli/Causes.h"

#include "text/CommandLabels.h"
#include "text/Labels.h"
#include "text/Phrase.h"

namespace velloran::cli {

namespace {

using namespace labels;

constexpr int kLogHoldsHtml = 9, kLogHoldsPdf = 10, kLogLocked = 22;  // rows of the log

Label LabelOf(FileReason reason) {
    switch (reason) {
        case FileReason::kNoSpace:
            return kCauseNoSpace;
        case FileReason::kNoPermission:
            return kCauseNoPermission;
        case FileReason::kNoSuchFile:
            return kCauseMissing;
        case FileReason::kIsFolder:
            return kCauseFolder;
        case FileReason::kNotPlainFile:
            return kCauseNoPlainFile;
        case FileReason::kEmpty:
            return kCauseEmpty;
        case FileReason::kDamaged:
            return kCauseDamaged;
        case FileReason::kKindNotRead:
            return kCauseNotRead;
        case FileReason::kKindNotWritten:
            return kCauseNotWritten;
        case FileReason::kTooLarge:
            return kCauseTooLarge;
        case FileReason::kNameTooLong:
            return kCauseLongName;
        case FileReason::kTooManyFiles:
            return kCauseTooManyOpen;
        case FileReason::kNoMemory:
            return kCauseNoMemory;
        case FileReason::kInputOutput:
            return kCauseInputOutput;
        case FileReason::kHoldsPdf:
            return kLogRows[kLogHoldsPdf];
        case FileReason::kPdfTooLarge:
            return kPdfTooLarge;
        case FileReason::kHoldsHtml:
            return kLogRows[kLogHoldsHtml];
        case FileReason::kLocked:
            return kLogRows[kLogLocked];
        case FileReason::kNoSuchPage:
            return kCauseNoSuchPage;
        case FileReason::kUnknown:
            break;
    }
    return {};
}

}  // namespace

std::string CauseText(FileReason reason) {
    return Phrase(LabelOf(reason));
}

std::string CauseOfErrno(int code) {
    return CauseText(ReasonOfErrno(code));
}

}  // namespace velloran::cli
