#include "codecs/WebpWriter.h"

#include <webp/encode.h>

#include <algorithm>
#include <vector>

#include "codecs/DecodedPage.h"
#include "core/DibImage.h"
#include "core/IndexRows.h"
#include "io/AtomicFile.h"

namespace velloran {
namespace {

// Of 0..9: higher ones take several times as long for the last percents.
constexpr int kLosslessLevel = 4;

struct WebpSink {
    AtomicFile* file;
    bool failed = false;
};

int WriteBytes(const std::uint8_t* data, std::size_t count, const WebPPicture* picture) {
    auto* sink = static_cast<WebpSink*>(picture->custom_ptr);
    if (!sink->file->Write(data, count))
        sink->failed = true;
    return sink->failed ? 0 : 1;
}

bool Configure(bool lossless, int quality, WebPConfig& config) {
    if (WebPConfigPreset(&config, WEBP_PRESET_PICTURE,
                         static_cast<float>(std::clamp(quality, 0, 100))) == 0)
        return false;
    if (lossless) {
        if (WebPConfigLosslessPreset(&config, kLosslessLevel) == 0)
            return false;
        config.exact = 1;  // colours under clear pixels stay too
    }
    return WebPValidateConfig(&config) != 0;
}

std::uint32_t Opaque(const PaletteEntry& entry) {
    return 0xFF000000u | static_cast<std::uint32_t>(entry.red) << 16 |
           static_cast<std::uint32_t>(entry.green) << 8 | entry.blue;
}

/// Row y of the image as alpha, red, green, blue.
void PlaceRow(const CDibImage& image, int y, std::uint8_t* indices, std::uint32_t* out) {
    const std::uint8_t* row = RowFromTop(image, y);
    const int width = image.GetWidth();
    if (image.GetBpp() <= 8) {
        UnpackIndexRow(row, width, image.GetBpp(), indices);
        for (int x = 0; x < width; ++x)
            out[x] = Opaque(image.GetPalette()[indices[x]]);
    } else {
        for (int x = 0; x < width; ++x, row += 3)
            out[x] = Opaque({row[0], row[1], row[2], 0});
    }
    if (image.GetAlpha() == nullptr)
        return;
    const std::uint8_t* alpha = AlphaRowFromTop(image, y);
    for (int x = 0; x < width; ++x)
        out[x] = (out[x] & 0x00FFFFFFu) | static_cast<std::uint32_t>(alpha[x]) << 24;
}

/// A picture of the library, freed with it.
struct Picture {
    WebPPicture picture;
    bool valid = WebPPictureInit(&picture) != 0;
    Picture() = default;
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;
    ~Picture() {
        if (valid)
            WebPPictureFree(&picture);
    }
};

const char* TextOf(WebPEncodingError code) {
    switch (code) {
        case VP8_ENC_ERROR_OUT_OF_MEMORY:
        case VP8_ENC_ERROR_BITSTREAM_OUT_OF_MEMORY:
            return "out of memory";
        case VP8_ENC_ERROR_PARTITION0_OVERFLOW:
        case VP8_ENC_ERROR_PARTITION_OVERFLOW:
        case VP8_ENC_ERROR_FILE_TOO_BIG:
            return "the picture is too rich for WebP";
        default:
            return "WebP coding failed";
    }
}

}  // namespace

bool WriteWebp(const CDibImage& image, int quality, AtomicFile& file, FileError* error) {
    WebPConfig config;
    Picture holder;
    WebPPicture& picture = holder.picture;
    if (!holder.valid || !Configure(quality >= 100 || image.IsBW(), quality, config))
        return FailContent(error, "WebP coding failed");
    picture.use_argb = 1;
    picture.width = image.GetWidth();
    picture.height = image.GetHeight();
    if (WebPPictureAlloc(&picture) == 0)
        return FailContent(error, "out of memory");
    std::vector<std::uint8_t> indices(
        image.GetBpp() <= 8 ? static_cast<std::size_t>(image.GetWidth()) : 0);
    for (int y = 0; y < image.GetHeight(); ++y)
        PlaceRow(image, y, indices.data(),
                 picture.argb + static_cast<std::ptrdiff_t>(y) * picture.argb_stride);
    WebpSink sink{&file};
    picture.writer = WriteBytes;
    picture.custom_ptr = &sink;
    if (WebPEncode(&config, &picture) != 0)
        return true;
    // The file kept the reason of a failed write and tells it now.
    return sink.failed ? file.Commit(error) : FailContent(error, TextOf(picture.error_code));
}

}  // namespace velloran
