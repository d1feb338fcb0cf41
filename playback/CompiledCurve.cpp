#include "FCurveLib/CompiledCurve.h"

#include "playback/Compile.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::PlaybackCurve;

namespace {

const PlaybackCurve& EmptyCurve() noexcept {
    static const Private::Piece piece = Private::FreePiece(Private::FreeKind::Constant, 0.0, 0.0);
    static const PlaybackCurve curve = [] {
        PlaybackCurve result;
        result.pieces = &piece;
        result.first = result.last = std::numeric_limits<double>::quiet_NaN();
        return result;
    }();
    return curve;
}

} // namespace

CompiledCurve::CompiledCurve() noexcept : m_curve(std::shared_ptr<void>(), &EmptyCurve()) {}

CompiledCurve::CompiledCurve(const FCurve& curve) {
    const auto block = std::make_shared<const Private::PlaybackBlock>(std::vector<const FCurve*>{&curve});
    m_curve = std::shared_ptr<const PlaybackCurve>(block, block->curves());
}

CompiledCurve::CompiledCurve(std::shared_ptr<const PlaybackCurve> curve) noexcept : m_curve(std::move(curve)) {}

CompiledCurve::CompiledCurve(const CompiledCurve& other) noexcept = default;
CompiledCurve& CompiledCurve::operator=(const CompiledCurve& other) noexcept = default;
CompiledCurve::~CompiledCurve() = default;

std::size_t CompiledCurve::getKeyCount() const noexcept {
    return m_curve->count;
}

double CompiledCurve::eval(double x) const {
    return Private::EvalPiece(*m_curve, m_curve->pieceAt(x), x);
}

double CompiledCurve::eval(double x, Cursor& cursor) const {
    cursor.m_piece = m_curve->find(x, cursor.m_piece);
    return Private::EvalPiece(*m_curve, m_curve->pieces[cursor.m_piece], x);
}

void CompiledCurve::eval(const double* x, double* y, std::size_t n) const {
    Private::EvalMany(*m_curve, x, y, n);
}

void CompiledCurve::sample(double start, double step, std::size_t n, double* y) const {
    constexpr std::size_t most = 256; // stay in the first cache
    for (std::size_t i = 0; i < n; i += most) {
        const std::size_t count = std::min(most, n - i);
        for (std::size_t j = 0; j < count; ++j) y[i + j] = start + static_cast<double>(i + j) * step;
        Private::EvalMany(*m_curve, y + i, y + i, count);
    }
}

double CompiledCurve::getFirstDerivative(double x) const {
    return Private::DifferentiatePiece(*m_curve, m_curve->pieceAt(x), x, 1);
}

double CompiledCurve::getSecondDerivative(double x) const {
    return Private::DifferentiatePiece(*m_curve, m_curve->pieceAt(x), x, 2);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
