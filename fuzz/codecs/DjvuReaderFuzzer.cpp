#include "codecs/ReaderTarget.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return velloran::fuzz::RunReader(velloran::kTypeDjvu, /*perByte=*/4194304, data, size);
}
