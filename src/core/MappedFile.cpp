#include "core/MappedFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <limits>
#include <string>
#include <system_error>

namespace velloran {
namespace {

// Reading this much costs less than mapping it, and a copy cannot change under the reader.
constexpr std::size_t kReadWhole = std::size_t{1} << 20;

/// Reading is never a matter of the place that results are written to.
bool FailRead(FileError* error) {
    const int code = errno;
    return FailContent(error, "cannot read: " + std::generic_category().message(code));
}

/// Bytes read, fewer than `size` at the end of the file; -1 with errno.
ssize_t ReadFully(int descriptor, std::uint8_t* target, std::size_t size) {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count = read(descriptor, target + done, size - done);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return -1;
        if (count == 0)
            break;
        done += static_cast<std::size_t>(count);
    }
    return static_cast<ssize_t>(done);
}

}  // namespace

MappedFile::~MappedFile() {
    Close();
}

void MappedFile::Close() noexcept {
    if (mapping_ != nullptr)
        munmap(mapping_, size_);
    mapping_ = nullptr;
    copy_.reset();
    data_ = nullptr;
    size_ = 0;
}

bool MappedFile::Open(const std::filesystem::path& file, FileError* error) {
    Close();
    const int descriptor = open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (descriptor < 0)
        return FailRead(error);
    struct stat status {};
    bool opened = false;
    if (fstat(descriptor, &status) != 0)
        FailRead(error);
    else if (S_ISDIR(status.st_mode))
        FailContent(error, "cannot read: is a folder");
    else if (!S_ISREG(status.st_mode))
        FailContent(error, "cannot read: is no plain file");
    else if (status.st_size == 0)
        FailContent(error, "cannot read: is empty");
    else
        opened = Fill(descriptor, static_cast<std::size_t>(status.st_size), error);
    close(descriptor);
    return opened;
}

bool MappedFile::Fill(int descriptor, std::size_t size, FileError* error) {
    if (size > kReadWhole) {
        void* mapping = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor, 0);
        if (mapping == MAP_FAILED)
            return FailRead(error);
        mapping_ = mapping;
        data_ = static_cast<const std::uint8_t*>(mapping);
        size_ = size;
        return true;
    }
    copy_.reset(static_cast<std::uint8_t*>(AllocatePixels(size)));
    if (copy_ == nullptr) {
        errno = ENOMEM;
        return FailRead(error);
    }
    const ssize_t count = ReadFully(descriptor, copy_.get(), size);
    if (count <= 0) {
        if (count < 0)
            FailRead(error);
        else
            FailContent(error, "cannot read: is empty");
        copy_.reset();
        return false;
    }
    data_ = copy_.get();
    size_ = static_cast<std::size_t>(count);
    return true;
}

}  // namespace velloran
