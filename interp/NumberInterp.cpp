#include "FCurveLib/NumberInterp.h"

#include <charconv>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

NumberInterp::NumberInterp(double number) : m_number(number) {
    char text[32]; // the shortest text of a double takes 24 characters at most
    *std::to_chars(text, text + sizeof text - 1, number).ptr = '\0';
    setExpression(text);
}

std::shared_ptr<Interpolator> NumberInterp::create(double number) {
    return std::shared_ptr<Interpolator>(new NumberInterp(number));
}

double NumberInterp::eval(double, const Segment&) const {
    return m_number;
}

std::shared_ptr<Interpolator> NumberInterp::clone() {
    return std::shared_ptr<Interpolator>(new NumberInterp(*this));
}

void NumberInterp::getRangeExtents(const Segment&, double, double, double& minY, double& maxY) const {
    minY = maxY = m_number;
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
