#include "interchange/Comparison.h"

#include "FCurveInterchange/Conversion.h"

#include <FCurveLib/Bezier.h>
#include <FCurveLib/Constant.h>
#include <FCurveLib/ConstantNext.h>
#include <FCurveLib/DisplayProperties.h>
#include <FCurveLib/Evaluation.h>
#include <FCurveLib/Linear.h>
#include <FCurveLib/Segment.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <map>
#include <unordered_map>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace {

constexpr double kEqual = 1e-9; // of a curve's range of values, of a span, of a frame

struct Worst {
    double difference = 0.0;
    double at = 0.0;

    void see(double a, double b, double x) {
        const double off = a == b || (std::isnan(a) && std::isnan(b)) ? 0.0 : std::fabs(a - b);
        if (off > difference || std::isnan(off)) {
            difference = std::isnan(off) ? HUGE_VAL : off;
            at = x;
        }
    }
};

template<class Part>
bool KeepsProperties(const Part& original, const Part* back) {
    for (auto i = original.beginProperties(); i != original.endProperties(); ++i) {
        if (IsEditorKeyString(i->first.c_str())) continue;
        if (!back || i->second != back->getProperty(i->first.c_str())) return false;
    }
    return true;
}

std::string ExpressionOf(const Segment& segment) {
    const auto interpolator = segment.getInterpolator();
    return interpolator ? interpolator->getExpression() : "0"; // as files say it
}

std::string Became(const Segment& original, const std::string& what) {
    constexpr std::size_t kLongest = 60;
    std::string text = ExpressionOf(original);
    if (text.size() > kLongest) text = text.substr(0, kLongest) + "...";
    return '"' + text + "\" became " + what;
}

// Kinds that look at nothing but their own keys and handles.
bool IsLocal(const Interpolator* kind) {
    static const std::array<std::shared_ptr<Interpolator>, 4> kinds{Constant::create(), ConstantNext::create(),
                                                                    Linear::create(), Bezier::create()};
    return std::any_of(kinds.begin(), kinds.end(), [&](const auto& one) { return one.get() == kind; });
}

bool IsSame(const Vector2D<double>& a, const Vector2D<double>& b) {
    return a.x == b.x && a.y == b.y;
}

class Comparison {
public:
    Comparison(const FCurve& original, const FCurve& back, const Notes& notes, ConversionReport& report)
        : m_original(original), m_back(back), m_notes(notes), m_report(report), m_range(RangeOf(original)),
          m_at(back.begin()) {}

    void run() {
        compareHead();
        for (const Segment& segment : m_original) {
            const auto left = segment.getLeftKey();
            if (left) compareKey(*left, segment);
            if (left && segment.getRightKey())
                compareSegment(segment);
            else
                compareEnd(segment);
        }
        compareRange();
    }

private:
    static double closeTo(double x) { return kEqual + 1e-13 * std::fabs(x); }

    void lose(Loss::What what, Loss::Remedy remedy, std::string detail, const double* place = nullptr,
              const Worst& worst = {}) {
        Loss loss;
        loss.curve = m_original.getName();
        loss.what = what;
        loss.remedy = remedy;
        loss.detail = std::move(detail);
        if (place) loss.places.push_back(*place);
        loss.difference = worst.difference;
        loss.at = worst.at;
        m_report.add(loss);
    }

    bool isOff(const Worst& worst) const { return worst.difference > kEqual * m_range; }

    void compareHead() {
        if (std::strcmp(m_original.getName(), m_back.getName()) != 0)
            lose(Loss::Names, *m_back.getName() ? Loss::Renamed : Loss::Dropped, m_back.getName());
        if (!KeepsProperties(m_original, &m_back)) lose(Loss::Properties, Loss::Dropped, "of the curve");
        for (const char* key : {"fc_vis", "fc_lock", "fc_vel", "fc_acc", "fc_disc", "fc_grid", "fc_scal"}) {
            if (std::strcmp(m_original.getProperty(key), m_back.getProperty(key)) == 0) continue;
            lose(Loss::Flags, Loss::Dropped, "display settings");
            break;
        }
    }

    // Goes to the last segment that starts at or before x, or so little after it.
    void goTo(double x, double slack) {
        for (auto next = std::next(m_at); next != m_back.end(); ++next) {
            if (!(next->getLeftKey()->getX() <= x + slack)) return;
            m_at = next;
        }
    }

    // The key that came back for the one at x, if one did; m_at stands at the segment that starts there.
    std::shared_ptr<const Keyframe> keyAt(double x) {
        goTo(x, closeTo(x));
        const auto key = m_at->getLeftKey();
        return key && std::fabs(key->getX() - x) <= closeTo(x) ? key : nullptr;
    }

    void compareKey(const Keyframe& key, const Segment& segment) {
        const double x = key.getX();
        const auto back = keyAt(x);
        if (!back) {
            lose(Loss::Time, Loss::Moved, "keys that are not there any more", &x);
        } else {
            Worst ofKeys; // the curve's value may be another
            ofKeys.see(key.getY(), back->getY(), x);
            if (isOff(ofKeys)) {
                Worst worst;
                worst.see(EvalSegment(x, segment), EvalSegment(x, *m_at), x);
                const bool isRounded = ofKeys.difference <= 1e-6 * m_range;
                lose(isRounded ? Loss::Precision : Loss::Kind, isRounded ? Loss::Rounded : Loss::Replaced,
                     "values of keys", &x, worst);
            }
        }
        const auto isLost = [&](bool was, bool is) { return was != (back && is); };
        if (isLost(key.isBreakdown(), back && back->isBreakdown())) lose(Loss::Flags, Loss::Dropped, "breakdown", &x);
        if (isLost(key.isTangentsUnified(), back && back->isTangentsUnified()))
            lose(Loss::Flags, Loss::Dropped, "unified tangents", &x);
        if (isLost(*key.getProperty("fc_lock") != '\0', back && *back->getProperty("fc_lock") != '\0'))
            lose(Loss::Flags, Loss::Dropped, "locked keys", &x);
        if (!KeepsProperties(key, back.get())) lose(Loss::Properties, Loss::Dropped, "of keys", &x);
    }

    // Null: no tangent stands in its place.
    void compareTangent(const Tangent& tangent, const Tangent* back, bool isUsed, double x, double span) {
        if (!KeepsProperties(tangent, back)) lose(Loss::Properties, Loss::Dropped, "of tangents", &x);
        if (tangent.isWeightLocked() && !(back && back->isWeightLocked()))
            lose(Loss::Flags, Loss::Dropped, "locked weights", &x);
        if (!back) return;
        if (tangent.getType() != back->getType()) lose(Loss::Kind, Loss::Replaced, "types of tangents", &x);
        if (tangent.isWeighted() != back->isWeighted()) lose(Loss::Kind, Loss::Replaced, "weighted tangents", &x);
        const bool isEqual =
            std::fabs(tangent.getX() - back->getX()) <= kEqual * span
            && std::fabs(tangent.getY() - back->getY()) <= kEqual * std::max(m_range, std::fabs(tangent.getY()));
        if (!isEqual) lose(Loss::Tangents, Loss::Replaced, isUsed ? "handles" : "handles that shape nothing", &x);
    }

    // Values over the segment, by what came back in its place. m_at stands at its left key, or before it.
    Worst measure(const Segment& segment, double x0, double x1) {
        Worst worst;
        const auto here = m_at;
        for (const double part : {0.0, 0.0005, 0.02, 0.17, 0.33, 0.5, 0.66, 0.83, 0.98, 0.9995}) {
            const double x = x0 + part * (x1 - x0);
            goTo(x, 0.0);
            worst.see(EvalSegment(x, segment), EvalSegment(x, *m_at), x);
        }
        m_at = here;
        return worst;
    }

    void compareSegment(const Segment& segment) {
        const double x0 = segment.getLeftKey()->getX();
        const double x1 = segment.getRightKey()->getX();
        const auto left = keyAt(x0);
        const auto right = m_at->getRightKey();
        const bool isOne = left && right && std::fabs(right->getX() - x1) <= closeTo(x1);
        const Segment* const back = isOne ? &*m_at : nullptr;
        const auto kind = segment.getInterpolator();
        const auto backKind = back ? back->getInterpolator() : nullptr;
        const bool isSameKind = back && (kind == backKind || ExpressionOf(segment) == ExpressionOf(*back));
        const auto out = segment.getOutTangent();
        const auto in = segment.getInTangent();

        Worst worst;
        const bool isSurelyEqual =
            isSameKind && kind == backKind && IsLocal(kind.get()) && IsSame(left->get(), segment.getLeftKey()->get())
            && IsSame(right->get(), segment.getRightKey()->get()) && IsSame(out->get(), back->getOutTangent()->get())
            && IsSame(in->get(), back->getInTangent()->get());
        if (!isSurelyEqual) worst = measure(segment, x0, x1);

        if (!isSameKind || isOff(worst)) {
            if (const Notes::Hint* const hint = m_notes.find(m_original, x0, x1)) {
                lose(hint->what, hint->remedy, hint->detail, &x0, worst);
                const bool tellsPieces = hint->what == Loss::Kind || hint->what == Loss::Formulas;
                if (!back && !tellsPieces) lose(Loss::Kind, Loss::Split, Became(segment, "other pieces"), &x0);
            } else if (isSameKind) {
                lose(worst.difference > 1e-6 * m_range ? Loss::Tangents : Loss::Precision,
                     worst.difference > 1e-6 * m_range ? Loss::Replaced : Loss::Rounded, "values between keys", &x0,
                     worst);
            } else if (back) {
                lose(Loss::Kind, Loss::Replaced, Became(segment, '"' + ExpressionOf(*back) + '"'), &x0, worst);
            } else {
                lose(Loss::Kind, Loss::Split, Became(segment, "other pieces"), &x0, worst);
            }
        }
        const bool isUsed = kind && kind->usesTangents();
        compareTangent(*out, back ? back->getOutTangent().get() : nullptr, isUsed, x0, x1 - x0);
        compareTangent(*in, back ? back->getInTangent().get() : nullptr, isUsed, x1, x1 - x0);
        if (!KeepsProperties(segment, back)) lose(Loss::Properties, Loss::Dropped, "of segments", &x0);
    }

    // The segment before the first key, after the last, or of a curve without keys.
    void compareEnd(const Segment& segment) {
        const auto left = segment.getLeftKey();
        const auto right = segment.getRightKey();
        const char* const side = left ? "after the last key" : right ? "before the first key" : "without keys";
        const auto end = left ? std::prev(m_back.end()) : m_back.begin();
        const bool isSameKind = ExpressionOf(segment) == ExpressionOf(*end);
        const double x0 = left ? left->getX() : right ? right->getX() : 0.0;
        const double span = spanOfKeys();
        Worst worst;
        for (const double part : {0.0, 0.0007, 0.25, 0.5, 0.97, 1.3, 2.6}) {
            const double x = left ? x0 + part * span : x0 - part * span;
            if (x == x0 && right) continue; // the first interior segment's
            const double value = EvalSegment(x, segment);
            // At the last key exactly, repetitions give one end's value or the other's.
            worst.see(value, m_back.eval(x), x);
        }
        if (!isSameKind || isOff(worst)) {
            lose(Loss::Ends, Loss::Replaced, std::string(side) + ", " + Became(segment, '"' + ExpressionOf(*end) + '"'),
                 left || right ? &x0 : nullptr, worst);
        }
        const bool isUsed = segment.getInterpolator() && segment.getInterpolator()->usesTangents();
        compareTangent(*segment.getInTangent(), end->getInTangent().get(), isUsed && right, x0, 1.0);
        compareTangent(*segment.getOutTangent(), end->getOutTangent().get(), isUsed && left, x0, 1.0);
        if (!KeepsProperties(segment, &*end)) lose(Loss::Properties, Loss::Dropped, "of segments", &x0);
    }

    double spanOfKeys() const {
        if (m_original.size() < 2) return 2.0;
        const double first = m_original.begin()->getRightKey()->getX();
        const double last = std::prev(m_original.end())->getLeftKey()->getX();
        return last > first ? last - first : 10.0;
    }

    void compareRange() {
        if (m_back.size() < 2) return;
        const auto first = m_back.begin()->getRightKey();
        const auto last = std::prev(m_back.end())->getLeftKey();
        const bool hasKeys = m_original.size() > 1;
        const auto add = [&](double x) { lose(Loss::Time, Loss::Sampled, "keys outside the range", &x); };
        if (!hasKeys || first->getX() < m_original.begin()->getRightKey()->getX() - closeTo(first->getX()))
            add(first->getX());
        if (hasKeys && last->getX() > std::prev(m_original.end())->getLeftKey()->getX() + closeTo(last->getX()))
            add(last->getX());
    }

    const FCurve& m_original;
    const FCurve& m_back;
    const Notes& m_notes;
    ConversionReport& m_report;
    double m_range;
    FCurve::const_iterator m_at;
};

} // namespace

void Compare(const FCurveContainer& originals, const FCurveContainer& back, const Notes& notes,
             ConversionReport& report) {
    if (!KeepsProperties(originals, &back)) {
        Loss loss;
        loss.what = Loss::Properties;
        loss.detail = "of the container";
        report.add(loss);
    }
    // By name, each taken once, in order; then by place.
    std::unordered_map<std::string, std::vector<const FCurve*>> byName;
    for (const FCurve& curve : back) byName[curve.getName()].push_back(&curve);
    for (auto& [name, curves] : byName) std::reverse(curves.begin(), curves.end());
    auto inPlace = back.begin();
    const bool hasAll = originals.size() == back.size();
    for (const FCurve& original : originals) {
        const std::string* const name = notes.nameOf(original);
        const auto found = byName.find(name ? *name : original.getName());
        const FCurve* match = nullptr;
        if (found != byName.end() && !found->second.empty()) {
            match = found->second.back();
            found->second.pop_back();
        } else if (hasAll) {
            match = &*inPlace;
        }
        if (hasAll) ++inPlace;
        if (match) {
            Comparison(original, *match, notes, report).run();
        } else {
            Loss loss;
            loss.curve = original.getName();
            loss.what = Loss::Curves;
            loss.detail = "the curve";
            report.add(loss);
        }
    }
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
