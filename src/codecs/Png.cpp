#include "codecs/Png.h"

#include "codecs/DecodedPage.h"
#include "codecs/PngReader.h"
#include "codecs/PngWriter.h"
#include "io/AtomicFile.h"

namespace velloran {

bool LoadPng(const std::filesystem::path& path, CDibImage& image, FileError* error) {
    return LoadMapped(path, image, error, &LoadPngBytes);
}

bool LoadPngBytes(std::span<const std::uint8_t> bytes, CDibImage& image, FileError* error) {
    return FailWhenOutOfMemory(error, [&] {
        PngReader reader(bytes);
        CDibImage page;
        if (!reader.ReadHead(error) || !reader.ReadPage(page, error))
            return false;
        HandOver(page, reader.SourceBits(), page.GetXDpi(), page.GetYDpi(), image);
        return true;
    });
}

bool ReadPngInfo(std::span<const std::uint8_t> bytes, ImageInfo& info, FileError* error) {
    return FailWhenOutOfMemory(error, [&] {
        PngReader reader(bytes);
        if (!reader.ReadHead(error))
            return false;
        info = reader.Info();
        return true;
    });
}

bool SavePng(const std::filesystem::path& path, CDibImage& image, int dpi, bool grayTransparent,
             FileError* error) {
    if (!image.IsValid())
        return FailContent(error, "the image is empty");
    return FailWhenOutOfMemory(error, [&] {
        image.SetXDpi(dpi);
        image.SetYDpi(dpi);
        AtomicFile file(path);
        return file.Open(error) && WritePng(image, grayTransparent, file, error) &&
               file.Commit(error);
    });
}

}  // namespace velloran
