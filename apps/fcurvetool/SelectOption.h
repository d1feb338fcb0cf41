#pragma once

#include "NamedCurve.h"

#include <string>
#include <vector>

namespace fcurvetool {

/// Selects what the texts say, and nothing else: "WHICH" a whole curve, "WHICH:3" its key number 3, "WHICH:3-7" keys 3
/// to 7, counted from 0; WHICH as --curve takes it. Failure where there is no such curve or key, UsageError for a range
/// that ends before it starts.
void SelectParts(const std::vector<NamedCurve>& curves, const std::vector<std::string>& texts);

} // namespace fcurvetool
