#pragma once

// Decodes the first picture of a WebP.

#include <webp/decode.h>

#include <cstdint>
#include <span>

#include "codecs/ImageInfo.h"
#include "codecs/LoadNotes.h"
#include "codecs/Metadata.h"
#include "io/FileError.h"

namespace velloran {

class ByteSource;
class CDibImage;

class WebpReader {
 public:
    explicit WebpReader(ByteSource& source, int number = 1) : source_(source), number_(number) {}

    /// Reads size and kind. Once, and first.
    bool ReadHead(FileError* error);
    ImageInfo Info() const;
    int SourceBits() const { return features_.has_alpha != 0 ? 32 : 24; }

    /// Decodes into an empty page of the canvas's size. The first frame of an animation stands at
    /// its place on a clear white canvas.
    bool ReadPage(CDibImage& page, LoadNotes& notes, FileError* error);
    /// Moves out what travels with the picture; behind ReadPage.
    void ReadNotes(LoadNotes& notes) { notes.TakeMetadata(std::move(metadata_)); }
    int CountPictures() const;

 private:
    /// Where the picture data lies, and where it goes.
    struct Frame {
        std::span<const std::uint8_t> data;
        int left = 0, top = 0, width = 0, height = 0;
        bool hasAlpha = false;
    };

    void ReadChunks();
    bool FindFirstFrame(std::span<const std::uint8_t> bytes, Frame& frame, LoadNotes& notes,
                        FileError* error) const;
    bool IsPlausible() const;
    bool ReadLaterFrame(std::span<const std::uint8_t> bytes, CDibImage& page, LoadNotes& notes,
                        FileError* error) const;
    static int DecodeRows(const Frame& frame, WEBP_CSP_MODE mode, std::uint8_t* first, int stride);
    static void PlaceRows(const Frame& frame, const std::uint8_t* bgra, int rows, CDibImage& page);
    static int DecodeWithAlpha(const Frame& frame, CDibImage& page);

    ByteSource& source_;
    int number_;  // of the frame, from 1
    WebPBitstreamFeatures features_{};
    Metadata metadata_;
    int frames_ = 0;       // chunks of an animation
    int orientation_ = 1;  // of EXIF
};

}  // namespace velloran
