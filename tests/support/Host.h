#pragma once

// A host that edits, selects, undoes and saves by choices from outside, some of it inside notifications and on parts
// that have left their curve. Beside it stand naive models: keys in a plain vector that is searched linearly, sets of
// parts, answers found by walking over everything.

#include "support/Echo.h"
#include "support/Invariants.h"
#include "support/Parts.h"
#include "support/Random.h"
#include "support/Survival.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <functional>
#include <map>
#include <sstream>
#include <tuple>
#include <type_traits>

namespace Test {

namespace HostModels {

// --- keys ------------------------------------------------------------------------------------------------------------

struct NaiveKey {
    double x, y;
    bool breakdown;
    std::shared_ptr<Interpolator> kind; // of the segment that starts here
};

struct NaiveCurve {
    std::vector<NaiveKey> keys;
    std::shared_ptr<Interpolator> leading;

    explicit NaiveCurve(FCurve& curve) {
        for (Segment& segment : curve) {
            const auto key = segment.getLeftKey();
            if (key) keys.push_back({key->getX(), key->getY(), key->isBreakdown(), segment.getInterpolator()});
            if (!key) leading = segment.getInterpolator();
        }
    }
    std::size_t numberAt(double x) const { // of the last key not above x, counted from 1
        std::size_t n = 0;
        while (n < keys.size() && keys[n].x <= x) ++n;
        return n;
    }
    void insert(const Keyframe& key, const std::shared_ptr<Interpolator>& kind) {
        const std::size_t at = numberAt(key.getX());
        if (at == 0 || keys[at - 1].x != key.getX())
            keys.insert(keys.begin() + static_cast<std::ptrdiff_t>(at),
                        {key.getX(), key.getY(), key.isBreakdown(), kind});
    }
    double clamp(std::size_t i, double x) const {
        const double present = keys[i].x;
        if (x < present && i > 0) return std::min(std::max(x, keys[i - 1].x + 0.001), present);
        if (x > present && i + 1 < keys.size()) return std::max(std::min(x, keys[i + 1].x - 0.001), present);
        return x;
    }
    void move(std::size_t i, double x, double y) {
        const double oldX = keys[i].x;
        if (oldX == x && keys[i].y == y) return;
        keys[i].x = x = clamp(i, x);
        keys[i].y = y;
        if (x == oldX) return;
        std::size_t l = i, r = i;
        while (l > 0 && keys[l - 1].breakdown) --l;
        while (r + 1 < keys.size() && keys[r + 1].breakdown) ++r;
        for (std::size_t step = 0; step <= r - l; ++step) {
            const std::size_t k = x > oldX ? r - step : l + step;
            if (k == i) continue;
            const bool anchored = k < i ? l > 0 : r + 1 < keys.size();
            const double anchor = !anchored ? 0 : k < i ? keys[l - 1].x : keys[r + 1].x;
            const double old = keys[k].x;
            const double to = anchored ? anchor + (old - anchor) * ((anchor - oldX) - (x - oldX)) / (anchor - oldX)
                                       : old + (x - oldX);
            keys[k].x = clamp(k, to);
        }
    }
};

inline std::string Difference(FCurve& curve, const NaiveCurve& naive, bool holdsThirds) {
    if (curve.size() != naive.keys.size() + 1) return "another number of keys";
    if (curve.begin()->getInterpolator() != naive.leading) return "another leading interpolator";
    for (std::size_t i = 0; i < naive.keys.size(); ++i) {
        const NaiveKey& expected = naive.keys[i];
        Segment& segment = *curve.findSegment(expected.x);
        const auto key = segment.getLeftKey();
        const std::string where = "key " + std::to_string(i) + ": ";
        if (!key || key->get() != Vector2D<double>(expected.x, expected.y)) return where + "elsewhere";
        if (key->isBreakdown() != expected.breakdown) return where + "another breakdown flag";
        if (segment.getInterpolator() != expected.kind) return where + "another interpolator";
        for (const auto& tangent : {key->getInTangent(), key->getOutTangent()}) {
            const bool held = !tangent->isWeighted() || tangent->getType() > Tangent::Flat;
            const auto owner = tangent->getOwningSegment();
            if (!holdsThirds || !held || !owner->getLeftKey() || !owner->getRightKey()) continue;
            const double third = (owner->getRightKey()->getX() - owner->getLeftKey()->getX()) / 3;
            if (std::fabs(std::fabs(tangent->getX()) - third) > 2e-07) return where + "handle not a third";
        }
    }
    return "";
}

// --- what selected parts have in common ------------------------------------------------------------------------------

inline std::string text(const std::string& value) {
    return value;
}
inline std::string text(double value) {
    std::ostringstream out;
    out.precision(17);
    out << value;
    return out.str();
}

template<class T>
std::string said(const Examined<T>& examined) {
    return examined.isNone() ? "none" : examined.isMixed() ? "mixed" : text(examined.getValue());
}

template<class Part, class Get>
std::string found(const std::vector<Part>& parts, const Get& get) {
    if (parts.empty()) return "none";
    using Value = std::decay_t<decltype(get(*parts.front()))>;
    std::vector<Value> values;
    for (const Part& part : parts) values.push_back(get(*part));
    const auto [low, high] = std::minmax_element(values.begin(), values.end());
    if constexpr (std::is_same_v<Value, double>)
        return *high - *low <= 1e-7 ? text(*low + 0.0) : "mixed"; // -0 reads as 0
    else
        return *low == *high ? text(*low) : "mixed";
}

// What the examiner says otherwise than it is; empty for nothing.
inline std::string untruth(SelectionExaminer& examiner, FCurveContainer& container) {
    std::vector<std::shared_ptr<FCurve>> curves;
    std::vector<std::shared_ptr<Segment>> segments;
    std::vector<std::shared_ptr<Keyframe>> keys;
    std::vector<std::shared_ptr<Tangent>> tangents;
    for (const HitRecord& part : Selection(container.getShared())) {
        if (part.getType() == HitRecord::CURVE) curves.push_back(part.getCurve());
        if (part.getType() == HitRecord::SEGMENT) segments.push_back(part.getSegment());
        if (part.getType() == HitRecord::KEYFRAME) keys.push_back(part.getKeyframe());
        if (part.isTangent()) tangents.push_back(part.getTangent());
    }
    std::string difference;
    const auto check = [&](const char* what, const auto& examined, const auto& parts, const auto& get) {
        const std::string expected = found(parts, get);
        if (said(examined) != expected) difference += what + (" is " + said(examined)) + ", not " + expected + "; ";
    };
    const auto& c = examiner.getCurves();
    check("name", c.name, curves, [](auto& of) { return std::string(of.getName()); });
    check("visible", c.visible, curves, [](auto& of) { return IsVisible(of); });
    check("editable", c.editable, curves, [](auto& of) { return IsEditable(of); });
    check("locked", c.locked, curves, [](auto& of) { return IsLocked(of); });
    check("velocity", c.velocityVisible, curves, [](auto& of) { return IsVelocityVisible(of); });
    check("acceleration", c.accelerationVisible, curves, [](auto& of) { return IsAccelerationVisible(of); });
    check("breaks", c.discontinuityVisible, curves, [](auto& of) { return IsDiscontinuityVisible(of); });
    const auto& s = examiner.getSegments();
    check("expression", s.expression, segments,
          [](auto& of) { return std::string(of.getInterpolator() ? of.getInterpolator()->getExpression() : ""); });
    const auto& k = examiner.getKeyframes();
    check("x", k.x, keys, [](auto& of) { return of.getX(); });
    check("y", k.y, keys, [](auto& of) { return of.getY(); });
    check("breakdown", k.breakdown, keys, [](auto& of) { return of.isBreakdown(); });
    check("unified", k.tangentsUnified, keys, [](auto& of) { return of.isTangentsUnified(); });
    check("locked key", k.locked, keys, [](auto& of) { return *of.getProperty("fc_lock") != 0; });
    const auto& t = examiner.getTangents();
    check("type", t.type, tangents, [](auto& of) { return of.getType(); });
    check("angle", t.angle, tangents, [](auto& of) { return of.getAngle(); });
    check("weight", t.weight, tangents, [](auto& of) { return of.getWeight(); });
    check("weighted", t.weighted, tangents, [](auto& of) { return of.isWeighted(); });
    check("weight lock", t.weightLocked, tangents, [](auto& of) { return of.isWeightLocked(); });
    if (std::tuple(c.count, s.count, k.count, t.count)
        != std::tuple(curves.size(), segments.size(), keys.size(), tangents.size()))
        difference += "another number of parts";
    return difference;
}

// --- the host --------------------------------------------------------------------------------------------------------

struct Watched {
    explicit Watched(std::shared_ptr<FCurve> of) : curve(std::move(of)), naive(*curve) { echo.watch(*curve); }
    std::shared_ptr<FCurve> curve;
    NaiveCurve naive;
    Echo echo;
};

// What a selection tells.
struct Told : SelectionObserver {
    void selected(const HitRecord& part) override { twice = !gained.insert(part).second || twice; }
    void deselected(const HitRecord& part) override { twice = !lost.insert(part).second || twice; }
    Records gained, lost;
    bool twice = false;
};

// Does something inside a notification, once.
struct Meddler : FCurveObserver, ContainerObserver, SelectionObserver {
    void curveChanged(FCurve&) override { heard(); }
    void containerChanged(FCurveContainer&) override { heard(); }
    void selected(const HitRecord&) override { heard(); }
    void deselected(const HitRecord&) override { heard(); }
    void selectionCleared() override { heard(); }
    void heard() {
        if (countdown > 0 && --countdown == 0) act();
    }
    int countdown = 0;
    std::function<void()> act;
};

} // namespace HostModels

class Host {
public:
    /// Quick, it looks after each edit only at the curve that was edited, and at everything at the end.
    explicit Host(Choices& choices, bool quick = false)
        : m_random(choices), m_quick(quick), m_resamples(below(4) == 0) {
        for (int i = 0; i < 4; ++i) m_watched.push_back(std::make_shared<Watched>(anyCurve()));
        for (const auto& watched : m_watched) m_container->addCurve(watched->curve);
        newSelection();
        m_examiner = std::make_unique<SelectionExaminer>(*m_selection);
        m_meddler.act = [this] {
            m_disturbed = true;
            for (int edits = 1 + below(3); edits > 0; --edits) {
                readAnew();
                edit();
            }
        };
        m_container->subscribe(m_meddler);
        FCurve::subscribeGlobal(m_meddler);
    }

    /// The first thing that is wrong; empty when nothing is.
    std::string run(int steps) {
        for (int i = 0; i < steps && !m_random.ended(); ++i) {
            m_last.clear();
            m_disturbed = false;
            m_meddler.countdown = below(8) == 0 ? 1 + below(6) : 0;
            for (int edits = !m_quick && below(16) == 0 ? below(80) : 1; edits > 0; --edits) {
                edit();
                if (m_disturbed || m_isWild) readAnew();
            }
            m_meddler.countdown = 0;
            const std::string wrong = m_quick ? m_complaint + Fault(*m_edited) : fault();
            if (!wrong.empty()) return "after step " + std::to_string(i) + ":" + m_last + ": " + wrong;
        }
        return fault();
    }

private:
    using NaiveCurve = HostModels::NaiveCurve;
    using Watched = HostModels::Watched;
    static constexpr std::size_t mostSegments = 24; // of a curve, from which on no tool makes more
    static constexpr double mostSamples = 60.0;

    int below(int n) { return m_random.below(n); }
    bool coin() { return m_random.coin(); }
    double value() { return below(3); } // one of few, so that parts often agree
    // The models' arithmetic is the library's for numbers of a usual size alone.
    double number() {
        const double chosen = m_random.coordinate();
        m_isWild = m_isWild || !(std::abs(chosen) <= 1e5) || (chosen != 0.0 && std::abs(chosen) < 1e-6);
        return chosen;
    }
    FCurve& anyOf() { return *m_random.oneOf(m_watched)->curve; }

    std::shared_ptr<Interpolator> anyKind() {
        static const char* const others[] = {"constant()", "constant_next()", "spline()", "ease()",   "match()",
                                             "matchin()",  "cycle()",         "mirror()", "sin(x)",   "cycle() + x",
                                             "7",          "x**2 % 7",        "1 / x",    "no such ("};
        if (below(4) == 0) return InterpolatorFactory::create(m_random.oneOf(others));
        const std::shared_ptr<Interpolator> kinds[] = {nullptr, straight(), bent(), bent()};
        return m_random.oneOf(kinds);
    }
    std::shared_ptr<FCurve> anyCurve() {
        auto curve = makeCurve(coin() ? "a" : "b", below(6), anyKind());
        for (const HitRecord& part : partsOf(*curve, true))
            if (coin()) Selection(nullptr).select(part);
        return curve;
    }
    HitRecord anyPart() {
        const auto parts = partsOf(anyOf(), true);
        return m_random.oneOf(parts);
    }
    void newSelection() {
        m_selection = std::make_shared<Selection>(m_container);
        m_selection->subscribe(m_told);
        m_selection->subscribe(m_meddler);
    }

    // After an edit inside another one the models cannot know in which order things were done.
    void readAnew() {
        readKeys();
        for (const auto& watched : m_watched) watched->echo.sync(*watched->curve);
    }
    // After edits that the model of keys does not do; the echoes hear of them.
    void readKeys() {
        for (const auto& watched : m_watched) watched->naive = NaiveCurve(*watched->curve);
    }

    std::string fault() {
        if (!m_complaint.empty()) return m_complaint;
        for (const auto& watched : m_watched) {
            std::string wrong = Fault(*watched->curve);
            if (wrong.empty())
                wrong = HostModels::Difference(*watched->curve, watched->naive, !m_isWild && !m_resamples);
            if (wrong.empty()) wrong = watched->echo.differenceTo(*watched->curve);
            if (wrong.empty()) wrong = Test::Difference(*watched->curve, *FCurve::createCopy(*watched->curve));
            if (!wrong.empty()) return wrong;
        }
        std::vector<HitRecord> all = partsOf(*m_container, false);
        if (std::vector<HitRecord>(HitRecordIterator::begin(*m_container), HitRecordIterator::end(*m_container)) != all)
            return "the walk differs";
        const auto rend = std::make_reverse_iterator(HitRecordIterator::begin(*m_container));
        const auto rbegin = std::make_reverse_iterator(HitRecordIterator::end(*m_container));
        if (!std::equal(rbegin, rend, all.rbegin(), all.rend())) return "the backward walk differs";
        const auto isDeselected = [&](const HitRecord& part) { return !isSelected(part); };
        all.erase(std::remove_if(all.begin(), all.end(), isDeselected), all.end());
        if (namesOf(*m_selection) != namesOf(all) || namesOf(std::as_const(*m_selection)) != namesOf(all))
            return "the walk over the selection differs";
        return HostModels::untruth(*m_examiner, *m_container);
    }

    // --- edits of curves -------------------------------------------------------------------------------------------

    void edit() {
        const std::shared_ptr<Watched> watched = m_random.oneOf(m_watched);
        FCurve& curve = *watched->curve;
        m_edited = watched->curve;
        NaiveCurve& naive = watched->naive;
        const auto position = m_random.placeIn(curve);
        const auto segment = position->getShared();
        const auto number0 = static_cast<std::size_t>(std::distance(curve.begin(), position));
        const auto key = segment->getLeftKey();
        const auto tangent = coin() ? segment->getInTangent() : segment->getOutTangent();

        const auto insert = [&] {
            if (curve.size() > mostSegments) return;
            const double x = m_isWild ? number() : std::round(number() * 40) / 4;
            const auto made = Keyframe::create(x, number());
            made->setBreakdown(below(3) == 0);
            made->setTangentsUnified(below(3) == 0);
            if (coin()) made->setProperty("fc_sel", "1");
            const auto kind = anyKind();
            curve.insertSegment(*made, kind);
            naive.insert(*made, kind);
        };
        const auto remove = [&] {
            keep(*segment);
            if (key) naive.keys.erase(naive.keys.begin() + static_cast<std::ptrdiff_t>(number0) - 1);
            curve.removeSegment(position);
        };
        const auto move = [&] {
            if (!key) return;
            const double x = key->getX() + (coin() ? number() : 30 * number());
            const double y = coin() ? number() : key->getY();
            naive.move(number0 - 1, x, y);
            key->set(x, y);
        };
        const auto shape = [&] {
            m_random.act({{"handle", [&] { tangent->set(number(), number()); }},
                          {"angle", [&] { tangent->setAngle(number()); }},
                          {"weight", [&] { tangent->setWeight(number()); }},
                          {"weighted", [&] { tangent->setWeighted(coin()); }},
                          {"weight lock", [&] { tangent->setWeightLocked(coin()); }},
                          {"type", [&] { tangent->setType(static_cast<std::uint8_t>(below(8))); }}});
        };
        const auto setFlags = [&] {
            if (!key) return;
            const bool breakdown = coin();
            naive.keys[number0 - 1].breakdown = breakdown;
            key->setBreakdown(breakdown);
            key->setTangentsUnified(coin());
            SetLocked(*key, coin());
        };
        const auto setKind = [&] {
            const auto kind = anyKind();
            (key ? naive.keys[number0 - 1].kind : naive.leading) = kind;
            segment->setInterpolator(kind);
        };
        const auto display = [&] {
            curve.setName(coin() ? "a" : "b");
            for (const auto set :
                 {&SetVisible, &SetEditable, &SetVelocityVisible, &SetAccelerationVisible, &SetDiscontinuityVisible})
                set(curve, coin());
            SetLocked(curve, coin());
        };
        const auto swap = [&] {
            const std::shared_ptr<Watched> other = m_random.oneOf(m_watched);
            if (other != watched) std::swap(naive, other->naive);
            curve.swap(*other->curve);
        };
        const auto assign = [&] {
            const auto source = coin() ? anyOf().getShared() : anyCurve(); // itself, too
            naive = NaiveCurve(*source);
            curve = *source;
        };
        const auto clear = [&] {
            if (below(3) != 0) return;
            keep(*segment);
            curve.clear();
            naive = NaiveCurve(*FCurve::create());
            naive.leading = curve.begin()->getInterpolator();
        };
        const auto replace = [&] {
            const auto place = std::find(m_watched.begin(), m_watched.end(), watched);
            if (place == m_watched.end()) return;
            *place = std::make_shared<Watched>(anyCurve());
            const auto last = (*place)->curve;
            for (auto it = m_container->begin(); it != m_container->end(); ++it) {
                if (&*it == &curve) {
                    m_container->removeCurve(it);
                    break;
                }
            }
            m_container->insertCurve(m_container->begin(), last);
        };
        const auto silently = [&] {
            {
                const FCurve::Switch silent(curve);
                const bool moves = key && key->getY() != 77.0;
                if (moves) key->setY(naive.keys[number0 - 1].y = 77.0);
                complainIf(moves != silent.blockedNotification(), "a switch does not know what it suppressed");
            }
            FCurve::setChangeType(static_cast<FCurve::ChangeType>(below(4)));
            curve.notifyChanged();
            FCurve::setChangeType(FCurve::OrdinaryChange);
        };
        const auto list = [&] {
            if (coin())
                m_container->addCurve(m_random.oneOf(m_watched)->curve);
            else if (!m_container->empty())
                m_container->removeCurve(m_random.placeIn(*m_container));
            else if (coin())
                m_container->clear();
        };
        // What the model of keys leaves to the library.
        const auto tool = [&](const auto& act) {
            return [&, act] {
                if (curve.size() <= mostSegments) act();
                readKeys();
            };
        };
        const std::vector<Edit> edits{{"drag", tool([&] { drag(curve, key); })},
                                      {"resample", tool([&] { resample(curve); })},
                                      {"transform", tool([&] { transform(curve); })},
                                      {"cut", tool([&] { cut(curve); })},
                                      {"kept part", tool([&] { editKeptPart(*tangent); })},
                                      {"properties", [&] { setProperties(curve, *segment, key, *tangent); }},
                                      {"look", [&] { look(curve, *segment); }},
                                      {"insert", insert},
                                      {"insert", insert},
                                      {"insert", insert},
                                      {"remove", remove},
                                      {"remove", remove},
                                      {"move", move},
                                      {"move", move},
                                      {"move", move},
                                      {"shape", shape},
                                      {"shape", shape},
                                      {"shape", shape},
                                      {"flags", setFlags},
                                      {"kind", setKind},
                                      {"display", display},
                                      {"swap", swap},
                                      {"assign", assign},
                                      {"clear", clear},
                                      {"replace", replace},
                                      {"list", list},
                                      {"silently", silently},
                                      {"select", [&] { editSelection(); }},
                                      {"select", [&] { editSelection(); }},
                                      {"select", [&] { editSelection(); }},
                                      {"select", [&] { editSelection(); }},
                                      {"undo", [&] { undo(); }},
                                      {"save", [&] { save(); }}};
        m_last += std::string(" ") + m_random.act(edits);
    }

    // --- edits without a model -------------------------------------------------------------------------------------

    void keep(Segment& segment) {
        m_kept.push_back(segment.getShared());
        if (m_kept.size() > 6) m_kept.pop_front();
    }

    void drag(FCurve& curve, const std::shared_ptr<Keyframe>& key) {
        for (const auto type : {FCurve::BeginChange, FCurve::StepChange, FCurve::StepChange, FCurve::EndChange}) {
            FCurve::setChangeType(type);
            if (key) key->set(key->getX() + number(), key->getY() + number());
            curve.notifyChanged();
        }
        FCurve::setChangeType(FCurve::OrdinaryChange);
    }

    // Samples that a run can afford.
    void resample(FCurve& curve) {
        const double from = number(), to = from + std::abs(number()), step = std::abs(number()) / 4;
        const auto filter = static_cast<SmoothFilter>(below(5));
        const int width = below(20) - 1;
        const bool bakes = coin();
        if (!m_resamples || !(to - from <= mostSamples * step)) return;
        bakes ? BakeCurve(curve, from, to, step) : SmoothCurve(curve, from, to, step, width, filter);
    }

    void transform(FCurve& curve) {
        const std::size_t size = curve.size();
        static const double scales[] = {-1.0, 0.5, 1.0, 2.0};
        const Vector2D<double> a{m_random.oneOf(scales), m_isWild ? number() : m_random.oneOf(scales)};
        const Vector2D<double> b{number(), number()};
        // Near the origin, where the models' tolerances hold.
        for (Segment& segment : curve)
            if (const auto key = segment.getLeftKey(); key && !m_isWild && std::abs(key->getX()) > 1e4) return;
        const auto type = static_cast<FlipType>(below(4));
        m_random.act({{"scale", [&] { TransformCurve(curve, a, b); }},
                      {"flip", [&] { FlipCurve(curve, type, a.x, a.y); }},
                      {"turn", [&] { FlipCurveAboutCentroid(curve, type); }}});
        complainIf(curve.size() != size, "a transformation changes the number of keys");
    }

    void cut(FCurve& curve) {
        const std::size_t size = curve.size();
        const double x = number();
        const bool refused = PreviewBezierKeyframe(curve, x).outcome == KeyframeInsertion::Refused;
        InsertBezierKeyframe(curve, x);
        complainIf(curve.size() != size + (refused ? 0 : 1), "an insertion does not do what its preview says");
    }

    // A segment, a key and a tangent that may have left their curve.
    void editKeptPart(Tangent& tangent) {
        if (m_kept.empty()) return;
        const std::shared_ptr<Segment> segment = m_random.oneOf(m_kept);
        const auto key = segment->getLeftKey();
        const std::shared_ptr<Tangent> kept = coin() ? segment->getInTangent() : segment->getOutTangent();
        if (key) key->set(number(), number());
        segment->setInterpolator(anyKind());
        if (kept && m_resamples) {
            if (coin())
                tangent = *kept;
            else
                *kept = tangent;
        }
        const auto made = Segment::create(segment->getOwningCurve(), key, anyKind(), segment->getRightKey());
        if (const auto kind = made->getInterpolator()) kind->eval(number(), *made);
        if (const auto kind = segment->getInterpolator()) kind->getFirstDerivative(number(), *segment);
    }

    void setProperties(FCurve& curve, Segment& segment, const std::shared_ptr<Keyframe>& key, Tangent& tangent) {
        static const char* const texts[] = {"", "1", "a", "fc_lock", "fc_isUnified", "\xc3\xbc\x01\xff<&>\"", "0"};
        const auto set = [&](auto& part) {
            if (below(8) == 0) part.clearProperties();
            part.setProperty(m_random.oneOf(texts), m_random.oneOf(texts));
        };
        set(curve);
        set(segment);
        if (key) set(*key);
        set(tangent);
        m_container->setProperty("k", m_random.oneOf(texts));
    }

    void look(FCurve& curve, Segment& segment) {
        const double x = number();
        curve.eval(x);
        EvalInInterior(x, curve);
        GetFirstDerivativeLeft(curve, x);
        GetSecondDerivativeRight(curve, x);
        int i = 0;
        for (const Segment& at : curve) {
            complainIf(GetSegmentIndex(curve, at) != i++, "a segment has another number");
            const auto left = at.getLeftKey();
            complainIf(left && GetKeyframeIndex(curve, *left) != i - 2, "a key has another number");
            const auto in = at.getInTangent()->get(), out = at.getOutTangent()->get();
            complainIf(!std::isfinite(in.x + in.y * 0 + out.x + out.y * 0), "a handle is not finite");
            complainIf(in.x > 0.0 || out.x < 0.0, "a handle points across its key");
        }
        const auto left = segment.getLeftKey(), right = segment.getRightKey();
        const auto kind = segment.getInterpolator();
        if (!left || !right || !kind || m_isWild) return;
        std::vector<Vector2D<double>> points;
        kind->computePolyline(segment, left->getX(), right->getX(), 17, points);
        for (std::size_t k = 1; k < points.size(); ++k)
            complainIf(points[k].x < points[k - 1].x, "a polyline runs to the left");
    }

    // --- edits of the selection ------------------------------------------------------------------------------------

    static bool isSelected(const HitRecord& part) { return Selection(nullptr).isSelected(part); }

    Records selected() {
        std::vector<HitRecord> parts = partsOf(*m_container, true);
        for (const auto& watched : m_watched)
            for (HitRecord& part : partsOf(*watched->curve, true)) parts.push_back(std::move(part));
        Records result;
        for (HitRecord& part : parts)
            if (isSelected(part)) result.insert(std::move(part));
        return result;
    }

    void complainIf(bool wrong, const char* what) {
        if (wrong && !m_disturbed) m_complaint = what;
    }

    // Acts, and expects that exactly these parts are selected then, and that exactly the difference was told.
    void change(const Records& expected, const std::function<void()>& act) {
        if (m_quick) return act();
        const Records before = selected();
        const auto without = [](const Records& a, const Records& b) {
            Records rest;
            for (const HitRecord& part : a)
                if (b.count(part) == 0) rest.insert(part);
            return rest;
        };
        m_told.gained.clear();
        m_told.lost.clear();
        m_told.twice = false;
        act();
        complainIf(selected() != expected, "other parts are selected");
        complainIf(m_told.twice || m_told.gained != without(expected, before)
                       || m_told.lost != without(before, expected),
                   "another change was told");
    }

    void editSelection() {
        const std::shared_ptr<Selection> selection = m_selection;
        const HitRecord part = anyPart();
        const auto curve = part.getCurve();
        const Records before = selected();
        Records with = before, without = before, whole = before, none = before, cleared = before, curvesOnly = before;
        with.insert(part);
        without.erase(part);
        for (const HitRecord& each : partsOf(*m_container, true)) {
            cleared.erase(each);
            if (each.getType() != HitRecord::CURVE) curvesOnly.erase(each);
        }
        for (const HitRecord& each : partsOf(*curve, true)) {
            if (each.isTangent() && !each.getTangent()->getOwningKeyframe()) continue;
            whole.insert(each);
            none.erase(each);
        }
        m_last += std::string(" ")
                  + m_random.act({{"select", [&] { change(with, [&] { selection->select(part); }); }},
                                  {"deselect", [&] { change(without, [&] { selection->deselect(part); }); }},
                                  {"all", [&] { change(whole, [&] { SelectCurveCompletely(*selection, *curve); }); }},
                                  {"none", [&] { change(none, [&] { DeselectCurveCompletely(*selection, *curve); }); }},
                                  {"clear", [&] { change(cleared, [&] { selection->clear(); }); }},
                                  {"curves", [&] { change(curvesOnly, [&] { DeselectSelectedParts(*selection); }); }},
                                  {"property", [&] { curve->begin()->setProperty("fc_sel", coin() ? "1" : ""); }},
                                  {"anew", [&] { newSelection(); }}});
    }

    void undo() {
        const std::shared_ptr<Selection> selection = m_selection;
        const Records before = selected();
        const SelectionSnapshot snapshot(*selection);
        for (int i = below(6); i > 0; --i) editSelection();
        if (m_disturbed) return;
        const SelectionSnapshot after(*m_selection);
        // Curves outside the container keep what they have.
        Records expected = selected();
        for (const HitRecord& part : partsOf(*m_container, true)) {
            expected.erase(part);
            if (before.count(part) != 0) expected.insert(part);
        }
        std::size_t lost = 0;
        change(expected, [&] { lost = snapshot.restore(*m_selection); });
        complainIf(lost != 0 || SelectionSnapshot(*m_selection) != snapshot, "a snapshot is not restored");
    }

    void save() {
        if (m_quick && below(16) != 0) return;
        const int countdown = std::exchange(m_meddler.countdown, 0); // the comparison's copies tell everybody, too
        const std::string loss = LossOfWriting(*m_container);
        complainIf(!loss.empty(), loss.c_str());
        m_meddler.countdown = countdown;
    }

    Choices& m_random;
    bool m_quick;
    bool m_resamples; // it does what leaves handles of another length than their flags say
    std::vector<std::shared_ptr<Watched>> m_watched;
    std::shared_ptr<FCurve> m_edited;
    std::deque<std::shared_ptr<Segment>> m_kept;
    std::shared_ptr<FCurveContainer> m_container = FCurveContainer::create();
    HostModels::Told m_told;
    HostModels::Meddler m_meddler;
    std::shared_ptr<Selection> m_selection;
    std::unique_ptr<SelectionExaminer> m_examiner;
    bool m_isWild = false;    // a number was beyond what the models can do
    bool m_disturbed = false; // something was done inside a notification
    std::string m_complaint, m_last;
};

} // namespace Test
