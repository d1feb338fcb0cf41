#pragma once

// What the fuzz targets share: a check that ends the process as a sanitizer would, and the input as a stream.

#include "FCurveLib/FCurveLib.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace Fuzz {

using namespace VEM_FN::FCurveLib;

inline void Require(bool holds, const char* what, const std::string& details = "") {
    if (holds) return;
    std::fprintf(stderr, "Does not hold: %s%s%s\n", what, details.empty() ? "" : ": ", details.c_str());
    std::abort();
}

/// For the checks that answer with a text: the first thing that is wrong, empty when nothing is.
inline void RequireNone(const std::string& fault, const char* what) {
    Require(fault.empty(), what, fault);
}

inline MemoryStream StreamOf(const char* bytes, std::size_t size) {
    MemoryStream stream;
    stream.writeData(bytes, static_cast<int>(size));
    stream.setPosition(0);
    return stream;
}

inline std::string BytesOf(const MemoryStream& stream) {
    return stream.getSize() == 0 ? std::string()
                                 : std::string(stream.getData(), static_cast<std::size_t>(stream.getSize()));
}

} // namespace Fuzz

/// What libFuzzer and the seed driver call with one input after the other.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
