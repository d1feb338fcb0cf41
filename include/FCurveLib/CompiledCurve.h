#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"

#include <cstddef>
#include <memory>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// A curve's values alone, for programs that play curves and do not edit them: a game, a renderer, a preview.
///
///     const CompiledCurve height(*curve);     // once; the curve may go
///     CompiledCurve::Cursor cursor;           // remembers where the last frame was
///     for (double frame = 0; frame < 240; ++frame) draw(height.eval(frame, cursor));
///
/// It never changes: compile again after the curve was edited. Copies share their numbers; any number of threads may
/// use one object, or copies of it. A key takes at most 80 bytes, and each curve some 250 more; segments with a host's
/// own interpolator, or with a formula that calls others, take more.
///
/// Values are FCurve::eval's to 1e-12 of the curve's range, every kind of segment included. The same bits come out on
/// every processor and with every C library, except where formulas or hosts' interpolators compute. docs/playback.md
/// tells how, and what a host's interpolator gets to see.
class FCURVELIB_API CompiledCurve {
public:
    /// \name Make
    /// @{

    /// As an empty curve: 0 everywhere.
    CompiledCurve() noexcept;
    /// Linear in the number of keys. Throws what a host's Interpolator::clone throws, std::invalid_argument where that
    /// returns null, and std::bad_alloc; nothing is left behind then.
    explicit CompiledCurve(const FCurve& curve);
    CompiledCurve(const CompiledCurve& other) noexcept;
    CompiledCurve& operator=(const CompiledCurve& other) noexcept;
    ~CompiledCurve();

    std::size_t getKeyCount() const noexcept;
    /// @}

    /// \name Values
    /// Constant time, unless keys are spaced very unevenly: then logarithmic. Nothing is allocated, locked or written.
    /// What a host's interpolator throws passes through.
    /// @{

    /// Where the last look-up was. Any cursor gives the right value on any curve; one that was last used near x gives
    /// it soonest. One cursor serves one thread at a time.
    class Cursor {
        friend class CompiledCurve;
        std::size_t m_piece = 0;
    };

    double eval(double x) const;
    double eval(double x, Cursor& cursor) const;

    /// The values at n abscissae in any order, into y, which may be x. Much faster than one by one where neighbours in
    /// x lie in one segment, as in ascending order.
    void eval(const double* x, double* y, std::size_t n) const;

    /// The values at start, start + step, start + 2 * step ... (not accumulated), n of them, into y.
    void sample(double start, double step, std::size_t n, double* y) const;

    /// As the free functions GetFirstDerivative and GetSecondDerivative.
    double getFirstDerivative(double x) const;
    double getSecondDerivative(double x) const;
    /// @}

private:
    friend class CompiledSet;
    explicit CompiledCurve(std::shared_ptr<const Private::PlaybackCurve> curve) noexcept;

    std::shared_ptr<const Private::PlaybackCurve> m_curve; // never null
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
