#pragma once

// The bytes of a file, read only: small files are read, large ones mapped into memory.

#include <cstdint>
#include <filesystem>
#include <span>

#include "core/PixelMemory.h"
#include "io/FileError.h"

namespace velloran {

class MappedFile {
 public:
    MappedFile() = default;
    ~MappedFile();
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    /// False, with a kContent reason, for a file that is missing, empty, a folder or not readable.
    /// Only plain files are opened, so a pipe cannot hang the caller. A file above 1 MiB must not
    /// be cut short by others while it is open. An earlier file is closed first.
    bool Open(const std::filesystem::path& file, FileError* error = nullptr);

    /// Empty before Open and after one that failed.
    std::span<const std::uint8_t> Bytes() const { return {data_, size_}; }

 private:
    bool Fill(int descriptor, std::size_t size, FileError* error);
    void Close() noexcept;

    const std::uint8_t* data_ = nullptr;
    std::size_t size_ = 0;
    void* mapping_ = nullptr;
    PixelBuffer copy_;
};

}  // namespace velloran
