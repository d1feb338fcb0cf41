#pragma once

#include "FCurveLib/Stream.h"

#include <cstddef>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// A stream over an array of the caller's, whose length is fixed: nothing is allocated, nothing grows.
///
/// The array must outlive the adaptor. A copy is a second position over the same array.
class FCURVELIB_API ArrayStreamAdaptor : public Stream {
public:
    /// A transfer or position past the array's end, or a negative one. The array and the position are unchanged.
    class FCURVELIB_API EndOfBuffer : public StreamException {
    public:
        const char* what() const noexcept override;
    };

    /// A write, of however many bytes, to an array that was given as const.
    class FCURVELIB_API AccessError : public StreamException {
    public:
        const char* what() const noexcept override;
    };

    /// \name Make
    /// Over size bytes, from position 0. A negative size counts as 0; a null array must have none.
    /// @{

    /// Reads and writes.
    ArrayStreamAdaptor(char* array, int size) noexcept;
    /// Reads only.
    ArrayStreamAdaptor(const char* array, int size) noexcept;
    ArrayStreamAdaptor(const ArrayStreamAdaptor&) noexcept;
    ArrayStreamAdaptor& operator=(const ArrayStreamAdaptor&) noexcept;
    ~ArrayStreamAdaptor() override;
    /// @}

    /// \name Stream
    /// @{
    void readData(void* buffer, int count) override;

    /// Asks whether the array may be written to before it looks at the count. What does not fit whole is not written.
    void writeData(const void* buffer, int count) override;
    int getPosition() const override;
    void setPosition(int position) override;

    /// The array's length, however much was written.
    int getSize() const override;
    /// @}

private:
    int m_position = 0; // never beyond the size
    int m_size;
    char* m_writable; // null when the array is read only
    const char* m_readable;
};

/// N items of type T, zero at construction. Indices are not checked.
template<class T, int N>
class Array {
    static_assert(N > 0, "an array has items");

public:
    T& operator[](int index) noexcept { return m_items[index]; }
    const T& operator[](int index) const noexcept { return m_items[index]; }

private:
    T m_items[static_cast<std::size_t>(N)] = {}; // cast: silent under -Wsign-conversion
};

namespace Private {
// A base, so that the array is there before the adaptor that is given it.
template<int N>
struct ArrayHolder {
    Array<char, N> array;
};
} // namespace Private

/// A stream that carries its own N zero bytes. getSize() is N from the beginning.
template<int N>
class ArrayStream : private Private::ArrayHolder<N>, public ArrayStreamAdaptor {
public:
    ArrayStream() noexcept : ArrayStreamAdaptor(&this->array[0], N) {}
    ArrayStream(const ArrayStream&) = delete;
    ArrayStream& operator=(const ArrayStream&) = delete;

    /// The bytes, wherever the position stands.
    const Array<char, N>& getArray() const noexcept { return this->array; }
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
