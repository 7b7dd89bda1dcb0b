#include "codecs/Jpeg2000Reader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>
#include <vector>

#include "codecs/ByteOrder.h"
#include "codecs/ColorProfile.h"
#include "codecs/DecodedPage.h"
#include "codecs/ExifBlock.h"
#include "codecs/Jpeg2000.h"
#include "codecs/OpenJpeg.h"
#include "codecs/SampleDepth.h"
#include "codecs/Upright.h"
#include "core/Threads.h"
#include "io/ByteSource.h"

namespace velloran {
namespace {

using Color = Jp2Head::Color;

// Empty packets cost a bit each; pages of paper alone shrink so far.
constexpr std::int64_t kMaxRatio = 1 << 15;
constexpr std::int64_t kBytesOfTile = 14;  // its head alone
constexpr int kMostBits = 31;              // the library holds samples as 32-bit numbers

/// One component, read as 8-bit samples of the whole picture.
class Plane {
 public:
    Plane(const opj_image_t& image, const opj_image_comp_t& component)
        : image_(image), component_(component), scale_(static_cast<int>(component.prec)) {}

    bool IsUsable() const {
        return component_.data != nullptr && component_.w > 0 && component_.h > 0 &&
               component_.dx > 0 && component_.dy > 0;
    }

    /// Row y of the picture, `width` samples.
    void ReadRow(int y, int width, std::uint8_t* to) const {
        const std::uint32_t row = Place(image_.y0 + static_cast<std::uint32_t>(y), component_.dy,
                                        component_.y0, component_.h);
        const OPJ_INT32* samples = component_.data + static_cast<std::size_t>(row) * component_.w;
        const std::int32_t zero = component_.sgnd != 0 ? 1 << (component_.prec - 1) : 0;
        for (int x = 0; x < width; ++x) {
            const std::uint32_t column =
                component_.dx == 1 ? std::min(static_cast<std::uint32_t>(x), component_.w - 1)
                                   : Place(image_.x0 + static_cast<std::uint32_t>(x), component_.dx,
                                           component_.x0, component_.w);
            to[x] = scale_.To8Bits(std::int64_t{samples[column]} + zero);
        }
    }

 private:
    /// The sample that covers a place of the picture.
    static std::uint32_t Place(std::uint32_t at, std::uint32_t step, std::uint32_t first,
                               std::uint32_t count) {
        const std::uint32_t place = at / step;
        return place < first ? 0 : std::min(place - first, count - 1);
    }

    const opj_image_t& image_;
    const opj_image_comp_t& component_;
    SampleDepth scale_;
};

std::uint8_t Clamped(int value) {
    return static_cast<std::uint8_t>(std::clamp(value, 0, 255));
}

/// The equations of JFIF, which the standard takes over, with 16 bits behind the point.
void YccToBgr(std::uint8_t luma, std::uint8_t blueness, std::uint8_t redness, std::uint8_t* bgr) {
    constexpr int kHalf = 1 << 15;
    const int cb = blueness - 128, cr = redness - 128;
    bgr[0] = Clamped(luma + ((116130 * cb + kHalf) >> 16));
    bgr[1] = Clamped(luma - ((22554 * cb + 46802 * cr + kHalf) >> 16));
    bgr[2] = Clamped(luma + ((91881 * cr + kHalf) >> 16));
}

/// Which channels of a decoded picture mean what.
struct Channels {
    Color color = Color::kRgb;
    int colors = 3;  // 1, 3 or 4
    int alpha = -1;
};

Channels ChannelsOf(const opj_image_t& image, const Jp2Head& head) {
    Channels channels;
    const int count = static_cast<int>(image.numcomps);
    for (int i = 0; i < count && channels.alpha < 0; ++i)
        if (image.comps[i].alpha != 0)
            channels.alpha = i;
    // A bare code stream tells nothing of its channels: two are grey, four are colour, with alpha.
    if (!head.hasBoxes && (count == 2 || count == 4))
        channels.alpha = count - 1;
    const int colors = channels.alpha >= 0 ? channels.alpha : count;
    channels.color = head.color;
    if (head.color == Color::kCmyk && colors >= 4)
        channels.colors = 4;
    else if (colors < 3 || head.color == Color::kGray)
        channels.colors = 1;
    else if (head.color != Color::kYcc && image.comps[0].dx == 1 && image.comps[1].dx > 1)
        channels.color = Color::kYcc;  // nothing else is subsampled
    return channels;
}

void PlaceRow(const std::vector<Plane>& planes, const Channels& channels, int y,
              std::uint8_t* scratch, const InkConverter& inks, CDibImage& page) {
    const int width = page.GetWidth();
    std::uint8_t* row = RowFromTop(page, y);
    if (channels.colors == 1) {
        planes[0].ReadRow(y, width, row);
        return;
    }
    std::array<std::uint8_t*, 4> from{};
    for (int c = 0; c < channels.colors; ++c) {
        from[static_cast<std::size_t>(c)] = scratch + static_cast<std::ptrdiff_t>(c) * width;
        planes[static_cast<std::size_t>(c)].ReadRow(y, width, from[static_cast<std::size_t>(c)]);
    }
    if (channels.colors == 4) {
        std::uint8_t* joined = scratch + std::ptrdiff_t{4} * width;
        for (int x = 0; x < width; ++x)
            for (std::size_t c = 0; c < 4; ++c)
                joined[4 * x + static_cast<int>(c)] = from[c][x];
        inks.ConvertRow(joined, row, width);
        return;
    }
    const bool isYcc = channels.color == Color::kYcc;
    for (int x = 0; x < width; ++x, row += 3) {
        if (isYcc) {
            YccToBgr(from[0][x], from[1][x], from[2][x], row);
        } else {
            row[0] = from[2][x];
            row[1] = from[1][x];
            row[2] = from[0][x];
        }
    }
}

}  // namespace

bool Jpeg2000Reader::ReadHead(FileError* error) {
    if (!ReadJp2Head(source_, head_, error))
        return false;
    for (const Jp2Component& component : head_.components)
        if (component.bits > kMostBits || component.xStep < 1 || component.yStep < 1)
            return FailContent(error, "samples of this size are not read",
                               FileReason::kKindNotRead);
    if (head_.color == Color::kOther)
        return FailContent(error, "colours of this kind are not read", FileReason::kKindNotRead);
    if (!IsAcceptableSize(head_.width, head_.height, ColorCount() == 1 ? 16 : 32))
        return FailContent(error, "the picture has no acceptable size", FileReason::kTooLarge);
    orientation_ = ExifOrientation(head_.metadata.exif);
    return true;
}

/// Colours of the page, by the head alone.
int Jpeg2000Reader::ColorCount() const {
    if (head_.paletteEntries > 0)
        return head_.paletteColumns >= 3 ? 3 : 1;
    const std::size_t count = head_.components.size();
    return head_.color == Color::kGray || count < 3 ? 1 : 3;
}

int Jpeg2000Reader::SourceBits() const {
    int bits = 0;
    for (const Jp2Component& component : head_.components)
        bits += component.bits;
    return bits;
}

ImageInfo Jpeg2000Reader::Info() const {
    ImageInfo info;
    info.width = static_cast<int>(head_.width);
    info.height = static_cast<int>(head_.height);
    info.xDpi = head_.xDpi;
    info.yDpi = head_.yDpi;
    if (SwapsSides(orientation_)) {
        std::swap(info.width, info.height);
        std::swap(info.xDpi, info.yDpi);
    }
    info.bitsPerPixel = SourceBits();
    info.colorsUsed = head_.paletteEntries;
    info.gray = ColorCount() == 1;
    return info;
}

bool Jpeg2000Reader::IsPlausible() const {
    const std::int64_t pixels = head_.width * head_.height;
    const auto count = static_cast<std::int64_t>(head_.components.size());
    const auto bytes = static_cast<std::int64_t>(head_.streamEnd - head_.streamAt);
    return head_.tiles <= bytes / kBytesOfTile + 16 &&
           IsPlausibleSize(pixels * count, static_cast<std::uint64_t>(bytes), kMaxRatio,
                           pixels * count * static_cast<std::int64_t>(sizeof(OPJ_INT32)));
}

/// The library makes room for a tile's data before it looks whether there is so much: lengths that
/// lead out of the file are told as long as what is there. No coded data looks like the mark of a
/// tile, so that all of them are found wherever damage put them.
bool Jpeg2000Reader::LimitTileLengths(OpjInput& input, FileError* error) const {
    constexpr std::array<std::uint8_t, 4> kTileMark = {0xFF, 0x90, 0x00, 0x0A};
    constexpr std::ptrdiff_t kLengthAt = 6;
    const auto bytes = source_.AllBytes(error);
    if (!bytes)
        return false;
    const auto end = bytes->end();
    auto at = bytes->begin();
    while ((at = std::search(at, end, kTileMark.begin(), kTileMark.end())) != end &&
           end - at >= kLengthAt + 4) {
        const auto left = static_cast<std::uint64_t>(end - at);
        if (Big32(&at[kLengthAt]) > left)
            input.patches.emplace_back(at - bytes->begin() + kLengthAt,
                                       static_cast<std::uint32_t>(left));
        ++at;
    }
    return true;
}

bool Jpeg2000Reader::ReadPage(CDibImage& page, LoadNotes& notes, FileError* error) {
    if (!IsPlausible())
        return FailDamaged(error, "the file is too short for its picture");
    // With boxes the library wants the whole file, else the code stream alone.
    OpjInput input{&source_, 0, 0, source_.Size(), {}};
    if (!LimitTileLengths(input, error))
        return false;
    OpjMessage message;
    const OpjCodec codec(opj_create_decompress(head_.hasBoxes ? OPJ_CODEC_JP2 : OPJ_CODEC_J2K));
    const OpjStream stream = MakeOpjStream(input);
    if (codec == nullptr || stream == nullptr)
        return FailNoMemory(error);
    KeepMessages(codec.get(), message);
    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);
    opj_image_t* read = nullptr;
    if (opj_setup_decoder(codec.get(), &parameters) == 0 ||
        opj_decoder_set_strict_mode(codec.get(), OPJ_FALSE) == 0)
        return FailNoMemory(error);
    if (MaxThreads() > 1)
        opj_codec_set_threads(codec.get(), MaxThreads());
    const bool hasHead = opj_read_header(stream.get(), codec.get(), &read) != 0;
    const OpjImage image(read);
    const auto fail = [&] {
        return FailDamaged(
            error, message.text[0] != '\0' ? message.text : "the picture cannot be decoded");
    };
    if (!hasHead || image == nullptr || opj_decode(codec.get(), stream.get(), image.get()) == 0)
        return fail();
    const bool isWhole = opj_end_decompress(codec.get(), stream.get()) != 0;
    if (!Place(*image, page, error))
        return false;
    if (head_.isCut || !EndsWhole() || !isWhole)
        notes.NoteDamage("the code stream breaks off before its end");
    else if (message.text[0] != '\0')
        notes.NoteDamage(message.text);
    TurnUpright(page, orientation_);
    SetUprightDpi(page, orientation_, head_.xDpi, head_.yDpi);
    return true;
}

bool Jpeg2000Reader::Place(const opj_image& image, CDibImage& page, FileError* error) const {
    const Channels channels = ChannelsOf(image, head_);
    const auto count = static_cast<int>(image.numcomps);
    std::vector<Plane> planes;
    for (int i = 0; i < count; ++i)
        planes.emplace_back(image, image.comps[i]);
    if (count < channels.colors || image.x1 - image.x0 != static_cast<OPJ_UINT32>(head_.width) ||
        image.y1 - image.y0 != static_cast<OPJ_UINT32>(head_.height))
        return FailDamaged(error, "the picture is not as its head says");
    for (int i = 0; i < count; ++i)
        if ((i < channels.colors || i == channels.alpha) &&
            !planes[static_cast<std::size_t>(i)].IsUsable())
            return FailDamaged(error, "a component of the picture is missing");
    const bool isGray = channels.colors == 1;
    if (!CreatePage(static_cast<int>(head_.width), static_cast<int>(head_.height), isGray ? 8 : 24,
                    channels.alpha >= 0, page, error))
        return false;
    if (isGray)
        page.SetGrayPalette();
    const InkConverter inks(channels.colors == 4
                                ? std::span<const std::uint8_t>(head_.metadata.profile)
                                : std::span<const std::uint8_t>{},
                            /*invert=*/false);
    const int width = page.GetWidth();
    std::vector<std::uint8_t> scratch(static_cast<std::size_t>(width) * 8 * MaxThreads());
#pragma omp parallel for schedule( \
    static) if (IsWorthThreads(std::int64_t{width} * page.GetHeight()))
    for (int y = 0; y < page.GetHeight(); ++y) {
        PlaceRow(planes, channels, y,
                 scratch.data() + static_cast<std::ptrdiff_t>(ThreadNumber()) * 8 * width, inks,
                 page);
        if (channels.alpha >= 0)
            planes[static_cast<std::size_t>(channels.alpha)].ReadRow(y, width,
                                                                     AlphaRowFromTop(page, y));
    }
    return true;
}

/// Whether the code stream's end mark is there.
bool Jpeg2000Reader::EndsWhole() const {
    std::array<std::uint8_t, 2> last{};
    return head_.streamEnd >= head_.streamAt + 2 &&
           source_.ReadAt(head_.streamEnd - 2, last) == 2 && last[0] == 0xFF && last[1] == 0xD9;
}

void Jpeg2000Reader::ReadNotes(LoadNotes& notes) {
    notes.TakeMetadata(std::move(head_.metadata));
}

bool LoadJpeg2000(ByteSource& source, CDibImage& image, LoadNotes& notes, FileError* error) {
    return LoadWith<Jpeg2000Reader>(source, image, notes, error);
}

bool ReadJpeg2000Info(ByteSource& source, ImageInfo& info, FileError* error) {
    return InfoWith<Jpeg2000Reader>(source, info, error);
}

bool ReadJpeg2000Notes(ByteSource& source, LoadNotes& notes, FileError* error) {
    return NotesWith<Jpeg2000Reader>(source, notes, error);
}

}  // namespace velloran
