#pragma once

// Standard output and standard error. Results go to the one, all else to the other; colour and
// bars only where a terminal shows them.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace velloran::cli {

/// Bytes to standard output, as they are.
void Print(std::string_view text);

/// Flushes standard output. False when any of it could not be written; standard error then says so.
bool FlushOutput();

/// Output is flushed; kNotWritten instead of `status` when that fails and `status` tells of no
/// failure to write yet.
int FinishOutput(int status);

/// What the whole program is asked to say: warnings and progress, and failures in detail.
struct Talk {
    bool quiet = false, verbose = false;
};
void UseTalk(const Talk& talk);
const Talk& TalkInUse();

/// A name for standard output: as it is, or with its control characters shown where that is a
/// terminal.
std::string OutputName(std::string_view name);

/// "velloran: text" on standard error.
void PrintError(std::string_view text);
/// "velloran: warning: text" on standard error, unless quiet.
void PrintWarning(std::string_view text);

/// What is told of a file that failed.
struct FailureText {
    std::string_view path;
    std::u16string_view message;
    std::string cause = {};   // in the language in use; may be empty
    std::string source = {};  // of a target that could not be written; may be empty
    std::string detail = {};  // English, told when verbose
};
/// "path: message (cause)" on standard error.
void PrintFailure(const FailureText& failure);
/// A plain line on standard error.
void PrintNote(std::string_view text);

/// Asks on standard error and reads a line from standard input. Nothing, and nothing is asked, when
/// standard input is no terminal; nothing too when `isStopped` turns true.
std::optional<std::string> AskLine(std::u16string_view question,
                                   const std::function<bool()>& isStopped);
/// The same with a question for yes or no, which is answered in the letters of any language.
bool AskYesNo(std::u16string_view question, const std::function<bool()>& isStopped);
bool InputIsTerminal();
bool ErrorIsTerminal();

/// Names what a bar shows of a run.
struct BarState {
    std::size_t done = 0, total = 0;
    double seconds = 0;
    std::string_view path;
};

/// The line of a bar for a screen of so many columns; 0 is no limit. The path loses its front, then
/// the bar its cells, then the rate goes and the bar.
std::string BarText(const BarState& state, std::size_t columns);

/// A bar in the last line of a terminal, which messages push down; where standard error is no
/// terminal a line a second.
class ProgressBar {
 public:
    explicit ProgressBar(bool shown);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void Show(const BarState& state);

 private:
    bool shown_ = false;
    bool terminal_ = false;
    double nextAt_ = 0;  // seconds into the run
    std::size_t lastDone_ = 0;
};

}  // namespace velloran::cli
