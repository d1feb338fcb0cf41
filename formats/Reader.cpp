#include "FCurveLib/Reader.h"

#include "formats/Registration.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

template class SimpleListNode<Reader>;

// Registers the library's own formats first: a host's static reader may be constructed before this library's statics
// are, and is nevertheless the newer one.
Reader::Reader(const FormatType& type) : Reader(type, Private::RegisterFormats()) {}
Reader::Reader(const FormatType& type, Private::Registered) : m_type(type) {}
Reader::~Reader() = default;

} // namespace v19
} // namespace VEM_FN::FCurveLib
