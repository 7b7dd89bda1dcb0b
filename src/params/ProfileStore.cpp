#include "params/ProfileStore.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>

#include "io/AtomicFile.h"
#include "text/ProfileFile.h"

namespace velloran {

namespace {

bool ReadBytes(const std::filesystem::path& file, std::string& bytes, FileError* error) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(std::fopen(file.c_str(), "rbe"),
                                                                 std::fclose);
    if (!stream)
        return errno == ENOENT || FailErrno(error, "open");
    std::array<char, 16384> chunk;
    std::size_t got = 0;
    while ((got = std::fread(chunk.data(), 1, chunk.size(), stream.get())) > 0) {
        bytes.append(chunk.data(), got);
        if (bytes.size() > ProfileFile::kMaxBytes)
            return FailContent(error, "larger than 16 MiB");
    }
    return std::ferror(stream.get()) == 0 || FailErrno(error, "read");
}

}  // namespace

bool LoadProfile(const std::filesystem::path& file, ProfileFile& profile, FileError* error) {
    profile.Parse({});
    std::string bytes;
    if (!ReadBytes(file, bytes, error))
        return false;
    profile.Parse(bytes);
    if (profile.LineCount() <= ProfileFile::kMaxLines)
        return true;
    profile.Parse({});
    return FailContent(error, "more than a million lines");
}

bool SaveProfile(const ProfileFile& profile, const std::filesystem::path& file,
                 FileError* error) {
    const std::string bytes = profile.ToBytes();
    AtomicFile target(file);
    if (!target.Open(error))
        return false;
    target.Write(bytes.data(), bytes.size());
    return target.Commit(error);
}

}  // namespace velloran
