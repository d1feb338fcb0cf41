#pragma once

/// \file
/// Numbers as bytes, in an order that does not depend on the machine.

#include "FCurveLib/Stream.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// \name Byte-order policies
/// What a BinaryIO carries: one byte, the swap flag. Clear, the least significant byte comes first, as in the memory of
/// the machines that the library is made for; set, the most significant one. The flag alone decides about the bytes,
/// on every machine.
/// @{

/// Clear at construction; its owner may change it at any time, for instance when a file's header has been read.
class DynamicBinaryPolicy {
public:
    constexpr explicit DynamicBinaryPolicy(bool swap = false) noexcept : m_swap(swap) {}

    constexpr bool getSwap() const noexcept { return m_swap; }
    constexpr void setSwap(bool swap) noexcept { m_swap = swap; }

private:
    bool m_swap;
};

/// Least significant byte first.
class LittleEndianBinaryPolicy : private DynamicBinaryPolicy {
public:
    constexpr LittleEndianBinaryPolicy() noexcept = default;
    using DynamicBinaryPolicy::getSwap;
};

/// Most significant byte first.
class BigEndianBinaryPolicy : private DynamicBinaryPolicy {
public:
    constexpr BigEndianBinaryPolicy() noexcept : DynamicBinaryPolicy(true) {}
    using DynamicBinaryPolicy::getSwap;
};

/// Always reverses the order that is native to the library, to the most significant byte first.
class SwapBinaryPolicy : private DynamicBinaryPolicy {
public:
    constexpr SwapBinaryPolicy() noexcept : DynamicBinaryPolicy(true) {}
    using DynamicBinaryPolicy::getSwap;
};

/// Never reverses it.
class NoSwapBinaryPolicy : private DynamicBinaryPolicy {
public:
    constexpr NoSwapBinaryPolicy() noexcept = default;
    using DynamicBinaryPolicy::getSwap;
};
/// @}

/// Reads and writes numbers as bytes, in the order of its policy.
///
/// Integers are in two's complement; float and double are the bits of IEEE 754, so that every value comes back as it
/// was, NaNs with their payload, infinities and -0 included. Copies carry a policy of their own.
template<class Policy>
class BinaryIO {
public:
    BinaryIO() = default;
    explicit BinaryIO(const Policy& policy) : m_policy(policy) {}

    Policy& getPolicy() noexcept { return m_policy; }
    const Policy& getPolicy() const noexcept { return m_policy; }

    /// \name Read from a stream
    /// Exceptions are the stream's; when fewer bytes are left than the number has, its end-of-data exception.
    /// @{
    std::int8_t readInt8(Stream& stream) const { return read<std::int8_t>(stream); }
    std::uint8_t readUInt8(Stream& stream) const { return read<std::uint8_t>(stream); }
    std::int16_t readInt16(Stream& stream) const { return read<std::int16_t>(stream); }
    std::uint16_t readUInt16(Stream& stream) const { return read<std::uint16_t>(stream); }
    std::int32_t readInt32(Stream& stream) const { return read<std::int32_t>(stream); }
    std::uint32_t readUInt32(Stream& stream) const { return read<std::uint32_t>(stream); }
    std::int64_t readInt64(Stream& stream) const { return read<std::int64_t>(stream); }
    std::uint64_t readUInt64(Stream& stream) const { return read<std::uint64_t>(stream); }
    float readFloat(Stream& stream) const { return read<float>(stream); }
    double readDouble(Stream& stream) const { return read<double>(stream); }
    /// @}

    /// \name Write to a stream
    /// Exceptions are the stream's.
    /// @{
    void writeInt8(Stream& stream, std::int8_t value) const { write(stream, value); }
    void writeUInt8(Stream& stream, std::uint8_t value) const { write(stream, value); }
    void writeInt16(Stream& stream, std::int16_t value) const { write(stream, value); }
    void writeUInt16(Stream& stream, std::uint16_t value) const { write(stream, value); }
    void writeInt32(Stream& stream, std::int32_t value) const { write(stream, value); }
    void writeUInt32(Stream& stream, std::uint32_t value) const { write(stream, value); }
    void writeInt64(Stream& stream, std::int64_t value) const { write(stream, value); }
    void writeUInt64(Stream& stream, std::uint64_t value) const { write(stream, value); }
    void writeFloat(Stream& stream, float value) const { write(stream, value); }
    void writeDouble(Stream& stream, double value) const { write(stream, value); }
    /// @}

    /// \name To and from memory
    /// The same bytes, for records that are packed first and transferred at once. Number is an arithmetic type of 1, 2,
    /// 4 or 8 bytes; sizeof(Number) bytes must be there. Both return the place after them.
    /// @{
    template<class Number>
    char* store(char* bytes, Number value) const noexcept {
        const auto bits = toBits(value);
        if (m_policy.getSwap()) {
            storeDescending(bytes, bits, std::make_index_sequence<sizeof(Number)>());
        } else {
            storeAscending(bytes, bits, std::make_index_sequence<sizeof(Number)>());
        }
        return bytes + sizeof(Number);
    }

    template<class Number>
    const char* load(const char* bytes, Number& value) const noexcept {
        const Bits<Number> bits = m_policy.getSwap()
                                      ? loadDescending<Number>(bytes, std::make_index_sequence<sizeof(Number)>())
                                      : loadAscending<Number>(bytes, std::make_index_sequence<sizeof(Number)>());
        std::memcpy(&value, &bits, sizeof value);
        return bytes + sizeof(Number);
    }
    /// @}

private:
    template<std::size_t Size>
    using Unsigned = std::conditional_t<
        Size == 1, std::uint8_t,
        std::conditional_t<Size == 2, std::uint16_t, std::conditional_t<Size == 4, std::uint32_t, std::uint64_t>>>;

    template<class Number>
    struct BitsOf {
        static_assert(std::is_arithmetic_v<Number> && !std::is_same_v<Number, bool> && sizeof(Number) <= 8,
                      "a number of at most 64 bits");
        static_assert(std::is_integral_v<Number> || std::numeric_limits<Number>::is_iec559, "IEEE 754");
        using Type = Unsigned<sizeof(Number)>;
    };

    template<class Number>
    using Bits = typename BitsOf<Number>::Type;

    template<class Number>
    static Bits<Number> toBits(Number value) noexcept {
        Bits<Number> bits;
        std::memcpy(&bits, &value, sizeof bits);
        return bits;
    }

    // Folds, not loops: compilers make one move of each, with a byte swap where it takes one.
    template<class Word, std::size_t... I>
    static void storeAscending(char* bytes, Word bits, std::index_sequence<I...>) noexcept {
        ((bytes[I] = static_cast<char>(bits >> (8 * I))), ...);
    }
    template<class Word, std::size_t... I>
    static void storeDescending(char* bytes, Word bits, std::index_sequence<I...>) noexcept {
        ((bytes[sizeof(Word) - 1 - I] = static_cast<char>(bits >> (8 * I))), ...);
    }
    template<class Number, std::size_t... I>
    static Bits<Number> loadAscending(const char* bytes, std::index_sequence<I...>) noexcept {
        return static_cast<Bits<Number>>((... | (std::uint64_t{static_cast<unsigned char>(bytes[I])} << (8 * I))));
    }
    template<class Number, std::size_t... I>
    static Bits<Number> loadDescending(const char* bytes, std::index_sequence<I...>) noexcept {
        return static_cast<Bits<Number>>(
            (... | (std::uint64_t{static_cast<unsigned char>(bytes[sizeof(Number) - 1 - I])} << (8 * I))));
    }

    template<class Number>
    Number read(Stream& stream) const {
        char bytes[sizeof(Number)];
        stream.readData(bytes, static_cast<int>(sizeof bytes));
        Number value;
        load(bytes, value);
        return value;
    }

    template<class Number>
    void write(Stream& stream, Number value) const {
        char bytes[sizeof(Number)];
        store(bytes, value);
        stream.writeData(bytes, static_cast<int>(sizeof bytes));
    }

    Policy m_policy;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
