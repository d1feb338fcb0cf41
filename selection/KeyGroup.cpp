#include "FCurveLib/KeyGroup.h"

#include "FCurveLib/FCurve.h"
#include "FCurveLib/FCurveContainer.h"
#include "FCurveLib/Keyframe.h"
#include "FCurveLib/Selection.h"
#include "model/Read.h"
#include "selection/SelectionState.h"

#include <algorithm>
#include <tuple>
#include <unordered_map>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Read;

KeyGroup::KeyGroup() noexcept = default;
KeyGroup::KeyGroup(const KeyGroup& other) = default;
KeyGroup::KeyGroup(KeyGroup&& other) noexcept = default;
KeyGroup& KeyGroup::operator=(const KeyGroup& other) = default;
KeyGroup& KeyGroup::operator=(KeyGroup&& other) noexcept = default;
KeyGroup::~KeyGroup() = default;

KeyGroup::KeyGroup(Selection& selection) {
    for (FCurve& curve : *selection.getCurves())
        for (Segment& segment : curve)
            if (Keyframe* key = Read::rightKey(segment); key && selection.isSelected(*key)) add(*key);
    sort();
}

KeyGroup::KeyGroup(FCurve& curve, double start, double end) {
    Keyframe* key = Read::leftKey(Read::findSegment(curve, start));
    if (!key || key->getX() < start) key = Read::rightKey(Read::findSegment(curve, start));
    for (; key && key->getX() <= end; key = Read::nextKey(*key)) add(*key);
    sort();
}

KeyGroup::KeyGroup(const std::vector<std::shared_ptr<Keyframe>>& keys) {
    for (const auto& key : keys)
        if (key && Read::curve(*key)) add(*key);
    sort();
}

void KeyGroup::add(Keyframe& key) {
    const Tangent& in = *Read::inTangent(*Read::leftSegment(key));
    const Tangent& out = *Read::outTangent(*Read::rightSegment(key));
    m_entries.push_back({key.getShared(), Read::curve(key)->getShared(), key.get(), in.get(), out.get()});
}

void KeyGroup::sort() {
    std::unordered_map<const FCurve*, std::size_t> order;
    const auto placeOf = [&](const Entry& entry) {
        return std::make_tuple(order.at(Read::curve(*entry.key)), entry.start.x);
    };
    for (const Entry& entry : m_entries) order.try_emplace(Read::curve(*entry.key), order.size());
    std::sort(m_entries.begin(), m_entries.end(),
              [&](const Entry& a, const Entry& b) { return placeOf(a) < placeOf(b); });
    const auto isSame = [](const Entry& a, const Entry& b) { return a.key == b.key; };
    m_entries.erase(std::unique(m_entries.begin(), m_entries.end(), isSame), m_entries.end());
    for (std::size_t i = 0; i < m_entries.size(); ++i)
        if (m_entries[i].start.x < m_entries[m_anchor].start.x) m_anchor = i;
}

std::vector<std::shared_ptr<Keyframe>> KeyGroup::getKeys() const {
    std::vector<std::shared_ptr<Keyframe>> keys;
    keys.reserve(m_entries.size());
    for (const Entry& entry : m_entries) keys.push_back(entry.key);
    return keys;
}

Vector2D<double> KeyGroup::getAnchor() const noexcept {
    return empty() ? Vector2D<double>() : m_entries[m_anchor].start;
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
