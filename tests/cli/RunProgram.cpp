#include "RunProgram.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>

#include "core/DibImage.h"
#include "files/ImageFiles.h"
#include "params/ParaBlock.h"
#include "support/Images.h"

namespace velloran::test {

namespace {

constexpr int kLongestRun = 240'000;  // milliseconds; a hang is a failure, not a wait
constexpr uid_t kNobody = 65534;

/// Both ends of a pipe, closed at the end.
struct Pipe {
    int read = -1, write = -1;
    Pipe() {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) == 0) {
            read = ends[0];
            write = ends[1];
        }
    }
    ~Pipe() {
        Close(read);
        Close(write);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    static void Close(int& end) {
        if (end >= 0)
            close(end);
        end = -1;
    }
};

/// The words as exec wants them; made before the fork.
struct Words {
    explicit Words(const std::vector<std::string>& arguments) : texts(arguments) {
        texts.insert(texts.begin(), "velloran");
        for (std::string& text : texts)
            pointers.push_back(text.data());
        pointers.push_back(nullptr);
    }
    std::vector<std::string> texts;
    std::vector<char*> pointers;
};

[[noreturn]] void Become(int program, const Words& words, const Surroundings& around) {
    for (const auto& [name, value] : around.variables)
        setenv(name.c_str(), value.c_str(), 1);
    if (!around.folder.empty() && chdir(around.folder.c_str()) != 0)
        _exit(125);
    if (around.fileSizeLimit) {
        const rlim_t bytes = static_cast<rlim_t>(*around.fileSizeLimit);
        const rlimit limit{bytes, bytes};
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0)
            _exit(125);
    }
    if (around.memoryLimit) {
        const rlim_t bytes = static_cast<rlim_t>(*around.memoryLimit);
        const rlimit limit{bytes, bytes};
        if (setrlimit(RLIMIT_AS, &limit) != 0)
            _exit(125);
    }
    if (around.cpus > 0) {
        cpu_set_t all, some;
        CPU_ZERO(&some);
        sched_getaffinity(0, sizeof all, &all);
        for (int i = 0; i < CPU_SETSIZE && CPU_COUNT(&some) < around.cpus; ++i)
            if (CPU_ISSET(i, &all))
                CPU_SET(i, &some);
        if (sched_setaffinity(0, sizeof some, &some) != 0)
            _exit(125);
    }
    if (around.asNobody && geteuid() == 0 && (setgid(kNobody) != 0 || setuid(kNobody) != 0))
        _exit(125);
    fexecve(program, words.pointers.data(), environ);
    _exit(126);
}

int StatusOf(int waited) {
    return WIFSIGNALED(waited) ? kKilledBy + WTERMSIG(waited) : WEXITSTATUS(waited);
}

/// Reads both ends until they close, and feeds the input meanwhile.
void Converse(pid_t child, Pipe& in, Pipe& out, Pipe& err, const Surroundings& around,
              Outcome& outcome) {
    std::size_t sent = 0;
    if (around.input.empty())
        Pipe::Close(in.write);
    while (out.read >= 0 || err.read >= 0) {
        std::array<pollfd, 3> ends = {pollfd{out.read, POLLIN, 0}, pollfd{err.read, POLLIN, 0},
                                      pollfd{in.write, POLLOUT, 0}};
        if (poll(ends.data(), ends.size(), kLongestRun) == 0) {
            ADD_FAILURE() << "the program hangs";
            kill(child, SIGKILL);
            return;
        }
        const auto take = [](const pollfd& end, int& descriptor, std::string& text) {
            if (end.revents == 0 || descriptor < 0)
                return;
            std::array<char, 65536> bytes{};
            const ssize_t size = read(descriptor, bytes.data(), bytes.size());
            if (size > 0)
                text.append(bytes.data(), static_cast<std::size_t>(size));
            else
                Pipe::Close(descriptor);
        };
        take(ends[0], out.read, outcome.out);
        const bool quiet = outcome.err.empty();
        take(ends[1], err.read, outcome.err);
        if (quiet && !outcome.err.empty() && around.onError)
            around.onError(child);
        if (ends[2].revents != 0 && in.write >= 0) {
            const ssize_t size =
                write(in.write, around.input.data() + sent, around.input.size() - sent);
            sent += size > 0 ? static_cast<std::size_t>(size) : around.input.size();
            if (sent >= around.input.size())
                Pipe::Close(in.write);
        }
    }
}

int OpenProgram(const Surroundings& around) {
    const std::filesystem::path program = around.program.empty() ? BuiltProgram() : around.program;
    const int descriptor = open(program.c_str(), O_RDONLY | O_CLOEXEC);
    EXPECT_GE(descriptor, 0) << program;
    return descriptor;
}

Outcome RunOnTerminal(int program, const Words& words, const Surroundings& around) {
    Outcome outcome;
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0)
        Become(program, words, around);
    EXPECT_EQ(write(terminal, around.terminalAnswer.data(), around.terminalAnswer.size()),
              static_cast<ssize_t>(around.terminalAnswer.size()));
    std::array<char, 65536> bytes{};
    for (ssize_t size = 1; size > 0;) {
        size = read(terminal, bytes.data(), bytes.size());
        if (size > 0)
            outcome.terminal.append(bytes.data(), static_cast<std::size_t>(size));
    }
    outcome.status = WaitFor(child);
    close(terminal);
    return outcome;
}

}  // namespace

bool HasTerminals() {
    int terminal = -1, program = -1;
    if (openpty(&terminal, &program, nullptr, nullptr, nullptr) != 0)
        return false;
    close(terminal);
    close(program);
    return true;
}

std::filesystem::path BuiltProgram() {
    return VELLORAN_PROGRAM;
}

int WaitFor(pid_t program) {
    int status = 0;
    EXPECT_EQ(waitpid(program, &status, 0), program);
    return StatusOf(status);
}

Outcome RunProgram(const std::vector<std::string>& arguments, const Surroundings& around) {
    const int program = OpenProgram(around);
    const Words words(arguments);
    signal(SIGPIPE, SIG_IGN);  // a program may end without having read its input
    Outcome outcome;
    if (!around.terminalAnswer.empty()) {
        outcome = RunOnTerminal(program, words, around);
        close(program);
        return outcome;
    }
    Pipe in, out, err;
    const pid_t child = fork();
    if (child == 0) {
        signal(SIGPIPE, SIG_DFL);
        const int full = around.outputFull ? open("/dev/full", O_WRONLY | O_CLOEXEC) : out.write;
        dup2(in.read, STDIN_FILENO);
        dup2(full, STDOUT_FILENO);
        dup2(err.write, STDERR_FILENO);
        Become(program, words, around);
    }
    close(program);
    Pipe::Close(in.read);
    Pipe::Close(out.write);
    Pipe::Close(err.write);
    Converse(child, in, out, err, around, outcome);
    outcome.status = WaitFor(child);
    return outcome;
}

pid_t StartProgram(const std::vector<std::string>& arguments) {
    const int program = OpenProgram({});
    const Words words(arguments);
    const pid_t child = fork();
    if (child == 0) {
        const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            dup2(nowhere, stream);
        Become(program, words, {});
    }
    close(program);
    return child;
}

std::vector<std::string> LinesOf(const std::string& text) {
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        lines.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return lines;
}

void WritePage(const std::filesystem::path& file, int width, int height, bool color,
               unsigned seed) {
    CDibImage image = Noise(width, height, color ? 24 : 8, seed);
    FileError error;
    const CParaBlock block;
    EXPECT_TRUE(SaveImageFile(file, image, 90, 96, 2, false, block, &error))
        << file << ": " << error.detail;
}

}  // namespace velloran::test
