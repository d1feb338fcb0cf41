#include "FCurveLib/CompiledSet.h"

#include "FCurveLib/FCurveContainer.h"
#include "playback/Compile.h"

#include <algorithm>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::PlaybackBlock;

namespace {

std::vector<const FCurve*> CurvesOf(const FCurveContainer& container) {
    std::vector<const FCurve*> curves;
    curves.reserve(container.size());
    for (const FCurve& curve : container) curves.push_back(&curve);
    return curves;
}

} // namespace

CompiledSet::CompiledSet() noexcept = default;
CompiledSet::CompiledSet(const FCurveContainer& container) : CompiledSet(CurvesOf(container)) {}
CompiledSet::CompiledSet(const std::vector<const FCurve*>& curves)
    : m_block(std::make_shared<const PlaybackBlock>(curves)) {}
CompiledSet::CompiledSet(const CompiledSet& other) noexcept = default;
CompiledSet& CompiledSet::operator=(const CompiledSet& other) noexcept = default;
CompiledSet::~CompiledSet() = default;

std::size_t CompiledSet::size() const noexcept {
    return m_block ? m_block->size() : 0;
}

const char* CompiledSet::getName(std::size_t index) const noexcept {
    return m_block->name(index);
}

CompiledCurve CompiledSet::getCurve(std::size_t index) const noexcept {
    return CompiledCurve(std::shared_ptr<const Private::PlaybackCurve>(m_block, m_block->curves() + index));
}

void CompiledSet::eval(double x, double* values) const {
    eval(x, 0, size(), values);
}

void CompiledSet::eval(double x, std::size_t first, std::size_t last, double* values) const {
    if (first < last) Private::EvalTogether(m_block->curves(), x, first, last, values);
}

void CompiledSet::eval(const double* x, std::size_t n, double* values) const {
    // Curve by curve, a few poses at a time: neighbouring poses read the same numbers.
    constexpr std::size_t most = 32;
    const std::size_t curves = size();
    double column[most];
    for (std::size_t k = 0; k < n; k += most) {
        const std::size_t count = std::min(most, n - k);
        for (std::size_t i = 0; i < curves; ++i) {
            Private::EvalMany(m_block->curves()[i], x + k, column, count);
            for (std::size_t j = 0; j < count; ++j) values[(k + j) * curves + i] = column[j];
        }
    }
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
