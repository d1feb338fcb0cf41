#pragma once

#include "FCurveLib/Export.h"

#include <exception>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// Root of every exception that the library throws. what() is a fixed text that names the class
/// ("VEM_FN::FCurveLib::Exception", "VEM_FN::FCurveLib::File::CantOpen"); details travel in accessors of the derived
/// classes.
class FCURVELIB_API Exception : public std::exception {
public:
    Exception() noexcept;
    Exception(const Exception&) noexcept;
    Exception& operator=(const Exception&) noexcept;
    ~Exception() override;

    const char* what() const noexcept override;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
