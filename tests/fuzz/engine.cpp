// A target as the fuzzing engine calls it.
#include <cstddef>

#include "targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FUZZ_TARGET({data, size});
    return 0;
}
