#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/detail/HitRecordTypes.h"

#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// Names one part of a curve: the curve itself, a segment, a keyframe or a tangent. The unit of picking and of
/// selection.
///
/// A record shares the ownership of its part, so it stays usable after the part has left its curve; getCurve() then
/// gives whatever the part reports. Two records are equal when they name the very same object by the same type.
///
/// Use it as HitRecord, which hands out parts to edit, or as ConstHitRecord, which hands out parts to read; a HitRecord
/// converts to a ConstHitRecord. A record belongs to one thread, like a shared pointer.
template<class Parts>
class FCURVELIB_API BasicHitRecord : public Private::HitRecordTypes {
    template<class T>
    using Part = typename Parts::template Qualified<T>;

public:
    /// \name Make
    /// A null pointer makes a record of that type that refers to nothing: selections ignore it.
    /// @{
    BasicHitRecord() noexcept = default;
    BasicHitRecord(std::shared_ptr<Part<FCurve>> curve) noexcept : m_type(CURVE), m_curve(std::move(curve)) {}
    BasicHitRecord(std::shared_ptr<Part<Segment>> segment) noexcept : m_type(SEGMENT), m_segment(std::move(segment)) {}
    BasicHitRecord(std::shared_ptr<Part<Keyframe>> keyframe) noexcept
        : m_type(KEYFRAME), m_keyframe(std::move(keyframe)) {}
    /// The flag chooses between TANGENT (true) and TANGENT_UNFLAGGED (false), and means what the host makes of it.
    BasicHitRecord(std::shared_ptr<Part<Tangent>> tangent, bool flag) noexcept
        : m_type(flag ? TANGENT : TANGENT_UNFLAGGED), m_tangent(std::move(tangent)) {}

    /// From the twin that hands out parts to edit.
    template<class Other,
             class = std::enable_if_t<std::is_same_v<Other, Private::MutableParts> && !std::is_same_v<Other, Parts>>>
    BasicHitRecord(const BasicHitRecord<Other>& other)
        : m_type(other.getType()), m_curve(other.getType() == CURVE ? other.getCurve() : nullptr),
          m_segment(other.getSegment()), m_keyframe(other.getKeyframe()), m_tangent(other.getTangent()) {}
    /// @}

    /// \name Point elsewhere
    /// reset() names nothing any more and lets its part go, except a tangent: that is kept, unreachable, until the
    /// record is pointed at another tangent, assigned to or destroyed. The others reset() first.
    /// @{
    void reset() noexcept;
    void reset(std::shared_ptr<Part<FCurve>> curve) noexcept;
    void reset(std::shared_ptr<Part<Segment>> segment) noexcept;
    void reset(std::shared_ptr<Part<Keyframe>> keyframe) noexcept;
    void reset(std::shared_ptr<Part<Tangent>> tangent, bool flag) noexcept;
    /// @}

    /// \name Read
    /// Each getter but getCurve() is empty for a record of another type: the keyframe of a tangent is not a tangent
    /// record's keyframe.
    /// @{
    Type getType() const noexcept { return m_type; }
    bool isTangent() const noexcept { return m_type == TANGENT || m_type == TANGENT_UNFLAGGED; }
    /// The curve itself, or the owning curve of the part; empty for NONE and for a part that is in no curve.
    std::shared_ptr<Part<FCurve>> getCurve() const noexcept;
    std::shared_ptr<Part<Segment>> getSegment() const noexcept { return m_segment; }
    std::shared_ptr<Part<Keyframe>> getKeyframe() const noexcept { return m_keyframe; }
    std::shared_ptr<Part<Tangent>> getTangent() const noexcept {
        return isTangent() ? m_tangent : std::shared_ptr<Part<Tangent>>();
    }
    /// The address of the part, by which records are compared; null for NONE.
    const void* getAddress() const noexcept;
    /// @}

private:
    friend class Private::SelectionState;

    Type m_type = NONE;
    std::shared_ptr<Part<FCurve>> m_curve;
    std::shared_ptr<Part<Segment>> m_segment;
    std::shared_ptr<Part<Keyframe>> m_keyframe;
    std::shared_ptr<Part<Tangent>> m_tangent;
};

/// \name Identity and order
/// Records are equal when they have the same type and refer to the same object, or both to nothing.
/// @{
FCURVELIB_API bool operator==(const HitRecord& a, const HitRecord& b) noexcept;
FCURVELIB_API bool operator!=(const HitRecord& a, const HitRecord& b) noexcept;
FCURVELIB_API bool operator==(const ConstHitRecord& a, const ConstHitRecord& b) noexcept;
FCURVELIB_API bool operator!=(const ConstHitRecord& a, const ConstHitRecord& b) noexcept;

/// The order of sets of records: by type (curves, segments, keyframes, tangents), and inside one type by the address of
/// the object. Deliberately not by time: keys that move do not disturb a set.
struct FCURVELIB_API CompareRecord {
    bool operator()(const HitRecord& a, const HitRecord& b) const noexcept;
    bool operator()(const ConstHitRecord& a, const ConstHitRecord& b) const noexcept;
};
/// @}

} // namespace v19
} // namespace VEM_FN::FCurveLib
