#include "codecs/OpenJpeg.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>
#include <stdexcept>

#include "io/ByteSource.h"

namespace velloran {
namespace {

constexpr OPJ_SIZE_T kFailed = static_cast<OPJ_SIZE_T>(-1);
constexpr OPJ_SIZE_T kBufferBytes = OPJ_SIZE_T{1} << 20;

OPJ_SIZE_T Read(void* to, OPJ_SIZE_T count, void* user) {
    auto& input = *static_cast<OpjInput*>(user);
    if (input.position >= input.end)
        return kFailed;
    const auto wanted =
        static_cast<std::size_t>(std::min<std::uint64_t>(count, input.end - input.position));
    const std::size_t came =
        input.source->ReadAt(input.position, {static_cast<std::uint8_t*>(to), wanted});
    for (const auto& [place, value] : input.patches)
        for (std::uint64_t i = 0; i < 4; ++i)
            if (place + i >= input.position && place + i < input.position + came)
                static_cast<std::uint8_t*>(to)[place + i - input.position] =
                    static_cast<std::uint8_t>(value >> (24 - 8 * i));
    input.position += came;
    return came > 0 ? came : kFailed;
}

OPJ_OFF_T SkipInput(OPJ_OFF_T count, void* user) {
    auto& input = *static_cast<OpjInput*>(user);
    if (count < 0 || input.position >= input.end)
        return -1;
    const auto skipped =
        std::min<std::uint64_t>(static_cast<std::uint64_t>(count), input.end - input.position);
    input.position += skipped;
    return static_cast<OPJ_OFF_T>(skipped);
}

OPJ_BOOL SeekInput(OPJ_OFF_T place, void* user) {
    auto& input = *static_cast<OpjInput*>(user);
    if (place < 0 || static_cast<std::uint64_t>(place) > input.end - input.begin)
        return OPJ_FALSE;
    input.position = input.begin + static_cast<std::uint64_t>(place);
    return OPJ_TRUE;
}

bool Reserve(OpjOutput& output, std::size_t size) {
    try {
        if (size > output.bytes.size())
            output.bytes.resize(size);
        return true;
    } catch (const std::bad_alloc&) {
    } catch (const std::length_error&) {
    }
    output.outOfMemory = true;
    return false;
}

OPJ_SIZE_T Write(void* from, OPJ_SIZE_T count, void* user) {
    auto& output = *static_cast<OpjOutput*>(user);
    if (!Reserve(output, output.position + count))
        return kFailed;
    std::memcpy(output.bytes.data() + output.position, from, count);
    output.position += count;
    return count;
}

OPJ_OFF_T SkipOutput(OPJ_OFF_T count, void* user) {
    auto& output = *static_cast<OpjOutput*>(user);
    if (count < 0 || !Reserve(output, output.position + static_cast<std::size_t>(count)))
        return -1;
    output.position += static_cast<std::size_t>(count);
    return count;
}

OPJ_BOOL SeekOutput(OPJ_OFF_T place, void* user) {
    auto& output = *static_cast<OpjOutput*>(user);
    if (place < 0 || !Reserve(output, static_cast<std::size_t>(place)))
        return OPJ_FALSE;
    output.position = static_cast<std::size_t>(place);
    return OPJ_TRUE;
}

void KeepFirst(const char* text, void* user) {
    auto& message = *static_cast<OpjMessage*>(user);
    if (message.text[0] != '\0')
        return;
    std::snprintf(message.text, sizeof message.text, "%s", text);
    const std::size_t length = std::strlen(message.text);
    if (length > 0 && message.text[length - 1] == '\n')
        message.text[length - 1] = '\0';
}

void Silence(const char*, void*) {}

}  // namespace

OpjStream MakeOpjStream(OpjInput& input) {
    OpjStream stream(opj_stream_create(kBufferBytes, OPJ_TRUE));
    if (stream == nullptr)
        return stream;
    opj_stream_set_user_data(stream.get(), &input, nullptr);
    opj_stream_set_user_data_length(stream.get(), input.end - input.begin);
    opj_stream_set_read_function(stream.get(), Read);
    opj_stream_set_skip_function(stream.get(), SkipInput);
    opj_stream_set_seek_function(stream.get(), SeekInput);
    return stream;
}

OpjStream MakeOpjStream(OpjOutput& output) {
    OpjStream stream(opj_stream_create(kBufferBytes, OPJ_FALSE));
    if (stream == nullptr)
        return stream;
    opj_stream_set_user_data(stream.get(), &output, nullptr);
    opj_stream_set_write_function(stream.get(), Write);
    opj_stream_set_skip_function(stream.get(), SkipOutput);
    opj_stream_set_seek_function(stream.get(), SeekOutput);
    return stream;
}

void KeepMessages(opj_codec_t* codec, OpjMessage& errors) {
    opj_set_info_handler(codec, Silence, nullptr);
    opj_set_warning_handler(codec, Silence, nullptr);
    opj_set_error_handler(codec, KeepFirst, &errors);
}

}  // namespace velloran
