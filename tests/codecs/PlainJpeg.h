#pragma once

// JPEG files made and read in tests by plain calls of the library, and a reading of their marker
// segments byte by byte: the second opinion beside the reader and the writer under test.

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

struct jpeg_compress_struct;

namespace velloran::test {

/// Samples in the file's order of channels (grey; red, green, blue; or four inks), top row first.
struct PlainPicture {
    int width = 0, height = 0, channels = 3;
    std::vector<std::uint8_t> samples;

    std::uint8_t At(int x, int y, int channel) const;
};

/// A picture of smooth colours with some edges; no white and no mid grey in any row.
PlainPicture Scene(int width, int height, int channels);

struct PlainOptions {
    int quality = 90;
    /// Called behind the defaults and the quality, before the head is written.
    std::function<void(jpeg_compress_struct&)> adjust;
    /// Payload of an APP1 segment, none when empty.
    std::string app1;
};

std::string EncodePlain(const PlainPicture& picture, const PlainOptions& options = {});

/// Decoded to grey, red-green-blue or the four stored inks.
PlainPicture DecodePlain(const std::string& file);

/// What the marker segments of a JPEG say.
struct JpegFacts {
    int frame = 0;  // 0xC0 baseline, 0xC1 extended, 0xC2 progressive
    int width = 0, height = 0;
    std::vector<std::pair<int, int>> sampling;         // horizontal, vertical
    int densityUnit = -1, xDensity = 0, yDensity = 0;  // -1 without a JFIF head
    std::map<int, std::vector<int>> quantTables;       // slot to 64 values in file order
    std::map<int, std::string> huffmanTables;          // class * 16 + slot to counts and symbols
    int scans = 0;
    bool endsWithEndMarker = false;
};
JpegFacts FactsOf(const std::string& file);

/// Offset of the first byte of entropy-coded data.
std::size_t StartOfScanData(const std::string& file);

/// An APP1 payload with the EXIF tags that are given; values below 0 are left out.
struct ExifTags {
    int orientation = -1, unit = -1;
    double xResolution = -1, yResolution = -1;  // kept to 1 / 1000
    bool bigEndian = false;
};
std::string ExifPayload(const ExifTags& tags);

}  // namespace velloran::test
