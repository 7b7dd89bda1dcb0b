#include "files/FileType.h"

#include <array>
#include <atomic>

#include "codecs/Raw.h"
#include "io/FileSource.h"

namespace velloran {

namespace {

constexpr std::size_t kHeadSize = 512;

/// LibRaw's own opinion, whatever the name.
bool IsRawByContent(ByteSource& source, const std::filesystem::path&) {
    return IsRawFile(source);
}

std::atomic<RawRecognizer> rawRecognizer{IsRawByContent};

bool HasTrait(int type, unsigned trait) {
    const Format* format = FindFormat(type);
    return format != nullptr && format->Has(trait);
}

}  // namespace

int DetectFileType(const std::filesystem::path& path, int sniff) {
    FileSource source;
    if (sniff == 0 || !source.Open(path))
        return FileTypeOfExtension(path);
    return DetectFileType(source, path);
}

int DetectFileType(ByteSource& source, const std::filesystem::path& name) {
    std::array<std::uint8_t, kHeadSize> head{};  // zeros behind a short file's end
    source.ReadAt(0, head);
    const int type = TypeOfHead(head);
    if ((type == kTypeTiff || type == kTypeUnknown) && IsCameraRaw(source, name))
        return kTypeRaw;
    return type != kTypeUnknown ? type : FileTypeOfExtension(name);
}

int FileTypeOfExtension(const std::filesystem::path& path) {
    return TypeOfExtension(path.extension().native());
}

void SetRawRecognizer(RawRecognizer recognizer) {
    rawRecognizer = recognizer;
}

bool IsCameraRaw(ByteSource& source, const std::filesystem::path& name) {
    const RawRecognizer recognizer = rawRecognizer;
    return recognizer != nullptr && recognizer(source, name);
}

bool IsRenamerImage(const std::filesystem::path& path) {
    return HasTrait(DetectFileType(path, 1), Format::kRenamed);
}

bool IsColourReducedTarget(const std::filesystem::path& path) {
    return HasTrait(FileTypeOfExtension(path), Format::kReducedTarget);
}

}  // namespace velloran
