#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"

#include <cstdint>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

/// What a record may refer to. Records of different kinds are ordered by these numbers.
struct HitRecordTypes {
    enum Type : std::uint32_t {
        NONE = 0,     ///< nothing
        CURVE = 1,    ///< a whole curve
        SEGMENT = 2,  ///< one segment
        KEYFRAME = 3, ///< one keyframe
        TANGENT = 4,  ///< one tangent, made with the flag true; every tangent record the library makes is one of these
        TANGENT_UNFLAGGED = 5 ///< one tangent, made with the flag false
    };
};

/// What the two twins of records hand out: parts to edit, or parts to read.
struct FCURVELIB_API MutableParts {
    template<class T>
    using Qualified = T;
};
struct FCURVELIB_API ConstParts {
    template<class T>
    using Qualified = const T;
};

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
