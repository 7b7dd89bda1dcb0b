#include "codecs/PlainJp2.h"

#include <gtest/gtest.h>
#include <openjpeg.h>

#include <algorithm>
#include <cstring>
#include <random>

namespace velloran::test {
namespace {

struct Stream {
    std::string bytes;
    std::size_t at = 0;
};

OPJ_SIZE_T Read(void* to, OPJ_SIZE_T count, void* user) {
    auto& stream = *static_cast<Stream*>(user);
    if (stream.at >= stream.bytes.size())
        return static_cast<OPJ_SIZE_T>(-1);
    count = std::min(count, stream.bytes.size() - stream.at);
    std::memcpy(to, stream.bytes.data() + stream.at, count);
    stream.at += count;
    return count;
}
OPJ_SIZE_T Write(void* from, OPJ_SIZE_T count, void* user) {
    auto& stream = *static_cast<Stream*>(user);
    stream.bytes.resize(std::max(stream.bytes.size(), stream.at + count));
    std::memcpy(stream.bytes.data() + stream.at, from, count);
    stream.at += count;
    return count;
}
OPJ_OFF_T Skip(OPJ_OFF_T count, void* user) {
    static_cast<Stream*>(user)->at += static_cast<std::size_t>(count);
    return count;
}
OPJ_BOOL Seek(OPJ_OFF_T at, void* user) {
    static_cast<Stream*>(user)->at = static_cast<std::size_t>(at);
    return OPJ_TRUE;
}

opj_stream_t* Open(Stream& stream, bool input) {
    opj_stream_t* opened = opj_stream_create(1 << 16, input ? OPJ_TRUE : OPJ_FALSE);
    opj_stream_set_user_data(opened, &stream, nullptr);
    opj_stream_set_user_data_length(opened, stream.bytes.size());
    opj_stream_set_read_function(opened, Read);
    opj_stream_set_write_function(opened, Write);
    opj_stream_set_skip_function(opened, Skip);
    opj_stream_set_seek_function(opened, Seek);
    return opened;
}

int Part(int whole, int step) {
    return (whole + step - 1) / step;
}

}  // namespace

PlainJ2k J2kOfNoise(int width, int height, int components, int bits, bool isSigned) {
    PlainJ2k picture{width, height, 0, {}};
    std::mt19937 random(static_cast<unsigned>(bits * 100 + components));
    for (int c = 0; c < components; ++c) {
        PlainComponent component{bits, isSigned, 1, 1, {}};
        for (int i = 0; i < width * height; ++i)
            component.samples.push_back(static_cast<int>(random() & ((1U << bits) - 1)) -
                                        (isSigned ? 1 << (bits - 1) : 0));
        picture.components.push_back(component);
    }
    return picture;
}

std::string EncodeJ2k(const PlainJ2k& picture) {
    std::vector<opj_image_cmptparm_t> parts;
    for (const PlainComponent& component : picture.components) {
        opj_image_cmptparm_t part{};
        part.dx = static_cast<OPJ_UINT32>(component.xStep);
        part.dy = static_cast<OPJ_UINT32>(component.yStep);
        part.w = static_cast<OPJ_UINT32>(Part(picture.width, component.xStep));
        part.h = static_cast<OPJ_UINT32>(Part(picture.height, component.yStep));
        part.prec = static_cast<OPJ_UINT32>(component.bits);
        part.sgnd = component.isSigned ? 1 : 0;
        parts.push_back(part);
    }
    opj_image_t* image = opj_image_create(static_cast<OPJ_UINT32>(parts.size()), parts.data(),
                                          OPJ_CLRSPC_UNSPECIFIED);
    image->x1 = static_cast<OPJ_UINT32>(picture.width);
    image->y1 = static_cast<OPJ_UINT32>(picture.height);
    for (std::size_t c = 0; c < parts.size(); ++c)
        std::copy(picture.components[c].samples.begin(), picture.components[c].samples.end(),
                  image->comps[c].data);
    opj_cparameters_t parameters;
    opj_set_default_encoder_parameters(&parameters);
    parameters.tcp_numlayers = 1;
    parameters.cp_disto_alloc = 1;
    parameters.tcp_rates[0] = 0;
    parameters.numresolution = std::min(picture.width, picture.height) > 1 ? 2 : 1;
    if (picture.tileSide > 0) {
        parameters.tile_size_on = OPJ_TRUE;
        parameters.cp_tdx = parameters.cp_tdy = picture.tileSide;
    }
    Stream stream;
    opj_codec_t* codec = opj_create_compress(OPJ_CODEC_J2K);
    opj_stream_t* opened = Open(stream, false);
    EXPECT_TRUE(opj_setup_encoder(codec, &parameters, image));
    EXPECT_TRUE(opj_start_compress(codec, image, opened));
    EXPECT_TRUE(opj_encode(codec, opened));
    EXPECT_TRUE(opj_end_compress(codec, opened));
    opj_stream_destroy(opened);
    opj_destroy_codec(codec);
    opj_image_destroy(image);
    return stream.bytes;
}

PlainJ2k DecodeJ2k(const std::string& bytes) {
    Stream stream{bytes, 0};
    opj_codec_t* codec = opj_create_decompress(OPJ_CODEC_J2K);
    opj_stream_t* opened = Open(stream, true);
    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);
    opj_image_t* image = nullptr;
    EXPECT_TRUE(opj_setup_decoder(codec, &parameters));
    EXPECT_TRUE(opj_read_header(opened, codec, &image));
    PlainJ2k picture;
    if (image != nullptr) {
        EXPECT_TRUE(opj_decode(codec, opened, image));
        EXPECT_TRUE(opj_end_decompress(codec, opened));
        picture.width = static_cast<int>(image->x1 - image->x0);
        picture.height = static_cast<int>(image->y1 - image->y0);
        for (OPJ_UINT32 c = 0; c < image->numcomps; ++c) {
            const opj_image_comp_t& part = image->comps[c];
            PlainComponent component{static_cast<int>(part.prec),
                                     part.sgnd != 0,
                                     static_cast<int>(part.dx),
                                     static_cast<int>(part.dy),
                                     {}};
            component.samples.assign(part.data, part.data + std::size_t{part.w} * part.h);
            picture.components.push_back(component);
        }
        opj_image_destroy(image);
    }
    opj_stream_destroy(opened);
    opj_destroy_codec(codec);
    return picture;
}

std::string BigNumber(std::uint64_t value, int bytes) {
    std::string text;
    for (int i = bytes - 1; i >= 0; --i)
        text += static_cast<char>(value >> (8 * i));
    return text;
}

std::string Jp2Box(const std::string& name, const std::string& contents) {
    return BigNumber(contents.size() + 8, 4) + name + contents;
}

std::string Jp2Header(const PlainJ2k& picture, int color, int bitsOfAll) {
    return Jp2Box("ihdr", BigNumber(static_cast<std::uint64_t>(picture.height), 4) +
                              BigNumber(static_cast<std::uint64_t>(picture.width), 4) +
                              BigNumber(picture.components.size(), 2) +
                              BigNumber(static_cast<std::uint64_t>(bitsOfAll - 1), 1) +
                              BigNumber(7, 1) + BigNumber(0, 2)) +
           Jp2Box("colr", BigNumber(1, 1) + BigNumber(0, 2) +
                              BigNumber(static_cast<std::uint64_t>(color), 4));
}

std::string Jp2File(const std::string& header, const std::string& more, const std::string& stream) {
    return Jp2Box("jP  ", "\x0D\x0A\x87\x0A") + Jp2Box("ftyp", "jp2 " + BigNumber(0, 4) + "jp2 ") +
           Jp2Box("jp2h", header) + more + Jp2Box("jp2c", stream);
}

std::string FindBox(const std::string& boxes, const std::string& path) {
    const std::string name = path.substr(0, 4);
    for (std::size_t at = 0; at + 8 <= boxes.size();) {
        std::size_t size = 0;
        for (std::size_t i = 0; i < 4; ++i)
            size = size << 8 | static_cast<unsigned char>(boxes[at + i]);
        if (size < 8 || size > boxes.size() - at)
            return {};
        if (boxes.compare(at + 4, 4, name) == 0) {
            const std::string contents = boxes.substr(at + 8, size - 8);
            return path.size() > 5 ? FindBox(contents, path.substr(5)) : contents;
        }
        at += size;
    }
    return {};
}

}  // namespace velloran::test
