#include "params/Settings.h"

namespace velloran {
namespace {

class Fnv1a {
 public:
    void Add(std::uint32_t number, int bytes) {
        for (int i = 0; i < bytes; ++i) {
            hash_ ^= number >> (8 * i) & 0xFFU;
            hash_ *= 0x100000001B3U;
        }
    }
    std::uint64_t Value() const { return hash_; }

 private:
    std::uint64_t hash_ = 0xCBF29CE484222325U;
};

}  // namespace

ParaValues DefaultParaValues() {
    ParaValues values{};
    for (int i = 0; i < kParaCount; ++i)
        values[static_cast<std::size_t>(i)] = ParaRowOf(i).defaultValue;
    return values;
}

std::uint64_t Settings::Hash() const {
    Fnv1a hash;
    for (const std::int32_t value : values)
        hash.Add(static_cast<std::uint32_t>(value), 4);
    for (const char16_t unit : name)
        hash.Add(unit, 2);
    return hash.Value();
}

}  // namespace velloran
