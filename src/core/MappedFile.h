#pragma once

// A file mapped into memory, read only.

#include <cstdint>
#include <filesystem>
#include <span>

#include "core/FileError.h"

namespace velloran {

class MappedFile {
  public:
    MappedFile() = default;
    ~MappedFile();
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    /// False for a file that is missing, empty, a folder or not readable. Only plain files are
    /// opened, so a pipe cannot hang the caller.
    bool Open(const std::filesystem::path& file, FileError* error = nullptr);
    std::span<const std::uint8_t> Bytes() const { return {data_, size_}; }

  private:
    const std::uint8_t* data_ = nullptr;
    std::size_t size_ = 0;
};

}  // namespace velloran
