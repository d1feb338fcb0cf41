#pragma once

// Bytes as a source of choices: whatever they are, they say something. After the last one all are zero.

#include "support/Random.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

namespace Test {

class ScriptBytes : public Choices {
public:
    ScriptBytes(const std::uint8_t* data, std::size_t size) : m_next(data), m_end(data + size) {}

    bool ended() const override { return m_next == m_end; }
    int byte() { return ended() ? 0 : *m_next++; }
    int below(int count) override { return byte() % count; }
    double between(double low, double high) override { return low + (high - low) * byte() / 255.0; }

    /// Mostly frames as a host has them; neighbours that come too close; the special; any double there is.
    double coordinate() override {
        static const double special[] = {0.0,
                                         -0.0,
                                         1e-7,
                                         0.001,
                                         1.0 / 3.0,
                                         1e12,
                                         -1e12,
                                         5e-324,
                                         -2.2250738585072014e-308,
                                         std::numeric_limits<double>::max(),
                                         -std::numeric_limits<double>::max(),
                                         std::numeric_limits<double>::infinity(),
                                         -std::numeric_limits<double>::infinity(),
                                         std::numeric_limits<double>::quiet_NaN()};
        switch (below(8)) {
        case 0:
            return oneOf(special);
        case 1: {
            std::uint64_t bits = 0;
            for (int i = 0; i < 8; ++i) bits = bits << 8 | static_cast<unsigned>(byte());
            double result;
            std::memcpy(&result, &bits, sizeof result);
            return result;
        }
        case 2:
            return wide() * 0.0004;
        case 3:
            return wide() * 1000.1;
        default:
            return small();
        }
    }

    double small() { return (static_cast<double>(byte()) - 128.0) / 4.0; }

private:
    double wide() { return small() * 256.0 + small(); }

    const std::uint8_t* m_next;
    const std::uint8_t* m_end;
};

} // namespace Test
