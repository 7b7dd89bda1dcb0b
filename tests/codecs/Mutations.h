#pragma once

// Hostile input for readers: whole files cut short and damaged, the same ones on every run.

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace velloran::test {

/// The bytes of a file as readers want them.
inline std::span<const std::uint8_t> BytesOf(const std::string& file) {
    return {reinterpret_cast<const std::uint8_t*>(file.data()), file.size()};
}

/// Beginnings of the file: every length up to 100 bytes, then about 100 lengths spread over the
/// rest, and the whole file without its last 1, 2 and 3 bytes. Shortest first, the whole file not
/// among them.
std::vector<std::string> TruncationsOf(const std::string& file);

/// Calls `visit` with `count` damaged copies of the file. The same file, count and seed give the
/// same copies. Every second damage lies in the first 256 bytes, where heads are; kinds of damage
/// are a flipped bit, a byte or a 32-bit word of an extreme value, a run of noise, bytes cut out
/// and bytes told twice. Each copy carries one to four of them.
void ForEachMutation(const std::string& file, int count, std::uint32_t seed,
                     const std::function<void(const std::string&)>& visit);

}  // namespace velloran::test
