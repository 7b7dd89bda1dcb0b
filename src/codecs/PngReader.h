#pragma once

// Decodes a PNG.

#include <png.h>

#include <cstddef>
#include <cstdint>

#include "codecs/ImageInfo.h"
#include "codecs/LoadNotes.h"
#include "codecs/PngGuard.h"
#include "core/DibImage.h"
#include "io/FileError.h"
#include "io/SourceReader.h"

namespace velloran {

class PngReader {
 public:
    explicit PngReader(ByteSource& source) : file_(source), source_(source) {}
    ~PngReader();
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;

    /// Reads all that stands before the pixels. Once, and first.
    bool ReadHead(FileError* error);

    ImageInfo Info() const;
    /// Depth to restore on saving: of the page for one channel, else as in the file.
    int SourceBits() const;

    /// Decodes into an empty page.
    bool ReadPage(CDibImage& page, LoadNotes& notes, FileError* error);
    /// Moves out what travels with the picture; behind ReadPage.
    void ReadNotes(LoadNotes& notes) { notes.TakeMetadata(std::move(metadata_)); }
    int CountPictures() const { return frames_; }

 private:
    /// How decoded rows become the page's rows.
    enum class Form { kDirect, kNibbles, kGrayAlpha, kBgra };

    static void Read(png_structp png, png_bytep to, std::size_t count);
    void Deliver(std::uint8_t* to, std::size_t count);
    void SetUp();
    void TakeHead();
    void ChooseForm();
    int PageBits() const;
    void FillPalette(CDibImage& page) const;
    void FillPaletteAlpha(CDibImage& page) const;
    void AskForTransforms();
    void DecodeRows(CDibImage& page, std::uint8_t* scratch);
    void ConvertRow(const std::uint8_t* from, CDibImage& page, int y) const;

    ByteSource& file_;
    SourceReader source_;
    Metadata metadata_;
    int orientation_ = 1;  // of EXIF
    std::uint64_t position_ = 0, nextChunk_ = 8;
    std::uint64_t frameCountAt_ = 0;  // where an animation says how many frames it has; 0: none
    int frames_ = 1;
    PngMessage message_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;

    int width_ = 0, height_ = 0, bitDepth_ = 0, colorType_ = 0, channels_ = 0;
    bool interlaced_ = false, hasTransparency_ = false;
    Form form_ = Form::kDirect;
    png_colorp palette_ = nullptr;  // libpng's
    int paletteCount_ = 0;
    png_bytep paletteAlpha_ = nullptr;  // libpng's
    int paletteAlphaCount_ = 0;
    int transparentGray_ = -1;
    int xDpi_ = 96, yDpi_ = 96;
    int rowsDone_ = 0;
    std::size_t rowBytes_ = 0;
};

}  // namespace velloran
