#pragma once

// From splines, whose knots may have two values, to tracks, whose knots have one.

#include "FCurveInterchange/ConversionReport.h"
#include "interchange/Track.h"
#include "interchange/usda/Layer.h"

#include <string>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace Usda {

// The track of this name with the spline's values everywhere; what it cannot have is reported.
Track TrackOf(SplineData spline, const std::string& name);

// To the report, as a loss of the curve at these frames.
void LoseAt(const std::string& curve, Loss::What what, Loss::Remedy remedy, const char* detail,
            std::vector<double> places = {});

} // namespace Usda

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
