#include "codecs/WebpReader.h"

#include <webp/demux.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "codecs/ByteOrder.h"
#include "codecs/DecodedPage.h"
#include "codecs/ExifBlock.h"
#include "codecs/Upright.h"
#include "codecs/Webp.h"
#include "core/StepContext.h"

namespace velloran {
namespace {

struct DemuxDeleter {
    void operator()(WebPDemuxer* demuxer) const { WebPDemuxDelete(demuxer); }
};
struct AnimationDeleter {
    void operator()(WebPAnimDecoder* decoder) const { WebPAnimDecoderDelete(decoder); }
};
struct DecoderDeleter {
    void operator()(WebPIDecoder* decoder) const { WebPIDelete(decoder); }
};

// A page of one colour costs a lossless file about a bit for a tile of 512 pixels; the lossy
// coding spends at least a bit on a block of 256.
constexpr std::int64_t kMaxRatio = 1 << 15;

void ClearCanvas(CDibImage& page) {
    WhitenRows(page, 0);
    std::memset(page.GetAlpha(), 0, static_cast<std::size_t>(page.GetWidth()) * page.GetHeight());
}

/// Where the container says that the file ends, 0 without one.
std::uint64_t StatedSize(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < 12 || std::memcmp(bytes.data(), "RIFF", 4) != 0)
        return 0;
    return 8 + (bytes[4] | std::uint64_t{bytes[5]} << 8 | std::uint64_t{bytes[6]} << 16 |
                std::uint64_t{bytes[7]} << 24);
}

}  // namespace

bool WebpReader::ReadHead(FileError* error) {
    // Most heads lie in the first bytes; behind a large profile or alpha they do not.
    std::vector<std::uint8_t> first(
        static_cast<std::size_t>(std::min<std::uint64_t>(source_.Size(), 4096)));
    first.resize(source_.ReadAt(0, first));
    VP8StatusCode status = WebPGetFeatures(first.data(), first.size(), &features_);
    if (status == VP8_STATUS_NOT_ENOUGH_DATA && first.size() < source_.Size()) {
        const auto bytes = source_.AllBytes(error);
        if (!bytes)
            return false;
        status = WebPGetFeatures(bytes->data(), bytes->size(), &features_);
    }
    if (status != VP8_STATUS_OK)
        return FailDamaged(error, "not a whole WebP head");
    if (!IsAcceptableSize(features_.width, features_.height, SourceBits()))
        return FailContent(error, "the picture has no acceptable size", FileReason::kTooLarge);
    ReadChunks();
    orientation_ = ExifOrientation(metadata_.exif);
    return true;
}

/// The chunks of the container: what travels along, and how many frames there are.
void WebpReader::ReadChunks() {
    constexpr std::uint64_t kContainer = 12, kHead = 8;
    std::array<std::uint8_t, kHead> head{};
    for (std::uint64_t at = kContainer; at < source_.Size() && source_.Size() - at >= kHead;) {
        if (source_.ReadAt(at, head) != head.size())
            return;
        const std::uint64_t length = Little32(head.data() + 4);
        const std::string_view name(reinterpret_cast<const char*>(head.data()), 4);
        frames_ += name == "ANMF" ? 1 : 0;
        Blob* part = name == "ICCP"   ? &metadata_.profile
                     : name == "EXIF" ? &metadata_.exif
                     : name == "XMP " ? &metadata_.xmp
                                      : nullptr;
        if (part != nullptr && part->empty() && length <= kMostMetadataBytes &&
            length <= source_.Size() - at - kHead) {
            part->resize(static_cast<std::size_t>(length));
            part->resize(source_.ReadAt(at + kHead, *part));
        }
        at += kHead + length + (length & 1);
    }
    const std::span<const std::uint8_t> exif = BareExif(metadata_.exif);
    metadata_.exif = Blob(exif.begin(), exif.end());
}

int WebpReader::CountPictures() const {
    return features_.has_animation != 0 ? std::max(frames_, 1) : 1;
}

ImageInfo WebpReader::Info() const {
    ImageInfo info;
    info.width = features_.width;
    info.height = features_.height;
    if (SwapsSides(orientation_))
        std::swap(info.width, info.height);
    info.bitsPerPixel = SourceBits();
    return info;
}

bool WebpReader::IsPlausible() const {
    const std::int64_t decoded =
        std::int64_t{features_.width} * features_.height * (SourceBits() / 8);
    return IsPlausibleSize(decoded, static_cast<std::size_t>(source_.Size()), kMaxRatio);
}

/// The first frame of an animation, as far as it is there.
bool WebpReader::FindFirstFrame(std::span<const std::uint8_t> bytes, Frame& frame, LoadNotes& notes,
                                FileError* error) const {
    const WebPData data{bytes.data(), bytes.size()};
    WebPDemuxState state = WEBP_DEMUX_PARSE_ERROR;
    const std::unique_ptr<WebPDemuxer, DemuxDeleter> demuxer(WebPDemuxPartial(&data, &state));
    WebPIterator iterator{};
    if (demuxer == nullptr || WebPDemuxGetFrame(demuxer.get(), 1, &iterator) == 0)
        return FailDamaged(error, "the animation has no whole frame");
    notes.pictures = static_cast<int>(WebPDemuxGetI(demuxer.get(), WEBP_FF_FRAME_COUNT));
    if (state != WEBP_DEMUX_DONE)
        notes.NoteDamage("frames of the animation are missing");
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
int WebpReader::DecodeRows(const Frame& frame, WEBP_CSP_MODE mode, std::uint8_t* first,
                           int stride) {
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
void WebpReader::PlaceRows(const Frame& frame, const std::uint8_t* bgra, int rows,
                           CDibImage& page) {
    for (int y = 0; y < rows; ++y) {
        std::uint8_t* row = RowFromTop(page, frame.top + y) + 3 * std::ptrdiff_t{frame.left};
        std::uint8_t* alpha = AlphaRowFromTop(page, frame.top + y) + frame.left;
        for (int x = 0; x < frame.width; ++x, bgra += 4, row += 3) {
            std::memcpy(row, bgra, 3);
            alpha[x] = bgra[3];
        }
    }
}

int WebpReader::DecodeWithAlpha(const Frame& frame, CDibImage& page) {
    const std::size_t rowBytes = static_cast<std::size_t>(frame.width) * 4;
    const PixelBuffer scratch = MakePixelBuffer(rowBytes * static_cast<std::size_t>(frame.height));
    const int rows = DecodeRows(frame, MODE_BGRA, scratch.get(), static_cast<int>(rowBytes));
    PlaceRows(frame, scratch.get(), rows, page);
    return rows;
}

/// Plays the animation up to the frame: frames tell only what changes.
bool WebpReader::ReadLaterFrame(std::span<const std::uint8_t> bytes, CDibImage& page,
                                LoadNotes& notes, FileError* error) const {
    if (number_ < 1 || number_ > CountPictures())
        return FailNoSuchPage(error, CountPictures());
    WebPAnimDecoderOptions options;
    const WebPData data{bytes.data(), bytes.size()};
    if (WebPAnimDecoderOptionsInit(&options) == 0)
        return FailNoMemory(error);
    options.color_mode = MODE_BGRA;
    const std::unique_ptr<WebPAnimDecoder, AnimationDeleter> decoder(
        WebPAnimDecoderNew(&data, &options));
    if (decoder == nullptr)
        return FailDamaged(error, "the animation cannot be decoded");
    std::uint8_t* canvas = nullptr;
    const CancelToken cancel = CurrentCancel();
    for (int i = 0; i < number_; ++i) {
        int time = 0;
        if (cancel.IsCancelled() || WebPAnimDecoderGetNext(decoder.get(), &canvas, &time) == 0)
            return FailDamaged(error, "the frame cannot be decoded");
    }
    if (!CreatePage(features_.width, features_.height, 24, /*withAlpha=*/true, page, error))
        return false;
    PlaceRows({{}, 0, 0, features_.width, features_.height, true}, canvas, features_.height, page);
    notes.pictures = CountPictures();
    page.SetXDpi(96);
    page.SetYDpi(96);
    return true;
}

bool WebpReader::ReadPage(CDibImage& page, LoadNotes& notes, FileError* error) {
    if (!IsPlausible())
        return FailDamaged(error, "the file is too short for its picture");
    const auto bytes = source_.AllBytes(error);
    if (!bytes)
        return false;
    if (number_ != 1)
        return ReadLaterFrame(*bytes, page, notes, error);
    Frame frame{*bytes, 0, 0, features_.width, features_.height, features_.has_alpha != 0};
    const bool animated = features_.has_animation != 0;
    if (animated && !FindFirstFrame(*bytes, frame, notes, error))
        return false;
    if (frame.left < 0 || frame.top < 0 || frame.width < 1 || frame.height < 1 ||
        frame.width > features_.width - frame.left || frame.height > features_.height - frame.top)
        return FailDamaged(error, "the frame lies outside of its canvas");
    if (!CreatePage(features_.width, features_.height, 24, frame.hasAlpha, page, error))
        return false;
    if (animated)
        ClearCanvas(page);
    const int rows = frame.hasAlpha ? DecodeWithAlpha(frame, page)
                                    : DecodeRows(frame, MODE_BGR, RowFromTop(page, 0),
                                                 -static_cast<int>(page.GetEffWidth()));
    if (rows == 0)
        return FailDamaged(error, "the picture cannot be decoded");
    if (rows < frame.height) {
        WhitenRows(page, frame.top + rows);
        notes.NoteDamage("rows of the picture are missing");
    }
    if (StatedSize(*bytes) > bytes->size())
        notes.NoteDamage("the file breaks off before its end");
    TurnUpright(page, orientation_);
    page.SetXDpi(96);
    page.SetYDpi(96);
    return true;
}

bool LoadWebp(ByteSource& source, CDibImage& image, LoadNotes& notes, FileError* error) {
    return LoadWith<WebpReader>(source, image, notes, error);
}

bool LoadWebpPage(ByteSource& source, int page, CDibImage& image, LoadNotes& notes,
                  FileError* error) {
    return LoadWith<WebpReader>(source, image, notes, error, page);
}

bool ReadWebpInfo(ByteSource& source, ImageInfo& info, FileError* error) {
    return InfoWith<WebpReader>(source, info, error);
}

bool ReadWebpNotes(ByteSource& source, LoadNotes& notes, FileError* error) {
    return NotesWith<WebpReader>(source, notes, error);
}

}  // namespace velloran
