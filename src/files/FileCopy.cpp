#include "files/FileCopy.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <system_error>
#include <vector>

#include "io/AtomicFile.h"

namespace velloran {

bool CopyFileWhole(const std::filesystem::path& source, const std::filesystem::path& target,
                   FileError* error) {
    constexpr std::size_t kChunk = std::size_t{1} << 18;
    const int input = ::open(source.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (input < 0)
        return FailContent(error, source.native() + ": " + std::generic_category().message(errno));
    AtomicFile output(target);
    bool copied = output.Open(error);
    std::vector<char> chunk(kChunk);
    while (copied) {
        const ssize_t size = ::read(input, chunk.data(), chunk.size());
        if (size < 0 && errno == EINTR)
            continue;
        if (size < 0)
            copied =
                FailContent(error, source.native() + ": " + std::generic_category().message(errno));
        if (size <= 0)
            break;
        output.Write(chunk.data(), static_cast<std::size_t>(size));
    }
    ::close(input);
    return copied && output.Commit(error);
}

std::optional<struct stat> ReadFileStatus(const std::filesystem::path& file) {
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0)
        return std::nullopt;
    return status;
}

bool SetFileTimes(const std::filesystem::path& file, const struct stat& status) {
    const std::array<timespec, 2> times = {status.st_atim, status.st_mtim};
    return ::utimensat(AT_FDCWD, file.c_str(), times.data(), 0) == 0;
}

}  // namespace velloran
