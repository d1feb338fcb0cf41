#include "FCurveLib/ArrayStreamAdaptor.h"

#include <cstring>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

const char* ArrayStreamAdaptor::EndOfBuffer::what() const noexcept {
    return "VEM_FN::FCurveLib::ArrayStreamAdaptor::EndOfBuffer";
}

const char* ArrayStreamAdaptor::AccessError::what() const noexcept {
    return "VEM_FN::FCurveLib::ArrayStreamAdaptor::AccessError";
}

ArrayStreamAdaptor::ArrayStreamAdaptor(char* array, int size) noexcept
    : m_size(size < 0 ? 0 : size), m_writable(array), m_readable(array) {}

ArrayStreamAdaptor::ArrayStreamAdaptor(const char* array, int size) noexcept
    : m_size(size < 0 ? 0 : size), m_writable(nullptr), m_readable(array) {}

ArrayStreamAdaptor::ArrayStreamAdaptor(const ArrayStreamAdaptor&) noexcept = default;
ArrayStreamAdaptor& ArrayStreamAdaptor::operator=(const ArrayStreamAdaptor&) noexcept = default;
ArrayStreamAdaptor::~ArrayStreamAdaptor() = default;

void ArrayStreamAdaptor::readData(void* buffer, int count) {
    if (count < 0 || count > m_size - m_position) throw EndOfBuffer();
    if (count == 0) return;
    std::memcpy(buffer, m_readable + m_position, static_cast<std::size_t>(count));
    m_position += count;
}

void ArrayStreamAdaptor::writeData(const void* buffer, int count) {
    if (!m_writable) throw AccessError();
    if (count < 0 || count > m_size - m_position) throw EndOfBuffer();
    if (count == 0) return;
    std::memcpy(m_writable + m_position, buffer, static_cast<std::size_t>(count));
    m_position += count;
}

int ArrayStreamAdaptor::getPosition() const {
    return m_position;
}

void ArrayStreamAdaptor::setPosition(int position) {
    if (position < 0 || position > m_size) throw EndOfBuffer();
    m_position = position;
}

int ArrayStreamAdaptor::getSize() const {
    return m_size;
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
