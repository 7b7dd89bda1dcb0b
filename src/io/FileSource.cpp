#include "io/FileSource.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace velloran {

FileSource::~FileSource() {
    Close();
}

void FileSource::Close() {
    if (descriptor_ >= 0)
        close(descriptor_);
    descriptor_ = -1;
    Reset();
}

bool FileSource::Open(const std::filesystem::path& file, FileError* error) {
    Close();
    // Without O_NONBLOCK the open of a pipe waits for a writer.
    descriptor_ = open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (descriptor_ < 0)
        return FailReadErrno(error, "cannot read");
    if (TakeStatus(error))
        return true;
    Close();
    return false;
}

bool FileSource::TakeStatus(FileError* error) {
    struct stat status {};
    if (fstat(descriptor_, &status) != 0)
        return FailReadErrno(error, "cannot read");
    if (S_ISDIR(status.st_mode))
        return FailContent(error, "cannot read: is a folder", FileReason::kIsFolder);
    if (!S_ISREG(status.st_mode))
        return FailContent(error, "cannot read: is no plain file", FileReason::kNotPlainFile);
    if (status.st_size == 0)
        return FailContent(error, "cannot read: is empty", FileReason::kEmpty);
    SetSize(static_cast<std::uint64_t>(status.st_size));
    return true;
}

std::ptrdiff_t FileSource::Read(std::uint64_t offset, std::uint8_t* to, std::size_t size) {
    return pread(descriptor_, to, size, static_cast<off_t>(offset));
}

}  // namespace velloran
