#include "codecs/Gif.h"

#include "codecs/DecodedPage.h"
#include "codecs/GifReader.h"
#include "codecs/GifWriter.h"
#include "io/AtomicFile.h"

namespace velloran {

bool LoadGif(const std::filesystem::path& path, CDibImage& image, FileError* error) {
    return LoadMapped(path, image, error, &LoadGifBytes);
}

bool LoadGifBytes(std::span<const std::uint8_t> bytes, CDibImage& image, FileError* error) {
    return FailWhenOutOfMemory(error, [&] {
        GifReader reader(bytes);
        CDibImage page;
        if (!reader.ReadHead(error) || !reader.ReadPage(page, error))
            return false;
        const int depth = page.GetBpp();
        HandOver(page, depth, 96, 96, image);
        return true;
    });
}

bool ReadGifInfo(std::span<const std::uint8_t> bytes, ImageInfo& info, FileError* error) {
    return FailWhenOutOfMemory(error, [&] {
        GifReader reader(bytes);
        if (!reader.ReadHead(error))
            return false;
        info = reader.Info();
        return true;
    });
}

bool SaveGif(const std::filesystem::path& path, const CDibImage& image, bool transparentBackground,
             bool tightFrame, FileError* error) {
    if (!image.IsValid())
        return FailContent(error, "the image is empty");
    constexpr int kMaxSide = 65535;
    if (image.GetWidth() > kMaxSide || image.GetHeight() > kMaxSide)
        return FailContent(error, "GIF holds at most 65535 pixels a side");
    return FailWhenOutOfMemory(error, [&] {
        const GifPicture picture = MakeGifPicture(image);
        const GifFrame frame =
            tightFrame ? TightFrameOf(picture) : GifFrame{0, 0, picture.width, picture.height};
        AtomicFile file(path);
        return file.Open(error) && WriteGif(picture, frame, transparentBackground, file, error) &&
               file.Commit(error);
    });
}

}  // namespace velloran
