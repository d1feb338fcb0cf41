#pragma once

#include <FCurveLib/CompiledCurve.h>
#include <FCurveLib/FCurve.h>

#include <cstdint>
#include <optional>

namespace fcurvetool {

/// A curve's numbers at many frames, quickest where these ascend. By CompiledCurve where there are so many frames that
/// compiling pays, else by the curve itself, which must stay as it is meanwhile.
class FrameValues {
public:
    FrameValues(const VEM_FN::FCurveLib::FCurve& curve, std::int64_t frames);

    double value(double frame);
    /// Derivatives at a key are those to its right.
    double velocity(double frame) const;
    double acceleration(double frame) const;

private:
    const VEM_FN::FCurveLib::FCurve& m_curve;
    std::optional<VEM_FN::FCurveLib::CompiledCurve> m_compiled;
    VEM_FN::FCurveLib::CompiledCurve::Cursor m_cursor;
};

} // namespace fcurvetool
