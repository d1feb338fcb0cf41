#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/FilterIterator.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/HitRecord.h"
#include "FCurveLib/HitRecordIterator.h"
#include "FCurveLib/SelectionObserver.h"
#include "FCurveLib/detail/Notification.h"
#include "FCurveLib/detail/SelectionFilters.h"

#include <memory>
#include <set>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// Which curves, segments, keyframes and tangents of a container are selected.
///
/// The selection keeps no list: a part is selected when its own property "fc_sel" is "1". So copies of
/// a curve are selected as it is, any number of Selection objects over one container see the same selected parts, and a
/// part that leaves its curve, or a curve its container, takes its state along without any notification. Files do not
/// keep it: what was saved comes back not selected. What a Selection object does keep
/// is its observers: they hear of the changes made through this object. (The curves' own observers hear of all of them,
/// as property changes.)
///
/// A Selection shares the ownership of its container.
class FCURVELIB_API Selection {
public:
    /// \name Make
    /// A null pointer counts as a new, empty container.
    /// @{
    explicit Selection(std::shared_ptr<FCurveContainer> curves);
    Selection(const Selection&) = delete;
    Selection& operator=(const Selection&) = delete;
    ~Selection();
    /// @}

    /// \name Select and deselect
    /// A part that is in that state already is left alone and nobody is told. Parts of curves outside the container are
    /// accepted, though the walks below do not reach them. Constant time, besides what observers do.
    /// @{
    void select(FCurve& curve);
    void select(Segment& segment);
    void select(Keyframe& keyframe);
    void select(Tangent& tangent);
    void deselect(FCurve& curve);
    void deselect(Segment& segment);
    void deselect(Keyframe& keyframe);
    void deselect(Tangent& tangent);

    /// Records that refer to nothing are ignored.
    void select(const HitRecord& part);
    void deselect(const HitRecord& part);

    /// One part after the other, in the order of the set: curves, segments, keyframes, tangents. Observers must leave
    /// the set alone meanwhile.
    void select(const std::set<HitRecord, CompareRecord>& parts);
    void deselect(const std::set<HitRecord, CompareRecord>& parts);

    /// Deselects each selected part of the container, in the order of the walk, then tells selectionCleared(), also
    /// when nothing was selected. Tangents that the walk does not show (their segment's interpolator uses none, or
    /// their key does not exist) come where it would show them.
    ///
    /// The walk stays sound whatever observers do to parts and curves meanwhile. It passes over what they remove; what
    /// they add or select is deselected only if the walk has not passed that place. If an observer destroys the
    /// Selection, the walk still ends, in silence. Linear in the number of parts.
    void clear();
    /// @}

    /// \name Ask
    /// Selected means that the property is exactly "1"; any other value counts as not selected.
    /// @{
    bool isSelected(const FCurve& curve) const noexcept;
    bool isSelected(const Segment& segment) const noexcept;
    bool isSelected(const Keyframe& keyframe) const noexcept;
    bool isSelected(const Tangent& tangent) const noexcept;
    /// False for a record that refers to nothing.
    bool isSelected(const HitRecord& part) const noexcept;
    bool isSelected(const ConstHitRecord& part) const noexcept;

    std::shared_ptr<FCurveContainer> getCurves() noexcept { return m_curves; }
    std::shared_ptr<const FCurveContainer> getCurves() const noexcept { return m_curves; }
    /// @}

    /// \name Walk the selected parts
    /// In the order of HitRecordIterator, whose rules hold. The part where an iterator stands may be deselected.
    /// begin() and each step search for the next selected part: a whole walk is linear in the number of parts.
    /// @{
    using iterator = FilterIterator<Private::SelectionFilter, HitRecordIterator>;
    using const_iterator = FilterIterator<Private::SelectionFilter, ConstHitRecordIterator>;

    iterator begin();
    iterator end();
    const_iterator begin() const;
    const_iterator end() const;
    /// @}

    /// \name Observe
    /// Observers are called in the order of their addresses. A second subscription has no effect. An observer that is
    /// subscribed during a notification hears of every change made from then on; one that is unsubscribed or destroyed
    /// during a notification is not called any more.
    /// @{
    void subscribe(SelectionObserver& observer);
    void unsubscribe(SelectionObserver& observer) noexcept;

    /// Turns the notifications of one Selection off while it lives, as FCurve::Switch does for a curve (without a
    /// curve, that one silences selections, too). Suppressed notifications are not sent afterwards.
    class FCURVELIB_API Switch : public Private::NotificationSwitch {
    public:
        explicit Switch(Selection& selection) noexcept;
    };
    /// @}

private:
    friend class Private::SelectionState;

    std::shared_ptr<FCurveContainer> m_curves;
    std::shared_ptr<Private::SelectionState> m_state; // outlives the Selection during a notification
};

/// \name The selected parts of one kind
/// Each range is found by walking all parts of the container.
/// @{
using SelectedCurveIterator = FilterIterator<Private::CurveFilter, Selection::iterator>;
using SelectedSegmentIterator = FilterIterator<Private::SegmentFilter, Selection::iterator>;
using SelectedKeyframeIterator = FilterIterator<Private::KeyFilter, Selection::iterator>;
using SelectedTangentIterator = FilterIterator<Private::TangentFilter, Selection::iterator>;

FCURVELIB_API SelectedCurveIterator BeginSelectedCurves(Selection& selection);
FCURVELIB_API SelectedCurveIterator EndSelectedCurves(Selection& selection);
FCURVELIB_API SelectedSegmentIterator BeginSelectedSegments(Selection& selection);
FCURVELIB_API SelectedSegmentIterator EndSelectedSegments(Selection& selection);
FCURVELIB_API SelectedKeyframeIterator BeginSelectedKeyframes(Selection& selection);
FCURVELIB_API SelectedKeyframeIterator EndSelectedKeyframes(Selection& selection);
FCURVELIB_API SelectedTangentIterator BeginSelectedTangents(Selection& selection);
FCURVELIB_API SelectedTangentIterator EndSelectedTangents(Selection& selection);
/// @}

} // namespace v19
} // namespace VEM_FN::FCurveLib
