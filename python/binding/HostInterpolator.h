#pragma once

#include "Binding.h"

namespace FCurvePython {

/// A reference to a Python object that may be dropped by any thread, at any time: it takes the lock for that. What is
/// dropped after the interpreter's end is left to the system.
std::shared_ptr<PyObject> Share(py::object object);

/// An interpolator that is written in Python: a callable (x, segment), which may have attributes expression, derivative
/// and second_derivative (callables alike), and uses_tangents. Clones share the callable.
class HostInterpolator final : public Interpolator {
public:
    /// A named one was made for a name in a text, which says all about it.
    explicit HostInterpolator(const py::object& function, bool isNamed = false);

    /// Null for a named one.
    PyObject* function() const noexcept { return m_isNamed ? nullptr : m_function.get(); }

    double eval(double x, const Segment& segment) const override;
    std::shared_ptr<Interpolator> clone() override;
    bool usesTangents() const override { return m_usesTangents; }
    double getFirstDerivative(double x, const Segment& segment) const override;
    double getSecondDerivative(double x, const Segment& segment) const override;

private:
    HostInterpolator(const HostInterpolator&) = default;

    std::shared_ptr<PyObject> m_function;
    std::shared_ptr<PyObject> m_first;  // null: numeric
    std::shared_ptr<PyObject> m_second; // null: numeric
    bool m_usesTangents;
    bool m_isNamed;
};

} // namespace FCurvePython
