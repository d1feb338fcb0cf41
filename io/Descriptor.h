#pragma once

#include "io/FileCalls.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

// Closes what is open; -1 is nothing.
class Descriptor {
public:
    Descriptor() noexcept = default;
    explicit Descriptor(int descriptor) noexcept : m_descriptor(descriptor) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { close(); }

    int get() const noexcept { return m_descriptor; }
    void reset(int descriptor) noexcept {
        close();
        m_descriptor = descriptor;
    }
    // As the system's call, which is not repeated: the descriptor is gone in any case.
    int close() noexcept {
        const int result = m_descriptor == -1 ? 0 : fileCalls.closeDescriptor(m_descriptor);
        m_descriptor = -1;
        return result;
    }

private:
    int m_descriptor = -1;
};

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
