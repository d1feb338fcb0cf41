#pragma once

// What is written comes back, in every format that is written: equal but for the editor's properties that files do not
// hold, and written again byte for byte.

#include "support/SameCurve.h"
#include "support/StreamOf.h"

#include <string>
#include <vector>

namespace Test {

namespace Survival {

template<class Part>
void eraseEditorProperties(Part& part) {
    std::vector<std::string> keys;
    for (auto property = part.beginProperties(); property != part.endProperties(); ++property)
        if (IsEditorKeyString(property->first.c_str())) keys.push_back(property->first);
    for (const std::string& key : keys) part.setProperty(key.c_str(), "");
}

/// A copy of what files hold of a curve.
inline std::shared_ptr<FCurve> documentOf(const FCurve& curve) {
    auto copy = FCurve::createCopy(curve);
    eraseEditorProperties(*copy);
    for (Segment& segment : *copy) {
        const auto kind = segment.getInterpolator();
        if (!kind)
            segment.setInterpolator(InterpolatorFactory::create("0"));
        else if (*kind->getExpression() == '\0')
            segment.setInterpolator(Constant::create()); // deliberate: as the factory names it
        eraseEditorProperties(segment);
        eraseEditorProperties(*segment.getInTangent());
        eraseEditorProperties(*segment.getOutTangent());
        if (const auto key = segment.getLeftKey()) eraseEditorProperties(*key);
    }
    return copy;
}

inline std::string difference(const FCurve& a, const FCurve& b) {
    return Test::Difference(*documentOf(a), *documentOf(b));
}

inline std::string difference(const FCurveContainer& a, const FCurveContainer& b) {
    if (a.size() != b.size()) return "number of curves";
    for (auto i = a.begin(), j = b.begin(); i != a.end(); ++i, ++j) {
        const std::string found = difference(*i, *j);
        if (!found.empty()) return found;
    }
    return Test::SameCurve::properties(a, b);
}

inline std::shared_ptr<FCurve> back(const FCurve&, const std::string& bytes, const char* format) {
    return ReadAs(format, bytes);
}

// Read by its content; null where another format was recognised.
inline std::shared_ptr<FCurveContainer> back(const FCurveContainer&, const std::string& bytes, const char* format) {
    auto container = FCurveContainer::create();
    MemoryStream stream = StreamOf(bytes);
    return std::string(ReadCurves(stream, *container).getFormatName()) == format ? container : nullptr;
}

} // namespace Survival

/// What writing a curve or a container changes; empty for nothing.
template<class Curves>
std::string LossOfWriting(const Curves& curves) {
    for (auto type = FormatFactory::beginWriterTypes(); type != FormatFactory::endWriterTypes(); ++type) {
        const char* const format = (*type).getFormatName();
        const std::string bytes = WrittenAs(format, curves);
        const auto back = Survival::back(curves, bytes, format);
        if (!back) return std::string(format) + " is not recognised";
        const std::string difference = Survival::difference(curves, *back);
        if (!difference.empty()) return format + (": " + difference);
        if (WrittenAs(format, *back) != bytes) return std::string(format) + " is not written again";
    }
    return "";
}

} // namespace Test
