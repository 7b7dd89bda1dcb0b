#include "codecs/GifReader.h"

#include <algorithm>
#include <span>

#include "codecs/DecodedPage.h"
#include "codecs/Gif.h"
#include "core/IndexRows.h"
#include "core/PaletteSearch.h"

namespace velloran {
namespace {

// A code of 12 bits stands for at most 4096 pixels.
constexpr std::int64_t kLzwRatio = 4096 * 8 / 12;

PaletteEntry EntryOf(const GifColorType& color) {
    return {color.Blue, color.Green, color.Red, 0};
}

int DepthFor(std::size_t entries) {
    return entries <= 2 ? 1 : (entries <= 16 ? 4 : 8);
}

/// Rows of an interlaced frame in the order of the file.
std::vector<int> RowOrder(int height, bool interlaced) {
    struct Pass {
        int first, step;
    };
    constexpr Pass kInterlaced[] = {{0, 8}, {4, 8}, {2, 4}, {1, 2}};
    constexpr Pass kPlain[] = {{0, 1}};
    const std::span<const Pass> passes =
        interlaced ? std::span<const Pass>(kInterlaced) : std::span<const Pass>(kPlain);
    std::vector<int> order;
    order.reserve(static_cast<std::size_t>(height));
    for (const Pass& pass : passes)
        for (int y = pass.first; y < height; y += pass.step)
            order.push_back(y);
    return order;
}

}  // namespace

GifReader::~GifReader() {
    if (gif_ != nullptr)
        DGifCloseFile(gif_, nullptr);
}

int GifReader::Read(GifFileType* gif, GifByteType* to, int count) {
    auto* reader = static_cast<GifReader*>(gif->UserData);
    return static_cast<int>(reader->source_.Read(to, static_cast<std::size_t>(std::max(count, 0))));
}

bool GifReader::Fail(FileError* error) const {
    const char* text = GifErrorString(gif_ != nullptr ? gif_->Error : openError_);
    return FailDamaged(error, text != nullptr ? text : "not a whole GIF picture");
}

bool GifReader::ReadHead(FileError* error) {
    gif_ = DGifOpen(this, &GifReader::Read, &openError_);
    if (gif_ == nullptr || !FindPicture())
        return Fail(error);
    // Screens smaller than their frame exist; the page then takes the frame in.
    const GifImageDesc& frame = gif_->Image;
    width_ = std::max<int>(gif_->SWidth, frame.Left + frame.Width);
    height_ = std::max<int>(gif_->SHeight, frame.Top + frame.Height);
    if (frame.Width < 1 || frame.Height < 1 || !IsAcceptableSize(width_, height_, 8))
        return FailContent(error, "the picture has no acceptable size", FileReason::kTooLarge);
    if (!TakePalette())
        return FailDamaged(error, "the picture has no colour table");
    return true;
}

bool GifReader::FindPicture() {
    for (;;) {
        GifRecordType type = UNDEFINED_RECORD_TYPE;
        if (DGifGetRecordType(gif_, &type) != GIF_OK)
            return false;
        if (type == IMAGE_DESC_RECORD_TYPE)
            return DGifGetImageDesc(gif_) == GIF_OK;
        if (type == TERMINATE_RECORD_TYPE)
            return false;
        if (type == EXTENSION_RECORD_TYPE && !TakeExtension())
            return false;
    }
}

bool GifReader::TakeExtension() {
    int code = 0;
    GifByteType* block = nullptr;  // its length, then its bytes
    if (DGifGetExtension(gif_, &code, &block) != GIF_OK)
        return false;
    while (block != nullptr) {
        GraphicsControlBlock control;
        if (code == GRAPHICS_EXT_FUNC_CODE &&
            DGifExtensionToGCB(block[0], block + 1, &control) == GIF_OK)
            transparent_ = control.TransparentColor;
        if (DGifGetExtensionNext(gif_, &block) != GIF_OK)
            return false;
    }
    return true;
}

bool GifReader::TakePalette() {
    const ColorMapObject* map =
        gif_->Image.ColorMap != nullptr ? gif_->Image.ColorMap : gif_->SColorMap;
    if (map == nullptr || map->ColorCount < 1)
        return false;
    fileEntries_ = map->ColorCount;
    for (int i = 0; i < map->ColorCount; ++i)
        palette_.push_back(EntryOf(map->Colors[i]));
    if (transparent_ >= map->ColorCount)
        transparent_ = -1;
    return true;
}

ImageInfo GifReader::Info() const {
    ImageInfo info;
    info.width = width_;
    info.height = height_;
    info.colorsUsed = fileEntries_;
    while (1 << info.bitsPerPixel < fileEntries_)
        ++info.bitsPerPixel;
    info.gray = fileEntries_ == 256;
    for (int i = 0; i < fileEntries_; ++i) {
        const auto level = static_cast<std::uint8_t>(i);
        info.gray = info.gray &&
                    palette_[static_cast<std::size_t>(i)] == PaletteEntry{level, level, level, 0};
    }
    return info;
}

/// The palette index that lies around the frame.
int GifReader::IndexAround() {
    if (transparent_ >= 0)
        return transparent_;
    const ColorMapObject* screen = gif_->SColorMap;
    const int background = gif_->SBackGroundColor;
    if (screen != nullptr && background < screen->ColorCount) {
        if (gif_->Image.ColorMap == nullptr)
            return background;
        return IndexOfColor(EntryOf(screen->Colors[background]));
    }
    return IndexOfColor({255, 255, 255, 0});
}

/// An equal entry, a new one while there is room, else the nearest.
int GifReader::IndexOfColor(const PaletteEntry& color) {
    const auto equal = std::find(palette_.begin(), palette_.end(), color);
    if (equal != palette_.end())
        return static_cast<int>(equal - palette_.begin());
    if (palette_.size() < 256) {
        palette_.push_back(color);
        return static_cast<int>(palette_.size()) - 1;
    }
    return NearestIndex(palette_, color);
}

bool GifReader::ReadPage(CDibImage& page, LoadNotes& notes, FileError* error) {
    const GifImageDesc& frame = gif_->Image;
    if (!IsPlausibleSize(static_cast<std::int64_t>(width_) * height_, source_.End(), kLzwRatio))
        return FailDamaged(error, "the file is too short for its picture");
    const bool covers = frame.Width == width_ && frame.Height == height_;
    const int around = covers ? 0 : IndexAround();
    if (!CreatePage(width_, height_, DepthFor(palette_.size()), false, page, error))
        return false;
    std::copy(palette_.begin(), palette_.end(), page.GetPalette());
    page.Fields().backgroundIndex = transparent_;
    pageBits_ = page.GetBpp();
    page.SetXDpi(96);
    page.SetYDpi(96);
    const int rows = DecodeRows(page, static_cast<std::uint8_t>(around));
    if (rows == 0)
        return Fail(error);
    if (rows < frame.Height)
        notes.NoteDamage("rows of the picture are missing");
    else if (!CountPictures(notes.pictures))
        notes.NoteDamage("the file breaks off behind its first picture");
    return true;
}

/// Skips sub-blocks up to the empty one that ends them.
bool GifReader::SkipBlocks() {
    std::uint8_t length = 0;
    do {
        if (source_.Read(&length, 1) != 1 || source_.Skip(length) != length)
            return false;
    } while (length != 0);
    return true;
}

/// Walks over what follows the first picture, which giflib read to its last byte. False when the
/// file ends without saying so.
bool GifReader::CountPictures(int& pictures) {
    constexpr std::uint8_t kExtension = 0x21, kPicture = 0x2C;
    std::uint8_t kind = 0;
    while (source_.Read(&kind, 1) == 1) {
        std::uint8_t head[9];
        if (kind == kExtension) {
            if (source_.Read(head, 1) != 1 || !SkipBlocks())
                return false;
        } else if (kind == kPicture) {
            if (source_.Read(head, 9) != 9)
                return false;
            const std::uint64_t table = (head[8] & 0x80) != 0 ? 6ULL << (head[8] & 7) : 0;
            if (source_.Skip(table + 1) != table + 1 || !SkipBlocks())
                return false;
            ++pictures;
        } else {
            return true;  // the end mark, or what readers take for it
        }
    }
    return false;
}

/// Returns the count of the frame's rows that the file holds whole; the others become white.
int GifReader::DecodeRows(CDibImage& page, std::uint8_t around) {
    const GifImageDesc& frame = gif_->Image;
    std::vector<std::uint8_t> line(static_cast<std::size_t>(width_), around);
    const std::span<std::uint8_t> inFrame(line.data() + frame.Left,
                                          static_cast<std::size_t>(frame.Width));
    for (int y = 0; y < height_; ++y)
        PackIndexRow(line.data(), width_, page.GetBpp(), RowFromTop(page, y));
    const std::vector<int> order = RowOrder(frame.Height, frame.Interlace);
    std::size_t done = 0;
    while (done < order.size() && DGifGetLine(gif_, inFrame.data(), frame.Width) == GIF_OK) {
        for (std::uint8_t& index : inFrame)
            if (index >= palette_.size())
                index = 0;
        PackIndexRow(line.data(), width_, page.GetBpp(), RowFromTop(page, frame.Top + order[done]));
        ++done;
    }
    if (done == 0)
        return 0;
    std::fill(inFrame.begin(), inFrame.end(), static_cast<std::uint8_t>(NearestToWhite(palette_)));
    for (std::size_t i = done; i < order.size(); ++i)
        PackIndexRow(line.data(), width_, page.GetBpp(), RowFromTop(page, frame.Top + order[i]));
    return static_cast<int>(done);
}

bool LoadGif(ByteSource& source, CDibImage& image, LoadNotes& notes, FileError* error) {
    return LoadWith<GifReader>(source, image, notes, error);
}

bool ReadGifInfo(ByteSource& source, ImageInfo& info, FileError* error) {
    return InfoWith<GifReader>(source, info, error);
}

}  // namespace velloran
