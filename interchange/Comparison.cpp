#include "interchange/Comparison.h"

#include "FCurveInterchange/Conversion.h"

#include <FCurveLib/Bezier.h>
#include <FCurveLib/BezierInterpBase.h>
#include <FCurveLib/Constant.h>
#include <FCurveLib/ConstantNext.h>
#include <FCurveLib/DisplayProperties.h>
#include <FCurveLib/Evaluation.h>
#include <FCurveLib/Linear.h>
#include <FCurveLib/NumberInterp.h>
#include <FCurveLib/Segment.h>
#include <FCurveLib/UnknownExpression.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <map>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace {

constexpr double kEqual = 1e-9; // of a curve's range of values, of a span, of a frame

constexpr double kTooNarrow = 1e-5; // frames: steps at keys whose time was rounded differ for that long

struct Worst {
    double difference = 0.0;
    double at = 0.0;
    // The places on both sides of it.
    double from = 0.0;
    double to = 0.0;
    double last = -HUGE_VAL; // where it was looked at last, with rising x

    void see(double a, double b, double x) {
        const double off = a == b || (std::isnan(a) && std::isnan(b)) ? 0.0 : std::fabs(a - b);
        if (at == last) to = x;
        if (off > difference || std::isnan(off)) {
            difference = std::isnan(off) ? HUGE_VAL : off;
            at = to = x;
            from = std::isfinite(last) ? last : x;
        }
        last = x;
    }
};

// Looks closer and closer around the largest difference so far. `evaluate` sees both values at an x.
template<class Evaluate>
void Refine(Worst& worst, const Evaluate& evaluate) {
    constexpr int kParts = 8;
    constexpr int kMostRounds = 12;
    for (int round = 0; round < kMostRounds && std::isfinite(worst.difference); ++round) {
        const double step = (worst.to - worst.from) / kParts;
        if (!(step > 0.01 * kTooNarrow)) return;
        Worst closer;
        closer.last = worst.from;
        for (int i = 1; i < kParts; ++i) evaluate(closer, worst.from + i * step);
        if (closer.at == closer.last) closer.to = worst.to;
        const double before = worst.difference;
        if (closer.difference > before) {
            worst = closer;
        } else { // what is larger lies next to it, if anywhere
            worst.from = std::max(worst.from, worst.at - step);
            worst.to = std::min(worst.to, worst.at + step);
        }
        if (round > 2 && !(worst.difference > 1.001 * before)) return;
    }
}

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

// Kinds that may turn anywhere between their keys: formulas, repetitions, hosts' own.
bool IsWild(const Interpolator* kind) {
    return kind && !IsLocal(kind) && !dynamic_cast<const BezierInterpBase*>(kind)
           && !dynamic_cast<const NumberInterp*>(kind) && !dynamic_cast<const UnknownExpression*>(kind);
}

class Comparison {
public:
    Comparison(const FCurve& original, const FCurve& back, const Notes& notes, ConversionReport& report)
        : m_original(original), m_back(back), m_notes(notes), m_report(report), m_range(RangeOf(original)),
          m_tolerance(ToleranceOf(original)), m_at(back) {}

    void run() {
        compareHead();
        for (const Segment& segment : m_original) {
            const auto left = segment.getLeftKey();
            const auto right = segment.getRightKey();
            const auto back = left ? keyAt(left->getX()) : nullptr;
            if (left) compareKey(*left, back.get(), segment);
            if (left && right)
                compareSegment(segment, *left, *right, back.get());
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

    // The key that came back for the one at x, if one did; m_at stands at the segment that starts there.
    std::shared_ptr<const Keyframe> keyAt(double x) {
        m_at.goTo(x + closeTo(x));
        const auto key = m_at->getLeftKey();
        return key && std::fabs(key->getX() - x) <= closeTo(x) ? key : nullptr;
    }

    // Null: no key stands in its place.
    void compareKey(const Keyframe& key, const Keyframe* back, const Segment& segment) {
        const double x = key.getX();
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
        if (!KeepsProperties(key, back)) lose(Loss::Properties, Loss::Dropped, "of keys", &x);
    }

    bool isEqual(const Tangent& a, const Tangent& b, double span) const {
        return std::fabs(a.getX() - b.getX()) <= kEqual * span
               && std::fabs(a.getY() - b.getY()) <= kEqual * std::max(m_range, std::fabs(a.getY()));
    }

    // Null: none came back.
    void compareTangent(const Tangent& tangent, const Tangent* back, bool isUsed, double x, double span) {
        if (!KeepsProperties(tangent, back)) lose(Loss::Properties, Loss::Dropped, "of tangents", &x);
        if (tangent.isWeightLocked() && !(back && back->isWeightLocked()))
            lose(Loss::Flags, Loss::Dropped, "locked weights", &x);
        if (!back) return;
        if (tangent.getType() != back->getType()) lose(Loss::Kind, Loss::Replaced, "types of tangents", &x);
        if (tangent.isWeighted() != back->isWeighted()) lose(Loss::Kind, Loss::Replaced, "weighted tangents", &x);
        if (!isEqual(tangent, *back, span))
            lose(Loss::Tangents, Loss::Replaced, isUsed ? "handles" : "handles that shape nothing", &x);
    }

    // Values over the segment, between the keys of both curves: at irregular places, many of them where it is wild.
    // m_at stands at its left key, or before it. Where handles came back but for rounding, few places do.
    Worst measure(const Segment& segment, double x0, double x1, bool isWild, bool isNear) {
        constexpr double kPerFrame = 32.0;
        constexpr double kFewest = 128.0; // of a wild segment
        constexpr double kMost = 262144.0;
        const double width = x1 - x0;
        double perFrame = 0.0;
        if (isWild) {
            perFrame = std::clamp(width * kPerFrame, kFewest, std::clamp(m_wildPlaces, kFewest, kMost)) / width;
            m_wildPlaces -= perFrame * width;
        }
        m_places.assign(1, x0);
        const Walk here = m_at;
        for (double from = x0; from < x1;) {
            m_at.goTo(from);
            const double to = std::min(m_at.next(), x1);
            const bool isAll = from == x0 && to == x1;
            if (isAll && !isWild) {
                for (const double part : {0.0005, 0.02, 0.17, 0.33, 0.5, 0.66, 0.83, 0.98, 0.9995})
                    m_places.push_back(x0 + part * width);
            } else if (isAll || to - from > kTooNarrow) {
                constexpr double kFewestOfPiece = 2.0; // that came back
                constexpr double kFewestOfCurve = 4.0;
                const bool isCurve = m_at->getInterpolator() == m_bezier;
                const double fewest = isCurve ? kFewestOfCurve : kFewestOfPiece;
                if (isCurve && from > x0) m_places.push_back(from);
                const auto count = static_cast<int>(std::ceil(std::max(fewest, perFrame * (to - from))));
                for (int i = 0; i < count; ++i) m_places.push_back(from + (to - from) * IrregularPlace(i, count));
            }
            from = to;
        }
        m_at = here;
        if (!isWild && !isNear) addSteepPlaces(segment);

        Worst worst;
        for (const double x : m_places) {
            m_at.goTo(x);
            worst.see(EvalSegment(x, segment), EvalSegment(x, *m_at), x);
        }
        if (worst.at == worst.last) worst.to = std::max(worst.at, x1 - kTooNarrow);
        m_at = here;
        return worst;
    }

    // Where a Bezier segment with weighted handles is steep, places at equal distances in x are too far apart.
    void addSteepPlaces(const Segment& segment) {
        const auto out = segment.getOutTangent();
        const auto in = segment.getInTangent();
        if (!out->isWeighted() && !in->isWeighted()) return;
        const auto* const bezier = dynamic_cast<const BezierInterpBase*>(segment.getInterpolator().get());
        if (!bezier) return;
        Cubic cubic{};
        auto& p = cubic.p;
        bezier->getBezierArgs(segment, p[0].x, p[0].y, p[1].x, p[1].y, p[2].x, p[2].y, p[3].x, p[3].y);
        if (IsThirds(cubic)) return;
        for (const double t : {0.03, 0.12, 0.27, 0.41, 0.58, 0.74, 0.87, 0.96}) {
            const double x = PointAt(cubic, t).x;
            if (x > p[0].x && x < p[3].x - kTooNarrow) m_places.push_back(x);
        }
        std::sort(m_places.begin(), m_places.end());
    }

    // Once a difference may be the largest of its kind, as the report tells that one only: of what is smooth, a tenth
    // is more than was missed.
    template<class Original>
    void refine(Loss::What what, Worst& worst, bool isWild, const Original& original) {
        if (!(worst.difference > (isWild ? 0.5 : 0.9) * m_largest[what])) return;
        Refine(worst, [&](Worst& closer, double x) { closer.see(original(x), m_back.eval(x), x); });
        m_largest[what] = std::max(m_largest[what], worst.difference);
    }

    // From one key to the other; `left` is the key that came back for the first.
    void compareSegment(const Segment& segment, const Keyframe& from, const Keyframe& to, const Keyframe* left) {
        const double x0 = from.getX();
        const double x1 = to.getX();
        const auto right = m_at->getRightKey();
        const bool isOne = left && right && std::fabs(right->getX() - x1) <= closeTo(x1);
        const Segment* const back = isOne ? &*m_at : nullptr;
        const auto kind = segment.getInterpolator();
        const auto backKind = back ? back->getInterpolator() : nullptr;
        const bool isSameKind = back && (kind == backKind || ExpressionOf(segment) == ExpressionOf(*back));
        const auto out = segment.getOutTangent();
        const auto in = segment.getInTangent();
        const auto backOut = back ? back->getOutTangent() : nullptr;
        const auto backIn = back ? back->getInTangent() : nullptr;

        // With the same x(t) values differ by no more than those of the keys and handles together.
        const auto isClose = [&](const Vector2D<double>& a, const Vector2D<double>& b) {
            return a.x == b.x && std::fabs(a.y - b.y) <= 0.5 * kEqual * m_range;
        };
        const bool isWild = !isSameKind && IsWild(kind.get());
        Worst worst;
        const bool isSurelyEqual = isSameKind && kind == backKind && IsLocal(kind.get())
                                   && isClose(left->get(), from.get()) && isClose(right->get(), to.get())
                                   && isClose(out->get(), backOut->get()) && isClose(in->get(), backIn->get());
        const bool isNear = isSameKind && isEqual(*out, *backOut, x1 - x0) && isEqual(*in, *backIn, x1 - x0);
        if (!isSurelyEqual) worst = measure(segment, x0, x1, isWild, isNear);

        if (!isSameKind || isOff(worst)) {
            const Notes::Hint* const hint = m_notes.find(m_original, x0, x1);
            const Loss::What otherwise = isSameKind ? Loss::Tangents : Loss::Kind;
            if (isOff(worst))
                refine(hint ? hint->what : otherwise, worst, isWild, [&](double x) { return EvalSegment(x, segment); });
            if (hint) {
                const bool isWithin =
                    worst.difference <= 1.01 * m_tolerance // rounding of the values that are written
                    || (hint->remedy != Loss::Fitted && hint->remedy != Loss::Split && hint->remedy != Loss::Sampled);
                lose(hint->what, hint->remedy, hint->detail + (isWithin ? "" : ", beyond the tolerance"), &x0, worst);
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
        compareTangent(*out, backOut.get(), isUsed, x0, x1 - x0);
        compareTangent(*in, backIn.get(), isUsed, x1, x1 - x0);
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
        constexpr double kFar = 2.6;
        constexpr int kPlaces = 320; // of a wild end
        Worst worst;
        m_places.assign({0.0, 0.0007, 0.25, 0.5, 0.97, 1.3, kFar});
        const bool isWild =
            !isSameKind && (IsWild(segment.getInterpolator().get()) || IsWild(end->getInterpolator().get()));
        if (isWild)
            for (int i = 0; i < kPlaces; ++i) m_places.push_back(kFar * IrregularPlace(i, kPlaces));
        for (double& place : m_places) place = left ? x0 + place * span : x0 - place * span;
        std::sort(m_places.begin(), m_places.end());
        for (const double x : m_places) {
            if (x == x0 && right) continue; // the first interior segment's
            // At the last key exactly, repetitions give one end's value or the other's.
            worst.see(EvalSegment(x, segment), m_back.eval(x), x);
        }
        if (!isSameKind || isOff(worst)) {
            if (isOff(worst)) refine(Loss::Ends, worst, isWild, [&](double x) { return EvalSegment(x, segment); });
            const bool isRounded = isSameKind && worst.difference <= 1e-6 * m_range;
            lose(Loss::Ends, isRounded ? Loss::Rounded : Loss::Replaced,
                 std::string(side) + ", " + (isSameKind ? "values" : Became(segment, '"' + ExpressionOf(*end) + '"')),
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
    double m_tolerance;
    Walk m_at; // along the curve that came back
    const std::shared_ptr<Interpolator> m_bezier = Bezier::create();
    std::vector<double> m_places;                    // that are looked at
    double m_wildPlaces = 4e6;                       // how many more there may be
    std::array<double, Loss::Units + 1> m_largest{}; // that was refined, by what it is about
};

} // namespace

Comparer::Comparer(const FCurveContainer& originals, const Notes& notes)
    : m_originals(originals), m_notes(notes), m_places(originals.size()) {
    std::size_t i = 0;
    for (const FCurve& original : originals) {
        m_places[i].original = &original;
        const std::string* const name = notes.nameOf(original);
        m_byName[name ? *name : original.getName()].push_back(i++);
    }
    // Each is taken once, from the back: the first one first.
    for (auto& [name, places] : m_byName) std::reverse(places.begin(), places.end());
}

void Comparer::compare(Original& place, const FCurve& back) const {
    place.isThere = true;
    Comparison(*place.original, back, m_notes, place.report).run();
}

void Comparer::take(const std::shared_ptr<const FCurve>& back) {
    const auto found = m_byName.find(back->getName());
    if (found == m_byName.end() || found->second.empty()) {
        m_unknown.push_back(back);
        return;
    }
    compare(m_places[found->second.back()], *back);
    found->second.pop_back();
}

void Comparer::finish(const FCurveContainer& back, ConversionReport& report) {
    if (!KeepsProperties(m_originals, &back)) {
        Loss loss;
        loss.what = Loss::Properties;
        loss.detail = "of the container";
        report.add(loss);
    }
    const auto missing = static_cast<std::size_t>(
        std::count_if(m_places.begin(), m_places.end(), [](const Original& place) { return !place.isThere; }));
    const bool hasAll = missing == m_unknown.size();
    auto next = m_unknown.begin();
    for (Original& place : m_places) {
        if (!place.isThere && hasAll) compare(place, **next++);
        if (!place.isThere) {
            Loss loss;
            loss.curve = place.original->getName();
            loss.what = Loss::Curves;
            loss.detail = "the curve";
            report.add(loss);
        }
        for (const Loss& loss : place.report.losses()) report.add(loss);
    }
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
