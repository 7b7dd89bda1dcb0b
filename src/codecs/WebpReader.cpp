#include "codecs/WebpReader.h"

#include <webp/decode.h>
#include <webp/demux.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "codecs/DecodedPage.h"
#include "codecs/Webp.h"

namespace velloran {
namespace {

struct DemuxDeleter {
    void operator()(WebPDemuxer* demuxer) const { WebPDemuxDelete(demuxer); }
};
struct DecoderDeleter {
    void operator()(WebPIDecoder* decoder) const { WebPIDelete(decoder); }
};

/// Where the picture data lies, and where it goes.
struct Placement {
    std::span<const std::uint8_t> data;
    int left = 0, top = 0, width = 0, height = 0;
    bool hasAlpha = false;
};

bool ReadFeatures(std::span<const std::uint8_t> bytes, WebPBitstreamFeatures& features,
                  FileError* error) {
    const VP8StatusCode status = WebPGetFeatures(bytes.data(), bytes.size(), &features);
    if (status != VP8_STATUS_OK)
        return FailContent(error, "not a whole WebP head");
    if (!IsAcceptableSize(features.width, features.height, features.has_alpha != 0 ? 32 : 24))
        return FailContent(error, "the picture has no acceptable size");
    return true;
}

/// The first frame of an animation, as far as it is there.
bool FindFirstFrame(std::span<const std::uint8_t> bytes, Placement& frame, FileError* error) {
    const WebPData data{bytes.data(), bytes.size()};
    WebPDemuxState state = WEBP_DEMUX_PARSE_ERROR;
    const std::unique_ptr<WebPDemuxer, DemuxDeleter> demuxer(WebPDemuxPartial(&data, &state));
    WebPIterator iterator{};
    if (demuxer == nullptr || WebPDemuxGetFrame(demuxer.get(), 1, &iterator) == 0)
        return FailContent(error, "the animation has no whole frame");
    frame = {{iterator.fragment.bytes, iterator.fragment.size},
             iterator.x_offset,
             iterator.y_offset,
             iterator.width,
             iterator.height,
             true};
    WebPDemuxReleaseIterator(&iterator);  // the data belongs to `bytes`
    return true;
}

/// Decodes into rows `stride` bytes apart, downwards from `first`; returns the count of rows that
/// came whole.
int DecodeRows(const Placement& frame, WEBP_CSP_MODE mode, std::uint8_t* first, int stride) {
    WebPDecoderConfig config;
    if (WebPInitDecoderConfig(&config) == 0)
        return 0;
    config.output.colorspace = mode;
    config.output.is_external_memory = 1;
    config.output.u.RGBA.rgba = first;
    config.output.u.RGBA.stride = stride;
    config.output.u.RGBA.size = static_cast<std::size_t>(std::abs(static_cast<long>(stride))) *
                                static_cast<std::size_t>(frame.height);
    const std::unique_ptr<WebPIDecoder, DecoderDeleter> decoder(WebPIDecode(nullptr, 0, &config));
    if (decoder == nullptr)
        return 0;
    const VP8StatusCode status = WebPIUpdate(decoder.get(), frame.data.data(), frame.data.size());
    if (status == VP8_STATUS_OK)
        return frame.height;
    int rows = 0;
    if (WebPIDecGetRGB(decoder.get(), &rows, nullptr, nullptr, nullptr) == nullptr)
        return 0;
    return std::clamp(rows, 0, frame.height);
}

/// Splits pixels of four bytes into the page and its alpha plane.
void PlaceRows(const Placement& frame, const std::uint8_t* bgra, int rows, CDibImage& page) {
    for (int y = 0; y < rows; ++y) {
        std::uint8_t* row = RowFromTop(page, frame.top + y) + 3 * std::ptrdiff_t{frame.left};
        std::uint8_t* alpha = AlphaRowFromTop(page, frame.top + y) + frame.left;
        for (int x = 0; x < frame.width; ++x, bgra += 4, row += 3) {
            std::memcpy(row, bgra, 3);
            alpha[x] = bgra[3];
        }
    }
}

int DecodeWithAlpha(const Placement& frame, CDibImage& page) {
    const std::size_t rowBytes = static_cast<std::size_t>(frame.width) * 4;
    const PixelBuffer scratch = MakePixelBuffer(rowBytes * static_cast<std::size_t>(frame.height));
    const int rows = DecodeRows(frame, MODE_BGRA, scratch.get(), static_cast<int>(rowBytes));
    PlaceRows(frame, scratch.get(), rows, page);
    return rows;
}

void ClearCanvas(CDibImage& page) {
    WhitenRows(page, 0);
    std::memset(page.GetAlpha(), 0, static_cast<std::size_t>(page.GetWidth()) * page.GetHeight());
}

}  // namespace

bool ReadWebpInfo(std::span<const std::uint8_t> bytes, ImageInfo& info, FileError* error) {
    WebPBitstreamFeatures features;
    if (!ReadFeatures(bytes, features, error))
        return false;
    info = {};
    info.width = features.width;
    info.height = features.height;
    info.bitsPerPixel = features.has_alpha != 0 ? 32 : 24;
    return true;
}

bool ReadWebpPage(std::span<const std::uint8_t> bytes, CDibImage& page, FileError* error) {
    WebPBitstreamFeatures features;
    if (!ReadFeatures(bytes, features, error))
        return false;
    Placement frame{bytes, 0, 0, features.width, features.height, features.has_alpha != 0};
    const bool animated = features.has_animation != 0;
    if (animated && !FindFirstFrame(bytes, frame, error))
        return false;
    if (frame.left < 0 || frame.top < 0 || frame.width < 1 || frame.height < 1 ||
        frame.width > features.width - frame.left || frame.height > features.height - frame.top)
        return FailContent(error, "the frame lies outside of its canvas");
    if (!CreatePage(features.width, features.height, 24, frame.hasAlpha, page, error))
        return false;
    if (animated)
        ClearCanvas(page);
    const int rows = frame.hasAlpha ? DecodeWithAlpha(frame, page)
                                    : DecodeRows(frame, MODE_BGR, RowFromTop(page, 0),
                                                 -static_cast<int>(page.GetEffWidth()));
    if (rows == 0)
        return FailContent(error, "the picture cannot be decoded");
    if (rows < frame.height)
        WhitenRows(page, frame.top + rows);
    return true;
}

}  // namespace velloran
