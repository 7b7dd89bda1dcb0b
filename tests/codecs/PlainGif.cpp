#include "PlainGif.h"

#include <gif_lib.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>

namespace velloran::test {
namespace {

struct Source {
    const std::string& file;
    std::size_t position = 0;
};

int Append(GifFileType* gif, const GifByteType* data, int count) {
    static_cast<std::string*>(gif->UserData)
        ->append(reinterpret_cast<const char*>(data), static_cast<std::size_t>(count));
    return count;
}

int Read(GifFileType* gif, GifByteType* to, int count) {
    auto* source = static_cast<Source*>(gif->UserData);
    const std::size_t given =
        std::min(static_cast<std::size_t>(count), source->file.size() - source->position);
    std::memcpy(to, source->file.data() + source->position, given);
    source->position += given;
    return static_cast<int>(given);
}

ColorMapObject* MapOf(const std::vector<Rgb>& palette) {
    if (palette.empty())
        return nullptr;
    ColorMapObject* map = GifMakeMapObject(static_cast<int>(palette.size()), nullptr);
    for (std::size_t i = 0; i < palette.size(); ++i)
        map->Colors[i] = {static_cast<GifByteType>(palette[i].red),
                          static_cast<GifByteType>(palette[i].green),
                          static_cast<GifByteType>(palette[i].blue)};
    return map;
}

std::vector<Rgb> PaletteOf(const ColorMapObject* map) {
    std::vector<Rgb> palette;
    for (int i = 0; map != nullptr && i < map->ColorCount; ++i)
        palette.push_back({map->Colors[i].Red, map->Colors[i].Green, map->Colors[i].Blue});
    return palette;
}

void PutFrame(GifFileType* gif, const PlainGifFrame& frame) {
    if (frame.control) {
        const GraphicsControlBlock control{frame.disposal, false, frame.delay, frame.transparent};
        GifByteType bytes[4];
        EGifGCBToExtension(&control, bytes);
        EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, 4, bytes);
    }
    ColorMapObject* map = MapOf(frame.localPalette);
    EGifPutImageDesc(gif, frame.left, frame.top, frame.width, frame.height, frame.interlaced, map);
    GifFreeMapObject(map);
    const auto putRow = [&](int y) {
        std::vector<GifPixelType> row;
        for (int x = 0; x < frame.width; ++x)
            row.push_back(static_cast<GifPixelType>(frame.At(x, y)));
        EGifPutLine(gif, row.data(), frame.width);
    };
    if (!frame.interlaced)
        for (int y = 0; y < frame.height; ++y)
            putRow(y);
    constexpr int kFirst[] = {0, 4, 2, 1}, kStep[] = {8, 8, 4, 2};
    for (int pass = 0; frame.interlaced && pass < 4; ++pass)
        for (int y = kFirst[pass]; y < frame.height; y += kStep[pass])
            putRow(y);
    // The library forgets its copy of the map when the next frame has none.
    GifFreeMapObject(gif->Image.ColorMap);
    gif->Image.ColorMap = nullptr;
}

}  // namespace

PlainGif GifOfNoise(int width, int height, int colors, unsigned seed) {
    std::mt19937 random(seed);
    PlainGif gif;
    gif.width = width;
    gif.height = height;
    for (int i = 0; i < colors; ++i)
        gif.palette.push_back({static_cast<int>(random() >> 24), static_cast<int>(random() >> 24),
                               static_cast<int>(random() >> 24)});
    PlainGifFrame frame;
    frame.width = width;
    frame.height = height;
    for (int i = 0; i < width * height; ++i)
        frame.indices.push_back(static_cast<int>((random() >> 8) % static_cast<unsigned>(colors)));
    gif.frames.push_back(frame);
    return gif;
}

std::string EncodeGif(const PlainGif& gif) {
    std::string file;
    int code = 0;
    GifFileType* writer = EGifOpen(&file, Append, &code);
    EGifSetGifVersion(writer, true);
    ColorMapObject* map = MapOf(gif.palette);
    EGifPutScreenDesc(writer, gif.width, gif.height, 8, gif.background, map);
    GifFreeMapObject(map);
    for (const PlainGifFrame& frame : gif.frames)
        PutFrame(writer, frame);
    EGifCloseFile(writer, &code);
    return file;
}

PlainGif DecodeGif(const std::string& file) {
    PlainGif gif;
    Source source{file};
    int code = 0;
    GifFileType* reader = DGifOpen(&source, Read, &code);
    if (reader == nullptr || DGifSlurp(reader) != GIF_OK) {
        ADD_FAILURE() << "no valid GIF";
        if (reader != nullptr)
            DGifCloseFile(reader, &code);
        return gif;
    }
    gif.version = file.substr(0, 6);
    gif.width = reader->SWidth;
    gif.height = reader->SHeight;
    gif.background = reader->SBackGroundColor;
    gif.palette = PaletteOf(reader->SColorMap);
    for (int i = 0; i < reader->ImageCount; ++i) {
        const SavedImage& saved = reader->SavedImages[i];
        PlainGifFrame frame;
        frame.left = saved.ImageDesc.Left;
        frame.top = saved.ImageDesc.Top;
        frame.width = saved.ImageDesc.Width;
        frame.height = saved.ImageDesc.Height;
        frame.interlaced = saved.ImageDesc.Interlace;
        frame.localPalette = PaletteOf(saved.ImageDesc.ColorMap);
        GraphicsControlBlock control{};
        frame.control = DGifSavedExtensionToGCB(reader, i, &control) == GIF_OK;
        frame.transparent = frame.control ? control.TransparentColor : -1;
        frame.disposal = control.DisposalMode;
        frame.delay = control.DelayTime;
        frame.indices.assign(saved.RasterBits, saved.RasterBits + frame.width * frame.height);
        gif.frames.push_back(frame);
    }
    DGifCloseFile(reader, &code);
    return gif;
}

}  // namespace velloran::test
