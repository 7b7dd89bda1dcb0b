#include "codecs/Webp.h"

#include "codecs/DecodedPage.h"
#include "codecs/WebpReader.h"
#include "codecs/WebpWriter.h"
#include "io/AtomicFile.h"

namespace velloran {

bool LoadWebp(const std::filesystem::path& path, CDibImage& image, FileError* error) {
    return LoadMapped(path, image, error, &LoadWebpBytes);
}

bool LoadWebpBytes(std::span<const std::uint8_t> bytes, CDibImage& image, FileError* error) {
    return FailWhenOutOfMemory(error, [&] {
        CDibImage page;
        ImageInfo info;
        if (!ReadWebpInfo(bytes, info, error) || !ReadWebpPage(bytes, page, error))
            return false;
        HandOver(page, info.bitsPerPixel, info.xDpi, info.yDpi, image);
        return true;
    });
}

bool SaveWebp(const std::filesystem::path& path, const CDibImage& image, int quality,
              FileError* error) {
    if (!image.IsValid())
        return FailContent(error, "the image is empty");
    if (image.GetWidth() > kMaxWebpSide || image.GetHeight() > kMaxWebpSide)
        return FailContent(error, "WebP holds at most 16383 pixels a side");
    return FailWhenOutOfMemory(error, [&] {
        AtomicFile file(path);
        return file.Open(error) && WriteWebp(image, quality, file, error) && file.Commit(error);
    });
}

}  // namespace velloran
