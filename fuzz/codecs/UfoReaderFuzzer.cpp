#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>

#include "codecs/Jpeg.h"
#include "core/DibImage.h"

namespace {

/// A file of this process, removed at its end: the reader takes a path.
class ScratchFile {
 public:
    ScratchFile() : path_(std::filesystem::temp_directory_path() / NameOfThis()) {}
    ~ScratchFile() {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }
    const std::filesystem::path& Path() const { return path_; }

 private:
    std::string NameOfThis() const {
        return "velloran-fuzz-" + std::to_string(reinterpret_cast<std::uintptr_t>(this)) + ".ufo";
    }
    std::filesystem::path path_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    velloran::ImageInfo info;
    if (!velloran::ReadUfoInfo(std::span(data, size), info, nullptr))
        return 0;
    if (static_cast<std::int64_t>(info.width) * info.height > 200'000)
        return 0;  // large pictures only cost time
    static const ScratchFile scratch;
    std::ofstream(scratch.Path(), std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    velloran::CDibImage image;
    velloran::LoadUfo(scratch.Path(), image);
    return 0;
}
