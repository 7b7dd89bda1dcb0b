#include "PlainTiff.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>

namespace velloran::test {
namespace {

struct Memory {
    std::string bytes;
    toff_t position = 0;
};

tmsize_t Read(thandle_t handle, void* to, tmsize_t count) {
    auto* memory = static_cast<Memory*>(handle);
    const toff_t size = memory->bytes.size();
    const toff_t left = memory->position < size ? size - memory->position : 0;
    const auto given = static_cast<std::size_t>(std::min<toff_t>(left, count));
    if (given > 0)
        std::memcpy(to, memory->bytes.data() + memory->position, given);
    memory->position += given;
    return static_cast<tmsize_t>(given);
}

tmsize_t Write(thandle_t handle, void* from, tmsize_t count) {
    auto* memory = static_cast<Memory*>(handle);
    const auto size = static_cast<std::size_t>(count);
    memory->bytes.resize(
        std::max(memory->bytes.size(), static_cast<std::size_t>(memory->position) + size));
    std::memcpy(memory->bytes.data() + memory->position, from, size);
    memory->position += size;
    return count;
}

toff_t Seek(thandle_t handle, toff_t offset, int whence) {
    auto* memory = static_cast<Memory*>(handle);
    const toff_t base = whence == SEEK_CUR   ? memory->position
                        : whence == SEEK_END ? memory->bytes.size()
                                             : 0;
    return memory->position = base + offset;
}

int Close(thandle_t) {
    return 0;
}

toff_t Size(thandle_t handle) {
    return static_cast<Memory*>(handle)->bytes.size();
}

TIFF* Open(Memory& memory, const char* mode) {
    return TIFFClientOpen("memory", mode, &memory, Read, Write, Seek, Close, Size, nullptr,
                          nullptr);
}

void PutSample(std::vector<std::uint8_t>& bytes, std::size_t index, int bits, int sample) {
    const std::size_t bit = index * static_cast<std::size_t>(bits);
    if (bits == 16) {
        const auto wide = static_cast<std::uint16_t>(sample);
        std::memcpy(bytes.data() + bit / 8, &wide, 2);
    } else {
        bytes[bit / 8] |=
            static_cast<std::uint8_t>(sample << (8 - bits - static_cast<int>(bit % 8)));
    }
}

int GetSample(const std::vector<std::uint8_t>& bytes, std::size_t index, int bits) {
    const std::size_t bit = index * static_cast<std::size_t>(bits);
    if (bits == 16) {
        std::uint16_t wide;
        std::memcpy(&wide, bytes.data() + bit / 8, 2);
        return wide;
    }
    return bytes[bit / 8] >> (8 - bits - static_cast<int>(bit % 8)) & ((1 << bits) - 1);
}

void SetFields(TIFF* file, const PlainTiff& tiff) {
    TIFFSetField(file, TIFFTAG_IMAGEWIDTH, tiff.width);
    TIFFSetField(file, TIFFTAG_IMAGELENGTH, tiff.height);
    TIFFSetField(file, TIFFTAG_BITSPERSAMPLE, tiff.bits);
    TIFFSetField(file, TIFFTAG_SAMPLESPERPIXEL, tiff.channels);
    TIFFSetField(file, TIFFTAG_COMPRESSION, tiff.compression);
    TIFFSetField(file, TIFFTAG_PHOTOMETRIC, tiff.photometric);
    TIFFSetField(file, TIFFTAG_PLANARCONFIG,
                 tiff.separate ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
    if (tiff.tileSize > 0) {
        TIFFSetField(file, TIFFTAG_TILEWIDTH, tiff.tileSize);
        TIFFSetField(file, TIFFTAG_TILELENGTH, tiff.tileSize);
    } else {
        TIFFSetField(file, TIFFTAG_ROWSPERSTRIP,
                     tiff.rowsPerStrip > 0 ? tiff.rowsPerStrip : tiff.height);
    }
    if (tiff.extraSample >= 0) {
        const auto extra = static_cast<std::uint16_t>(tiff.extraSample);
        TIFFSetField(file, TIFFTAG_EXTRASAMPLES, 1, &extra);
    }
    if (tiff.orientation > 0)
        TIFFSetField(file, TIFFTAG_ORIENTATION, tiff.orientation);
    if (tiff.resolutionUnit > 0)
        TIFFSetField(file, TIFFTAG_RESOLUTIONUNIT, tiff.resolutionUnit);
    if (tiff.xResolution > 0)
        TIFFSetField(file, TIFFTAG_XRESOLUTION, static_cast<double>(tiff.xResolution));
    if (tiff.yResolution > 0)
        TIFFSetField(file, TIFFTAG_YRESOLUTION, static_cast<double>(tiff.yResolution));
    if (tiff.predict)
        TIFFSetField(file, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    if (!tiff.red.empty())
        TIFFSetField(file, TIFFTAG_COLORMAP, tiff.red.data(), tiff.green.data(), tiff.blue.data());
    if (tiff.compression == COMPRESSION_JPEG && tiff.photometric == PHOTOMETRIC_YCBCR)
        TIFFSetField(file, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
}

/// A row, or a row of a tile, of one plane or of all.
std::vector<std::uint8_t> PackRow(const PlainTiff& tiff, int y, int left, int count, int plane) {
    const int channels = plane < 0 ? tiff.channels : 1;
    std::vector<std::uint8_t> row(static_cast<std::size_t>(count * channels * tiff.bits + 7) / 8);
    for (int x = 0; x < count; ++x)
        for (int c = 0; c < channels; ++c)
            if (left + x < tiff.width && y < tiff.height)
                PutSample(row, static_cast<std::size_t>(x * channels + c), tiff.bits,
                          tiff.At(left + x, y, plane < 0 ? c : plane));
    return row;
}

void WritePlane(TIFF* file, const PlainTiff& tiff, int plane) {
    const auto sample = static_cast<std::uint16_t>(std::max(plane, 0));
    if (tiff.tileSize == 0) {
        for (int y = 0; y < tiff.height; ++y) {
            std::vector<std::uint8_t> row = PackRow(tiff, y, 0, tiff.width, plane);
            EXPECT_EQ(TIFFWriteScanline(file, row.data(), static_cast<std::uint32_t>(y), sample),
                      1);
        }
        return;
    }
    for (int top = 0; top < tiff.height; top += tiff.tileSize)
        for (int left = 0; left < tiff.width; left += tiff.tileSize) {
            std::vector<std::uint8_t> tile;
            for (int y = 0; y < tiff.tileSize; ++y) {
                const std::vector<std::uint8_t> row =
                    PackRow(tiff, top + y, left, tiff.tileSize, plane);
                tile.insert(tile.end(), row.begin(), row.end());
            }
            EXPECT_GE(TIFFWriteTile(file, tile.data(), static_cast<std::uint32_t>(left),
                                    static_cast<std::uint32_t>(top), 0, sample),
                      0);
        }
}

int FieldOf(TIFF* file, std::uint32_t tag) {
    std::uint16_t value = 0;
    TIFFGetFieldDefaulted(file, tag, &value);
    return value;
}

void GetFields(TIFF* file, PlainTiff& tiff) {
    TIFFGetField(file, TIFFTAG_IMAGEWIDTH, &tiff.width);
    TIFFGetField(file, TIFFTAG_IMAGELENGTH, &tiff.height);
    tiff.bits = FieldOf(file, TIFFTAG_BITSPERSAMPLE);
    tiff.channels = FieldOf(file, TIFFTAG_SAMPLESPERPIXEL);
    tiff.photometric = FieldOf(file, TIFFTAG_PHOTOMETRIC);
    tiff.compression = FieldOf(file, TIFFTAG_COMPRESSION);
    tiff.orientation = FieldOf(file, TIFFTAG_ORIENTATION);
    tiff.resolutionUnit = FieldOf(file, TIFFTAG_RESOLUTIONUNIT);
    tiff.predict =
        (tiff.compression == COMPRESSION_LZW || tiff.compression == COMPRESSION_ADOBE_DEFLATE) &&
        FieldOf(file, TIFFTAG_PREDICTOR) == PREDICTOR_HORIZONTAL;
    TIFFGetField(file, TIFFTAG_ROWSPERSTRIP, &tiff.rowsPerStrip);
    TIFFGetField(file, TIFFTAG_XRESOLUTION, &tiff.xResolution);
    TIFFGetField(file, TIFFTAG_YRESOLUTION, &tiff.yResolution);
    std::uint16_t count = 0, *types = nullptr;
    if (TIFFGetField(file, TIFFTAG_EXTRASAMPLES, &count, &types) == 1 && count > 0)
        tiff.extraSample = types[0];
    std::uint16_t *red = nullptr, *green = nullptr, *blue = nullptr;
    if (tiff.photometric == PHOTOMETRIC_PALETTE &&
        TIFFGetField(file, TIFFTAG_COLORMAP, &red, &green, &blue) == 1) {
        tiff.red.assign(red, red + (1 << tiff.bits));
        tiff.green.assign(green, green + (1 << tiff.bits));
        tiff.blue.assign(blue, blue + (1 << tiff.bits));
    }
}

}  // namespace

PlainTiff TiffOfNoise(int width, int height, int bits, int channels, int photometric,
                      unsigned seed) {
    std::mt19937 random(seed);
    PlainTiff tiff;
    tiff.width = width;
    tiff.height = height;
    tiff.bits = bits;
    tiff.channels = channels;
    tiff.photometric = photometric;
    tiff.samples.resize(static_cast<std::size_t>(width * height * channels));
    for (int& sample : tiff.samples)
        sample = static_cast<int>(random() >> (32 - bits));
    return tiff;
}

void AddPalette(PlainTiff& tiff, unsigned seed) {
    std::mt19937 random(seed);
    for (std::vector<std::uint16_t>* levels : {&tiff.red, &tiff.green, &tiff.blue})
        for (int i = 0; i < 1 << tiff.bits; ++i)
            levels->push_back(static_cast<std::uint16_t>(random() >> 16));
}

std::string EncodeTiff(const PlainTiff& tiff) {
    Memory memory;
    TIFF* file = Open(memory, tiff.bigEndian ? "wb" : "wl");
    SetFields(file, tiff);
    if (tiff.separate)
        for (int plane = 0; plane < tiff.channels; ++plane)
            WritePlane(file, tiff, plane);
    else
        WritePlane(file, tiff, -1);
    TIFFClose(file);
    return memory.bytes;
}

PlainTiff DecodeTiff(const std::string& bytes) {
    PlainTiff tiff;
    Memory memory{bytes};
    TIFF* file = Open(memory, "r");
    if (file == nullptr) {
        ADD_FAILURE() << "no valid TIFF";
        return tiff;
    }
    GetFields(file, tiff);
    if (tiff.photometric == PHOTOMETRIC_YCBCR)
        TIFFSetField(file, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    std::vector<std::uint8_t> row(static_cast<std::size_t>(TIFFScanlineSize(file)) + 2);
    for (int y = 0; y < tiff.height; ++y) {
        EXPECT_EQ(TIFFReadScanline(file, row.data(), static_cast<std::uint32_t>(y)), 1) << y;
        for (int i = 0; i < tiff.width * tiff.channels; ++i)
            tiff.samples.push_back(GetSample(row, static_cast<std::size_t>(i), tiff.bits));
    }
    TIFFClose(file);
    return tiff;
}

}  // namespace velloran::test
