#include "documents/FolderLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

namespace velloran {

FolderLock::~FolderLock() {
    if (descriptor_ >= 0)
        ::close(descriptor_);
}

bool FolderLock::Take(const std::filesystem::path& folder) {
    if (descriptor_ >= 0)
        ::close(descriptor_);
    descriptor_ = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor_ < 0)
        return true;  // who cannot even be opened is told of by the work itself
    if (::flock(descriptor_, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK)
        return true;
    ::close(descriptor_);
    descriptor_ = -1;
    return false;
}

}  // namespace velloran
