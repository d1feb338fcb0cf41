#pragma once

#include "FCurveLib/FCurve.h"
#include "FCurveLib/Vector2D.h"

#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

enum class Borders {
    Keep,  // the curve outside the samples stays as it is; Baking.h has the contract
    Follow // the line runs through the first and the last sample, and the segments beside it follow; see Smoothing.h
};

// Replaces the stretch of the curve between the first and the last sample by linear keys through the samples. Samples
// that are not finite, or do not ascend, are left out; with fewer than two nothing happens. Returns whether the curve
// changed. Tells the observers of each step: run it inside a QuietEdit.
bool ReplaceBySamples(FCurve& curve, std::vector<Vector2D<double>> samples, Borders borders);

// Drops the samples that no key could have.
void KeepUsableSamples(std::vector<Vector2D<double>>& samples);

// A key to insert.
Keyframe FreeKey(double x, double y);

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
