#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "cli/Causes.h"
#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/ExitStatus.h"
#include "files/FileType.h"
#include "files/PageSniffer.h"
#include "text/Labels.h"

namespace velloran::cli {

namespace {

/// Why the file cannot be read: an error number of the system, 0 for none.
int FaultOf(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        return errno;
    if (S_ISDIR(status.st_mode))
        return EISDIR;
    if (!S_ISREG(status.st_mode))
        return ENOTSUP;
    return ::access(path.c_str(), R_OK) == 0 ? 0 : errno;
}

/// What the sniffer of page files says.
void PrintPage(const std::string& path) {
    int type = 0, kind = 0;
    const int result = CPdgLoader::SniffFile(path, type, kind);
    Print(fmt::format("{}\t{}\t{}\t{}\n", type, kind, result, OutputName(path)));
}

}  // namespace

/// A file that cannot be read is told by its name, and that it could not be read.
int RunDetect(const ParsedWords& words) {
    constexpr int kOpenFailed = 1;  // row of the log
    const bool byName = words.Has(Option::kByName);
    int status = kDone;
    for (const std::string& path : words.operands) {
        if (words.Has(Option::kPage))
            PrintPage(path);
        else
            Print(fmt::format("{}\t{}\n", DetectFileType(path, byName ? 0 : 1), OutputName(path)));
        const int fault = byName ? 0 : FaultOf(path);
        if (fault != 0) {
            PrintFailure({.path = path,
                          .message = labels::kLogRows[kOpenFailed],
                          .cause = CauseOfErrno(fault),
                          .detail = std::generic_category().message(fault)});
            status = kFileFailed;
        }
    }
    return FinishOutput(status);
}

}  // namespace velloran::cli
