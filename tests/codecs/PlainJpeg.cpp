#include "codecs/PlainJpeg.h"

// clang-format off
#include <cstdio>  // jpeglib.h needs it before itself
#include <jpeglib.h>
// clang-format on

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

namespace velloran::test {
namespace {

int U8(const std::string& file, std::size_t at) {
    return static_cast<std::uint8_t>(file.at(at));
}
int U16(const std::string& file, std::size_t at) {
    return U8(file, at) * 256 + U8(file, at + 1);
}

J_COLOR_SPACE ColorSpaceOf(int channels) {
    return channels == 1 ? JCS_GRAYSCALE : channels == 3 ? JCS_RGB : JCS_CMYK;
}

void ReadQuantTables(const std::string& file, std::size_t at, std::size_t end, JpegFacts& facts) {
    while (at < end) {
        const int precision = U8(file, at) >> 4, slot = U8(file, at) & 15;
        ++at;
        std::vector<int>& values = facts.quantTables[slot];
        values.clear();
        for (int i = 0; i < 64; ++i, at += precision == 0 ? 1 : 2)
            values.push_back(precision == 0 ? U8(file, at) : U16(file, at));
    }
}

void ReadHuffmanTables(const std::string& file, std::size_t at, std::size_t end, JpegFacts& facts) {
    while (at < end) {
        const int id = U8(file, at);
        std::size_t symbols = 0;
        for (std::size_t i = 1; i <= 16; ++i)
            symbols += static_cast<std::size_t>(U8(file, at + i));
        facts.huffmanTables[id] = file.substr(at + 1, 16 + symbols);
        at += 17 + symbols;
    }
}

void ReadSegment(const std::string& file, int marker, std::size_t at, std::size_t end,
                 JpegFacts& facts) {
    if (marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC) {
        facts.frame = marker;
        facts.height = U16(file, at + 1);
        facts.width = U16(file, at + 3);
        for (int i = 0; i < U8(file, at + 5); ++i) {
            const int factors = U8(file, at + 7 + 3 * static_cast<std::size_t>(i));
            facts.sampling.emplace_back(factors >> 4, factors & 15);
        }
    } else if (marker == 0xC4) {
        ReadHuffmanTables(file, at, end, facts);
    } else if (marker == 0xDB) {
        ReadQuantTables(file, at, end, facts);
    } else if (marker == 0xDA) {
        ++facts.scans;
    } else if (marker == 0xE0 && file.compare(at, 4, "JFIF") == 0) {
        facts.densityUnit = U8(file, at + 7);
        facts.xDensity = U16(file, at + 8);
        facts.yDensity = U16(file, at + 10);
    }
}

/// Position of the next 0xFF that starts a marker, no stuffing and no restart.
std::size_t NextMarker(const std::string& file, std::size_t at) {
    while (at + 1 < file.size()) {
        const int code = U8(file, at + 1);
        if (U8(file, at) == 0xFF && code != 0 && code != 0xFF && (code < 0xD0 || code > 0xD7))
            return at;
        ++at;
    }
    return file.size();
}

class TiffBytes {
 public:
    explicit TiffBytes(bool bigEndian) : bigEndian_(bigEndian) {}
    void Put(std::uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i)
            text += static_cast<char>(value >> 8 * (bigEndian_ ? bytes - 1 - i : i));
    }
    std::string text;

 private:
    bool bigEndian_;
};

}  // namespace

std::uint8_t PlainPicture::At(int x, int y, int channel) const {
    return samples.at((static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                       static_cast<std::size_t>(x)) *
                          static_cast<std::size_t>(channels) +
                      static_cast<std::size_t>(channel));
}

PlainPicture Scene(int width, int height, int channels) {
    PlainPicture picture{width, height, channels, {}};
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < channels; ++c) {
                const bool ink = (x / 9 + y / 7) % 4 == 0;
                const int paper = 190 - 20 * c - 30 * x / width + 10 * y / height;
                picture.samples.push_back(static_cast<std::uint8_t>(ink ? 30 + 15 * c : paper));
            }
    return picture;
}

std::string EncodePlain(const PlainPicture& picture, const PlainOptions& options) {
    jpeg_compress_struct jpeg{};
    jpeg_error_mgr errors;
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&jpeg, &bytes, &size);
    jpeg.image_width = static_cast<JDIMENSION>(picture.width);
    jpeg.image_height = static_cast<JDIMENSION>(picture.height);
    jpeg.input_components = picture.channels;
    jpeg.in_color_space = picture.channels == 2 ? JCS_UNKNOWN : ColorSpaceOf(picture.channels);
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, options.quality, FALSE);
    if (options.adjust)
        options.adjust(jpeg);
    jpeg_start_compress(&jpeg, TRUE);
    if (!options.app1.empty())
        jpeg_write_marker(&jpeg, JPEG_APP0 + 1,
                          reinterpret_cast<const JOCTET*>(options.app1.data()),
                          static_cast<unsigned int>(options.app1.size()));
    const std::size_t stride = static_cast<std::size_t>(picture.width) * picture.channels;
    while (jpeg.next_scanline < jpeg.image_height) {
        auto* row = const_cast<JSAMPROW>(&picture.samples[jpeg.next_scanline * stride]);
        jpeg_write_scanlines(&jpeg, &row, 1);
    }
    jpeg_finish_compress(&jpeg);
    jpeg_destroy_compress(&jpeg);
    std::string file(reinterpret_cast<const char*>(bytes), size);
    std::free(bytes);
    return file;
}

PlainPicture DecodePlain(const std::string& file) {
    jpeg_decompress_struct jpeg{};
    jpeg_error_mgr errors;
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&jpeg);
    jpeg_mem_src(&jpeg, reinterpret_cast<const unsigned char*>(file.data()), file.size());
    jpeg_read_header(&jpeg, TRUE);
    jpeg.out_color_space = ColorSpaceOf(jpeg.num_components);
    jpeg_start_decompress(&jpeg);
    PlainPicture picture{static_cast<int>(jpeg.output_width),
                         static_cast<int>(jpeg.output_height),
                         jpeg.output_components,
                         {}};
    const std::size_t stride = static_cast<std::size_t>(picture.width) * picture.channels;
    picture.samples.resize(stride * static_cast<std::size_t>(picture.height));
    while (jpeg.output_scanline < jpeg.output_height) {
        JSAMPROW row = &picture.samples[jpeg.output_scanline * stride];
        jpeg_read_scanlines(&jpeg, &row, 1);
    }
    jpeg_finish_decompress(&jpeg);
    jpeg_destroy_decompress(&jpeg);
    return picture;
}

JpegFacts FactsOf(const std::string& file) {
    JpegFacts facts;
    EXPECT_EQ(U16(file, 0), 0xFFD8);
    for (std::size_t at = 2; at < file.size();) {
        const int marker = U8(file, at + 1);
        if (marker == 0xD9) {
            facts.endsWithEndMarker = at + 2 == file.size();
            break;
        }
        const std::size_t end = at + 2 + static_cast<std::size_t>(U16(file, at + 2));
        ReadSegment(file, marker, at + 4, end, facts);
        at = NextMarker(file, end);
    }
    return facts;
}

std::size_t StartOfScanData(const std::string& file) {
    std::size_t at = 2;
    while (U8(file, at + 1) != 0xDA)
        at += 2 + static_cast<std::size_t>(U16(file, at + 2));
    return at + 2 + static_cast<std::size_t>(U16(file, at + 2));
}

std::string ExifPayload(const ExifTags& tags) {
    struct Entry {
        std::uint32_t tag, type, value;
    };
    constexpr std::uint32_t kShort = 3, kRational = 5, kRationalsAt = 8 + 2 + 4 * 12 + 4;
    std::vector<Entry> entries;
    std::vector<std::uint32_t> rationals;
    const auto addRational = [&](std::uint32_t tag, double value) {
        const auto at = kRationalsAt + 4 * static_cast<std::uint32_t>(rationals.size());
        entries.push_back({tag, kRational, at});
        rationals.push_back(static_cast<std::uint32_t>(std::lround(value * 1000)));
        rationals.push_back(1000);
    };
    if (tags.orientation >= 0)
        entries.push_back({0x112, kShort, static_cast<std::uint32_t>(tags.orientation)});
    if (tags.xResolution >= 0)
        addRational(0x11A, tags.xResolution);
    if (tags.yResolution >= 0)
        addRational(0x11B, tags.yResolution);
    if (tags.unit >= 0)
        entries.push_back({0x128, kShort, static_cast<std::uint32_t>(tags.unit)});

    TiffBytes tiff(tags.bigEndian);
    tiff.text = tags.bigEndian ? "MM" : "II";
    tiff.Put(42, 2);
    tiff.Put(8, 4);
    tiff.Put(static_cast<std::uint32_t>(entries.size()), 2);
    for (const Entry& entry : entries) {
        tiff.Put(entry.tag, 2);
        tiff.Put(entry.type, 2);
        tiff.Put(1, 4);
        tiff.Put(entry.value, entry.type == kShort ? 2 : 4);
        if (entry.type == kShort)
            tiff.Put(0, 2);
    }
    tiff.Put(0, 4);
    tiff.text.resize(kRationalsAt, '\0');
    for (const std::uint32_t value : rationals)
        tiff.Put(value, 4);
    return std::string("Exif\0\0", 6) + tiff.text;
}

}  // namespace velloran::test
