#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/SharedFromThis.h"
#include "FCurveLib/detail/CurveReference.h"
#include "FCurveLib/detail/PartBox.h"
#include "FCurveLib/detail/PropertyCarrier.h"

#include <cstddef>
#include <memory>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// A segment: the span between two neighbouring keys and the interpolator that computes the curve's values there.
///
///     left key  o--- out tangent    in tangent ---o  right key
///
/// A curve's leading segment has no left key, its trailing segment no right key; the one segment of an empty curve has
/// neither. A segment in a curve has both tangents even where it lacks a key.
/// A segment that was removed from its curve keeps its left key and its tangents for whoever still holds it, but has no
/// right key and no curve, and the left key no longer refers to it.
class FCURVELIB_API Segment : public SharedFromThis<Segment>, public Private::PropertyCarrier<Segment> {
public:
    /// \name Make
    /// Curves make their segments (FCurve::insertSegment). A segment made here stands outside any chain: its keys do
    /// not refer to it and it has no tangents; it serves to call an interpolator on keys of one's own.
    /// @{
    Segment() noexcept;
    Segment(std::shared_ptr<FCurve> curve, std::shared_ptr<Keyframe> left, std::shared_ptr<Interpolator> interpolator,
            std::shared_ptr<Keyframe> right);
    /// Copies every field: the copy shares keys, interpolator and tangents with the other and has its own properties.
    Segment(const Segment& other);
    ~Segment();

    /// As the constructor, with a registered shared owner.
    static std::shared_ptr<Segment> create(std::shared_ptr<FCurve> curve, std::shared_ptr<Keyframe> left,
                                           std::shared_ptr<Interpolator> interpolator, std::shared_ptr<Keyframe> right);
    /// @}

    /// \name Relations
    /// Empty pointers where the thing does not exist.
    /// @{
    std::shared_ptr<Keyframe> getLeftKey() noexcept;
    std::shared_ptr<const Keyframe> getLeftKey() const noexcept;
    std::shared_ptr<Keyframe> getRightKey() noexcept;
    std::shared_ptr<const Keyframe> getRightKey() const noexcept;
    /// The handle at the right key.
    std::shared_ptr<Tangent> getInTangent() noexcept;
    std::shared_ptr<const Tangent> getInTangent() const noexcept;
    /// The handle at the left key.
    std::shared_ptr<Tangent> getOutTangent() noexcept;
    std::shared_ptr<const Tangent> getOutTangent() const noexcept;
    std::shared_ptr<FCurve> getOwningCurve() noexcept;
    std::shared_ptr<const FCurve> getOwningCurve() const noexcept;
    /// @}

    /// \name Interpolator
    /// @{
    std::shared_ptr<Interpolator> getInterpolator() const noexcept { return m_interpolator; }
    /// Replaces the interpolator and tells the owning curve's observers, unless it is the same object. An empty pointer
    /// is allowed: such a segment evaluates to 0.
    void setInterpolator(std::shared_ptr<Interpolator> interpolator);
    /// @}

    /// \name Properties
    /// As PropertyMap; getProperty, sizeProperties, beginProperties and endProperties read them. A change is told to
    /// the observers of the owning curve; clearing tells of each erased key with an empty value.
    /// @{
    bool setProperty(const char* key, const char* value);
    void clearProperties();
    /// @}

private:
    friend class FCurve;
    friend class Private::BorrowedSegment;
    friend struct Private::Block;
    friend struct Private::Raw;
    friend struct Private::Read;
    friend class Private::PropertyCarrier<Segment>;

    const PropertyMap& storedProperties() const noexcept { return m_box.properties(); }

    Segment& operator=(const Segment&) = delete;

    static constexpr std::uintptr_t leadingFlag = 2;

    std::shared_ptr<Interpolator> m_interpolator;
    std::shared_ptr<Private::Block> m_next; // of the chain: the block of the right key
    Private::Block* m_previous = nullptr;   // whoever lets that go clears this first
    Private::CurveReference m_curve;
    Private::PartBox<Private::SegmentContents> m_box;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
