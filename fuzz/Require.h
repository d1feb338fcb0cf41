#pragma once

// What the fuzz targets share: a check that ends the process as a sanitizer would.

#include "support/StreamOf.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace Fuzz {

using namespace Test;

inline void Require(bool holds, const char* what, const std::string& details = "") {
    if (holds) return;
    std::fprintf(stderr, "Does not hold: %s%s%s\n", what, details.empty() ? "" : ": ", details.c_str());
    std::abort();
}

/// For the checks that answer with a text: the first thing that is wrong, empty when nothing is.
inline void RequireNone(const std::string& fault, const char* what) {
    Require(fault.empty(), what, fault);
}

/// Set by the seed driver for the seeds themselves, with which nothing is spared.
inline bool thorough = false;

/// Chooses one input in sixteen for what takes long, always the same ones (by an FNV-1a hash).
inline bool OneInSixteen(const std::uint8_t* data, std::size_t size) {
    std::uint32_t hash = 2166136261u;
    for (std::size_t i = 0; i < size; ++i) hash = (hash ^ data[i]) * 16777619u;
    return thorough || (hash >> 16) % 16 == 0;
}

} // namespace Fuzz

/// What libFuzzer and the seed driver call with one input after the other.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
