#pragma once

// Plays a GIF up to one of its later pictures, as a viewer would show it then.

#include <gif_lib.h>

#include <cstdint>
#include <vector>

#include "codecs/ImageInfo.h"
#include "codecs/LoadNotes.h"
#include "core/DibImage.h"
#include "io/FileError.h"
#include "io/SourceReader.h"

namespace velloran {

/// At least 1; as far as the file goes.
int CountGifPictures(ByteSource& file);

class GifPlayer {
 public:
    GifPlayer(ByteSource& file, int number) : file_(file), source_(file), number_(number) {}
    ~GifPlayer();
    GifPlayer(const GifPlayer&) = delete;
    GifPlayer& operator=(const GifPlayer&) = delete;

    bool ReadHead(FileError* error);
    int SourceBits() const { return 24; }
    /// Decodes into an empty page of the screen's size; what no picture covers is clear.
    bool ReadPage(CDibImage& page, LoadNotes& notes, FileError* error);

 private:
    struct Frame {
        int transparent = NO_TRANSPARENT_COLOR, disposal = DISPOSAL_UNSPECIFIED;
    };

    static int Read(GifFileType* gif, GifByteType* to, int count);
    bool FindFrame(Frame& frame);
    bool Draw(const Frame& frame, CDibImage& page);
    void DrawLine(const std::vector<GifPixelType>& line, const Frame& frame,
                  const ColorMapObject& map, int y, CDibImage& page) const;
    void Clear(CDibImage& page) const;

    ByteSource& file_;
    SourceReader source_;
    int number_;
    int pictures_ = 1;
    GifFileType* gif_ = nullptr;
};

}  // namespace velloran
