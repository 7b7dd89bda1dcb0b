#include <webp/encode.h>
#include <webp/mux.h>

#include <algorithm>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "codecs/DecodedPage.h"
#include "codecs/EncodedPage.h"
#include "codecs/Metadata.h"
#include "codecs/Webp.h"
#include "core/DibImage.h"
#include "core/IndexRows.h"
#include "io/ByteSink.h"
#include "io/MemorySink.h"

namespace velloran {
namespace {

// Of 0..9: higher ones take several times as long for the last percents.
constexpr int kLosslessLevel = 4;

int WriteBytes(const std::uint8_t* data, std::size_t count, const WebPPicture* picture) {
    return static_cast<ByteSink*>(picture->custom_ptr)->Write(data, count) ? 1 : 0;
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

bool FailEncoding(WebPEncodingError code, FileError* error) {
    switch (code) {
        case VP8_ENC_ERROR_OUT_OF_MEMORY:
        case VP8_ENC_ERROR_BITSTREAM_OUT_OF_MEMORY:
            return FailNoMemory(error);
        case VP8_ENC_ERROR_PARTITION0_OVERFLOW:
        case VP8_ENC_ERROR_PARTITION_OVERFLOW:
        case VP8_ENC_ERROR_FILE_TOO_BIG:
            return FailContent(error, "the picture is too rich for WebP", FileReason::kTooLarge);
        default:
            return FailContent(error, "WebP coding failed");
    }
}

struct MuxDeleter {
    void operator()(WebPMux* mux) const { WebPMuxDelete(mux); }
};

WebPData DataOf(std::span<const std::uint8_t> bytes) {
    return {bytes.data(), bytes.size()};
}

/// Puts a coded picture and what travels along into one container.
bool WriteWith(const Metadata& metadata, std::span<const std::uint8_t> coded, ByteSink& sink,
               FileError* error) {
    const WebPData picture = DataOf(coded);
    const std::unique_ptr<WebPMux, MuxDeleter> mux(WebPMuxCreate(&picture, /*copy_data=*/0));
    if (mux == nullptr)
        return FailNoMemory(error);
    const std::pair<const char*, const Blob*> parts[] = {
        {"ICCP", &metadata.profile}, {"EXIF", &metadata.exif}, {"XMP ", &metadata.xmp}};
    for (const auto& [name, bytes] : parts) {
        const WebPData data = DataOf(*bytes);
        if (!bytes->empty() &&
            WebPMuxSetChunk(mux.get(), name, &data, /*copy_data=*/0) != WEBP_MUX_OK)
            return FailNoMemory(error);
    }
    WebPData whole{};
    WebPDataInit(&whole);
    if (WebPMuxAssemble(mux.get(), &whole) != WEBP_MUX_OK)
        return FailContent(error, "WebP coding failed");
    const bool isWritten = sink.Write(whole.bytes, whole.size);
    WebPDataClear(&whole);
    return isWritten || sink.FailWrite(error);
}

bool Code(const CDibImage& image, int quality, ByteSink& sink, FileError* error) {
    WebPConfig config;
    Picture holder;
    WebPPicture& picture = holder.picture;
    if (!holder.valid || !Configure(quality >= 100 || image.IsBW(), quality, config))
        return FailContent(error, "WebP coding failed");
    picture.use_argb = 1;
    picture.width = image.GetWidth();
    picture.height = image.GetHeight();
    if (WebPPictureAlloc(&picture) == 0)
        return FailNoMemory(error);
    std::vector<std::uint8_t> indices(
        image.GetBpp() <= 8 ? static_cast<std::size_t>(image.GetWidth()) : 0);
    for (int y = 0; y < image.GetHeight(); ++y)
        PlaceRow(image, y, indices.data(),
                 picture.argb + static_cast<std::ptrdiff_t>(y) * picture.argb_stride);
    picture.writer = WriteBytes;
    picture.custom_ptr = &sink;
    if (WebPEncode(&config, &picture) != 0)
        return true;
    return sink.HasFailed() ? sink.FailWrite(error) : FailEncoding(picture.error_code, error);
}

}  // namespace

bool SaveWebp(ByteSink& sink, const CDibImage& image, int quality, FileError* error) {
    return SaveWith(image, error, [&] {
        constexpr int kMaxSide = 16383;
        if (image.GetWidth() > kMaxSide || image.GetHeight() > kMaxSide)
            return FailContent(error, "WebP holds at most 16383 pixels a side",
                               FileReason::kTooLarge);
        const Metadata metadata = MetadataToWrite(image, /*fileHasColor=*/true);
        if (metadata.IsEmpty())
            return Code(image, quality, sink, error);
        MemorySink coded;
        return Code(image, quality, coded, error) &&
               WriteWith(metadata, coded.Bytes(), sink, error);
    });
}

}  // namespace velloran
