#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/Vector2D.h"

#include <cstddef>
#include <limits>
#include <memory>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// Keys of one or several curves that are edited together, and where they stood when the group was made.
///
/// MoveKeys and ScaleKeys count from there, however often they are called: make the group when the button goes down,
/// and hand each step of the drag the whole way since then. What a group was held back by gives way again when the
/// pointer returns, and nothing adds up.
///
/// A group shares the ownership of its keys. Keys that leave their curve are passed over from then on.
class FCURVELIB_API KeyGroup {
public:
    /// \name Make
    /// @{
    KeyGroup() noexcept;
    /// The selected keys. Linear in the number of the container's parts.
    explicit KeyGroup(Selection& selection);
    /// The keys from start to end, both included.
    explicit KeyGroup(FCurve& curve, double start = -std::numeric_limits<double>::infinity(),
                      double end = std::numeric_limits<double>::infinity());
    /// These keys; each counts once. Null pointers and keys in no curve are left out.
    explicit KeyGroup(const std::vector<std::shared_ptr<Keyframe>>& keys);
    KeyGroup(const KeyGroup& other);
    KeyGroup(KeyGroup&& other) noexcept;
    KeyGroup& operator=(const KeyGroup& other);
    KeyGroup& operator=(KeyGroup&& other) noexcept;
    ~KeyGroup();
    /// @}

    /// \name Read
    /// @{
    std::size_t size() const noexcept { return m_entries.size(); }
    bool empty() const noexcept { return m_entries.empty(); }
    /// The keys, curve by curve in the order in which the group met them, and by x in each.
    std::vector<std::shared_ptr<Keyframe>> getKeys() const;
    /// Where the group's first key in time stood when the group was made: the one that lands on grids. (0, 0) without
    /// keys.
    Vector2D<double> getAnchor() const noexcept;
    /// @}

private:
    friend class Private::GroupPlan;

    struct Entry {
        std::shared_ptr<Keyframe> key;
        std::weak_ptr<FCurve> curve;
        Vector2D<double> start;
        Vector2D<double> in, out; // the handles then
    };
    void add(Keyframe& key);
    void sort();

    std::vector<Entry> m_entries;
    std::size_t m_anchor = 0;
    Vector2D<double> m_factor{1.0, 1.0}; // as last scaled
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
