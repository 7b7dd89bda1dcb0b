#include "codecs/ReaderTarget.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return velloran::fuzz::RunReader(velloran::kTypePng, /*perByte=*/33024, data, size);
}
