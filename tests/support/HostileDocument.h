#pragma once

// Documents that are made to cost as much as possible. Programs that read them link Allocations.cpp.

#include "FCurveLib/FCurveLib.h"
#include "support/Allocations.h"
#include "support/StreamOf.h"

#include <gtest/gtest.h>

#include <ctime>
#include <string>

namespace Test {

constexpr int kHostileBytes = 400000; // of a document, about

inline std::string repeated(const std::string& pattern) {
    std::string text;
    while (text.size() < kHostileBytes) text += pattern;
    return text;
}
// The pattern with 0, 1, 2 ... in place of its "%".
inline std::string numbered(const std::string& pattern) {
    const std::size_t place = pattern.find('%');
    std::string text;
    for (int i = 0; text.size() < kHostileBytes; ++i) text += std::string(pattern).replace(place, 1, std::to_string(i));
    return text;
}

struct Hostile {
    const char* name;
    const char* format;
    std::string document;
    const char* outcome; // the exception's class; nothing where the document is read
};

// Reading it takes memory in proportion to its length and little time, and ends as it says.
inline void expectLittleCost(const Hostile& hostile) {
    // A key in a curve takes some 450 bytes and a curve 1 000, for which the shortest formats have two.
    constexpr std::size_t kBytesPerByte = 600;
    SCOPED_TRACE(std::string(hostile.format) + ", " + hostile.name);
    MemoryStream stream = StreamOf(hostile.document);
    std::string outcome;
    const std::clock_t begin = std::clock(); // of the processor, whatever else the machine does
    const std::size_t peak = peakOf([&] {
        const auto container = FCurveContainer::create();
        ContainerInterface target(*container);
        try {
            FormatFactory::getReader(hostile.format)->readCurves(stream, target);
        } catch (const Exception& exception) {
            outcome = exception.what();
            outcome.erase(0, outcome.rfind(':') + 1);
        }
        std::size_t keys = 0;
        for (const FCurve& curve : *container) keys += curve.size() - 1;
        EXPECT_LE(keys, hostile.document.size());
    });
    const double seconds = static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
    EXPECT_EQ(outcome, hostile.outcome);
    EXPECT_LT(peak, 100000 + kBytesPerByte * hostile.document.size());
    EXPECT_LT(seconds, 20.0);
}

} // namespace Test
