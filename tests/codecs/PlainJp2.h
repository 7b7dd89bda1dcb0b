#pragma once

// Code streams made and read by plain calls of the library, and boxes put round them by hand: the
// second opinion beside the reader and the writer under test.

#include <cstdint>
#include <string>
#include <vector>

namespace velloran::test {

struct PlainComponent {
    int bits = 8;
    bool isSigned = false;
    int xStep = 1, yStep = 1;
    std::vector<int> samples;  // of the subsampled size, the top row first
};

struct PlainJ2k {
    int width = 1, height = 1;
    int tileSide = 0;  // 0: one tile
    std::vector<PlainComponent> components;
};

/// Samples from a fixed sequence over the whole range of each component; equal depths.
PlainJ2k J2kOfNoise(int width, int height, int components, int bits, bool isSigned = false);

/// Lossless.
std::string EncodeJ2k(const PlainJ2k& picture);
/// All components of a code stream; fails the test where it is none.
PlainJ2k DecodeJ2k(const std::string& stream);

/// One box: its length, name and contents.
std::string Jp2Box(const std::string& name, const std::string& contents);
/// A big-endian number.
std::string BigNumber(std::uint64_t value, int bytes);
/// A whole file: signature, type, header box of these contents, more boxes, and the code stream.
std::string Jp2File(const std::string& header, const std::string& more, const std::string& stream);
/// The header box's first part and an enumerated colour.
std::string Jp2Header(const PlainJ2k& picture, int color, int bitsOfAll = 8);

/// The contents of the first box with this path, as "jp2h/res /resc"; empty without one.
std::string FindBox(const std::string& boxes, const std::string& path);

}  // namespace velloran::test
