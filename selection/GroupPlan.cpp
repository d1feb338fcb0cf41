#include "selection/GroupPlan.h"

#include "FCurveLib/Interpolator.h"
#include "model/Delivery.h"
#include "model/Raw.h"
#include "model/TangentUpdate.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <limits>
#include <unordered_map>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

namespace {

constexpr double kSeparation = Keyframe::getMinSeparation();

double RoundingAt(double a, double b) noexcept {
    return 1e-12 * std::max({1.0, std::abs(a), std::abs(b)});
}

// Where two neighbours meet on their ways; 1 if they do not.
double Meeting(double leftX, double rightX, double leftWay, double rightWay) noexcept {
    const double closing = leftWay - rightWay;
    if (!(closing > RoundingAt(leftX, rightX))) return 1.0;
    const double gap = rightX - leftX;
    return std::min(1.0, (gap - std::min(gap, kSeparation)) / closing);
}

bool IsGrid(double step, double origin) noexcept {
    return std::isfinite(step) && step > 0.0 && std::isfinite(origin);
}

double Scaled(double x, double pivot, double factor) noexcept {
    return factor == 1.0 ? x : pivot + (x - pivot) * factor; // exactly x where nothing is scaled
}

} // namespace

GroupPlan::GroupPlan(KeyGroup& group, const GroupTarget& target, const MoveOptions& options)
    : m_group(group), m_asked(target), m_target(target), m_options(options), m_factor(group.m_factor) {}

MoveReport GroupPlan::run() {
    gather();
    const bool isPlanned = !m_curves.empty() && (plan(true) || plan(false));
    if (isPlanned) {
        m_factor = m_target.factor;
        if (m_part < 1.0) m_factor.x = m_group.m_factor.x + m_part * (m_target.factor.x - m_group.m_factor.x);
        // Curves in which nobody is passed are complete before anybody hears of it.
        std::deque<PendingChanges> changes;
        std::vector<std::pair<Curve*, std::vector<Spot>>> crossed;
        for (Curve& curve : m_curves) {
            std::vector<Spot> passing = passingOf(curve);
            if (passing.empty())
                move(curve, changes.emplace_back(curve.curve.get()));
            else
                crossed.emplace_back(&curve, std::move(passing));
        }
        for (PendingChanges& change : changes) change.notify();
        for (auto& [curve, passing] : crossed) cross(*curve, passing);
        m_group.m_factor = m_factor;
    }
    if (!m_curves.empty()) {
        m_report.isLimited = m_report.isLimited || !isPlanned;
        const Entry& anchor = m_group.m_entries[m_group.m_anchor];
        m_report.offset = anchor.key->get() - anchor.start;
    }
    m_report.factor = m_group.m_factor;
    return m_report;
}

// The keys that are in the curve where the group met them, curve by curve.
void GroupPlan::gather() {
    std::unordered_map<FCurve*, std::size_t> numbers;
    for (Entry& entry : m_group.m_entries) {
        FCurve* const curve = Read::curve(*entry.key);
        if (!curve || curve != entry.curve.lock().get()) continue;
        const auto [number, isNew] = numbers.try_emplace(curve, m_curves.size());
        if (isNew) m_curves.push_back({curve->getShared(), {}, {}, {}});
        m_curves[number->second].entries.push_back(&entry);
        ++m_report.keys;
    }
    for (Curve& curve : m_curves)
        std::sort(curve.entries.begin(), curve.entries.end(),
                  [](const Entry* a, const Entry* b) { return a->key->getX() < b->key->getX(); });
}

// Whether there is a place for each key.
bool GroupPlan::plan(bool isFromStart) {
    m_isFromStart = isFromStart;
    m_target = m_asked;
    snap();
    planCurves();
    m_part = limit();
    m_report.isLimited = m_part < 1.0;
    if (m_report.isLimited) limitToGrid();
    if (isFromStart) takePart();
    return isPossible();
}

// --- where to --------------------------------------------------------------------------------------------------------

void GroupPlan::snap() {
    const Entry* keyX = &m_group.m_entries[m_group.m_anchor];
    const Entry* keyY = keyX;
    if (m_target.scales) {
        const auto farther = [](double pivot, double Vector2D<double>::*axis) {
            return [=](const Entry& a, const Entry& b) {
                return std::abs(a.start.*axis - pivot) < std::abs(b.start.*axis - pivot);
            };
        };
        const auto& all = m_group.m_entries;
        keyX = &*std::max_element(all.begin(), all.end(), farther(m_target.pivot.x, &Vector2D<double>::x));
        keyY = &*std::max_element(all.begin(), all.end(), farther(m_target.pivot.y, &Vector2D<double>::y));
    }
    const auto snapAxis = [&](double Vector2D<double>::*axis, double step, double origin, const Entry*& key) {
        double& offset = m_target.offset.*axis;
        double& factor = m_target.factor.*axis;
        const double start = key->start.*axis, pivot = m_target.pivot.*axis;
        const double place = origin + std::round((Scaled(start, pivot, factor) + offset - origin) / step) * step;
        const bool isUseful = m_target.scales ? factor != 1.0 && (place - pivot) / (start - pivot) > 0.0 : true;
        if (!IsGrid(step, origin) || !std::isfinite(place) || !isUseful) {
            key = nullptr;
            return;
        }
        (m_target.scales ? factor : offset) = m_target.scales ? (place - pivot) / (start - pivot) : place - start;
        m_grid.*axis = place;
    };
    snapAxis(&Vector2D<double>::x, m_options.frameStep, m_options.frameOrigin, keyX);
    snapAxis(&Vector2D<double>::y, m_options.valueStep, m_options.valueOrigin, keyY);
    m_snappedX = keyX;
    m_snappedY = keyY;
}

double GroupPlan::fromOf(const Entry& entry) const {
    return m_isFromStart ? entry.start.x : entry.key->getX();
}

Vector2D<double> GroupPlan::wantedOf(const Entry& entry) const {
    return {&entry == m_snappedX ? m_grid.x
                                 : Scaled(entry.start.x, m_target.pivot.x, m_target.factor.x) + m_target.offset.x,
            &entry == m_snappedY ? m_grid.y
                                 : Scaled(entry.start.y, m_target.pivot.y, m_target.factor.y) + m_target.offset.y};
}

double GroupPlan::wayOf(const Entry& entry) const {
    // One for all, to the last bit, where it is.
    return m_isFromStart && !m_target.scales ? m_target.offset.x : wantedOf(entry).x - fromOf(entry);
}

// Once the part of the way is known.
Vector2D<double> GroupPlan::placeOf(const Spot& spot) const {
    const double x = spot.from + m_part * spot.way;
    if (!spot.entry) return {x, spot.key->getY()};
    const Vector2D<double> wanted = wantedOf(*spot.entry);
    return {m_part == 1.0 ? wanted.x : x, wanted.y};
}

void GroupPlan::planCurves() {
    for (Curve& curve : m_curves) {
        planCurve(curve);
        if (m_options.others == MoveOptions::Cross) findRuns(curve);
    }
}

void GroupPlan::planCurve(Curve& curve) const {
    std::vector<Spot>& spots = curve.spots;
    spots.clear();
    if (m_options.others == MoveOptions::Cross) {
        for (Entry* entry : curve.entries)
            spots.push_back({entry->key.get(), fromOf(*entry), wayOf(*entry), entry, false});
        return;
    }
    const bool ripples = m_options.others == MoveOptions::Ripple;
    for (std::size_t next = 0; next < curve.entries.size();) {
        // From the last key on the left that stays, to the first one on the right.
        const std::size_t first = spots.size();
        Keyframe* at = curve.entries[next]->key.get();
        for (Keyframe* before = at; (before = Read::previousKey(*before));) {
            at = before;
            if (!before->isBreakdown() || m_target.cuts) break;
        }
        double way = 0.0, back = 0.0;
        bool isPast = false; // the first key of the group
        for (; at; at = Read::nextKey(*at)) {
            const bool isOfGroup = next < curve.entries.size() && curve.entries[next]->key.get() == at;
            if (isOfGroup) {
                Entry* const entry = curve.entries[next++];
                way = wayOf(*entry);
                back = fromOf(*entry) - at->getX();
                isPast = true;
                spots.push_back({at, fromOf(*entry), way, entry, false});
            } else if (isPast && ripples) {
                spots.push_back({at, at->getX() + back, way, nullptr, false});
            } else {
                spots.push_back({at, at->getX(), 0.0, nullptr, at->isBreakdown() && !m_target.cuts});
                if (isPast && !at->isBreakdown()) break;
            }
        }
        // A breakdown key keeps its proportion of the way between the two that it stands between.
        for (std::size_t i = first; i < spots.size(); ++i) {
            if (!spots[i].follows) continue;
            std::size_t end = i;
            while (end < spots.size() && spots[end].follows) ++end;
            const Spot* const left = i > first ? &spots[i - 1] : nullptr;
            const Spot* const right = end < spots.size() ? &spots[end] : nullptr;
            const auto backOf = [](const Spot& spot) { return spot.from - spot.key->getX(); };
            for (; i < end; ++i) {
                const Spot &a = left ? *left : *right, &b = right ? *right : *left;
                const double x = spots[i].key->getX(), from = a.key->getX(), to = b.key->getX();
                const double proportion = from < to ? (x - from) / (to - from) : 0.0;
                spots[i].way = a.way + proportion * (b.way - a.way);
                spots[i].from = x + backOf(a) + proportion * (backOf(b) - backOf(a));
            }
        }
    }
}

void GroupPlan::findRuns(Curve& curve) const {
    curve.runs.clear();
    const auto keyOf = [&](std::size_t i) { return curve.entries[i]->key.get(); };
    for (std::size_t i = 0; i < curve.entries.size(); ++i) {
        if (i > 0 && Read::nextKey(*keyOf(i - 1)) == keyOf(i)) {
            curve.runs.back().last = i;
            curve.runs.back().after = Read::nextKey(*keyOf(i));
        } else {
            curve.runs.push_back({i, i, Read::previousKey(*keyOf(i)), Read::nextKey(*keyOf(i))});
        }
    }
}

// --- how far ---------------------------------------------------------------------------------------------------------

double GroupPlan::limit() const {
    double part = 1.0;
    for (const Curve& curve : m_curves)
        for (std::size_t i = 0; i + 1 < curve.spots.size(); ++i) {
            const Spot &left = curve.spots[i], &right = curve.spots[i + 1];
            part = std::min(part, Meeting(left.from, right.from, left.way, right.way));
        }
    if (m_options.others != MoveOptions::Cross) return part;
    // Back from place to place until nobody lands too near to a key that stays.
    constexpr std::size_t patience = 10'000'000;
    for (std::size_t looks = 0; looks < patience && part > 0.0;) {
        double room = part;
        for (const Curve& curve : m_curves) {
            looks += curve.entries.size();
            for (const Entry* entry : curve.entries) room = std::min(room, roomFor(curve, *entry, part));
        }
        if (room == part) return part;
        part = room;
    }
    return 0.0;
}

// The part of the way, not above the given one, at which the key is far enough from the keys that stay around it.
double GroupPlan::roomFor(const Curve& curve, const Entry& entry, double part) const {
    const double from = fromOf(entry), way = wayOf(entry);
    if (way == 0.0) return part;
    const double x = from + part * way;
    Segment& segment = Read::findSegment(*curve.curve, x);
    const Keyframe* left = Read::leftKey(segment);
    const Keyframe* right = Read::rightKey(segment);
    if (const Run* run = left ? runOf(curve, *left) : nullptr) left = run->before;
    if (const Run* run = right ? runOf(curve, *right) : nullptr) right = run->after;
    const double least = kSeparation - RoundingAt(from, x);
    const auto backFrom = [&](const Keyframe& other) {
        const double halt = other.getX() + (way > 0.0 ? -kSeparation : kSeparation);
        return std::max(0.0, std::min(part, (halt - from) / way));
    };
    if (left && x - left->getX() < least) return backFrom(*left);
    if (right && right->getX() - x < least) return backFrom(*right);
    return part;
}

// The run that the key is in; null for a key outside the group.
const GroupPlan::Run* GroupPlan::runOf(const Curve& curve, const Keyframe& key) const {
    const auto isBefore = [](const Entry* entry, double x) { return entry->key->getX() < x; };
    const auto found = std::lower_bound(curve.entries.begin(), curve.entries.end(), key.getX(), isBefore);
    if (found == curve.entries.end() || (*found)->key.get() != &key) return nullptr;
    const auto number = static_cast<std::size_t>(found - curve.entries.begin());
    const auto after = std::upper_bound(curve.runs.begin(), curve.runs.end(), number,
                                        [](std::size_t i, const Run& run) { return i < run.first; });
    return &*std::prev(after);
}

// The last place on the grid before the one where the group was held back; where it came from, if there is none
// between.
void GroupPlan::limitToGrid() {
    if (!m_snappedX) return;
    const double from = fromOf(*m_snappedX);
    const double step = m_options.frameStep, origin = m_options.frameOrigin;
    constexpr int patience = 100'000;
    for (int i = 0; i < patience && m_part < 1.0; ++i) {
        const double way = m_grid.x - from;
        const double place = (from + m_part * way - origin) / step;
        const double rounding = 1e-9;
        m_grid.x = origin + (way > 0.0 ? std::floor(place + rounding) : std::ceil(place - rounding)) * step;
        if (way > 0.0 ? m_grid.x <= from : m_grid.x >= from) break;
        const double start = m_snappedX->start.x, pivot = m_target.pivot.x;
        if (m_target.scales)
            m_target.factor.x = (m_grid.x - pivot) / (start - pivot);
        else
            m_target.offset.x = m_grid.x - start;
        planCurves();
        m_part = limit();
        if (m_part > 1.0 - 1e-9) m_part = 1.0;
    }
    if (m_part < 1.0) m_part = 0.0;
}

// From here on only as far is wanted, and the way is the one from where the keys are now.
void GroupPlan::takePart() {
    if (m_part < 1.0) {
        m_snappedX = nullptr;
        m_target.offset.x *= m_part;
        m_target.factor.x = 1.0 + m_part * (m_target.factor.x - 1.0);
    }
    m_part = 1.0;
    m_isFromStart = false;
    planCurves();
}

// Whether rounding moves the key against others by more than it may, as it does not where the key stood.
bool GroupPlan::isBlurred(const Entry& entry, double x) const {
    const auto roundingAt = [](double place) { return std::numeric_limits<double>::epsilon() * std::abs(place); };
    const double farthest = m_target.scales ? std::max(std::abs(x), std::abs(m_target.pivot.x)) : std::abs(x);
    return roundingAt(farthest) > std::max(kSeparation, 2.0 * m_target.factor.x * roundingAt(entry.start.x));
}

// Whether the keys' places are numbers, in the order of the keys, and free: the way from the start may lead over keys
// that were edited meanwhile.
bool GroupPlan::isPossible() const {
    const auto isTaken = [&](const Curve& curve, double x) {
        const Keyframe* const there = Read::leftKey(Read::findSegment(*curve.curve, x));
        return there && there->getX() == x && !runOf(curve, *there);
    };
    for (const Curve& curve : m_curves) {
        const Spot* before = nullptr;
        for (const Spot& spot : curve.spots) {
            const Vector2D<double> to = placeOf(spot);
            if (!std::isfinite(to.x) || !std::isfinite(to.y)) return false;
            if (spot.entry && isBlurred(*spot.entry, to.x)) return false;
            if (before && before->key != spot.key && !(placeOf(*before).x < to.x)) return false;
            if (m_options.others == MoveOptions::Cross && isTaken(curve, to.x)) return false;
            before = &spot;
        }
    }
    return true;
}

// --- the move --------------------------------------------------------------------------------------------------------

// Moves all keys of the curve at once, as Keyframe::set would one. Nothing, if the curve is not as it was planned.
void GroupPlan::move(Curve& curve, PendingChanges& changes) {
    std::vector<Move> moves;
    for (const Spot& spot : curve.spots) {
        if (Read::curve(*spot.key) != curve.curve.get()) return;
        const Vector2D<double> to = placeOf(spot);
        if (to != spot.key->get() || (spot.entry && m_factor != m_group.m_factor))
            moves.push_back({spot.key, to, spot.entry});
    }
    for (std::size_t i = 0; i < moves.size(); ++i) {
        const Keyframe* const before = Read::previousKey(*moves[i].key);
        const Keyframe* const after = Read::nextKey(*moves[i].key);
        const bool isNext = i > 0 && moves[i - 1].key == before;
        const bool isFollowed = i + 1 < moves.size() && moves[i + 1].key == after;
        if (before && !((isNext ? moves[i - 1].to.x : before->getX()) < moves[i].to.x)) return;
        if (after && !(moves[i].to.x < (isFollowed ? moves[i + 1].to.x : after->getX()))) return;
    }
    // In such an order that no key passes another on the way, not even for a moment.
    for (auto move = moves.rbegin(); move != moves.rend(); ++move)
        if (move->to.x > move->key->getX()) Raw::moveKey(*move->key, move->to);
    for (const Move& move : moves)
        if (move.to != move.key->get()) Raw::moveKey(*move.key, move.to);

    for (const Move& move : moves) {
        changes.moved(*move.key);
        if (!move.entry) ++m_report.others;
    }
    for (std::size_t i = 0; i < moves.size();) {
        const std::size_t first = i;
        while (++i < moves.size() && Read::nextKey(*moves[i - 1].key) == moves[i].key) {
        }
        for (std::size_t k = first; k < i; ++k)
            if (moves[k].entry) scaleHandles(*moves[k].entry, changes);
        UpdateBeforeChange(Read::previousKey(*moves[first].key), changes);
        UpdateTangents(moves[first].key, moves[i - 1].key, changes);
        UpdateAfterChange(Read::nextKey(*moves[i - 1].key), changes);
    }
}

// What hands have shaped scales with the keys.
void GroupPlan::scaleHandles(const Entry& entry, PendingChanges& changes) const {
    if (m_factor == m_group.m_factor) return;
    Segment* const left = Read::leftSegment(*entry.key);
    Segment* const right = Read::rightSegment(*entry.key);
    const auto scale = [&](Tangent& tangent, Segment* segment, const Vector2D<double>& start) {
        if (tangent.getType() == Tangent::Fixed)
            EditHandle(tangent, segment, m_factor.x * start.x, m_factor.y * start.y, changes);
    };
    scale(*Read::inTangent(*left), left, entry.in);
    scale(*Read::outTangent(*right), right, entry.out);
}

// The keys of the group that pass one outside it.
std::vector<GroupPlan::Spot> GroupPlan::passingOf(const Curve& curve) const {
    std::vector<Spot> passing;
    for (const Run& run : curve.runs)
        for (std::size_t i = run.first; i <= run.last; ++i) {
            const double x = placeOf(curve.spots[i]).x;
            if ((run.before && x <= run.before->getX()) || (run.after && x >= run.after->getX()))
                passing.push_back(curve.spots[i]);
        }
    return passing;
}

namespace {

// Puts a block that has left its curve in again, where its key says, unless a key stands there; whether it did.
bool ComeIn(FCurve& curve, const std::shared_ptr<Block>& block, SegmentMap::Room& room) {
    const SegmentMap::Place place = Raw::locate(curve, block->key.getX());
    if (block->curve() || place.isAt) return false;
    Recording::add(curve, *block);
    Raw::link(curve, place, block, &room);
    return true;
}

} // namespace

// The keys that pass others leave the curve and come in again, with their segments and tangents. Observers are called
// when they have left and when all are there, and may do anything to the curve meanwhile: what is held here stays
// sound. What they throw leaves no key outside.
void GroupPlan::cross(Curve& curve, const std::vector<Spot>& passing) {
    FCurve& c = *curve.curve;
    std::vector<std::shared_ptr<Block>> travellers;
    std::vector<Vector2D<double>> places;
    for (const Spot& spot : passing) {
        if (Read::curve(*spot.key) != &c) return;
        travellers.push_back(Block::of(*spot.key)->self.lock());
        places.push_back(placeOf(spot));
    }
    std::vector<Spot> stay;
    std::size_t leaving = 0; // in the same order
    for (const Spot& spot : curve.spots) {
        if (leaving < passing.size() && spot.entry == passing[leaving].entry)
            ++leaving;
        else
            stay.push_back(spot);
    }
    curve.spots = std::move(stay);

    const std::shared_ptr<Segment> oldEnd = (--c.end())->getShared();
    const std::shared_ptr<Interpolator> outside = oldEnd->getInterpolator();
    SegmentMap::Room room = Raw::makeRoom(c, travellers.size());
    PendingChanges changes(&c);
    std::vector<std::shared_ptr<Segment>> added, ends;
    try {
        for (const auto& block : travellers)
            if (block->curve() == &c) c.removeSegment(Read::iteratorAt(c, block->segment));
        move(curve, changes);
        for (std::size_t i = 0; i < travellers.size(); ++i) {
            if (travellers[i]->curve()) continue;
            travellers[i]->key.set(places[i]);
            if (ComeIn(c, travellers[i], room)) added.push_back(travellers[i]->segment.getShared());
        }
    } catch (...) {
        for (const auto& block : travellers) ComeIn(c, block, room);
        throw;
    }
    m_report.passed += added.size();
    for (std::size_t i = 0; i < passing.size(); ++i) {
        Keyframe& key = travellers[i]->key;
        if (Read::curve(key) != &c) continue;
        UpdateBeforeChange(Read::previousKey(key), changes);
        UpdateTangents(&key, &key, changes);
        UpdateAfterChange(Read::nextKey(key), changes);
        scaleHandles(*passing[i].entry, changes);
    }
    // What the curve does beyond its last key stays there: the new last key has it, and the old one that key's.
    const std::shared_ptr<Segment> newEnd = (--c.end())->getShared();
    if (newEnd != oldEnd && Read::curve(*oldEnd) == &c) {
        Raw::setInterpolator(*oldEnd, Raw::setInterpolator(*newEnd, outside));
        ends = {oldEnd, newEnd};
    }
    const auto tell = [&](const std::shared_ptr<Segment>& segment, const auto& call) {
        if (Read::curve(*segment) == &c) Deliver(&c, *segment, call);
    };
    for (const auto& segment : added)
        tell(segment, [&](FCurveObserver& observer) { observer.segmentAdded(c, *segment); });
    for (const auto& segment : ends)
        tell(segment, [&](FCurveObserver& observer) {
            observer.segmentIntrinsicChanged(*segment, FCurveObserver::SegmentInterpolator);
        });
    changes.notify();
}

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
