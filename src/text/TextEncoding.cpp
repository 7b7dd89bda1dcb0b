#include "text/TextEncoding.h"

#include <iconv.h>

#include <array>
#include <cerrno>

#include "text/Text.h"

namespace velloran {

namespace {

using namespace std::string_view_literals;

/// The C library's converter, closed at the end.
class Converter {
 public:
    Converter(const char* to, const char* from) : handle_(iconv_open(to, from)) {}
    ~Converter() {
        if (IsOpen())
            iconv_close(handle_);
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    // iconv_open reports failure by a pointer of value -1.
    bool IsOpen() const { return reinterpret_cast<std::intptr_t>(handle_) != -1; }

    /// All of `input`; each byte that cannot be converted is replaced by `replacement`.
    std::string Run(std::string input, std::string_view replacement) {
        std::string output;
        std::array<char, 1024> chunk;
        char* in = input.data();
        std::size_t left = input.size();
        while (left > 0) {
            char* out = chunk.data();
            std::size_t room = chunk.size();
            const std::size_t result = iconv(handle_, &in, &left, &out, &room);
            const int cause = errno;
            output.append(chunk.data(), chunk.size() - room);
            if (result == static_cast<std::size_t>(-1) && cause != E2BIG) {
                output += replacement;
                ++in;
                --left;
            }
        }
        return output;
    }

 private:
    iconv_t handle_;
};

std::u16string DecodeUtf16(std::string_view bytes, bool bigEndian) {
    std::u16string text;
    text.reserve(bytes.size() / 2);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto first = static_cast<unsigned char>(bytes[i]);
        const auto second = static_cast<unsigned char>(bytes[i + 1]);
        text += static_cast<char16_t>(bigEndian ? first << 8 | second : second << 8 | first);
    }
    return text;
}

std::string EncodeUtf16(std::u16string_view text, bool bigEndian) {
    std::string bytes;
    bytes.reserve(text.size() * 2);
    for (const char16_t unit : text) {
        const char high = static_cast<char>(unit >> 8);
        const char low = static_cast<char>(unit & 0xFF);
        bytes += bigEndian ? high : low;
        bytes += bigEndian ? low : high;
    }
    return bytes;
}

bool IsAscii(std::string_view bytes) {
    for (const char byte : bytes) {
        if (static_cast<unsigned char>(byte) >= 0x80)
            return false;
    }
    return true;
}

std::u16string DecodeGb18030(std::string_view bytes) {
    if (IsAscii(bytes))
        return ToUtf16(bytes);
    Converter converter("UTF-8", "GB18030");
    if (!converter.IsOpen())
        return ToUtf16(bytes);  // ASCII still reads, all else shows as U+FFFD
    return ToUtf16(converter.Run(std::string(bytes), "\xEF\xBF\xBD"));
}

std::string EncodeGb18030(std::u16string_view text) {
    std::string utf8 = ToUtf8(text);
    if (IsAscii(utf8))
        return utf8;
    Converter converter("GB18030", "UTF-8");
    return converter.IsOpen() ? converter.Run(std::move(utf8), "?") : utf8;
}

}  // namespace

TextEncoding DetectTextEncoding(std::string_view bytes) {
    for (const TextEncoding marked :
         {TextEncoding::kUtf8Mark, TextEncoding::kUtf16Le, TextEncoding::kUtf16Be}) {
        if (bytes.starts_with(TextMark(marked)))
            return marked;
    }
    return IsUtf8(bytes) ? TextEncoding::kUtf8 : TextEncoding::kGb18030;
}

std::string_view TextMark(TextEncoding encoding) {
    switch (encoding) {
        case TextEncoding::kUtf8Mark:
            return "\xEF\xBB\xBF"sv;
        case TextEncoding::kUtf16Le:
            return "\xFF\xFE"sv;
        case TextEncoding::kUtf16Be:
            return "\xFE\xFF"sv;
        default:
            return {};
    }
}

std::u16string DecodeText(TextEncoding encoding, std::string_view bytes) {
    switch (encoding) {
        case TextEncoding::kUtf16Le:
            return DecodeUtf16(bytes, /*bigEndian=*/false);
        case TextEncoding::kUtf16Be:
            return DecodeUtf16(bytes, /*bigEndian=*/true);
        case TextEncoding::kGb18030:
            return DecodeGb18030(bytes);
        default:
            return ToUtf16(bytes);
    }
}

std::string EncodeText(TextEncoding encoding, std::u16string_view text) {
    switch (encoding) {
        case TextEncoding::kUtf16Le:
            return EncodeUtf16(text, /*bigEndian=*/false);
        case TextEncoding::kUtf16Be:
            return EncodeUtf16(text, /*bigEndian=*/true);
        case TextEncoding::kGb18030:
            return EncodeGb18030(text);
        default:
            return ToUtf8(text);
    }
}

}  // namespace velloran
