#include "FCurveLib/BinaryFormat.h"

#include "formats/Text.h"
#include "formats/binary/Layout.h"

#include <algorithm>
#include <cstring>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace BinaryFormat {

namespace {

std::string PrintableType(const char* type) {
    std::string result(type, strnlen(type, 4));
    std::replace_if(
        result.begin(), result.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return result;
}

std::string Bytes(std::uint64_t count) {
    return std::to_string(count) + (count == 1 ? " byte" : " bytes");
}

} // namespace

const FormatType& GetFormatType() {
    static const FormatType type("binary", "Binary", "fcrvb");
    return type;
}

BinaryError::BinaryError(const std::string& message, std::uint64_t offset) : FormatError(message), m_offset(offset) {}
const char* BinaryError::what() const noexcept {
    return "VEM_FN::FCurveLib::BinaryFormat::BinaryError";
}

UnexpectedEnd::UnexpectedEnd(std::uint64_t expectedSize, std::uint64_t foundSize, std::uint64_t offset)
    : BinaryError("The document ends too early: expected " + Bytes(expectedSize) + ", found " + Bytes(foundSize) + '.',
                  offset),
      m_expected(expectedSize), m_found(foundSize) {}
const char* UnexpectedEnd::what() const noexcept {
    return "VEM_FN::FCurveLib::BinaryFormat::UnexpectedEnd";
}

WrongBlockType::WrongBlockType(const char* expected, const char* found, std::uint64_t offset)
    : BinaryError(Private::ExpectedFound(expected, "a block of type \"" + PrintableType(found) + '"'), offset),
      m_types(std::make_shared<const std::pair<std::string, std::string>>(expected, PrintableType(found))) {}
const char* WrongBlockType::what() const noexcept {
    return "VEM_FN::FCurveLib::BinaryFormat::WrongBlockType";
}

const char* MissingBlock::what() const noexcept {
    return "VEM_FN::FCurveLib::BinaryFormat::MissingBlock";
}

WrongBlockSize::WrongBlockSize(const std::string& problem, std::uint64_t expectedSize, std::uint64_t foundSize,
                               std::uint64_t offset)
    : BinaryError(problem + ": expected " + Bytes(expectedSize) + ", found " + Bytes(foundSize) + '.', offset),
      m_expected(expectedSize), m_found(foundSize) {}
const char* WrongBlockSize::what() const noexcept {
    return "VEM_FN::FCurveLib::BinaryFormat::WrongBlockSize";
}

const char* BadValue::what() const noexcept {
    return "VEM_FN::FCurveLib::BinaryFormat::BadValue";
}

UnsupportedVersion::UnsupportedVersion(unsigned major, unsigned minor, std::uint64_t offset)
    : BinaryError(Private::VersionMessage(major, minor, kMajor), offset), m_major(major), m_minor(minor) {}
const char* UnsupportedVersion::what() const noexcept {
    return "VEM_FN::FCurveLib::BinaryFormat::UnsupportedVersion";
}
unsigned UnsupportedVersion::supportedVersion() const noexcept {
    return kMajor;
}

const char* LimitExceeded::what() const noexcept {
    return "VEM_FN::FCurveLib::BinaryFormat::LimitExceeded";
}
const char* DocumentTooLarge::what() const noexcept {
    return "VEM_FN::FCurveLib::BinaryFormat::DocumentTooLarge";
}
const char* RefusedCall::what() const noexcept {
    return "VEM_FN::FCurveLib::BinaryFormat::RefusedCall";
}
const char* NotFinite::what() const noexcept {
    return "VEM_FN::FCurveLib::BinaryFormat::NotFinite";
}

} // namespace BinaryFormat

} // namespace v19
} // namespace VEM_FN::FCurveLib
