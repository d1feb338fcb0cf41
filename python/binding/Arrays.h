#pragma once

#include "Binding.h"

#include <pybind11/numpy.h>

#include <cstddef>
#include <vector>

namespace FCurvePython {

using Doubles = py::array_t<double, py::array::forcecast | py::detail::npy_api::NPY_ARRAY_ALIGNED_>;

/// The numbers of an array, or of what numpy makes one of: float64 as they are, other real numbers converted, all else
/// a TypeError.
Doubles ToDoubles(py::handle numbers, const char* name);
/// The result of a shape: a new array, or the given one, which has to have that shape.
py::array_t<double> ResultArray(const std::vector<py::ssize_t>& shape, py::handle out);
/// Whether writing n results to y may change numbers of x.
bool Overlap(const Doubles& x, const double* y, std::size_t n);
/// The next piece of the array's numbers in order: a pointer to them as they lie, or to a copy in the buffer.
class Pieces {
public:
    explicit Pieces(const Doubles& array);
    /// At most limit numbers; count 0 at the end.
    const double* next(std::vector<double>& buffer, std::size_t limit, std::size_t& count);

private:
    const Doubles& m_array;
    bool m_contiguous;
    std::size_t m_done = 0;
    std::vector<py::ssize_t> m_index;
};

/// Calls op(const double* x, double* y, std::size_t n) for all numbers of x: a number gives a number, an array one of
/// its shape, or out.
template<class Op>
py::object MapNumbers(py::handle x, py::handle out, const Op& op) {
    if (out.is_none() && (PyFloat_Check(x.ptr()) || PyLong_Check(x.ptr()))) {
        const double number = ToNumber(x);
        double value = 0.0;
        op(&number, &value, std::size_t{1});
        return py::float_(value);
    }
    Doubles numbers = ToDoubles(x, "x");
    if (numbers.ndim() == 0 && out.is_none()) {
        double value = 0.0;
        op(numbers.data(), &value, std::size_t{1});
        return py::float_(value);
    }
    py::array_t<double> result = ResultArray({numbers.shape(), numbers.shape() + numbers.ndim()}, out);
    double* y = result.mutable_data();
    const bool inPlace = numbers.data() == y && (numbers.flags() & py::array::c_style) != 0;
    if (!inPlace && Overlap(numbers, y, static_cast<std::size_t>(result.size())))
        numbers = Doubles::ensure(numbers.attr("copy")());
    Pieces pieces(numbers);
    std::vector<double> buffer;
    std::size_t count = 0;
    for (const double* piece = pieces.next(buffer, 4096, count); count > 0; piece = pieces.next(buffer, 4096, count)) {
        op(piece, y, count);
        y += count;
    }
    return std::move(result);
}

} // namespace FCurvePython
