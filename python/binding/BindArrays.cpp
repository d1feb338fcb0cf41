#include "Arrays.h"

#include "FCurveLib/FCurveFormatInterface.h"

#include <cmath>
#include <cstdint>
#include <limits>

namespace FCurvePython {

/// One key, with the interpolator of the segment that starts there, by number.
struct KeyRecord {
    double x;
    double y;
    double in_x;
    double in_y;
    double out_x;
    double out_y;
    std::int32_t interpolator;
    std::uint8_t in_type;
    std::uint8_t out_type;
    bool in_weighted;
    bool out_weighted;
    bool in_locked;
    bool out_locked;
    bool breakdown;
    bool unified;
};

namespace {

using Records = py::array_t<KeyRecord, py::array::c_style | py::array::forcecast>;

// Numbers for expressions, in the order in which they are met. Most segments have that of the one before.
class Expressions {
public:
    std::int32_t number(const InterpolatorPtr& interpolator) {
        if (m_last && interpolator == m_lastInterpolator) return m_number;
        const py::object key = interpolator ? py::cast(interpolator) : py::cast(ToInterpolator(py::float_(0.0)));
        if (!m_numbers.contains(key)) {
            m_numbers[key] = m_list.size();
            m_list.append(key);
        }
        m_last = true;
        m_lastInterpolator = interpolator;
        m_number = py::cast<std::int32_t>(m_numbers[key]);
        return m_number;
    }
    const py::list& list() const noexcept { return m_list; }

private:
    py::dict m_numbers;
    py::list m_list;
    bool m_last = false;
    InterpolatorPtr m_lastInterpolator;
    std::int32_t m_number = 0;
};

// (records, interpolators, number of the leading segment's)
py::tuple KeysToArrays(FCurve& curve) {
    Records records(static_cast<py::ssize_t>(curve.size() - 1));
    KeyRecord* record = records.mutable_data();
    Expressions expressions;
    const std::int32_t leading = expressions.number(FirstSegment(curve).getInterpolator());
    TangentPtr in = FirstSegment(curve).getInTangent();
    auto segment = curve.begin();
    for (++segment; segment != curve.end(); ++segment, ++record) {
        const KeyPtr key = segment->getLeftKey();
        const TangentPtr out = segment->getOutTangent();
        *record = {key->getX(),
                   key->getY(),
                   in->getX(),
                   in->getY(),
                   out->getX(),
                   out->getY(),
                   expressions.number(segment->getInterpolator()),
                   in->getType(),
                   out->getType(),
                   in->isWeighted(),
                   out->isWeighted(),
                   in->isWeightLocked(),
                   out->isWeightLocked(),
                   key->isBreakdown(),
                   key->isTangentsUnified()};
        in = segment->getInTangent();
    }
    return py::make_tuple(records, expressions.list(), leading);
}

void Check(const KeyRecord* record, std::size_t size, std::size_t expressions) {
    double last = -std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < size; ++i) {
        const KeyRecord& key = record[i];
        const auto refuse = [i](const char* what) { throw py::value_error("Key " + std::to_string(i) + ": " + what); };
        if (!(key.x > last) || !std::isfinite(key.x)) refuse("x is not finite, or not above the key before");
        if (!std::isfinite(key.y)) refuse("y is not finite");
        // A handle of which a coordinate is NaN is computed; the other one has to be either then.
        if (!(key.in_x <= 0.0 && std::isfinite(key.in_x) && std::isfinite(key.in_y))
            && !(std::isnan(key.in_x) && std::isnan(key.in_y)))
            refuse("the in handle is not finite, or points across the key");
        if (!(key.out_x >= 0.0 && std::isfinite(key.out_x) && std::isfinite(key.out_y))
            && !(std::isnan(key.out_x) && std::isnan(key.out_y)))
            refuse("the out handle is not finite, or points across the key");
        if (key.in_type > Tangent::Plateau || key.out_type > Tangent::Plateau) refuse("there is no such tangent type");
        if (key.interpolator < 0 || static_cast<std::size_t>(key.interpolator) >= expressions)
            refuse("there is no interpolator of that number");
        last = key.x;
    }
}

// Fills a curve through the calls that readers make, which keep every bit.
CurvePtr FromArrays(const Records& records, const py::list& interpolators, int leading, const Text& name) {
    std::vector<InterpolatorPtr> made;
    for (const auto interpolator : interpolators) made.push_back(ToInterpolator(interpolator));
    const auto size = static_cast<std::size_t>(records.size());
    const KeyRecord* const keys = records.data();
    if (leading < 0 || static_cast<std::size_t>(leading) >= made.size())
        throw py::value_error("There is no interpolator for the leading segment");
    Check(keys, size, made.size());

    CurvePtr curve = FCurve::create();
    curve->setName(name.c_str());
    FCurve::Switch quiet(*curve);
    FCurveFormatInterface builder;
    builder.setCurve(curve);
    builder.startCurve(name.c_str());
    builder.startSegmentContainer();
    for (std::size_t i = 0; i <= size; ++i) {
        builder.startSegment("constant()");
        if (i > 0) {
            const KeyRecord& key = keys[i - 1];
            builder.startOutTangent();
            builder.tangentType(key.out_type);
            builder.tangentWeighted(key.out_weighted);
            builder.tangentWeightLocked(key.out_locked);
            if (!std::isnan(key.out_x)) builder.tangentVector(key.out_x, key.out_y);
            builder.finishOutTangent();
        }
        if (i < size) {
            const KeyRecord& key = keys[i];
            builder.startInTangent();
            builder.tangentType(key.in_type);
            builder.tangentWeighted(key.in_weighted);
            builder.tangentWeightLocked(key.in_locked);
            if (!std::isnan(key.in_x)) builder.tangentVector(key.in_x, key.in_y);
            builder.finishInTangent();
        }
        builder.finishSegment();
        if (i < size) {
            const KeyRecord& key = keys[i];
            builder.startKeyframe();
            builder.keyframePosition(key.x, key.y);
            builder.keyframeBreakdown(key.breakdown);
            builder.keyframeTangentsUnified(key.unified);
            builder.finishKeyframe();
        }
    }
    builder.finishSegmentContainer();
    builder.finishCurve();
    std::size_t number = static_cast<std::size_t>(leading);
    const KeyRecord* key = keys;
    for (Segment& segment : *curve) {
        segment.setInterpolator(made[number]);
        if (key != keys + size) number = static_cast<std::size_t>(key++->interpolator);
    }
    return curve;
}

} // namespace

void BindArrays(py::module_& module) {
    PYBIND11_NUMPY_DTYPE(KeyRecord, x, y, in_x, in_y, out_x, out_y, interpolator, in_type, out_type, in_weighted,
                         out_weighted, in_locked, out_locked, breakdown, unified);
    module.attr("key_dtype") = py::dtype::of<KeyRecord>();
    module.def("_to_arrays", &KeysToArrays, py::arg("curve"));
    module.def("_from_arrays", &FromArrays, py::arg("keys"), py::arg("interpolators"), py::arg("leading"),
               py::arg("name"));
}

} // namespace FCurvePython
