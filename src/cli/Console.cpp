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

#include "cli/Causes.h"
#include "cli/ExitStatus.h"
#include "cli/TextWidth.h"
#include "text/CommandLabels.h"
#include "text/Labels.h"
#include "text/Phrase.h"
#include "text/Text.h"

namespace velloran::cli {

namespace {

Talk talkInUse;
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
    return ErrorIsTerminal() ? WithoutControls(text) : std::string(text);
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

void UseTalk(const Talk& talk) {
    talkInUse = talk;
}

const Talk& TalkInUse() {
    return talkInUse;
}

std::string OutputName(std::string_view name) {
    static const bool terminal = ::isatty(STDOUT_FILENO) == 1;
    return terminal ? WithoutControls(name) : std::string(name);
}

bool FlushOutput() {
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0)
        return true;
    const int code = errno;
    const std::string name = ToUtf8(labels::kStandardOutput);
    PrintFailure({.path = name,
                  .message = labels::kSaveFailed,
                  .cause = CauseOfErrno(code),
                  .detail = std::generic_category().message(code)});
    return false;
}

int FinishOutput(int status) {
    if (!FlushOutput() && (status == kDone || status == kFileFailed))
        return kNotWritten;
    return status;
}

void PrintError(std::string_view text) {
    WriteErrorLine(fmt::format("velloran: {}", Colored(Shown(text), "31")));
}

void PrintWarning(std::string_view text) {
    if (!talkInUse.quiet)
        WriteErrorLine(fmt::format("velloran: {} {}",
                                   Colored(ToUtf8(labels::kWarning.Text()), "33"), Shown(text)));
}

void PrintFailure(const FailureText& failure) {
    const std::string join = ToUtf8(labels::kCauseJoin.Text());
    std::string behind;
    const auto add = [&](const std::string& part) {
        behind += behind.empty() || part.empty() ? part : join + part;
    };
    add(failure.cause);
    if (!failure.source.empty())
        add(Phrase(labels::kCauseSource, {failure.source}));
    if (talkInUse.verbose)
        add(failure.detail);
    std::string line =
        fmt::format("{}: {}", Shown(failure.path), Colored(ToUtf8(failure.message), "31"));
    if (!behind.empty())
        line += fmt::format(" ({})", Shown(behind));
    WriteErrorLine(line);
}

void PrintNote(std::string_view text) {
    WriteErrorLine(text);
}

std::optional<std::string> AskLine(std::u16string_view question,
                                   const std::function<bool()>& isStopped) {
    if (!InputIsTerminal())
        return std::nullopt;
    const std::string text = ToUtf8(question);
    std::fwrite(text.data(), 1, text.size(), stderr);
    pollfd input{STDIN_FILENO, POLLIN, 0};
    while (::poll(&input, 1, 200) <= 0)
        if (isStopped())
            return std::nullopt;
    std::string answer;
    for (int c = std::getchar(); c != EOF && c != '\n'; c = std::getchar())
        answer += static_cast<char>(c);
    return answer;
}

bool AskYesNo(std::u16string_view question, const std::function<bool()>& isStopped) {
    const std::u16string text = std::u16string(question) + std::u16string(labels::kYesNo);
    const std::optional<std::string> answer = AskLine(text, isStopped);
    if (!answer)
        return false;
    for (const Label& word : labels::kYesWords)
        for (const Language language : {Language::kChinese, Language::kEnglish})
            if (EqualIgnoringCase(std::u16string_view(ToUtf16(*answer)), word.In(language)))
                return true;
    return false;
}

std::string BarText(const BarState& state, std::size_t columns) {
    constexpr std::size_t kCells = 20, kFewestCells = 5;
    const std::string counts = fmt::format("{}/{}", state.done, state.total);
    std::string rate;
    if (state.done > 0 && state.seconds > 0) {
        const double speed = static_cast<double>(state.done) / state.seconds;
        const double left = static_cast<double>(state.total - std::min(state.done, state.total));
        rate = Phrase(labels::kRateAndRest, {fmt::format("{:.1f}", speed), Duration(left / speed)});
    }
    // The last column stays free, as a character there may begin a new line.
    const std::size_t room = columns == 0 ? SIZE_MAX : columns - 1;
    const std::size_t frame = counts.size() + 3;  // the brackets and a blank
    if (frame + kFewestCells + WidthOf(ToUtf16(rate)) > room)
        rate.clear();
    const std::size_t fixed = frame + WidthOf(ToUtf16(rate));
    if (fixed + kFewestCells > room)
        return counts.size() <= room ? counts : std::string();
    const std::size_t cells = std::min(kCells, room - fixed);
    const std::size_t filled =
        state.total == 0 ? cells : std::min(cells, state.done * cells / state.total);
    std::string text = fmt::format("[{}{}] {}{}", std::string(filled, '#'),
                                   std::string(cells - filled, '.'), counts, rate);
    const std::size_t used = fixed + cells;
    if (!state.path.empty() && room > used + 1)
        text += " " + ToUtf8(TailThatFits(ToUtf16(state.path), room - used - 1));
    return text;
}

ProgressBar::ProgressBar(bool shown)
    : shown_(shown && !talkInUse.quiet), terminal_(ErrorIsTerminal()) {}

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
    const std::string line = fmt::format(
        "\r{}\x1B[K",
        BarText({state.done, state.total, state.seconds, WithoutControls(state.path)}, Columns()));
    std::fwrite(line.data(), 1, line.size(), stderr);
    barOnScreen = true;
}

}  // namespace velloran::cli
