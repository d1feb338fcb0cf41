#include "Arrays.h"

#include <algorithm>
#include <functional>

namespace FCurvePython {

Doubles ToDoubles(py::handle numbers, const char* name) {
    const py::array array = py::array::ensure(numbers);
    if (!array || std::string("fiub").find(array.dtype().kind()) == std::string::npos)
        throw py::type_error(std::string("Expected real numbers for ") + name);
    Doubles doubles = Doubles::ensure(array);
    if (!doubles) throw py::type_error(std::string("Expected real numbers for ") + name);
    return doubles;
}

py::array_t<double> ResultArray(const std::vector<py::ssize_t>& shape, py::handle out) {
    if (out.is_none()) return py::array_t<double>(shape);
    if (!py::isinstance<py::array_t<double, py::array::c_style>>(out))
        throw py::type_error("out is no contiguous array of float64");
    auto array = py::reinterpret_borrow<py::array_t<double>>(out);
    if (!array.writeable() || !std::equal(shape.begin(), shape.end(), array.shape(), array.shape() + array.ndim()))
        throw py::value_error("out is read-only, or of another shape than the result");
    return array;
}

bool Overlap(const Doubles& x, const double* y, std::size_t n) {
    if (x.size() == 0) return false;
    const char* first = reinterpret_cast<const char*>(x.data());
    const char* last = first;
    for (py::ssize_t d = 0; d < x.ndim(); ++d) (x.strides(d) < 0 ? first : last) += (x.shape(d) - 1) * x.strides(d);
    const char* const to = reinterpret_cast<const char*>(y);
    const std::less<> isBefore;
    return !isBefore(last, to) && isBefore(first, to + n * sizeof(double));
}

Pieces::Pieces(const Doubles& array)
    : m_array(array), m_contiguous((array.flags() & py::array::c_style) != 0),
      m_index(static_cast<std::size_t>(array.ndim())) {}

const double* Pieces::next(std::vector<double>& buffer, std::size_t limit, std::size_t& count) {
    const auto size = static_cast<std::size_t>(m_array.size());
    const double* const first = m_array.data();
    if (m_contiguous) {
        count = size - m_done;
        m_done = size;
        return first + (size - count);
    }
    count = std::min(limit, size - m_done);
    buffer.resize(count);
    for (double& number : buffer) {
        const char* at = reinterpret_cast<const char*>(first);
        for (py::ssize_t d = 0; d < m_array.ndim(); ++d)
            at += m_index[static_cast<std::size_t>(d)] * m_array.strides(d);
        number = *reinterpret_cast<const double*>(at);
        for (py::ssize_t d = m_array.ndim(); d-- > 0;) {
            if (++m_index[static_cast<std::size_t>(d)] < m_array.shape(d)) break;
            m_index[static_cast<std::size_t>(d)] = 0;
        }
    }
    m_done += count;
    return buffer.data();
}

} // namespace FCurvePython
