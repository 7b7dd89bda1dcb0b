#include "codecs/Tiff.h"

#include "codecs/DecodedPage.h"
#include "codecs/TiffReader.h"
#include "codecs/TiffWriter.h"
#include "io/AtomicFile.h"

namespace velloran {

bool LoadTiff(const std::filesystem::path& path, CDibImage& image, FileError* error) {
    return LoadMapped(path, image, error, &LoadTiffBytes);
}

bool LoadTiffBytes(std::span<const std::uint8_t> bytes, CDibImage& image, FileError* error) {
    return FailWhenOutOfMemory(error, [&] {
        TiffReader reader(bytes);
        CDibImage page;
        if (!reader.ReadHead(error) || !reader.ReadPage(page, error))
            return false;
        HandOver(page, reader.SourceBits(), page.GetXDpi(), page.GetYDpi(), image);
        return true;
    });
}

bool ReadTiffInfo(std::span<const std::uint8_t> bytes, ImageInfo& info, FileError* error) {
    return FailWhenOutOfMemory(error, [&] {
        TiffReader reader(bytes);
        if (!reader.ReadHead(error))
            return false;
        info = reader.Info();
        return true;
    });
}

TiffCompression TiffCompressionFor(const CDibImage& image) {
    return image.IsBW() ? TiffCompression::kGroup4 : TiffCompression::kLzw;
}

bool SaveTiff(const std::filesystem::path& path, CDibImage& image, TiffCompression compression,
              int dpi, FileError* error) {
    if (!image.IsValid())
        return FailContent(error, "the image is empty");
    return FailWhenOutOfMemory(error, [&] {
        image.SetXDpi(dpi);
        image.SetYDpi(dpi);
        AtomicFile file(path);
        return file.Open(error) && WriteTiff(image, compression, file, error) && file.Commit(error);
    });
}

}  // namespace velloran
