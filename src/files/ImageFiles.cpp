#include "files/ImageFiles.h"

#include <array>
#include <new>
#include <optional>
#include <string>

#include "codecs/LoadNotes.h"
#include "core/DibImage.h"
#include "files/FileType.h"
#include "files/PageSniffer.h"
#include "io/AtomicFile.h"
#include "io/FileSource.h"
#include "io/SubSource.h"
#include "params/ParaBlock.h"
#include "text/Labels.h"
#include "text/Text.h"

namespace velloran {

namespace {

/// The reason for a type that has no reader.
bool FailWithoutReader(int type, FileError* error) {
    if (type == kTypeUnknown)
        return FailContent(error, "not a picture of a known type", FileReason::kKindNotRead);
    return FailContent(error,
                       "pictures of type " + std::string(FileTypeName(type)) + " cannot be read",
                       FileReason::kKindNotRead);
}

/// What a source holds: a picture that is known by its content or its name, or a page file.
class Picture {
 public:
    Picture(ByteSource& source, const std::filesystem::path& name)
        : source_(source), type_(DetectFileType(source, name)) {
        std::array<std::uint8_t, 512> head{};
        source.ReadAt(0, head);
        if (TypeOfHead(head) != kTypeUnknown || type_ == kTypeRaw)
            return;
        sniffed_ = SniffPage(source, name);
        if (!sniffed_.hasHead || sniffed_.kind != kKindPlain)
            return;
        payload_.emplace(source, sniffed_.payloadAt, sniffed_.payloadSize);
        type_ = DetectFileType(*payload_, {});
    }

    int Type() const { return type_; }

    bool Load(const LoadOptions& options, CDibImage& image, LoadNotes& notes, FileError* error) {
        if (sniffed_.hasHead)
            return LoadSniffedPage(source_, sniffed_, options, /*tryRepair=*/true, image, notes,
                                   error);
        const Format* format = FindFormat(type_);
        if (options.page != 1 && format != nullptr && !format->Has(Format::kSeveralPages))
            return FailContent(error, "the file holds one page", FileReason::kNoSuchPage);
        return IsReadable(format, error) && format->load(source_, options, image, notes, error);
    }

    bool ReadInfo(ImageInfo& info, LoadNotes* notes, FileError* error) {
        const Format* format = FindFormat(type_);
        if (!IsReadable(format, error))
            return false;
        ByteSource& source = payload_ ? static_cast<ByteSource&>(*payload_) : source_;
        return format->info(source, info, error) && (notes == nullptr || format->notes == nullptr ||
                                                     format->notes(source, *notes, error));
    }

 private:
    /// What is no picture is told by what it is.
    bool IsReadable(const Format* format, FileError* error) const {
        const bool isKnown = sniffed_.result == kSniffDone || sniffed_.result == kSniffUnknown;
        if (!isKnown)
            return FailSniffed(sniffed_, error);
        return (format != nullptr && format->load != nullptr) || FailWithoutReader(type_, error);
    }

    ByteSource& source_;
    int type_;
    SniffedPage sniffed_;
    std::optional<SubSource> payload_;
};

}  // namespace

bool LoadImageFrom(ByteSource& source, const std::filesystem::path& name,
                   const LoadOptions& options, CDibImage& image, LoadNotes& notes,
                   FileError* error) try {
    Picture picture(source, name);
    if (!source.FailWhenUnreadable(error))
        return false;
    if (!picture.Load(options, image, notes, error))
        return false;
    if (!image.IsValid())
        return FailContent(error, "no picture in the file", FileReason::kEmpty);
    image.Source().sourceName = name;
    image.Source().sourceInfo = static_cast<std::uint32_t>(picture.Type());
    return true;
} catch (const std::bad_alloc&) {  // the name's text
    return FailNoMemory(error);
}

bool LoadImageFile(const std::filesystem::path& path, CDibImage& image, FileError* error,
                   LoadNotes* notes) {
    LoadOptions options;
    options.reverseCmyk = GlobalBlock().GetPara(PARA_REVERSE_CMYK) != 0;
    LoadNotes own;
    FileSource source;
    return source.Open(path, error) &&
           LoadImageFrom(source, path, options, image, notes != nullptr ? *notes : own, error);
}

bool ReadImageInfo(const std::filesystem::path& path, int& type, ImageInfo& info, FileError* error,
                   LoadNotes* notes) {
    FileSource source;
    if (!source.Open(path, error)) {
        type = FileTypeOfExtension(path);
        return false;
    }
    Picture picture(source, path);
    type = picture.Type();
    return source.FailWhenUnreadable(error) && picture.ReadInfo(info, notes, error);
}

int CountPages(const std::filesystem::path& path) {
    FileSource source;
    if (!source.Open(path))
        return 1;
    const Format* format = FindFormat(DetectFileType(source, path));
    LoadNotes notes;
    const bool isCounted = format != nullptr && format->Has(Format::kSeveralPages) &&
                           format->notes != nullptr && format->notes(source, notes, nullptr);
    return isCounted ? notes.pictures : 1;
}

bool HasImageWriter(const std::filesystem::path& path) {
    const Format* format = FormatOfName(path.extension().native());
    return format != nullptr && format->IsSaveTarget();
}

bool SaveImageTo(ByteSink& sink, int type, CDibImage& image, const SaveOptions& options,
                 FileError* error) {
    const Format* format = FindFormat(type);
    if (format == nullptr || !format->IsSaveTarget())
        return FailContent(error, ToUtf8(labels::kUnwritableType), FileReason::kKindNotWritten);
    if (format->save == nullptr)
        return FailContent(error,
                           "pictures of type " + std::string(format->name) + " cannot be written",
                           FileReason::kKindNotWritten);
    return format->save(sink, image, options, error);
}

bool SaveImageFile(const std::filesystem::path& path, CDibImage& image, int quality, int dpi,
                   int colourIndex, bool cropGif, const CParaBlock& block, FileError* error) {
    SaveOptions options;
    options.quality = quality;
    options.dpi = dpi;
    options.colorIndex = colourIndex;
    options.cropGif = cropGif;
    options.transparentWhite = block.GetPara(PARA_DECREASE_TRANSPARENT) != 0;
    options.jp2Rate = GlobalBlock().GetPara(PARA_JP2_RATE);  // whichever block is saved with
    options.jpeg = JpegRulesOf(block);
    return SaveImageAs(path, image, options, error);
}

bool SaveImageAs(const std::filesystem::path& path, CDibImage& image, const SaveOptions& options,
                 FileError* error) try {
    if (!image.IsValid())
        return FailContent(error, "no picture to write", FileReason::kEmpty);
    const int type = FileTypeOfExtension(path);
    const Format* format = FindFormat(type);
    AtomicFile file(path);
    if (format != nullptr && format->save != nullptr && !file.Open(error))
        return false;
    return SaveImageTo(file, type, image, options, error) && file.Commit(error);
} catch (const std::bad_alloc&) {
    return FailNoMemory(error);
}

}  // namespace velloran
