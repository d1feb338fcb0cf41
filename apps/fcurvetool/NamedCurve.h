#pragma once

#include <FCurveLib/FCurve.h>

#include <memory>
#include <string>

namespace fcurvetool {

/// A curve and what the tool calls it: its name, or "curve 3" where it has none. Printable.
struct NamedCurve {
    std::shared_ptr<VEM_FN::FCurveLib::FCurve> curve;
    std::string name;
    std::string file; ///< for messages; printable
};

} // namespace fcurvetool
