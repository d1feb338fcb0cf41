#pragma once

#include "Binding.h"

#include <atomic>
#include <cstddef>

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

    /// How many there are.
    static std::size_t alive() noexcept { return Alive::count(); }

    /// \name Python's collector
    /// @{

    /// Shows it the references that nothing but this interpolator has.
    int visit(visitproc visitor, void* argument) const;
    /// Of a walk over the owner's segments: how many of them have this interpolator; -1 once it was shown.
    long uses = 0;
    /// @}

    /// Null for a named one.
    PyObject* function() const noexcept { return m_isNamed ? nullptr : m_function.get(); }

    double eval(double x, const Segment& segment) const override;
    std::shared_ptr<Interpolator> clone() override;
    bool usesTangents() const override { return m_usesTangents; }
    double getFirstDerivative(double x, const Segment& segment) const override;
    double getSecondDerivative(double x, const Segment& segment) const override;

private:
    HostInterpolator(const HostInterpolator&) = default;

    struct Alive {
        Alive() noexcept { ++count(); }
        Alive(const Alive&) noexcept { ++count(); }
        Alive& operator=(const Alive&) = delete;
        ~Alive() { --count(); }
        static std::atomic<std::size_t>& count() noexcept;
    };

    std::shared_ptr<PyObject> m_function;
    std::shared_ptr<PyObject> m_first;  // null: numeric
    std::shared_ptr<PyObject> m_second; // null: numeric
    bool m_usesTangents;
    bool m_isNamed;
    Alive m_alive;
};

/// Lets Python's collector see what a curve, or a container, and nobody else keeps of callables: so it finds those that
/// refer to their own curve.
py::custom_type_setup CollectableCurve();
py::custom_type_setup CollectableContainer();

} // namespace FCurvePython
