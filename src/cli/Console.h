#pragma once

// Standard output and standard error. Results go to the one, all else to the other; colour and
// bars only where a terminal shows them.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace velloran::cli {

/// Bytes to standard output, as they are.
void Print(std::string_view text);

/// Flushes standard output. False when any of it could not be written; standard error then says so.
bool FlushOutput();

/// "velloran: text" on standard error.
void PrintError(std::string_view text);
/// "velloran: warning: text" on standard error.
void PrintWarning(std::string_view text);
/// "path: message" on standard error, with the detail in parentheses unless it is empty.
void PrintFailure(std::string_view path, std::u16string_view message, std::string_view detail = {});
/// A plain line on standard error.
void PrintNote(std::string_view text);

/// Asks on standard error and reads a line from standard input; true for y or yes. Asks nothing
/// and gives false when standard input is no terminal, or when `isStopped` turns true.
bool AskYesNo(std::u16string_view question, const std::function<bool()>& isStopped);
bool InputIsTerminal();
bool ErrorIsTerminal();

/// Names what a bar shows of a run.
struct BarState {
    std::size_t done = 0, total = 0;
    double seconds = 0;
    std::string_view path;
};

/// The line of a bar for a screen of so many columns; 0 is no limit. The path loses its front.
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
