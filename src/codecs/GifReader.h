#pragma once

// Decodes the first picture of a GIF.

#include <gif_lib.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "codecs/ImageInfo.h"
#include "codecs/LoadNotes.h"
#include "core/DibImage.h"
#include "io/FileError.h"
#include "io/SourceReader.h"

namespace velloran {

class GifReader {
 public:
    explicit GifReader(ByteSource& source) : source_(source) {}
    ~GifReader();
    GifReader(const GifReader&) = delete;
    GifReader& operator=(const GifReader&) = delete;

    /// Reads up to the first picture's pixels. Once, and first.
    bool ReadHead(FileError* error);

    ImageInfo Info() const;
    /// Depth of the page that ReadPage made.
    int SourceBits() const { return pageBits_; }

    /// Decodes into an empty page of the screen's size; around a smaller frame lies the
    /// transparent colour or else the screen's background.
    bool ReadPage(CDibImage& page, LoadNotes& notes, FileError* error);

 private:
    static int Read(GifFileType* gif, GifByteType* to, int count);
    bool FindPicture();
    bool TakeExtension();
    bool TakePalette();
    int IndexAround();
    int IndexOfColor(const PaletteEntry& color);
    int DecodeRows(CDibImage& page, std::uint8_t around);
    bool CountPictures(int& pictures);
    bool SkipBlocks();
    bool Fail(FileError* error) const;

    SourceReader source_;
    GifFileType* gif_ = nullptr;
    int openError_ = 0;
    int width_ = 0, height_ = 0;
    int transparent_ = -1;
    int pageBits_ = 8;
    int fileEntries_ = 0;
    std::vector<PaletteEntry> palette_;
};

}  // namespace velloran
