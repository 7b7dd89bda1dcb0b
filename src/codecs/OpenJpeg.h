#pragma once

// OpenJPEG over sources and sinks, its handles freed and its messages kept. Internal to the codecs.

#include <openjpeg.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace velloran {

class ByteSource;

// To the library codec and stream are void pointers, so each has a holder of its own.
struct CodecDeleter {
    using pointer = opj_codec_t*;
    void operator()(opj_codec_t* codec) const { opj_destroy_codec(codec); }
};
struct StreamDeleter {
    using pointer = opj_stream_t*;
    void operator()(opj_stream_t* stream) const { opj_stream_destroy(stream); }
};
struct ImageDeleter {
    void operator()(opj_image_t* image) const { opj_image_destroy(image); }
};
using OpjCodec = std::unique_ptr<opj_codec_t, CodecDeleter>;
using OpjStream = std::unique_ptr<opj_stream_t, StreamDeleter>;
using OpjImage = std::unique_ptr<opj_image_t, ImageDeleter>;

/// Where the library's reading or writing stands.
struct OpjInput {
    ByteSource* source = nullptr;
    std::uint64_t position = 0, begin = 0, end = 0;
    /// Numbers of four bytes that are read otherwise than they stand in the source, by their
    /// places.
    std::vector<std::pair<std::uint64_t, std::uint32_t>> patches = {};
};
struct OpjOutput {
    std::vector<std::uint8_t> bytes;
    std::size_t position = 0;
    bool outOfMemory = false;
};

/// Both outlive the stream. Null without memory.
OpjStream MakeOpjStream(OpjInput& input);
OpjStream MakeOpjStream(OpjOutput& output);

/// What the library said first.
struct OpjMessage {
    char text[160] = "";
};
void KeepMessages(opj_codec_t* codec, OpjMessage& errors);

}  // namespace velloran
