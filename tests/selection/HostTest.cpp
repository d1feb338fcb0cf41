// A host at random: it edits, selects, undoes and saves, some of it from inside notifications. Beside it stand naive
// models: keys in a plain vector that is searched linearly, sets of parts, answers found by walking over everything.

#include "support/Invariants.h"
#include "support/Random.h"
#include "support/SameCurve.h"
#include "tests/selection/Parts.h"

#include <map>
#include <sstream>

namespace {

using namespace Test;

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

// Follows a curve by its notifications alone.
struct Mirror : FCurveObserver {
    explicit Mirror(FCurve& curve) { sync(curve); }
    void sync(FCurve& curve) {
        positions.clear();
        handles.clear();
        for (Segment& segment : curve) add(segment);
    }
    void add(Segment& segment) {
        const auto key = segment.getLeftKey();
        if (!key) return;
        positions[key.get()] = key->get();
        for (const auto& tangent : {key->getInTangent(), key->getOutTangent()}) handles[tangent.get()] = tangent->get();
    }
    void curveChanged(FCurve& curve) override { sync(curve); }
    void keyframeIntrinsicChanged(Keyframe& key, KeyframeIntrinsicType) override { positions[&key] = key.get(); }
    void tangentIntrinsicChanged(Tangent& tangent, TangentIntrinsicType) override { handles[&tangent] = tangent.get(); }
    void segmentIntrinsicChanged(Segment&, SegmentIntrinsicType) override {}
    void segmentAdded(FCurve&, Segment& segment) override { add(segment); }
    void segmentRemoved(FCurve&, Segment& segment) override {
        positions.erase(segment.getLeftKey().get());
        handles.erase(segment.getInTangent().get());
        handles.erase(segment.getOutTangent().get());
    }
    std::map<const Keyframe*, Vector2D<double>> positions;
    std::map<const Tangent*, Vector2D<double>> handles;
};

std::string Difference(FCurve& curve, const NaiveCurve& naive, const Mirror& mirror) {
    if (curve.size() != naive.keys.size() + 1) return "another number of keys";
    if (mirror.positions.size() != naive.keys.size()) return "the mirror has another number of keys";
    if (curve.begin()->getInterpolator() != naive.leading) return "another leading interpolator";
    for (std::size_t i = 0; i < naive.keys.size(); ++i) {
        const NaiveKey& expected = naive.keys[i];
        Segment& segment = *curve.findSegment(expected.x);
        const auto key = segment.getLeftKey();
        const std::string where = "key " + std::to_string(i) + ": ";
        if (!key || key->get() != Vector2D<double>(expected.x, expected.y)) return where + "elsewhere";
        if (key->isBreakdown() != expected.breakdown) return where + "another breakdown flag";
        if (segment.getInterpolator() != expected.kind) return where + "another interpolator";
        const auto seen = mirror.positions.find(key.get());
        if (seen == mirror.positions.end() || seen->second != key->get()) return where + "moved unheard";
        for (const auto& tangent : {key->getInTangent(), key->getOutTangent()}) {
            const auto handle = mirror.handles.find(tangent.get());
            if (handle == mirror.handles.end() || handle->second != tangent->get()) return where + "turned unheard";
            const bool held = !tangent->isWeighted() || tangent->getType() > Tangent::Flat;
            const auto owner = tangent->getOwningSegment();
            if (!held || !owner->getLeftKey() || !owner->getRightKey()) continue;
            const double third = (owner->getRightKey()->getX() - owner->getLeftKey()->getX()) / 3;
            if (std::fabs(std::fabs(tangent->getX()) - third) > 2e-07) return where + "handle not a third";
        }
    }
    return "";
}

// --- what selected parts have in common ------------------------------------------------------------------------------

std::string text(const std::string& value) {
    return value;
}
std::string text(double value) {
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
std::string untruth(SelectionExaminer& examiner, FCurveContainer& container) {
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
    explicit Watched(std::shared_ptr<FCurve> of) : curve(std::move(of)), naive(*curve), mirror(*curve) {
        curve->subscribe(mirror);
    }
    std::shared_ptr<FCurve> curve;
    NaiveCurve naive;
    Mirror mirror;
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

class Host {
public:
    explicit Host(unsigned seed) : m_random(seed) {
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

    void run(int steps) {
        for (int i = 0; i < steps; ++i) {
            m_last.clear();
            m_disturbed = false;
            m_meddler.countdown = below(8) == 0 ? 1 + below(6) : 0;
            for (int edits = below(16) == 0 ? below(80) : 1; edits > 0; --edits) {
                edit();
                if (m_disturbed) readAnew();
            }
            m_meddler.countdown = 0;
            ASSERT_EQ(fault(), "") << "after step " << i << ":" << m_last;
        }
    }

private:
    int below(int n) { return m_random.below(n); }
    bool coin() { return m_random.coin(); }
    double value() { return below(3); } // one of few, so that parts often agree
    double number() { return coin() ? value() : m_random.between(-9, 9); }
    FCurve& anyOf() { return *m_random.oneOf(m_watched)->curve; }

    std::shared_ptr<Interpolator> anyKind() {
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
        for (const auto& watched : m_watched) {
            watched->naive = NaiveCurve(*watched->curve);
            watched->mirror.sync(*watched->curve);
        }
    }

    std::string fault() {
        if (!m_complaint.empty()) return m_complaint;
        for (const auto& watched : m_watched) {
            std::string wrong = Fault(*watched->curve);
            if (wrong.empty()) wrong = Difference(*watched->curve, watched->naive, watched->mirror);
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
        return untruth(*m_examiner, *m_container);
    }

    // --- edits of curves -------------------------------------------------------------------------------------------

    void edit() {
        const std::shared_ptr<Watched> watched = m_random.oneOf(m_watched);
        FCurve& curve = *watched->curve;
        NaiveCurve& naive = watched->naive;
        const auto position = m_random.placeIn(curve);
        const auto segment = position->getShared();
        const auto number0 = static_cast<std::size_t>(std::distance(curve.begin(), position));
        const auto key = segment->getLeftKey();
        const auto tangent = coin() ? segment->getInTangent() : segment->getOutTangent();

        const auto insert = [&] {
            const auto made = Keyframe::create(std::round(number() * 40) / 4, number());
            made->setBreakdown(below(3) == 0);
            made->setTangentsUnified(below(3) == 0);
            if (coin()) made->setProperty("fc_sel", "1");
            const auto kind = anyKind();
            curve.insertSegment(*made, kind);
            naive.insert(*made, kind);
        };
        const auto remove = [&] {
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
        const std::vector<Edit> edits{{"insert", insert},
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
        const auto written = FCurveContainer::create();
        for (FCurve& curve : *m_container) written->addCurve(FCurve::createCopy(curve));
        Selection all(written); // files do not keep it, nor whether a curve is editable
        for (const HitRecord& part : partsOf(*written, true)) all.select(part);
        all.clear();
        for (FCurve& curve : *written) SetEditable(curve, true);
        MemoryStream stream;
        WriteCurves(*written, stream, coin() ? "xml" : "binary");
        const auto read = FCurveContainer::create();
        stream.setPosition(0);
        ReadCurves(stream, *read);
        complainIf(!Test::Difference(*written, *read).empty(), "a file differs from what was saved");
    }

    Random m_random;
    std::vector<std::shared_ptr<Watched>> m_watched;
    std::shared_ptr<FCurveContainer> m_container = FCurveContainer::create();
    Told m_told;
    Meddler m_meddler;
    std::shared_ptr<Selection> m_selection;
    std::unique_ptr<SelectionExaminer> m_examiner;
    bool m_disturbed = false; // something was done inside a notification
    std::string m_complaint, m_last;
};

TEST(Host, AgreesWithNaiveModelsAfterEveryEdit) {
    for (unsigned seed = 0; seed < 40; ++seed) {
        SCOPED_TRACE(seed);
        ASSERT_NO_FATAL_FAILURE(Host(seed).run(400));
    }
}

} // namespace
