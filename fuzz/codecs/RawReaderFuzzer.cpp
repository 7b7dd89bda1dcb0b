#include "codecs/ReaderTarget.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return velloran::fuzz::RunReader(velloran::kTypeRaw, /*perByte=*/4096, data, size);
}
