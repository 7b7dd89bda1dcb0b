#include "codecs/GifPlayer.h"

#include <algorithm>
#include <array>
#include <utility>

#include "codecs/DecodedPage.h"
#include "codecs/Gif.h"
#include "core/StepContext.h"

namespace velloran {
namespace {

constexpr std::int64_t kLzwRatio = 4096 * 8 / 12;  // a code of 12 bits stands for 4096 pixels
constexpr std::uint8_t kExtension = 0x21, kPicture = 0x2C;

/// Skips sub-blocks up to the empty one that ends them.
bool SkipBlocks(SourceReader& source) {
    std::uint8_t length = 0;
    do {
        if (source.Read(&length, 1) != 1 || source.Skip(length) != length)
            return false;
    } while (length != 0);
    return true;
}

/// Bytes of a colour table by the flags of its owner.
std::uint64_t TableBytes(std::uint8_t flags) {
    return (flags & 0x80) != 0 ? 6ULL << (flags & 7) : 0;
}

}  // namespace

int CountGifPictures(ByteSource& file) {
    SourceReader source(file);
    std::array<std::uint8_t, 13> head{};
    int pictures = 0;
    if (source.Read(head.data(), head.size()) != head.size())
        return 1;
    source.Skip(TableBytes(head[10]));
    std::uint8_t kind = 0;
    while (source.Read(&kind, 1) == 1) {
        std::array<std::uint8_t, 9> frame{};
        if (kind == kExtension) {
            if (source.Skip(1) != 1 || !SkipBlocks(source))
                break;
        } else if (kind == kPicture) {
            if (source.Read(frame.data(), frame.size()) != frame.size())
                break;
            ++pictures;
            source.Skip(TableBytes(frame[8]) + 1);
            if (!SkipBlocks(source))
                break;
        } else {
            break;
        }
    }
    return std::max(pictures, 1);
}

GifPlayer::~GifPlayer() {
    if (gif_ != nullptr)
        DGifCloseFile(gif_, nullptr);
}

int GifPlayer::Read(GifFileType* gif, GifByteType* to, int count) {
    auto* player = static_cast<GifPlayer*>(gif->UserData);
    return static_cast<int>(player->source_.Read(to, static_cast<std::size_t>(std::max(count, 0))));
}

bool GifPlayer::ReadHead(FileError* error) {
    pictures_ = CountGifPictures(file_);
    if (number_ < 1 || number_ > pictures_)
        return FailNoSuchPage(error, pictures_);
    int code = 0;
    gif_ = DGifOpen(this, &GifPlayer::Read, &code);
    if (gif_ == nullptr || gif_->SWidth < 1 || gif_->SHeight < 1)
        return FailDamaged(error, "not a whole GIF head");
    if (!IsAcceptableSize(gif_->SWidth, gif_->SHeight, 32))
        return FailContent(error, "the picture has no acceptable size", FileReason::kTooLarge);
    return true;
}

bool GifPlayer::ReadPage(CDibImage& page, LoadNotes& notes, FileError* error) {
    const int width = gif_->SWidth, height = gif_->SHeight;
    if (!IsPlausibleSize(std::int64_t{4} * width * height, source_.End(), kLzwRatio))
        return FailDamaged(error, "the file is too short for its picture");
    if (!CreatePage(width, height, 24, /*withAlpha=*/true, page, error))
        return false;
    WhitenRows(page, 0);
    std::fill_n(page.GetAlpha(), static_cast<std::size_t>(width) * height, std::uint8_t{0});
    const CancelToken cancel = CurrentCancel();
    for (int i = 1; i <= number_; ++i) {
        Frame frame;
        if (cancel.IsCancelled() || !FindFrame(frame))
            return FailDamaged(error, "the picture cannot be decoded");
        const bool isLast = i == number_;
        CDibImage before;
        if (!isLast && frame.disposal == DISPOSE_PREVIOUS) {
            before = page;
            if (!before.IsValid())
                return FailNoMemory(error);
        }
        if (!Draw(frame, page)) {
            if (!isLast)
                return FailDamaged(error, "the picture cannot be decoded");
            notes.NoteDamage("rows of the picture are missing");
        }
        if (isLast)
            break;
        if (frame.disposal == DISPOSE_PREVIOUS)
            page = std::move(before);
        else if (frame.disposal == DISPOSE_BACKGROUND)
            Clear(page);
    }
    notes.pictures = pictures_;
    page.SetXDpi(96);
    page.SetYDpi(96);
    return true;
}

/// The next picture's place, and how it is to be shown.
bool GifPlayer::FindFrame(Frame& frame) {
    for (;;) {
        GifRecordType type = UNDEFINED_RECORD_TYPE;
        if (DGifGetRecordType(gif_, &type) != GIF_OK || type == TERMINATE_RECORD_TYPE)
            return false;
        if (type == IMAGE_DESC_RECORD_TYPE)
            return DGifGetImageDesc(gif_) == GIF_OK;
        if (type != EXTENSION_RECORD_TYPE)
            continue;
        int code = 0;
        GifByteType* block = nullptr;
        if (DGifGetExtension(gif_, &code, &block) != GIF_OK)
            return false;
        while (block != nullptr) {
            GraphicsControlBlock control;
            if (code == GRAPHICS_EXT_FUNC_CODE &&
                DGifExtensionToGCB(block[0], block + 1, &control) == GIF_OK) {
                frame.transparent = control.TransparentColor;
                frame.disposal = control.DisposalMode;
            }
            if (DGifGetExtensionNext(gif_, &block) != GIF_OK)
                return false;
        }
    }
}

/// Draws what of the frame lies on the screen; false where it is not whole.
bool GifPlayer::Draw(const Frame& frame, CDibImage& page) {
    const GifImageDesc place = gif_->Image;
    const ColorMapObject* map = place.ColorMap != nullptr ? place.ColorMap : gif_->SColorMap;
    if (map == nullptr || place.Width < 1 || place.Height < 1)
        return false;
    constexpr std::array<std::pair<int, int>, 4> kPasses = {{{0, 8}, {4, 8}, {2, 4}, {1, 2}}};
    std::vector<GifPixelType> line(static_cast<std::size_t>(place.Width));
    for (std::size_t pass = 0; pass < (place.Interlace ? kPasses.size() : 1); ++pass) {
        const int first = place.Interlace ? kPasses[pass].first : 0;
        const int step = place.Interlace ? kPasses[pass].second : 1;
        for (int y = first; y < place.Height; y += step) {
            if (DGifGetLine(gif_, line.data(), place.Width) != GIF_OK)
                return false;
            if (place.Top + y < page.GetHeight())
                DrawLine(line, frame, *map, place.Top + y, page);
        }
    }
    return true;
}

void GifPlayer::DrawLine(const std::vector<GifPixelType>& line, const Frame& frame,
                         const ColorMapObject& map, int y, CDibImage& page) const {
    std::uint8_t* row = RowFromTop(page, y);
    std::uint8_t* alpha = AlphaRowFromTop(page, y);
    const int left = gif_->Image.Left;
    const int end = std::min(page.GetWidth(), left + gif_->Image.Width);
    for (int x = left; x < end; ++x) {
        const int index = line[static_cast<std::size_t>(x - left)];
        if (index == frame.transparent || index >= map.ColorCount)
            continue;
        const GifColorType& color = map.Colors[index];
        row[3 * x] = color.Blue;
        row[3 * x + 1] = color.Green;
        row[3 * x + 2] = color.Red;
        alpha[x] = 255;
    }
}

void GifPlayer::Clear(CDibImage& page) const {
    const GifImageDesc& place = gif_->Image;
    const int right = std::min(page.GetWidth(), place.Left + place.Width);
    const int bottom = std::min(page.GetHeight(), place.Top + place.Height);
    for (int y = place.Top; y < bottom && place.Left < right; ++y)
        std::fill(AlphaRowFromTop(page, y) + place.Left, AlphaRowFromTop(page, y) + right,
                  std::uint8_t{0});
}

bool LoadGifPage(ByteSource& source, int page, CDibImage& image, LoadNotes& notes,
                 FileError* error) {
    return page == 1 ? LoadGif(source, image, notes, error)
                     : LoadWith<GifPlayer>(source, image, notes, error, page);
}

bool ReadGifNotes(ByteSource& source, LoadNotes& notes, FileError* error) {
    return ReadFrom(source, error, [&](FileError*) {
        LoadNotes found;
        found.pictures = CountGifPictures(source);
        notes = std::move(found);
        return true;
    });
}

}  // namespace velloran
