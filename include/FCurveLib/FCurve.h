#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/FCurveObserver.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/ProjectionIterator.h"
#include "FCurveLib/SharedFromThis.h"
#include "FCurveLib/detail/CurveReference.h"
#include "FCurveLib/detail/ObserverSet.h"
#include "FCurveLib/detail/PropertyCarrier.h"
#include "FCurveLib/detail/SegmentMap.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// A function curve: maps an abscissa x (time, in frames) to a value y.
///
///      leading segment   segment   segment   trailing segment
///     ----------------o----------o---------o------------------
///                   key 0      key 1     key 2
///
/// A curve with n keys has n + 1 segments: one before the first key, one between each pair of neighbours, one after the
/// last key; an empty curve has one, with neither key. Each segment's interpolator says how the curve runs there.
///
/// Curves are held by shared pointers and made by create and createCopy. A curve owns its parts; parts refer back to it
/// but never keep it alive.
///
/// Any number of threads may call the const members of a curve that nobody edits. Edits, and everything static, are the
/// host's to serialise.
class FCURVELIB_API FCurve : public SharedFromThis<FCurve>, public Private::PropertyCarrier<FCurve> {
public:
    /// \name Make
    /// @{

    /// An empty curve: no name, no properties, no keys, one Constant segment.
    static std::shared_ptr<FCurve> create();
    /// A copy with keys, segments and tangents of its own, equal to the source's to the last bit; interpolators, which
    /// hold no state of any curve, are shared. Observers are not copied. Linear in the number of keys.
    static std::shared_ptr<FCurve> createCopy(const FCurve& source);
    ~FCurve();

    /// Becomes a copy of the source (name, keys, properties) and calls notifyChanged. All parts are new. Observers
    /// stay. Assigning a curve to itself changes nothing and tells nobody.
    FCurve& operator=(const FCurve& source);
    /// Exchanges names, keys and properties in constant time: every part reports its new curve at once. Observers stay
    /// with their curve; both curves call notifyChanged.
    void swap(FCurve& other);
    /// Back to one Constant segment without keys; name and properties stay. Calls notifyChanged, also on an empty
    /// curve. The old keys report no segment, tangent or curve from then on.
    void clear();
    /// @}

    /// \name Keys and segments
    /// Iterators walk segments in key order and yield Segment&; the key of a position is the segment's left key. They
    /// stay valid, and designate the same segment, as long as that segment is in a curve, as std::map's do (swap takes
    /// them to the other curve, except end()).
    /// @{

    /// One position of the ordered map: a keyframe, null for the leading entry, and the segment that starts at it.
    using Entry = Private::SegmentEntry;
    struct Projection {
        Segment& operator()(const Entry& entry) const noexcept { return *entry.segment; }
    };
    struct ConstProjection {
        const Segment& operator()(const Entry& entry) const noexcept { return *entry.segment; }
    };
    using iterator = ProjectionIterator<Projection, Private::SegmentMapIterator>;
    using const_iterator = ProjectionIterator<ConstProjection, Private::SegmentMapIterator>;

    /// The order of the keys: null first, then by x; keys at the same x are equivalent.
    struct FCURVELIB_API CompareKeys {
        bool operator()(const Keyframe* a, const Keyframe* b) const noexcept;
    };

    /// Number of segments: keys + 1.
    std::size_t size() const noexcept { return m_segments.size(); }
    iterator begin() noexcept { return iterator(m_segments.begin()); }
    iterator end() noexcept { return iterator(m_segments.end()); }
    const_iterator begin() const noexcept { return const_iterator(m_segments.begin()); }
    const_iterator end() const noexcept { return const_iterator(m_segments.end()); }

    /// The segment whose span holds x: at a key, the segment that starts there; before the first key, and for NaN, the
    /// leading one. Never end(). Logarithmic, over contiguous numbers.
    iterator findSegment(double x) noexcept { return iterator(m_segments.find(x)); }
    const_iterator findSegment(double x) const noexcept { return const_iterator(m_segments.find(x)); }

    /// Adds a key with the given key's position, breakdown and unified flags and properties, and a segment from it to
    /// the next key with the given interpolator (which may be empty). Returns the new segment's position.
    ///
    /// The segment that held x keeps its interpolator and now ends at the new key. Every other key keeps its tangents,
    /// and the new key's are new ones. The trailing segment's in tangent, which stands at no key, stays at the end of
    /// the curve when a key is added after the last one, and the leading segment's out tangent at its start. Where the
    /// curve has a key at exactly that x, nothing is inserted or changed and that key's position is returned. Keys may
    /// be inserted closer than Keyframe::getMinSeparation() to others. Tells segmentAdded, then of each neighbouring
    /// tangent that changed. Logarithmic for any order of insertion.
    iterator insertSegment(const Keyframe& key, std::shared_ptr<Interpolator> interpolator);

    /// Removes the key at which the segment starts, together with the segment, and returns the position after it. The
    /// segment before it reaches to the next key, keeping its own interpolator; the next key keeps its in tangent, the
    /// removed segment holds both tangents of the removed key. Tells segmentRemoved, then of each neighbouring tangent
    /// that changed.
    ///
    /// The leading segment, which starts at no key, and positions of other curves are refused: nothing changes, and the
    /// position after the given one is returned, so that a loop over positions ends. end() is returned as it is.
    iterator removeSegment(iterator position);
    /// @}

    /// \name Evaluate
    /// @{

    /// The value at x, as the interpolator of findSegment(x) computes it; 0 for a segment without interpolator. At an
    /// infinite x or NaN, whatever that interpolator's arithmetic gives. Allocates, locks and writes nothing.
    double eval(double x) const;
    /// @}

    /// \name Name and properties
    /// As PropertyMap; getProperty, sizeProperties, beginProperties and endProperties read them. Changes are told to
    /// the observers, with the name as curveIntrinsicChanged; clearing tells of each erased key with an empty value.
    /// @{
    const char* getName() const noexcept { return m_name.c_str(); }
    /// Does nothing when the curve has that name. Null counts as empty.
    void setName(const char* name);
    bool setProperty(const char* key, const char* value);
    void clearProperties();
    /// @}

    /// \name Observe
    /// The curve's own observers are called first, then the global ones, each in the order of subscription. A second
    /// subscription has no effect. An observer subscribed during a delivery hears of every edit made from then on, also
    /// from inside that delivery; one that is unsubscribed or destroyed during a delivery is not called any more.
    /// Subscribing throws std::bad_alloc where memory fails, and then changes nothing.
    /// @{
    void subscribe(FCurveObserver& observer);
    void unsubscribe(FCurveObserver& observer) noexcept;
    /// Hears of every curve.
    static void subscribeGlobal(FCurveObserver& observer);
    static void unsubscribeGlobal(FCurveObserver& observer) noexcept;

    /// Brackets an interactive edit: BeginChange at its start, StepChange for each step, EndChange at its end, then
    /// OrdinaryChange again. One setting for all curves. Setting it tells nobody: it decides what notifyChanged sends.
    /// Edits of parts send their own operations whatever it is.
    ///
    ///     FCurve::setChangeType(FCurve::BeginChange);    // the button goes down
    ///     curve.notifyChanged();
    ///     FCurve::setChangeType(FCurve::StepChange);     // each move of the pointer
    ///     key.set(x, y);
    ///     curve.notifyChanged();
    ///     FCurve::setChangeType(FCurve::EndChange);      // the button goes up
    ///     curve.notifyChanged();
    ///     FCurve::setChangeType(FCurve::OrdinaryChange);
    enum ChangeType : std::uint32_t { OrdinaryChange = 0, BeginChange = 1, StepChange = 2, EndChange = 3 };
    static void setChangeType(FCurve::ChangeType type) noexcept;
    static FCurve::ChangeType getChangeType() noexcept;

    /// Sends curveChanged; under change type 1, 2 or 3 instead beginValueChange, intermediateValueChange or
    /// endValueChange.
    void notifyChanged();

    /// Turns notification off while it lives: for one curve, or for the whole library (curves, containers and
    /// selections). Suppressed notifications are not sent afterwards: ask blockedNotification(), whether there was one,
    /// before the switch ends, and call notifyChanged() to catch up. Switches nest. A switch keeps its curve alive.
    class FCURVELIB_API Switch : public Private::NotificationSwitch {
    public:
        Switch() noexcept;
        explicit Switch(FCurve& curve) noexcept;
    };
    /// @}

private:
    friend struct Private::Block;
    friend struct Private::Raw;
    friend struct Private::Read;
    friend class Private::PropertyCarrier<FCurve>;

    const PropertyMap& storedProperties() const noexcept { return m_properties; }

    FCurve();
    FCurve(const FCurve&) = delete;

    Private::CurveReference makeReference();
    bool notifyInteractive();
    void exchange(FCurve& other) noexcept;

    Private::SegmentMap m_segments;            // finds in the chain of blocks
    std::shared_ptr<Private::Block> m_leading; // owns the chain: each block holds the next
    std::string m_name;
    Private::CurveReference m_link;     // held by the segments of m_segments; travels with them
    Private::CurveReference m_identity; // held by segments that were made by hand for this curve; stays
    PropertyMap m_properties;
    Private::ObserverSet<FCurveObserver> m_observers;
    std::vector<Private::Recorder*> m_recorders; // of the containers whose edits are recorded
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
