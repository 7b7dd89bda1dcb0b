#pragma once

// The codecs on files and on bytes, as tests mostly want them.

#include <filesystem>
#include <new>
#include <span>

#include "codecs/Bmp.h"
#include "codecs/Formats.h"
#include "codecs/Gif.h"
#include "codecs/Jpeg.h"
#include "codecs/Png.h"
#include "codecs/Tiff.h"
#include "codecs/Webp.h"
#include "core/DibImage.h"
#include "io/AtomicFile.h"
#include "io/FileSource.h"
#include "io/MemorySource.h"
#include "params/ParaBlock.h"

namespace velloran {

using Bytes = std::span<const std::uint8_t>;
using FilePath = std::filesystem::path;

template <typename Load>
bool LoadFile(const FilePath& path, FileError* error, Load&& load) try {
    FileSource source;
    LoadNotes notes;
    return source.Open(path, error) && load(source, notes);
} catch (const std::bad_alloc&) {
    return FailNoMemory(error);
}

template <typename Save>
bool SaveFile(const FilePath& path, const CDibImage& image, FileError* error, Save&& save,
              bool emptyToo = false) try {
    AtomicFile file(path);
    if ((image.IsValid() || emptyToo) && !file.Open(error))
        return false;
    return save(file) && file.Commit(error);
} catch (const std::bad_alloc&) {
    return FailNoMemory(error);
}

inline bool LoadPng(const FilePath& path, CDibImage& image, FileError* error = nullptr) {
    return LoadFile(path, error,
                    [&](ByteSource& s, LoadNotes& n) { return LoadPng(s, image, n, error); });
}
inline bool LoadGif(const FilePath& path, CDibImage& image, FileError* error = nullptr) {
    return LoadFile(path, error,
                    [&](ByteSource& s, LoadNotes& n) { return LoadGif(s, image, n, error); });
}
inline bool LoadTiff(const FilePath& path, CDibImage& image, FileError* error = nullptr) {
    return LoadFile(path, error,
                    [&](ByteSource& s, LoadNotes& n) { return LoadTiff(s, image, n, error); });
}
inline bool LoadWebp(const FilePath& path, CDibImage& image, FileError* error = nullptr) {
    return LoadFile(path, error,
                    [&](ByteSource& s, LoadNotes& n) { return LoadWebp(s, image, n, error); });
}
inline bool LoadBmp(const FilePath& path, CDibImage& image, FileError* error = nullptr) {
    return LoadFile(path, error,
                    [&](ByteSource& s, LoadNotes& n) { return LoadBmp(s, image, n, error); });
}
inline bool LoadJpeg(const FilePath& path, CDibImage& image, bool reverseCmyk = false,
                     FileError* error = nullptr) {
    return LoadFile(path, error, [&](ByteSource& s, LoadNotes& n) {
        return LoadJpeg(s, image, reverseCmyk, n, error);
    });
}
inline bool LoadUfo(const FilePath& path, CDibImage& image, bool reverseCmyk = false,
                    FileError* error = nullptr) {
    return LoadFile(path, error, [&](ByteSource& s, LoadNotes& n) {
        return LoadUfo(s, image, reverseCmyk, n, error);
    });
}

inline bool LoadPngBytes(Bytes bytes, CDibImage& image, FileError* error) {
    MemorySource source(bytes);
    LoadNotes notes;
    return LoadPng(source, image, notes, error);
}
inline bool LoadGifBytes(Bytes bytes, CDibImage& image, FileError* error) {
    MemorySource source(bytes);
    LoadNotes notes;
    return LoadGif(source, image, notes, error);
}
inline bool LoadTiffBytes(Bytes bytes, CDibImage& image, FileError* error) {
    MemorySource source(bytes);
    LoadNotes notes;
    return LoadTiff(source, image, notes, error);
}
inline bool LoadWebpBytes(Bytes bytes, CDibImage& image, FileError* error) {
    MemorySource source(bytes);
    LoadNotes notes;
    return LoadWebp(source, image, notes, error);
}
inline bool LoadBmpBytes(Bytes bytes, CDibImage& image, FileError* error) {
    MemorySource source(bytes);
    LoadNotes notes;
    return LoadBmp(source, image, notes, error);
}
inline bool LoadJpegBytes(Bytes bytes, CDibImage& image, bool reverseCmyk, FileError* error) {
    MemorySource source(bytes);
    LoadNotes notes;
    return LoadJpeg(source, image, reverseCmyk, notes, error);
}

inline bool ReadPngInfo(Bytes bytes, ImageInfo& info, FileError* error) {
    MemorySource source(bytes);
    return ReadPngInfo(source, info, error);
}
inline bool ReadGifInfo(Bytes bytes, ImageInfo& info, FileError* error) {
    MemorySource source(bytes);
    return ReadGifInfo(source, info, error);
}
inline bool ReadTiffInfo(Bytes bytes, ImageInfo& info, FileError* error) {
    MemorySource source(bytes);
    return ReadTiffInfo(source, info, error);
}
inline bool ReadWebpInfo(Bytes bytes, ImageInfo& info, FileError* error) {
    MemorySource source(bytes);
    return ReadWebpInfo(source, info, error);
}
inline bool ReadBmpInfo(Bytes bytes, ImageInfo& info, FileError* error) {
    MemorySource source(bytes);
    return ReadBmpInfo(source, info, error);
}
inline bool ReadJpegInfo(Bytes bytes, ImageInfo& info, FileError* error) {
    MemorySource source(bytes);
    return ReadJpegInfo(source, info, error);
}
inline bool ReadUfoInfo(Bytes bytes, ImageInfo& info, FileError* error) {
    MemorySource source(bytes);
    return ReadUfoInfo(source, info, error);
}
inline bool ReadJpegHeader(Bytes bytes, int& outBits, int& outDpi) {
    MemorySource source(bytes);
    return ReadJpegHeader(source, outBits, outDpi);
}

inline bool SavePng(const FilePath& path, CDibImage& image, int dpi, bool grayTransparent,
                    FileError* error = nullptr) {
    return SaveFile(path, image, error,
                    [&](ByteSink& s) { return SavePng(s, image, dpi, grayTransparent, error); });
}
inline bool SaveGif(const FilePath& path, const CDibImage& image, bool transparentBackground,
                    bool tightFrame, FileError* error = nullptr) {
    return SaveFile(path, image, error, [&](ByteSink& s) {
        return SaveGif(s, image, transparentBackground, tightFrame, error);
    });
}
inline bool SaveTiff(const FilePath& path, CDibImage& image, TiffCompression compression, int dpi,
                     FileError* error = nullptr) {
    return SaveFile(path, image, error,
                    [&](ByteSink& s) { return SaveTiff(s, image, compression, dpi, error); });
}
inline bool SaveWebp(const FilePath& path, const CDibImage& image, int quality,
                     FileError* error = nullptr) {
    return SaveFile(path, image, error,
                    [&](ByteSink& s) { return SaveWebp(s, image, quality, error); });
}
inline bool SaveBmp(const FilePath& path, const CDibImage& image, FileError* error = nullptr) {
    return SaveFile(path, image, error, [&](ByteSink& s) { return SaveBmp(s, image, error); });
}
inline bool SaveBmp16(const FilePath& path, const CDibImage& image, bool is565,
                      FileError* error = nullptr) {
    return SaveFile(
        path, image, error, [&](ByteSink& s) { return SaveBmp16(s, image, is565, error); },
        /*emptyToo=*/true);
}
inline bool SaveJpeg(const FilePath& path, CDibImage& image, const CDibImage* sourceImage,
                     int quality, int dpi, const CParaBlock& params, FileError* error = nullptr) {
    return SaveFile(path, image, error, [&](ByteSink& s) {
        return SaveJpeg(s, image, sourceImage, quality, dpi, JpegRulesOf(params), error);
    });
}

}  // namespace velloran
