#pragma once

// The boxes of a JPEG 2000 file round its code stream: what they say of the picture, and how they
// are written. A file that is nothing but a code stream has none.

#include <cstdint>
#include <vector>

#include "codecs/Metadata.h"
#include "io/FileError.h"

namespace velloran {

class ByteSource;

/// The components as the code stream's head tells them.
struct Jp2Component {
    int bits = 8;
    bool isSigned = false;
    int xStep = 1, yStep = 1;  // of subsampling
};

struct Jp2Head {
    enum class Color { kUntold, kGray, kRgb, kYcc, kCmyk, kOther };

    bool hasBoxes = false;
    std::uint64_t streamAt = 0, streamEnd = 0;  // of the code stream; the end is the file's at most
    bool isCut = false;                         // the code stream says that it goes on
    std::int64_t width = 0, height = 0;
    std::int64_t tiles = 1;
    std::vector<Jp2Component> components;
    int paletteEntries = 0, paletteColumns = 0;
    Color color = Color::kUntold;
    int xDpi = 96, yDpi = 96;
    Metadata metadata;
};

/// Reads boxes and the head of the code stream. False with a reason where they are none.
bool ReadJp2Head(ByteSource& source, Jp2Head& head, FileError* error);

struct Jp2Page {
    int width = 0, height = 0;
    bool isGray = false;
    int xDpi = 96, yDpi = 96;
};
/// All that stands before the code stream of a file of 8-bit samples; `streamBytes` is its length.
Blob Jp2BoxesFor(const Jp2Page& page, const Metadata& metadata, std::uint64_t streamBytes);

}  // namespace velloran
