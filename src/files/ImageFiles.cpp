#include "files/ImageFiles.h"

#include <new>
#include <string>

#include "codecs/Bmp.h"
#include "codecs/Gif.h"
#include "codecs/Jpeg.h"
#include "codecs/Png.h"
#include "codecs/Tiff.h"
#include "codecs/Webp.h"
#include "core/DibImage.h"
#include "core/MappedFile.h"
#include "files/FileType.h"
#include "params/ParaBlock.h"
#include "text/Labels.h"
#include "text/Text.h"

namespace velloran {

namespace {

/// Runs a reader or writer; memory that runs out outside a library's adapter is a failure too.
template <typename Work>
bool FailWhenOutOfMemory(FileError* error, Work&& work) {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return FailContent(error, "out of memory");
    }
}

/// Pipes, devices and folders are told before any reader opens them.
bool RefuseUnlessPlainFile(const std::filesystem::path& path, FileError* error) {
    std::error_code code;
    const std::filesystem::file_status status = std::filesystem::status(path, code);
    if (std::filesystem::is_regular_file(status))
        return true;
    if (code)
        return FailContent(error, "cannot read: " + code.message());
    return FailContent(error, std::filesystem::is_directory(status)
                                  ? "cannot read: is a folder"
                                  : "cannot read: is no plain file");
}

/// The reason for a type that has no reader; a file that cannot even be opened says so instead.
bool FailWithoutReader(const std::filesystem::path& path, int type, FileError* error) {
    if (MappedFile file; !file.Open(path, error))
        return FailContent(error, "cannot be opened");
    if (type == kTypeUnknown)
        return FailContent(error, "not a picture of a known type");
    return FailContent(error,
                       "pictures of type " + std::string(FileTypeName(type)) + " cannot be read");
}

bool LoadByType(const std::filesystem::path& path, int type, CDibImage& image, FileError* error) {
    switch (type) {
        case kTypeJpeg:
            return LoadJpeg(path, image, GlobalBlock().GetPara(PARA_REVERSE_CMYK) != 0, error);
        case kTypeUfo:
            return LoadUfo(path, image, GlobalBlock().GetPara(PARA_REVERSE_CMYK) != 0, error);
        case kTypeGif:
            return LoadGif(path, image, error);
        case kTypeBmp:
            return LoadBmp(path, image, error);
        case kTypePng:
            return LoadPng(path, image, error);
        case kTypeTiff:
            return LoadTiff(path, image, error);
        case kTypeWebp:
            return LoadWebp(path, image, error);
        default:
            return FailWithoutReader(path, type, error);
    }
}

bool ReadInfoByType(const std::filesystem::path& path, int type, ImageInfo& info,
                    FileError* error) {
    using InfoReader = bool (*)(std::span<const std::uint8_t>, ImageInfo&, FileError*);
    InfoReader reader = nullptr;
    switch (type) {
        case kTypeJpeg:
            reader = ReadJpegInfo;
            break;
        case kTypeUfo:
            reader = ReadUfoInfo;
            break;
        case kTypeGif:
            reader = ReadGifInfo;
            break;
        case kTypeBmp:
            reader = ReadBmpInfo;
            break;
        case kTypePng:
            reader = ReadPngInfo;
            break;
        case kTypeTiff:
            reader = ReadTiffInfo;
            break;
        case kTypeWebp:
            reader = ReadWebpInfo;
            break;
        default:
            return FailWithoutReader(path, type, error);
    }
    MappedFile file;
    return file.Open(path, error) && reader(file.Bytes(), info, error);
}

bool SaveBmpAtDepth(const std::filesystem::path& path, CDibImage& image, int dpi, int colourIndex,
                    FileError* error) {
    image.SetXDpi(dpi);
    image.SetYDpi(dpi);
    if (colourIndex == kColorIndex565 || colourIndex == kColorIndex555)
        return SaveBmp16(path, image, /*is565=*/colourIndex == kColorIndex565, error);
    return SaveBmp(path, image, error);
}

}  // namespace

bool LoadImageFile(const std::filesystem::path& path, CDibImage& image, FileError* error,
                   LoadNotes*) {
    return FailWhenOutOfMemory(error, [&] {
        if (!RefuseUnlessPlainFile(path, error))
            return false;
        const int type = DetectFileType(path, 1);
        if (!LoadByType(path, type, image, error))
            return false;
        if (!image.IsValid())
            return FailContent(error, "no picture in the file");
        image.Source().sourceName = path;
        image.Source().sourceInfo = static_cast<std::uint32_t>(type);
        return true;
    });
}

bool ReadImageInfo(const std::filesystem::path& path, int& type, ImageInfo& info,
                   FileError* error) {
    return FailWhenOutOfMemory(error, [&] {
        type = DetectFileType(path, 1);
        return RefuseUnlessPlainFile(path, error) && ReadInfoByType(path, type, info, error);
    });
}

bool HasImageWriter(const std::filesystem::path& path) {
    switch (FileTypeOfExtension(path)) {
        case kTypeJpeg:
        case kTypeGif:
        case kTypeBmp:
        case kTypePng:
        case kTypeTiff:
        case kTypeJp2:
        case kTypeWebp:
            return true;
        default:
            return false;
    }
}

bool SaveImageFile(const std::filesystem::path& path, CDibImage& image, int quality, int dpi,
                   int colourIndex, bool cropGif, const CParaBlock& block, FileError* error) {
    if (!image.IsValid())
        return FailContent(error, "no picture to write");
    const bool transparent = block.GetPara(PARA_DECREASE_TRANSPARENT) != 0;
    return FailWhenOutOfMemory(error, [&] {
        switch (FileTypeOfExtension(path)) {
            case kTypeJpeg:
                return SaveJpeg(path, image, nullptr, quality, dpi, block, error);
            case kTypeBmp:
                return SaveBmpAtDepth(path, image, dpi, colourIndex, error);
            case kTypePng:
                return SavePng(path, image, dpi, transparent, error);
            case kTypeTiff:
                return SaveTiff(path, image, TiffCompressionFor(image), dpi, error);
            case kTypeGif:
                return SaveGif(path, image, transparent, cropGif, error);
            case kTypeWebp:
                return SaveWebp(path, image, quality, error);
            case kTypeJp2:
                return FailContent(error, "pictures of type JP2 cannot be written");
            default:
                return FailContent(error, ToUtf8(labels::kUnwritableType));
        }
    });
}

}  // namespace velloran
