#include "FCurveLib/IFF.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

IFFType::IFFType(const char* text) noexcept {
    for (int i = 0; text && i < 4 && text[i]; ++i) m_bytes[i] = text[i];
}

IFFType IFFType::fromBytes(const char* bytes) noexcept {
    IFFType type;
    std::memcpy(type.m_bytes, bytes, sizeof type.m_bytes);
    return type;
}

template class IFFWriter<LittleEndianBinaryPolicy>;
template class IFFReader<LittleEndianBinaryPolicy>;

} // namespace v19
} // namespace VEM_FN::FCurveLib
