#pragma once

// Runs the real `velloran` as a shell would, and keeps what it said.

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace velloran::test {

struct Surroundings {
    std::string input = {};                             // standard input, which is no terminal
    std::filesystem::path folder = {};                  // working folder; empty: the test's own
    std::map<std::string, std::string> variables = {};  // beside those of the test
    bool asNobody = false;                              // without root's rights
    std::optional<long> fileSizeLimit = {};             // bytes a file may grow to
    std::optional<long> memoryLimit = {};               // bytes of address space
    std::filesystem::path program = {};                 // empty: the one that was built
    bool outputFull = false;                            // standard output has no space
    std::string terminalAnswer = {};          // not empty: a terminal, on which this is typed
    std::function<void(pid_t)> onError = {};  // called as standard error begins
    int cpus = 0;                             // processors it may use; 0: those of the test
};

/// Added to the number of a signal that ended a program which did not exit by itself.
inline constexpr int kKilledBy = 1000;

struct Outcome {
    int status = -1;  // of the exit; kKilledBy and the number after a death by signal
    std::string out, err;
    std::string terminal;  // what a terminal showed
};

Outcome RunProgram(const std::vector<std::string>& arguments, const Surroundings& around = {});

/// Starts the program and leaves it running; standard output and standard error go to /dev/null.
pid_t StartProgram(const std::vector<std::string>& arguments);
/// Waits for its end; the status as in Outcome.
int WaitFor(pid_t program);

/// Whether the system gives programs terminals; small containers may have none.
bool HasTerminals();

/// The program that was built.
std::filesystem::path BuiltProgram();

/// Lines without their line feeds.
std::vector<std::string> LinesOf(const std::string& text);

/// A small picture in the format of the name's extension: grey 8 bits or colour 24 bits, pixels
/// from a fixed sequence.
void WritePage(const std::filesystem::path& file, int width = 40, int height = 30,
               bool color = false, unsigned seed = 1);

/// A setting of one parameter, for the option -s.
inline std::string Set(const std::string& name, int value) {
    return name + "=" + std::to_string(value);
}

}  // namespace velloran::test
