#include "files/ImageFiles.h"

#include <new>
#include <string>

#include "codecs/LoadNotes.h"
#include "core/DibImage.h"
#include "files/FileType.h"
#include "io/AtomicFile.h"
#include "io/FileSource.h"
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

}  // namespace

bool LoadImageFrom(ByteSource& source, const std::filesystem::path& name,
                   const LoadOptions& options, CDibImage& image, LoadNotes& notes,
                   FileError* error) try {
    const int type = DetectFileType(source, name);
    if (!source.FailWhenUnreadable(error))
        return false;
    const Format* format = FindFormat(type);
    if (format == nullptr || format->load == nullptr)
        return FailWithoutReader(type, error);
    if (!format->load(source, options, image, notes, error))
        return false;
    if (!image.IsValid())
        return FailContent(error, "no picture in the file", FileReason::kEmpty);
    image.Source().sourceName = name;
    image.Source().sourceInfo = static_cast<std::uint32_t>(type);
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

bool ReadImageInfo(const std::filesystem::path& path, int& type, ImageInfo& info,
                   FileError* error) {
    FileSource source;
    if (!source.Open(path, error)) {
        type = FileTypeOfExtension(path);
        return false;
    }
    type = DetectFileType(source, path);
    const Format* format = FindFormat(type);
    if (!source.FailWhenUnreadable(error))
        return false;
    if (format == nullptr || format->info == nullptr)
        return FailWithoutReader(type, error);
    return format->info(source, info, error);
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
