#include "Warnings.h"

#include "Failure.h"
#include "Text.h"

#include <FCurveLib/Segment.h>
#include <FCurveLib/UnknownExpression.h>

#include <cstdio>
#include <set>

namespace fcurvetool {

using namespace VEM_FN::FCurveLib;

void Warnings::addUnknownExpressions(const std::vector<NamedCurve>& curves) {
    constexpr std::size_t kLongestExpression = 60;
    for (const NamedCurve& named : curves) {
        std::set<std::string> told;
        for (const Segment& segment : *named.curve) {
            const auto interpolator = segment.getInterpolator();
            if (!dynamic_cast<const UnknownExpression*>(interpolator.get())) continue;
            const std::string text = Shorten(ToPrintable(interpolator->getExpression()), kLongestExpression);
            if (told.insert(text).second)
                add(named.file + ": " + named.name + ": the expression \"" + text + "\" is unknown and evaluates to 0");
        }
    }
}

void Warnings::settle() {
    for (const std::string& text : m_texts) std::fprintf(stderr, "fcurvetool: warning: %s\n", text.c_str());
    if (m_isStrict && !m_texts.empty()) throw Failure("nothing written, because --strict makes warnings errors");
    m_texts.clear();
}

} // namespace fcurvetool
