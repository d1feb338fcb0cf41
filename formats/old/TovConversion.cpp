#include "FCurveLib/TovConversion.h"

#include "FCurveLib/BezierInterpBase.h"
#include "FCurveLib/DisplayProperties.h"
#include "FCurveLib/Interpolator.h"
#include "FCurveLib/Tolerance.h"
#include "formats/Text.h"
#include "formats/old/Grammar.h"
#include "interp/Kinds.h"
#include "model/Read.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <ostream>
#include <string_view>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace TovConversion {

using Private::Kind;
using Private::Read;

namespace {

bool IsFinite(const Vector2D<double>& v) {
    return std::isfinite(v.x) && std::isfinite(v.y);
}

// Whether two values are the same but for the rounding of whoever computed them.
bool IsSame(double a, double b) {
    return Near(a, b, std::max(GetEpsilon(), 1e-12 * std::max(std::abs(a), std::abs(b))));
}

template<class Part, class IsKept>
bool LosesProperties(const Part& part, IsKept isKept) {
    return std::any_of(part.beginProperties(), part.endProperties(),
                       [&](const auto& property) { return !isKept(property.first); });
}

bool IsEditorState(const std::string& key) {
    return IsEditorKeyString(key.c_str());
}

bool IsEditorStateOfNoFile(const std::string& key) {
    constexpr std::string_view kInFiles[] = {"fc_vis", "fc_lock", "fc_vel", "fc_acc", "fc_disc", "fc_grid", "fc_scal"};
    return IsEditorState(key) && std::find(std::begin(kInFiles), std::end(kInFiles), key) == std::end(kInFiles);
}

bool LosesSettings(const Tangent& tangent, const Segment& segment) {
    const Keyframe* const left = Read::leftKey(segment);
    const Keyframe* const right = Read::rightKey(segment);
    if (LosesProperties(tangent, IsEditorState)) return true;
    if (tangent.isInTangent() ? !right : !left) return false;
    const bool weighted = left && right && Private::IsWeightedHandle(tangent.getX(), right->getX() - left->getX());
    return tangent.getType() != Tangent::Fixed || tangent.isWeightLocked() || tangent.isWeighted() != weighted;
}

bool LosesSettings(const Segment& segment) {
    return LosesProperties(segment, IsEditorState) || LosesSettings(*Read::inTangent(segment), segment)
           || LosesSettings(*Read::outTangent(segment), segment);
}

bool LosesSettings(const Keyframe& key) {
    return LosesProperties(key, IsEditorState) || key.isBreakdown() || key.isTangentsUnified();
}

bool LosesName(std::string_view name) {
    for (std::size_t quote = name.find('"'); quote != std::string_view::npos; quote = name.find('"', quote + 1))
        if (Private::EndsName(name.substr(quote + 1))) return true;
    return false;
}

// --- spans -----------------------------------------------------------------------------------------------------------

// The part of the curve between two neighbouring keys, as the older system can have it.
struct Span {
    TovKey::InterpType interp = TovKey::Constant;
    double startY = 0.0;
    double endY = 0.0; // of a constant span without meaning: it ends in a step to whatever comes
    Vector2D<double> out;
    Vector2D<double> in;
    std::uint32_t losses = 0; // TovCurve::LossFlag
};

// False, and no change, where the control points are not finite.
bool FollowBezier(const Segment& segment, const BezierInterpBase& bezier, bool usesHandles, Span& span) {
    Vector2D<double> p0, p1, p2, p3;
    bezier.getBezierArgs(segment, p0.x, p0.y, p1.x, p1.y, p2.x, p2.y, p3.x, p3.y);
    const Vector2D<double> out{p1.x - p0.x, p1.y - p0.y};
    const Vector2D<double> in{p2.x - p3.x, p2.y - p3.y};
    if (!std::isfinite(p0.y) || !std::isfinite(p3.y) || !IsFinite(out) || !IsFinite(in)) return false;

    if (!usesHandles) {
        span = {TovKey::Bezier, p0.y, p3.y, out, in, TovCurve::SynthesizedBezier};
        return true;
    }
    span.interp = TovKey::Bezier;
    // Unchanged handles keep their bits, which a sum and a difference would not.
    if (p1.x != p0.x + span.out.x || p1.y != p0.y + span.out.y) {
        span.out = out;
        span.losses = TovCurve::ShiftedTangents;
    }
    if (p2.x != p3.x + span.in.x || p2.y != p3.y + span.in.y) {
        span.in = in;
        span.losses = TovCurve::ShiftedTangents;
    }
    return true;
}

void FollowFormula(const Segment& segment, const Interpolator& interpolator, Span& span) {
    const double leftX = Read::leftKey(segment)->getX();
    const double rightX = Read::rightKey(segment)->getX();
    const double third = (rightX - leftX) / 3.0;
    const double startY = interpolator.eval(leftX, segment);
    const double endY = interpolator.eval(rightX, segment);
    const Vector2D<double> out{third, third * interpolator.getFirstDerivative(leftX, segment)};
    const Vector2D<double> in{-third, -third * interpolator.getFirstDerivative(rightX, segment)};
    if (!std::isfinite(startY) || !std::isfinite(endY) || !IsFinite(out) || !IsFinite(in)) {
        span.interp = TovKey::Linear;
        return;
    }
    span = {TovKey::Bezier, startY, endY, out, in, span.losses | TovCurve::SynthesizedBezier};
}

Span SpanOf(const Segment& segment) {
    const Interpolator* const interpolator = Read::interpolator(segment);
    const Vector2D<double>& left = Read::leftKey(segment)->get();
    const Vector2D<double>& right = Read::rightKey(segment)->get();
    Span span{TovKey::Constant, left.y, right.y, Read::outTangent(segment)->get(), Read::inTangent(segment)->get(), 0};

    const Private::KindRow& kind = Private::KindOf(interpolator);
    if (kind.kind == Kind::Constant) return span;
    if (kind.kind == Kind::Linear) {
        span.interp = TovKey::Linear;
        return span;
    }
    if (kind.isBezier()) {
        const auto& bezier = static_cast<const BezierInterpBase&>(*interpolator);
        if (FollowBezier(segment, bezier, kind.kind == Kind::Bezier, span)) return span;
    }

    span.losses = TovCurve::UnsupportedInterpolation;
    switch (kind.shape) {
    case Private::Shape::Number:
        span.startY = interpolator ? interpolator->eval(left.x, segment) : 0.0;
        break;
    case Private::Shape::LeftValue:
        break;
    case Private::Shape::RightValue:
        span.startY = right.y;
        break;
    default:
        FollowFormula(segment, *interpolator, span);
    }
    return span;
}

// --- the conversion --------------------------------------------------------------------------------------------------

// A conversion under way.
class Converter {
public:
    explicit Converter(TovCurve& target) : m_target(target) {}

    std::uint32_t lossFlags() const { return m_flags; }

    void convert(const FCurve& curve) {
        if (LosesName(curve.getName()) || LosesProperties(curve, IsEditorStateOfNoFile)) lose(TovCurve::PropertyLoss);
        for (const Segment& segment : curve) take(segment);
        for (std::size_t i = 0; i < m_keys.size(); ++i) joinSpans(i);
        addKeys(Read::inTangent(Read::firstSegment(curve))->get(), Read::outTangent(Read::lastSegment(curve))->get());
    }

private:
    void lose(TovCurve::LossFlag flag) { m_flags |= flag; }

    // --- segments ----------------------------------------------------------------------------------------------------

    void take(const Segment& segment) {
        if (LosesSettings(segment)) lose(TovCurve::PropertyLoss);
        const Keyframe* const left = Read::leftKey(segment);
        const Keyframe* const right = Read::rightKey(segment);
        if (right) {
            if (LosesSettings(*right)) lose(TovCurve::PropertyLoss);
            m_keys.push_back(right);
            m_before.push_back({});
        }
        if (left && right) {
            m_spans.push_back(SpanOf(segment));
            m_flags |= m_spans.back().losses;
        } else if (Private::KindOf(segment).kind != Kind::Constant) {
            lose(TovCurve::UnsupportedExtensions);
        }
    }

    // --- keys --------------------------------------------------------------------------------------------------------

    // The key that the older curve has before another, to bridge a step; absent where it has no width.
    struct Bridge {
        double width = 0.0;
        double y = 0.0;
    };

    // Decides about the key between two spans.
    void joinSpans(std::size_t i) {
        const Vector2D<double>& key = m_keys[i]->get();
        Span* const before = i > 0 ? &m_spans[i - 1] : nullptr;
        Span* const after = i < m_spans.size() ? &m_spans[i] : nullptr;

        // Outside its keys the curve holds their values.
        if (after && IsSame(after->startY, key.y)) after->startY = key.y;
        const double y = after ? after->startY : key.y;
        if (y != key.y) lose(TovCurve::ShiftedKeyframes);

        if (before && before->interp == TovKey::Constant) return;
        const double endY = before && !IsSame(before->endY, key.y) ? before->endY : key.y;
        if (IsSame(endY, y)) return;

        lose(TovCurve::HealedDiscontinuities);
        const double room = before ? key.x - m_keys[i - 1]->getX() : HUGE_VAL;
        const double width = std::min(Keyframe::getMinSeparation(), room / 2.0);
        const double bridgeX = key.x - width;
        if (!(bridgeX < key.x) || !(bridgeX > key.x - room)) return; // so far out that doubles have no place between
        m_before[i] = {width, endY};
        if (before && before->interp == TovKey::Bezier) {
            const double ratio = (room - width) / room;
            before->out.x *= ratio;
            before->in.x *= ratio;
            lose(TovCurve::ShiftedTangents);
        }
    }

    void addKeys(const Vector2D<double>& firstLeft, const Vector2D<double>& lastRight) {
        for (std::size_t i = 0; i < m_keys.size(); ++i) {
            const Vector2D<double>& position = m_keys[i]->get();
            const Span* const after = i < m_spans.size() ? &m_spans[i] : nullptr;
            TovKey key;
            key.setLocation({position.x, after ? after->startY : position.y});
            key.setLeftTangent(i > 0 ? m_spans[i - 1].in : firstLeft);
            key.setRightTangent(after ? after->out : lastRight);
            key.setInterp(after ? after->interp : TovKey::Constant);
            key.setLocked(*m_keys[i]->getProperty("fc_lock") != '\0');
            if (m_before[i].width > 0.0) addBridge(m_before[i], key);
            m_target.addKeyframe(key);
        }
    }

    void addBridge(const Bridge& bridge, TovKey& to) {
        const Vector2D<double> third{bridge.width / 3.0, (to.getLocation().y - bridge.y) / 3.0};
        TovKey key(to);
        key.setLocation({to.getLocation().x - bridge.width, bridge.y});
        key.setInterp(TovKey::Linear);
        key.setRightTangent(third);
        to.setLeftTangent({-third.x, -third.y});
        m_target.addKeyframe(key);
    }

    TovCurve& m_target;
    std::uint32_t m_flags = 0;
    std::vector<const Keyframe*> m_keys;
    std::vector<Bridge> m_before; // of each key
    std::vector<Span> m_spans;    // after each key but the last
};

const char* WordOf(TovKey::InterpType interp) {
    return interp < std::size(Private::kInterpWords) ? Private::kInterpWords[interp]
                                                     : ""; // deliberate: no word for what is no kind
}

} // namespace

bool TovKey::isSnapped() const noexcept {
    return NearEqual(m_location.x, std::floor(m_location.x + 0.5));
}

TovCurve::TovCurve(const FCurve& curve) : m_name(curve.getName()) {
    Converter converter(*this);
    converter.convert(curve);
    m_lossFlags = converter.lossFlags();
}
TovCurve::TovCurve(const TovCurve&) = default;
TovCurve::TovCurve(TovCurve&&) noexcept = default;
TovCurve& TovCurve::operator=(const TovCurve&) = default;
TovCurve& TovCurve::operator=(TovCurve&&) noexcept = default;
TovCurve::~TovCurve() = default;

void TovCurve::setName(const char* name) {
    m_name = Private::OrEmpty(name);
}

void TovCurve::addKeyframe(const TovKey& key) {
    if (!IsFinite(key.getLocation()) || !IsFinite(key.getLeftTangent()) || !IsFinite(key.getRightTangent())) return;
    m_keys.insert(m_keys.end(), key);
}

std::ostream& operator<<(std::ostream& out, const TovCurve& curve) {
    constexpr const char* kLosses[] = {
        "// unsupported interpolation\n", "// unsupported extensions\n", "// shifted keyframes\n",
        "// shifted tangents\n",          "// healed discontinuities\n", "// synthesized bezier segment\n",
        "// property data loss\n",
    };
    for (std::size_t bit = 0; bit < std::size(kLosses); ++bit)
        if (curve.getLossFlags() & (1U << bit)) out << kLosses[bit];
    if (curve.getLossFlags() == 0) out << "// no conversion loss\n";

    out << "fcurve {\n    name \"" << curve.getName() << "\"\n    extensions constant constant\n";
    const char* incoming = WordOf(TovKey::Unknown);
    for (auto key = curve.begin(); key != curve.end(); ++key) {
        const Vector2D<double>& location = key->getLocation();
        const Vector2D<double>& left = key->getLeftTangent();
        const Vector2D<double>& right = key->getRightTangent();
        const char* const own = WordOf(key->getInterp());
        const char* const outgoing = std::next(key) == curve.end() ? WordOf(TovKey::Unknown) : own;
        out << "    keyframe {\n        " << location.x << ' ' << location.y << "\n        interp " << own
            << "\n        tangents smooth " << left.x << ' ' << left.y << ' ' << incoming << ' ' << right.x << ' '
            << right.y << ' ' << outgoing << '\n';
        if (key->isSnapped()) out << "        snapped\n";
        if (key->isLocked()) out << "        locked\n";
        out << "    }\n";
        incoming = own;
    }
    return out << "}\n";
}

} // namespace TovConversion

} // namespace v19
} // namespace VEM_FN::FCurveLib
