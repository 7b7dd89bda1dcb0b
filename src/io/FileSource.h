#pragma once

// The bytes of a plain file, which is opened once.

#include <filesystem>

#include "io/ByteSource.h"

namespace velloran {

class FileSource : public ByteSource {
 public:
    FileSource() = default;
    ~FileSource() override;

    /// False, with a kContent reason, for a file that is missing, empty, a folder or not readable.
    /// Only plain files are opened, so a pipe cannot hang the caller. An earlier file is closed.
    bool Open(const std::filesystem::path& file, FileError* error = nullptr);

 protected:
    std::ptrdiff_t Read(std::uint64_t offset, std::uint8_t* to, std::size_t size) override;

 private:
    bool TakeStatus(FileError* error);
    void Close();

    int descriptor_ = -1;
};

}  // namespace velloran
