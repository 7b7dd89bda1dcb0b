#pragma once

// Numbers in the order of a file's bytes. Internal to the codecs.

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace velloran {

/// `size` bytes (at most 8) as a number, the highest first or the lowest first.
inline std::uint64_t NumberAt(const std::uint8_t* bytes, std::size_t size, bool bigEndian) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < size; ++i)
        value = value << 8 | bytes[bigEndian ? i : size - 1 - i];
    return value;
}

inline void PutNumberAt(std::uint8_t* bytes, std::size_t size, bool bigEndian,
                        std::uint64_t value) {
    for (std::size_t i = 0; i < size; ++i)
        bytes[bigEndian ? size - 1 - i : i] = static_cast<std::uint8_t>(value >> (8 * i));
}

inline std::uint16_t Big16(const std::uint8_t* bytes) {
    return static_cast<std::uint16_t>(NumberAt(bytes, 2, true));
}
inline std::uint32_t Big32(const std::uint8_t* bytes) {
    return static_cast<std::uint32_t>(NumberAt(bytes, 4, true));
}
inline std::uint16_t Little16(const std::uint8_t* bytes) {
    return static_cast<std::uint16_t>(NumberAt(bytes, 2, false));
}
inline std::uint32_t Little32(const std::uint8_t* bytes) {
    return static_cast<std::uint32_t>(NumberAt(bytes, 4, false));
}

/// Adds `size` bytes of a number behind others.
inline void AppendBig(std::vector<std::uint8_t>& to, std::size_t size, std::uint64_t value) {
    to.resize(to.size() + size);
    PutNumberAt(to.data() + to.size() - size, size, true, value);
}
inline void AppendBytes(std::vector<std::uint8_t>& to, std::span<const std::uint8_t> bytes) {
    to.insert(to.end(), bytes.begin(), bytes.end());
}

}  // namespace velloran
