#include "files/FileIdentity.h"

#include <sys/stat.h>

namespace velloran {

std::optional<StandingFile> FindFile(const std::filesystem::path& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        return std::nullopt;
    return StandingFile{
        {status.st_dev, status.st_ino},
        status.st_mtim.tv_sec * std::int64_t{1'000'000'000} + status.st_mtim.tv_nsec};
}

}  // namespace velloran
