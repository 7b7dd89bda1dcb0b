#include "codecs/ReaderTarget.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return velloran::fuzz::RunReader(velloran::kTypeJp2, /*perByte=*/1048576, data, size);
}
