#include "FCurveLib/SelectionSnapshot.h"

#include "FCurveLib/Selection.h"
#include "model/Read.h"
#include "selection/SelectionState.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <memory>
#include <tuple>
#include <type_traits>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Read;
using Private::SelectionFilter;
using Private::SelectionState;

namespace {

enum class Kind : std::uint8_t { Segment, RightKey, InTangent, OutTangent };

struct Part {
    std::size_t segment; // number in the curve
    Kind kind;
    std::weak_ptr<void> identity; // the two tangents of a segment may share an owner: compare the kind, too
};

bool IsPartBefore(const Part& a, const Part& b) noexcept {
    return a.kind != b.kind ? a.kind < b.kind : a.identity.owner_before(b.identity);
}
bool IsPlaceBefore(const Part& a, const Part& b) noexcept {
    return std::tie(a.segment, a.kind) < std::tie(b.segment, b.kind);
}

template<class T>
bool IsSameOwner(const std::weak_ptr<T>& a, const std::weak_ptr<T>& b) noexcept {
    return !a.owner_before(b) && !b.owner_before(a);
}

// The parts as the container has them now; null where there is no such part.
template<class Use>
void UsePart(const std::shared_ptr<Segment>& segment, Kind kind, const Use& use) {
    switch (kind) {
    case Kind::Segment:
        return use(segment);
    case Kind::RightKey:
        return use(segment->getRightKey());
    case Kind::InTangent:
        return use(segment->getInTangent());
    case Kind::OutTangent:
        return use(segment->getOutTangent());
    }
}

HitRecord RecordOf(const std::shared_ptr<Segment>& segment, Kind kind) {
    HitRecord record;
    UsePart(segment, kind, [&record](const auto& part) {
        if (!part) return;
        if constexpr (std::is_same_v<decltype(part), const std::shared_ptr<Tangent>&>)
            record = HitRecord(part, true);
        else
            record = HitRecord(part);
    });
    return record;
}

// The part that was remembered, if it is still in a curve.
HitRecord RecordOf(const Part& part) {
    const std::shared_ptr<void> alive = part.identity.lock();
    HitRecord record;
    if (!alive) return record;
    switch (part.kind) {
    case Kind::Segment:
        record = HitRecord(std::static_pointer_cast<Segment>(alive));
        break;
    case Kind::RightKey:
        record = HitRecord(std::static_pointer_cast<Keyframe>(alive));
        break;
    case Kind::InTangent:
    case Kind::OutTangent:
        record = HitRecord(std::static_pointer_cast<Tangent>(alive), true);
        break;
    }
    return record;
}

// Calls act(segment, number, kind, part) for each selected part of the curve.
template<class Act>
void ForEachSelectedPart(FCurve& curve, const Act& act) {
    std::size_t number = 0;
    for (Segment& segment : curve) {
        if (SelectionFilter::isSelected(segment)) act(segment, number, Kind::Segment);
        if (SelectionFilter::isSelected(*Read::outTangent(segment))) act(segment, number, Kind::OutTangent);
        if (SelectionFilter::isSelected(*Read::inTangent(segment))) act(segment, number, Kind::InTangent);
        const Keyframe* key = Read::rightKey(segment);
        if (key && SelectionFilter::isSelected(*key)) act(segment, number, Kind::RightKey);
        ++number;
    }
}

bool IsIn(FCurveContainer& curves, const FCurve* curve) noexcept {
    return curve && Read::find(curves, *curve) != curves.end();
}

// Whether the sorted vector holds the value.
template<class Before>
bool Holds(const std::vector<Part>& sorted, const Part& part, const Before& before) {
    return std::binary_search(sorted.begin(), sorted.end(), part, before);
}

std::vector<Part> ByPlace(std::vector<Part> parts) {
    std::sort(parts.begin(), parts.end(), IsPlaceBefore);
    return parts;
}

} // namespace

// What is selected of one curve, between two moments at which it was rebuilt. The curve's leading segment, which no
// edit but a rebuild replaces, names that span of time.
struct SelectionSnapshot::Curve {
    std::weak_ptr<FCurve> curve;
    std::weak_ptr<Segment> leading;
    bool isSelected = false;
    std::vector<Part> parts; // ordered by IsPartBefore

    bool isEmpty() const noexcept { return !isSelected && parts.empty(); }
    bool isSameCurve(const Curve& other) const noexcept { return IsSameOwner(curve, other.curve); }
    bool isSameBuild(const Curve& other) const noexcept {
        return isSameCurve(other) && IsSameOwner(leading, other.leading);
    }
    static bool isBefore(const Curve& a, const Curve& b) noexcept {
        return a.isSameCurve(b) ? a.leading.owner_before(b.leading) : a.curve.owner_before(b.curve);
    }

    // Drops the parts that the other one holds.
    void drop(const Curve& other) {
        if (other.isSelected) isSelected = false;
        const bool sameBuild = isSameBuild(other);
        const std::vector<Part> places = sameBuild ? std::vector<Part>() : ByPlace(other.parts);
        parts.erase(std::remove_if(parts.begin(), parts.end(),
                                   [&](const Part& part) {
                                       return sameBuild ? Holds(other.parts, part, IsPartBefore)
                                                        : Holds(places, part, IsPlaceBefore);
                                   }),
                    parts.end());
    }
};

SelectionSnapshot::SelectionSnapshot() noexcept = default;
SelectionSnapshot::SelectionSnapshot(const SelectionSnapshot& other) = default;
SelectionSnapshot::SelectionSnapshot(SelectionSnapshot&& other) noexcept = default;
SelectionSnapshot& SelectionSnapshot::operator=(const SelectionSnapshot& other) = default;
SelectionSnapshot& SelectionSnapshot::operator=(SelectionSnapshot&& other) noexcept = default;
SelectionSnapshot::~SelectionSnapshot() = default;

SelectionSnapshot::SelectionSnapshot(const Selection& selection) {
    for (FCurve& curve : *SelectionState::curvesOf(selection)) {
        Curve entry;
        entry.isSelected = selection.isSelected(curve);
        ForEachSelectedPart(curve, [&](Segment& segment, std::size_t number, Kind kind) {
            UsePart(segment.getShared(), kind, [&](const auto& part) {
                entry.parts.push_back({number, kind, std::weak_ptr<void>(part)});
            });
        });
        if (entry.isEmpty()) continue;
        entry.curve = curve.getShared();
        entry.leading = curve.begin()->getShared();
        std::sort(entry.parts.begin(), entry.parts.end(), IsPartBefore);
        m_curves.push_back(std::move(entry));
    }
    std::sort(m_curves.begin(), m_curves.end(), Curve::isBefore);
}

std::size_t SelectionSnapshot::size() const noexcept {
    std::size_t count = 0;
    for (const Curve& curve : m_curves) count += curve.parts.size() + (curve.isSelected ? 1 : 0);
    return count;
}

bool operator==(const SelectionSnapshot& a, const SelectionSnapshot& b) {
    if (a.size() != b.size()) return false;
    // Of equal size, and none holds a part twice: equal if nothing remains of one without the other.
    SelectionSnapshot rest(a);
    rest.subtract(b);
    return rest.empty();
}
bool operator!=(const SelectionSnapshot& a, const SelectionSnapshot& b) {
    return !(a == b);
}

void SelectionSnapshot::merge(const SelectionSnapshot& other) {
    SelectionSnapshot added(other);
    added.subtract(*this);
    for (Curve& curve : added.m_curves) {
        const auto found = std::lower_bound(m_curves.begin(), m_curves.end(), curve, Curve::isBefore);
        if (found == m_curves.end() || !found->isSameBuild(curve)) {
            m_curves.insert(found, std::move(curve));
            continue;
        }
        found->isSelected = found->isSelected || curve.isSelected;
        const auto middle = static_cast<std::ptrdiff_t>(found->parts.size());
        std::move(curve.parts.begin(), curve.parts.end(), std::back_inserter(found->parts));
        std::inplace_merge(found->parts.begin(), found->parts.begin() + middle, found->parts.end(), IsPartBefore);
    }
}

void SelectionSnapshot::subtract(const SelectionSnapshot& other) {
    if (this == &other) {
        m_curves.clear();
        return;
    }
    for (Curve& curve : m_curves) {
        const auto isBefore = [](const Curve& a, const Curve& b) { return a.curve.owner_before(b.curve); };
        const auto same = std::equal_range(other.m_curves.begin(), other.m_curves.end(), curve, isBefore);
        for (auto it = same.first; it != same.second; ++it) curve.drop(*it);
    }
    m_curves.erase(std::remove_if(m_curves.begin(), m_curves.end(), [](const Curve& c) { return c.isEmpty(); }),
                   m_curves.end());
}

std::size_t SelectionSnapshot::resolve(FCurveContainer& curves, std::set<HitRecord, CompareRecord>& parts) const {
    std::size_t missing = 0;
    for (const Curve& entry : m_curves) {
        const std::shared_ptr<FCurve> curve = IsIn(curves, entry.curve.lock().get()) ? entry.curve.lock() : nullptr;
        if (entry.isSelected) {
            if (curve)
                parts.insert(HitRecord(curve));
            else
                ++missing;
        }
        const bool isRebuilt =
            curve && !IsSameOwner(entry.leading, std::weak_ptr<Segment>(curve->begin()->getShared()));
        for (const Part& part : entry.parts) {
            HitRecord record = RecordOf(part);
            if (!IsIn(curves, record.getCurve().get())) {
                record.reset();
                Segment* segment = isRebuilt ? Read::segments(*curve).at(part.segment) : nullptr;
                if (segment) record = RecordOf(segment->getShared(), part.kind);
            }
            if (record.getType() == HitRecord::NONE)
                ++missing;
            else
                parts.insert(std::move(record));
        }
    }
    return missing;
}

std::size_t SelectionSnapshot::restore(Selection& selection) const {
    const auto curves = selection.getCurves();
    const auto state = SelectionState::of(selection);
    std::set<HitRecord, CompareRecord> wanted;
    const std::size_t missing = resolve(*curves, wanted);

    std::set<HitRecord, CompareRecord> unwanted;
    const auto see = [&](HitRecord record) {
        if (wanted.count(record) == 0) unwanted.insert(std::move(record));
    };
    for (FCurve& curve : *curves) {
        if (SelectionFilter::isSelected(curve)) see(HitRecord(curve.getShared()));
        ForEachSelectedPart(
            curve, [&](Segment& segment, std::size_t, Kind kind) { see(RecordOf(segment.getShared(), kind)); });
    }
    for (const HitRecord& record : unwanted) SelectionState::change(state, record, false);
    for (const HitRecord& record : wanted) SelectionState::change(state, record, true);
    return missing;
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
