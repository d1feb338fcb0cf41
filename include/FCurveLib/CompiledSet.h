#pragma once

#include "FCurveLib/CompiledCurve.h"
#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// Many curves compiled into one block of memory, evaluated together: a pose. Each is as a CompiledCurve of its own,
/// with the same bits. It never changes, copies share their numbers, and any number of threads may use one object.
///
///     const CompiledSet pose(*container);
///     std::vector<double> values(pose.size());
///     pose.eval(frame, values.data());        // all curves, in the container's order
class FCURVELIB_API CompiledSet {
public:
    /// \name Make
    /// Curves keep the given order. Throws as CompiledCurve does.
    /// @{

    /// Without curves.
    CompiledSet() noexcept;
    explicit CompiledSet(const FCurveContainer& container);
    /// A null pointer counts as an empty curve.
    explicit CompiledSet(const std::vector<const FCurve*>& curves);
    CompiledSet(const CompiledSet& other) noexcept;
    CompiledSet& operator=(const CompiledSet& other) noexcept;
    ~CompiledSet();
    /// @}

    /// \name Curves
    /// Precondition: index < size().
    /// @{
    std::size_t size() const noexcept;
    bool empty() const noexcept { return size() == 0; }
    /// The curve's name when it was compiled; never null.
    const char* getName(std::size_t index) const noexcept;
    /// Shares the set's numbers, and keeps them alive.
    CompiledCurve getCurve(std::size_t index) const noexcept;
    /// @}

    /// \name Values
    /// Nothing is allocated, locked or written but the values. What a host's interpolator throws passes through.
    /// @{

    /// The value of every curve at x, curve i into values[i].
    void eval(double x, double* values) const;

    /// The same for the curves first to last - 1 alone: the other values are not touched, so threads may share one
    /// array and divide the curves among them. Precondition: first <= last <= size().
    void eval(double x, std::size_t first, std::size_t last, double* values) const;

    /// One pose after the other: the value of curve i at x[k] into values[k * size() + i].
    void eval(const double* x, std::size_t n, double* values) const;
    /// @}

private:
    std::shared_ptr<const Private::PlaybackBlock> m_block; // null without curves
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
