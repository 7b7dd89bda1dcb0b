#pragma once

// Decodes the first picture of a GIF that lies in memory.

#include <gif_lib.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "codecs/ImageInfo.h"
#include "core/DibImage.h"
#include "io/FileError.h"

namespace velloran {

class GifReader {
 public:
    explicit GifReader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}
    ~GifReader();
    GifReader(const GifReader&) = delete;
    GifReader& operator=(const GifReader&) = delete;

    /// Reads up to the first picture's pixels. Once, and first.
    bool ReadHead(FileError* error);

    ImageInfo Info() const;

    /// Decodes into an empty page of the screen's size; around a smaller frame lies the
    /// transparent colour or else the screen's background.
    bool ReadPage(CDibImage& page, FileError* error);

 private:
    static int Read(GifFileType* gif, GifByteType* to, int count);
    bool FindPicture();
    bool TakeExtension();
    bool TakePalette();
    int IndexAround();
    int IndexOfColor(const PaletteEntry& color);
    int DecodeRows(CDibImage& page, std::uint8_t around);
    bool Fail(FileError* error) const;

    std::span<const std::uint8_t> bytes_;
    std::size_t position_ = 0;
    GifFileType* gif_ = nullptr;
    int openError_ = 0;
    int width_ = 0, height_ = 0;
    int transparent_ = -1;
    int fileEntries_ = 0;
    std::vector<PaletteEntry> palette_;
};

}  // namespace velloran
