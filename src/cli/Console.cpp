#include "cli/Console.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <system_error>

#include "text/Text.h"

namespace velloran::cli {

namespace {

bool barOnScreen = false;  // standard error ends in a bar that the next line must wipe out

bool UsesColor() {
    static const bool uses = [] {
        const char* refused = std::getenv("NO_COLOR");
        const char* terminal = std::getenv("TERM");
        return ErrorIsTerminal() && (refused == nullptr || refused[0] == '\0') &&
               (terminal == nullptr || std::string_view(terminal) != "dumb");
    }();
    return uses;
}

/// On a terminal a name must not steer the screen.
std::string Shown(std::string_view text) {
    std::string shown(text);
    if (ErrorIsTerminal())
        for (char& c : shown)
            if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
                c = '?';
    return shown;
}

void WriteErrorLine(std::string_view text) {
    std::string line;
    if (barOnScreen)
        line = "\r\x1B[K";
    barOnScreen = false;
    line += text;
    line += '\n';
    std::fwrite(line.data(), 1, line.size(), stderr);
}

std::string Colored(std::string_view text, std::string_view code) {
    return UsesColor() ? fmt::format("\x1B[{}m{}\x1B[0m", code, text) : std::string(text);
}

std::size_t Columns() {
    winsize size{};
    if (::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
        return size.ws_col;
    return 80;
}

/// Columns that a character takes: two for the wide scripts.
std::size_t WidthOf(char16_t unit) {
    if (unit >= 0xDC00 && unit <= 0xDFFF)
        return 0;  // counted with its first half
    const bool wide = (unit >= 0x1100 && unit <= 0x115F) || (unit >= 0x2E80 && unit <= 0xA4CF) ||
                      (unit >= 0xAC00 && unit <= 0xD7A3) || (unit >= 0xD800 && unit <= 0xDBFF) ||
                      (unit >= 0xF900 && unit <= 0xFAFF) || (unit >= 0xFE30 && unit <= 0xFE6F) ||
                      (unit >= 0xFF00 && unit <= 0xFF60);
    return wide ? 2 : 1;
}

/// The end of a text, as much as fits.
std::u16string_view TailThatFits(std::u16string_view text, std::size_t columns) {
    std::size_t at = text.size(), used = 0;
    while (at > 0 && used + WidthOf(text[at - 1]) <= columns)
        used += WidthOf(text[--at]);
    if (at < text.size() && text[at] >= 0xDC00 && text[at] <= 0xDFFF)
        ++at;
    return text.substr(at);
}

std::string Duration(double seconds) {
    const auto whole = static_cast<long long>(std::clamp(seconds, 0.0, 359999.0) + 0.5);
    if (whole >= 3600)
        return fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
    return fmt::format("{}:{:02}", whole / 60, whole % 60);
}

}  // namespace

bool InputIsTerminal() {
    return ::isatty(STDIN_FILENO) == 1;
}

bool ErrorIsTerminal() {
    static const bool terminal = ::isatty(STDERR_FILENO) == 1;
    return terminal;
}

void Print(std::string_view text) {
    if (barOnScreen)
        std::fwrite("\r\x1B[K", 1, 4, stderr);
    barOnScreen = false;
    std::fwrite(text.data(), 1, text.size(), stdout);
}

bool FlushOutput() {
    const bool written = std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
    if (!written)
        PrintError(fmt::format("standard output: {}", std::generic_category().message(errno)));
    return written;
}

void PrintError(std::string_view text) {
    WriteErrorLine(fmt::format("velloran: {}", Colored(Shown(text), "31")));
}

void PrintWarning(std::string_view text) {
    WriteErrorLine(fmt::format("velloran: {} {}", Colored("warning:", "33"), Shown(text)));
}

void PrintFailure(std::string_view path, std::u16string_view message, std::string_view detail) {
    std::string line = fmt::format("{}: {}", Shown(path), Colored(ToUtf8(message), "31"));
    if (!detail.empty())
        line += fmt::format(" ({})", Shown(detail));
    WriteErrorLine(line);
}

void PrintNote(std::string_view text) {
    WriteErrorLine(text);
}

bool AskYesNo(std::u16string_view question, const std::function<bool()>& isStopped) {
    if (!InputIsTerminal())
        return false;
    const std::string text = ToUtf8(question) + " [y/N] ";
    std::fwrite(text.data(), 1, text.size(), stderr);
    pollfd input{STDIN_FILENO, POLLIN, 0};
    while (::poll(&input, 1, 200) <= 0)
        if (isStopped())
            return false;
    std::string answer;
    for (int c = std::getchar(); c != EOF && c != '\n'; c = std::getchar())
        answer += static_cast<char>(c);
    return EqualIgnoringCase(std::string_view(answer), "y") ||
           EqualIgnoringCase(std::string_view(answer), "yes");
}

std::string BarText(const BarState& state, std::size_t columns) {
    constexpr std::size_t kCells = 20;
    const std::size_t filled =
        state.total == 0 ? kCells : std::min(kCells, state.done * kCells / state.total);
    std::string text = fmt::format("[{}{}] {}/{}", std::string(filled, '#'),
                                   std::string(kCells - filled, '.'), state.done, state.total);
    if (state.done > 0 && state.seconds > 0) {
        const double rate = static_cast<double>(state.done) / state.seconds;
        const double left = static_cast<double>(state.total - std::min(state.done, state.total));
        text += fmt::format(" {:.1f}/s, {} left", rate, Duration(left / rate));
    }
    if (!state.path.empty()) {
        const std::size_t space = columns == 0                ? state.path.size()
                                  : columns > text.size() + 2 ? columns - text.size() - 2
                                                              : 0;
        text += ' ';
        text += ToUtf8(TailThatFits(ToUtf16(state.path), space));
    }
    return text;
}

ProgressBar::ProgressBar(bool shown) : shown_(shown), terminal_(ErrorIsTerminal()) {}

ProgressBar::~ProgressBar() {
    if (barOnScreen)
        std::fwrite("\r\x1B[K", 1, 4, stderr);
    barOnScreen = false;
}

void ProgressBar::Show(const BarState& state) {
    constexpr double kTerminalInterval = 0.1, kLineInterval = 1.0;
    const bool last = state.done == state.total && lastDone_ != state.done;
    if (!shown_ || (state.seconds < nextAt_ && !last))
        return;
    lastDone_ = state.done;
    nextAt_ = state.seconds + (terminal_ ? kTerminalInterval : kLineInterval);
    if (!terminal_) {
        WriteErrorLine(BarText(state, 0));
        return;
    }
    const std::string line = fmt::format("\r{}\x1B[K", Shown(BarText(state, Columns())));
    std::fwrite(line.data(), 1, line.size(), stderr);
    barOnScreen = true;
}

}  // namespace velloran::cli
