#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

/// What a fuzzer calls with one input after the other.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

/// Ends the program when a promise is broken, in release builds too.
inline void require(bool kept)
{
    if (!kept)
        std::abort();
}
