#include "FCurveLib/InterpMaker.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

InterpMaker::InterpMaker() noexcept = default;
InterpMaker::InterpMaker(const InterpMaker&) noexcept = default;
InterpMaker& InterpMaker::operator=(const InterpMaker&) noexcept = default;
InterpMaker::~InterpMaker() = default;

std::shared_ptr<Interpolator> InterpMaker::makeName(const char*) {
    return nullptr;
}

std::shared_ptr<Interpolator> InterpMaker::makeFunction(const char*, const std::list<InterpMaker::Argument>&) {
    return nullptr;
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
