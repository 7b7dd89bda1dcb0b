#include "files/FileType.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <optional>

#include "text/Text.h"

namespace velloran {

namespace {

constexpr std::size_t kHeadSize = 512;
using FileHead = std::array<std::uint8_t, kHeadSize>;

std::atomic<RawRecognizer> rawRecognizer{nullptr};

/// The first bytes, zeros behind a short file's end. Nothing for what is no readable plain file.
std::optional<FileHead> ReadHead(const std::filesystem::path& path) {
    // Without O_NONBLOCK the open of a pipe waits for a writer.
    const int file = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (file < 0)
        return std::nullopt;
    FileHead head{};
    struct stat status {};
    bool good = fstat(file, &status) == 0 && S_ISREG(status.st_mode);
    std::size_t done = 0;
    while (good && done < head.size()) {
        const ssize_t count = read(file, head.data() + done, head.size() - done);
        if (count < 0 && errno == EINTR)
            continue;
        good = count >= 0;
        if (count <= 0)
            break;
        done += static_cast<std::size_t>(count);
    }
    close(file);
    return good ? std::optional(head) : std::nullopt;
}

bool HasBytes(const FileHead& head, std::size_t offset, std::string_view bytes) {
    return std::equal(
        bytes.begin(), bytes.end(), head.begin() + offset,
        [](char wanted, std::uint8_t byte) { return static_cast<std::uint8_t>(wanted) == byte; });
}

struct HeadRule {
    int type;
    struct {
        std::size_t offset;
        std::string_view bytes;
    } first, second;  // the second part may be empty
};

using namespace std::string_view_literals;

/// In the order of the tests: an earlier rule wins.
constexpr HeadRule kHeadRules[] = {
    {kTypeJpeg, {0, "\xFF\xD8"sv}, {}},
    {kTypeGif, {0, "GI"sv}, {2, "F"sv}},
    {kTypeBmp, {0, "BM"sv}, {}},
    {kTypePng, {1, "PN"sv}, {3, "G"sv}},
    {kTypeTiff, {0, "II"sv}, {}},
    {kTypeTiff, {0, "MM"sv}, {}},
    {kTypeMetafile, {0, "\xD7\xCD"sv}, {}},
    {kTypeJp2, {0, "\0\0\0\x0CjP  "sv}, {8, "\x0D\x0A\x87\x0A"sv}},
    {kTypeJ2k, {0, "\xFF\x4F\xFF\x51"sv}, {}},
    {kTypeWebp, {8, "WEBP"sv}, {}},
};

int TypeOfHead(const FileHead& head) {
    for (const HeadRule& rule : kHeadRules)
        if (HasBytes(head, rule.first.offset, rule.first.bytes) &&
            HasBytes(head, rule.second.offset, rule.second.bytes))
            return rule.type;
    return kTypeUnknown;
}

struct ExtensionType {
    std::string_view extension;
    int type;
};

constexpr ExtensionType kExtensionTypes[] = {
    {".jpg", kTypeJpeg},  {".jpeg", kTypeJpeg},    {".gif", kTypeGif},      {".ufo", kTypeUfo},
    {".bmp", kTypeBmp},   {".dib", kTypeBmp},      {".png", kTypePng},      {".tif", kTypeTiff},
    {".tiff", kTypeTiff}, {".nef", kTypeRaw},      {".crw", kTypeRaw},      {".cr2", kTypeRaw},
    {".dng", kTypeRaw},   {".wmf", kTypeMetafile}, {".emf", kTypeMetafile}, {".jpf", kTypeJp2},
    {".jpx", kTypeJp2},   {".jp2", kTypeJp2},      {".j2c", kTypeJp2},      {".j2k", kTypeJ2k},
    {".jpc", kTypeJ2k},   {".webp", kTypeWebp},
};

}  // namespace

int DetectFileType(const std::filesystem::path& path, int sniff) {
    if (sniff == 0)
        return FileTypeOfExtension(path);
    const std::optional<FileHead> head = ReadHead(path);
    if (!head)
        return FileTypeOfExtension(path);
    const int type = TypeOfHead(*head);
    if ((type == kTypeTiff || type == kTypeUnknown) && IsCameraRaw(path))
        return kTypeRaw;
    return type != kTypeUnknown ? type : FileTypeOfExtension(path);
}

int FileTypeOfExtension(const std::filesystem::path& path) {
    const std::string extension = path.extension().native();
    for (const ExtensionType& known : kExtensionTypes)
        if (EqualIgnoringCase(extension, known.extension))
            return known.type;
    return kTypeUnknown;
}

std::string_view FileTypeName(int id) {
    constexpr std::string_view kNames[] = {
        "unknown", "JPEG", "UFO", "GIF", "BMP", "PNG", "TIFF", "WMF", "J2K", "JP2", "WebP", "RAW",
    };
    if (id < 0 || id >= static_cast<int>(std::size(kNames)))
        return kNames[0];
    return kNames[id];
}

void SetRawRecognizer(RawRecognizer recognizer) {
    rawRecognizer = recognizer;
}

bool IsCameraRaw(const std::filesystem::path& path) {
    const RawRecognizer recognizer = rawRecognizer;
    return recognizer != nullptr && recognizer(path);
}

bool IsRenamerImage(const std::filesystem::path& path) {
    switch (DetectFileType(path, 1)) {
        case kTypeJpeg:
        case kTypeGif:
        case kTypeBmp:
        case kTypePng:
        case kTypeTiff:
        case kTypeJ2k:
        case kTypeJp2:
        case kTypeWebp:
            return true;
        default:
            return false;
    }
}

bool IsColourReducedTarget(const std::filesystem::path& path) {
    switch (FileTypeOfExtension(path)) {
        case kTypeGif:
        case kTypeBmp:
        case kTypePng:
        case kTypeTiff:
        case kTypeWebp:
            return true;
        default:
            return false;
    }
}

std::u16string_view SupportedFilter() {
    // "*cr2" stands without its dot: stored filters hold the list as it is.
    return u"Supported|*.jpg;*.jpeg;*.jpe;*.gif;*.ufo;*.bmp;*.dib;*.png;*.tif;*.tiff;*.wmf;*.emf;"
           u"*.jpf;*.jpx;*.jp2;*.j2k;*.jpc;*.j2c;*.webp;*.nef;*.crw;*.cr2;*.dng|"
           u"JPEG|*.jpg;*.jpeg;*.jpe|GIF|*.gif|UFO|*.ufo|BMP|*.bmp;*.dib|PNG|*.png|"
           u"TIFF|*.tif;*.tiff|WMF|*.wmf;*.emf|JPEG 2000|*.jpf;*.jpx;*.jp2;*.j2k;*.jpc;*.j2c|"
           u"Webp|*.webp|Raw|*.nef;*.crw;*cr2;*.dng|All Files(*.*)|*.*||";
}

}  // namespace velloran
