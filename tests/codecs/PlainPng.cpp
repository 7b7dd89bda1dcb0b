#include "PlainPng.h"

#include <gtest/gtest.h>
#include <png.h>

#include <cstring>
#include <random>

namespace velloran::test {
namespace {

struct Source {
    const std::string& file;
    std::size_t position = 0;
};

void Append(png_structp png, png_bytep data, std::size_t count) {
    static_cast<std::string*>(png_get_io_ptr(png))
        ->append(reinterpret_cast<const char*>(data), count);
}

void Read(png_structp png, png_bytep to, std::size_t count) {
    auto* source = static_cast<Source*>(png_get_io_ptr(png));
    if (count > source->file.size() - source->position)
        png_error(png, "end of file");
    std::memcpy(to, source->file.data() + source->position, count);
    source->position += count;
}

std::vector<std::uint8_t> PackRow(const PlainPng& png, int y) {
    const int count = png.width * png.Channels();
    std::vector<std::uint8_t> row(static_cast<std::size_t>(count * png.bitDepth + 7) / 8);
    for (int i = 0; i < count; ++i) {
        const int sample = png.samples[static_cast<std::size_t>(y * count + i)];
        if (png.bitDepth == 16) {
            row[static_cast<std::size_t>(2 * i)] = static_cast<std::uint8_t>(sample >> 8);
            row[static_cast<std::size_t>(2 * i + 1)] = static_cast<std::uint8_t>(sample);
        } else {
            const int bit = i * png.bitDepth;
            row[static_cast<std::size_t>(bit / 8)] |=
                static_cast<std::uint8_t>(sample << (8 - png.bitDepth - bit % 8));
        }
    }
    return row;
}

void UnpackRow(const std::vector<std::uint8_t>& row, int y, PlainPng& png) {
    const int count = png.width * png.Channels();
    for (int i = 0; i < count; ++i) {
        const int bit = i * png.bitDepth;
        int sample = row[static_cast<std::size_t>(bit / 8)];
        if (png.bitDepth == 16)
            sample = sample << 8 | row[static_cast<std::size_t>(bit / 8 + 1)];
        else
            sample = sample >> (8 - png.bitDepth - bit % 8) & ((1 << png.bitDepth) - 1);
        png.samples[static_cast<std::size_t>(y * count + i)] = sample;
    }
}

void SetChunks(png_structp writer, png_infop info, const PlainPng& png) {
    std::vector<png_color> palette;
    for (const Rgb& entry : png.palette)
        palette.push_back({static_cast<png_byte>(entry.red), static_cast<png_byte>(entry.green),
                           static_cast<png_byte>(entry.blue)});
    if (!palette.empty())
        png_set_PLTE(writer, info, palette.data(), static_cast<int>(palette.size()));
    const std::vector<png_byte> alpha(png.paletteAlpha.begin(), png.paletteAlpha.end());
    png_color_16 clear{};
    if (png.transparent.size() == 1)
        clear.gray = static_cast<png_uint_16>(png.transparent[0]);
    if (png.transparent.size() == 3) {
        clear.red = static_cast<png_uint_16>(png.transparent[0]);
        clear.green = static_cast<png_uint_16>(png.transparent[1]);
        clear.blue = static_cast<png_uint_16>(png.transparent[2]);
    }
    if (!alpha.empty())
        png_set_tRNS(writer, info, alpha.data(), static_cast<int>(alpha.size()), nullptr);
    else if (!png.transparent.empty())
        png_set_tRNS(writer, info, nullptr, 1, &clear);
    if (png.xPerMeter != 0)
        png_set_pHYs(writer, info, png.xPerMeter, png.yPerMeter,
                     png.meters ? PNG_RESOLUTION_METER : PNG_RESOLUTION_UNKNOWN);
}

void GetChunks(png_structp reader, png_infop info, PlainPng& png) {
    png_colorp palette = nullptr;
    int count = 0;
    if (png_get_PLTE(reader, info, &palette, &count) != 0)
        for (int i = 0; i < count; ++i)
            png.palette.push_back({palette[i].red, palette[i].green, palette[i].blue});
    png_bytep alpha = nullptr;
    png_color_16p clear = nullptr;
    if (png_get_tRNS(reader, info, &alpha, &count, &clear) != 0) {
        if (png.colorType == PNG_COLOR_TYPE_PALETTE)
            png.paletteAlpha.assign(alpha, alpha + count);
        else if (png.colorType == PNG_COLOR_TYPE_GRAY)
            png.transparent = {clear->gray};
        else
            png.transparent = {clear->red, clear->green, clear->blue};
    }
    png_uint_32 x = 0, y = 0;
    int unit = 0;
    if (png_get_pHYs(reader, info, &x, &y, &unit) != 0) {
        png.xPerMeter = x;
        png.yPerMeter = y;
        png.meters = unit == PNG_RESOLUTION_METER;
    }
}

}  // namespace

int PlainPng::Channels() const {
    switch (colorType) {
        case PNG_COLOR_TYPE_GRAY_ALPHA:
            return 2;
        case PNG_COLOR_TYPE_RGB:
            return 3;
        case PNG_COLOR_TYPE_RGB_ALPHA:
            return 4;
        default:
            return 1;
    }
}

PlainPng PngOfNoise(int width, int height, int bitDepth, int colorType, unsigned seed) {
    PlainPng png;
    png.width = width;
    png.height = height;
    png.bitDepth = bitDepth;
    png.colorType = colorType;
    std::mt19937 random(seed);
    if (colorType == PNG_COLOR_TYPE_PALETTE)
        for (int i = 0; i < 1 << bitDepth; ++i)
            png.palette.push_back({static_cast<int>(random() >> 24),
                                   static_cast<int>(random() >> 24),
                                   static_cast<int>(random() >> 24)});
    png.samples.resize(static_cast<std::size_t>(width * height * png.Channels()));
    for (int& sample : png.samples)
        sample = static_cast<int>(random() >> (32 - bitDepth));
    return png;
}

std::string EncodePng(const PlainPng& png) {
    std::string file;
    png_structp writer = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(writer);
    png_set_write_fn(writer, &file, Append, nullptr);
    png_set_IHDR(writer, info, static_cast<png_uint_32>(png.width),
                 static_cast<png_uint_32>(png.height), png.bitDepth, png.colorType,
                 png.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, 0, 0);
    SetChunks(writer, info, png);
    std::vector<std::vector<std::uint8_t>> rows;
    std::vector<png_bytep> pointers;
    for (int y = 0; y < png.height; ++y)
        rows.push_back(PackRow(png, y));
    for (std::vector<std::uint8_t>& row : rows)
        pointers.push_back(row.data());
    png_write_info(writer, info);
    png_write_image(writer, pointers.data());
    png_write_end(writer, nullptr);
    png_destroy_write_struct(&writer, &info);
    return file;
}

PlainPng DecodePng(const std::string& file) {
    PlainPng png;
    Source source{file};
    std::vector<std::vector<std::uint8_t>> rows;
    std::vector<png_bytep> pointers;
    png_structp reader = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(reader);
    if (setjmp(png_jmpbuf(reader)) != 0) {
        ADD_FAILURE() << "no valid PNG";
        png_destroy_read_struct(&reader, &info, nullptr);
        return png;
    }
    png_set_read_fn(reader, &source, Read);
    png_read_info(reader, info);
    png.width = static_cast<int>(png_get_image_width(reader, info));
    png.height = static_cast<int>(png_get_image_height(reader, info));
    png.bitDepth = png_get_bit_depth(reader, info);
    png.colorType = png_get_color_type(reader, info);
    GetChunks(reader, info, png);
    rows.assign(static_cast<std::size_t>(png.height),
                std::vector<std::uint8_t>(png_get_rowbytes(reader, info) + 1));
    for (std::vector<std::uint8_t>& row : rows)
        pointers.push_back(row.data());
    png_read_image(reader, pointers.data());
    png_read_end(reader, nullptr);
    png_destroy_read_struct(&reader, &info, nullptr);
    png.samples.resize(static_cast<std::size_t>(png.width * png.height * png.Channels()));
    for (int y = 0; y < png.height; ++y)
        UnpackRow(rows[static_cast<std::size_t>(y)], y, png);
    return png;
}

}  // namespace velloran::test
