#include "codecs/GifWriter.h"

#include <gif_lib.h>

#include <algorithm>
#include <array>
#include <memory>
#include <span>

#include "codecs/DecodedPage.h"
#include "codecs/EncodedPage.h"
#include "codecs/Gif.h"
#include "codecs/GifPalette.h"
#include "core/IndexRows.h"
#include "io/ByteSink.h"

namespace velloran {
namespace {

int WriteBytes(GifFileType* gif, const GifByteType* data, int count) {
    auto* sink = static_cast<ByteSink*>(gif->UserData);
    return sink->Write(data, static_cast<std::size_t>(count)) ? count : 0;
}

std::uint8_t* RowOf(GifPicture& picture, int y) {
    return picture.indices.data() + static_cast<std::size_t>(y) * picture.width;
}

void TakePaletteImage(const CDibImage& image, GifPicture& picture) {
    std::array<bool, 256> used{};
    for (int y = 0; y < picture.height; ++y) {
        std::uint8_t* row = RowOf(picture, y);
        UnpackIndexRow(RowFromTop(image, y), picture.width, image.GetBpp(), row);
        for (int x = 0; x < picture.width; ++x)
            used[row[x]] = true;
    }
    std::array<std::uint8_t, 256> renumbered{};
    for (std::size_t i = 0; i < used.size(); ++i) {
        if (!used[i])
            continue;
        renumbered[i] = static_cast<std::uint8_t>(picture.colors.size());
        picture.colors.push_back(image.GetPalette()[i]);
    }
    for (std::uint8_t& index : picture.indices)
        index = renumbered[index];
    const int background = image.Fields().backgroundIndex;
    if (image.GetAlpha() == nullptr && background >= 0 && background < 256 &&
        used[static_cast<std::size_t>(background)])
        picture.transparent = renumbered[static_cast<std::size_t>(background)];
}

void TakeColorImage(const CDibImage& image, GifPicture& picture) {
    picture.colors = BuildGifPalette(image);
    NearestEntry nearest(picture.colors);
    for (int y = 0; y < picture.height; ++y) {
        const std::uint8_t* pixel = RowFromTop(image, y);
        std::uint8_t* row = RowOf(picture, y);
        for (int x = 0; x < picture.width; ++x, pixel += 3)
            row[x] = nearest.Of(pixel[0], pixel[1], pixel[2]);
    }
}

/// Frees the last index of a full table: its pixels take the nearest other colour.
void MergeNearestColors(GifPicture& picture) {
    const std::vector<PaletteEntry> others(picture.colors.begin(), picture.colors.end() - 1);
    const PaletteEntry last = picture.colors.back();
    const auto index = static_cast<std::uint8_t>(picture.colors.size() - 1);
    std::replace(picture.indices.begin(), picture.indices.end(), index,
                 NearestEntry(others).Of(last.blue, last.green, last.red));
    picture.colors.pop_back();
}

constexpr std::uint8_t kHalfOpaque = 128;

bool HasClearPixels(const CDibImage& image) {
    const std::uint8_t* alpha = image.GetAlpha();
    if (alpha == nullptr)
        return false;
    const std::size_t count = static_cast<std::size_t>(image.GetWidth()) * image.GetHeight();
    return std::any_of(alpha, alpha + count, [](std::uint8_t a) { return a < kHalfOpaque; });
}

/// Gives the clear pixels of the alpha plane an index of their own: a new one, or, of a full
/// table, one whose colour moves to its nearest neighbour.
void TakeAlpha(const CDibImage& image, GifPicture& picture) {
    if (picture.transparent < 0) {
        if (picture.colors.size() == 256)
            MergeNearestColors(picture);
        picture.transparent = static_cast<int>(picture.colors.size());
        picture.colors.push_back({255, 255, 255, 0});
    }
    const auto clear = static_cast<std::uint8_t>(picture.transparent);
    for (int y = 0; y < picture.height; ++y) {
        const std::uint8_t* alpha = AlphaRowFromTop(image, y);
        std::uint8_t* row = RowOf(picture, y);
        for (int x = 0; x < picture.width; ++x)
            if (alpha[x] < kHalfOpaque)
                row[x] = clear;
    }
}

struct MapDeleter {
    void operator()(ColorMapObject* map) const { GifFreeMapObject(map); }
};
using MapPointer = std::unique_ptr<ColorMapObject, MapDeleter>;

/// The next power of two in entries, at least 2; a single colour stands in both.
MapPointer MakeMap(const std::vector<PaletteEntry>& colors) {
    int count = 2;
    while (count < static_cast<int>(colors.size()))
        count *= 2;
    MapPointer map(GifMakeMapObject(count, nullptr));
    if (map == nullptr)
        return map;
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
        const PaletteEntry color = i < colors.size()    ? colors[i]
                                   : colors.size() == 1 ? colors[0]
                                                        : PaletteEntry{};
        map->Colors[i] = {color.red, color.green, color.blue};
    }
    return map;
}

/// `line` is scratch of the frame's width; nothing here may throw while giflib's file is open.
bool PutPicture(GifFileType* gif, const GifPicture& picture, const GifFrame& frame,
                bool transparentBackground, const ColorMapObject* map,
                std::span<GifPixelType> line) {
    const int first = picture.indices[0];
    EGifSetGifVersion(gif, true);
    if (EGifPutScreenDesc(gif, picture.width, picture.height, map->BitsPerPixel, first, map) !=
        GIF_OK)
        return false;
    GraphicsControlBlock control{};
    control.DisposalMode = DISPOSE_DO_NOT;
    control.TransparentColor = transparentBackground      ? first
                               : picture.transparent >= 0 ? picture.transparent
                                                          : NO_TRANSPARENT_COLOR;
    std::array<GifByteType, 4> bytes{};
    const std::size_t size = EGifGCBToExtension(&control, bytes.data());
    if (EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, static_cast<int>(size), bytes.data()) !=
            GIF_OK ||
        EGifPutImageDesc(gif, frame.left, frame.top, frame.width, frame.height, false, nullptr) !=
            GIF_OK)
        return false;
    for (int y = 0; y < frame.height; ++y) {
        // giflib masks the line that it is given, so it gets a copy.
        const std::uint8_t* row = picture.indices.data() +
                                  static_cast<std::size_t>(frame.top + y) * picture.width +
                                  frame.left;
        std::copy(row, row + frame.width, line.begin());
        if (EGifPutLine(gif, line.data(), frame.width) != GIF_OK)
            return false;
    }
    return true;
}

}  // namespace

GifPicture MakeGifPicture(const CDibImage& image) {
    GifPicture picture;
    picture.width = image.GetWidth();
    picture.height = image.GetHeight();
    picture.indices.resize(static_cast<std::size_t>(picture.width) * picture.height);
    if (image.GetBpp() <= 8)
        TakePaletteImage(image, picture);
    else
        TakeColorImage(image, picture);
    if (HasClearPixels(image))
        TakeAlpha(image, picture);
    return picture;
}

GifFrame TightFrameOf(const GifPicture& picture) {
    const std::uint8_t first = picture.indices[0];
    int left = picture.width, right = -1, top = picture.height, bottom = -1;
    const auto differs = [first](std::uint8_t index) { return index != first; };
    for (int y = 0; y < picture.height; ++y) {
        const std::uint8_t* row =
            picture.indices.data() + static_cast<std::size_t>(y) * picture.width;
        const std::uint8_t* end = row + picture.width;
        const std::uint8_t* found = std::find_if(row, end, differs);
        if (found == end)
            continue;
        left = std::min(left, static_cast<int>(found - row));
        int last = picture.width - 1;
        while (!differs(row[last]))
            --last;
        right = std::max(right, last);
        top = std::min(top, y);
        bottom = y;
    }
    if (right < 0)
        return {0, 0, 1, 1};
    return {left, top, right - left + 1, bottom - top + 1};
}

bool WriteGif(const GifPicture& picture, const GifFrame& frame, bool transparentBackground,
              ByteSink& sink, FileError* error) {
    const MapPointer map = MakeMap(picture.colors);
    std::vector<GifPixelType> line(static_cast<std::size_t>(frame.width));
    int code = 0;
    GifFileType* gif = map != nullptr ? EGifOpen(&sink, WriteBytes, &code) : nullptr;
    if (gif == nullptr)
        return FailNoMemory(error);
    bool done = PutPicture(gif, picture, frame, transparentBackground, map.get(), line);
    code = gif->Error;
    int closeCode = 0;
    if (EGifCloseFile(gif, &closeCode) != GIF_OK && done) {
        done = false;
        code = closeCode;
    }
    const char* text = GifErrorString(code);
    return done || FailCoding(sink, error, text != nullptr ? text : "GIF coding failed");
}

bool SaveGif(ByteSink& sink, const CDibImage& image, bool transparentBackground, bool tightFrame,
             FileError* error) {
    return SaveWith(image, error, [&] {
        constexpr int kMaxSide = 65535;
        if (image.GetWidth() > kMaxSide || image.GetHeight() > kMaxSide)
            return FailContent(error, "GIF holds at most 65535 pixels a side",
                               FileReason::kTooLarge);
        const GifPicture picture = MakeGifPicture(image);
        const GifFrame frame =
            tightFrame ? TightFrameOf(picture) : GifFrame{0, 0, picture.width, picture.height};
        return WriteGif(picture, frame, transparentBackground, sink, error);
    });
}

}  // namespace velloran
