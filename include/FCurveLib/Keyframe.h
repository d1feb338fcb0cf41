#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/SharedFromThis.h"
#include "FCurveLib/Vector2D.h"
#include "FCurveLib/detail/PartBox.h"
#include "FCurveLib/detail/PropertyCarrier.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// A keyframe: one point (x, y) that a curve passes through.
///
///     ... left segment ...  o  ... right segment ...
///                           ^ its in tangent belongs to the segment on its left,
///                             its out tangent to the segment on its right
///
/// Every key of a curve has both segments and both tangents: a curve begins and ends with a segment that has one key
/// only. A key in a curve never reaches its neighbours: set() keeps 0.001 frames between them. A key outside any curve
/// moves freely and tells nobody; it has no segments, no tangents and no curve. So does a key that was removed from its
/// curve, or whose curve was cleared or destroyed.
class FCURVELIB_API Keyframe : public SharedFromThis<Keyframe>, public Private::PropertyCarrier<Keyframe> {
public:
    /// \name Make
    /// @{

    /// A free key at (0, 0), not a breakdown, not unified, without properties.
    Keyframe() noexcept;
    /// A free key with the other's position, flags and properties.
    Keyframe(const Keyframe& other);
    ~Keyframe();

    /// A free key that can hand out shared references to itself. Non-finite coordinates leave it at (0, 0).
    static std::shared_ptr<Keyframe> create(double x = 0.0, double y = 0.0);
    /// @}

    /// \name Position (x in frames, y in the curve's own unit)
    /// The setters ignore non-finite coordinates and the present position. Otherwise a key in a curve
    ///  - is clamped in x to 0.001 frames from the previous and the next key; where these leave no such room, x stays
    ///    as it is (so the order of keys never changes);
    ///  - takes along the breakdown keys on either side, up to the next key that is none, so that each keeps its exact
    ///    proportion of the way between the moved key and that key (where the run of breakdown keys reaches the curve's
    ///    end, it moves by the same distance);
    ///  - recomputes the tangents of every key that moved and of the keys next to those;
    ///  - then tells the curve's observers: one position change per key that moved, the set key first, then one change
    ///    per tangent whose handle changed, from left to right.
    /// The model is complete before the first observer is called.
    /// @{

    /// Smallest distance in x, in frames, that set() leaves between neighbours: 0.001.
    static constexpr double getMinSeparation() noexcept { return 0.001; }

    const Vector2D<double>& get() const noexcept { return m_position; }
    double getX() const noexcept { return m_position.x; }
    double getY() const noexcept { return m_position.y; }
    void set(double x, double y);
    void set(const Vector2D<double>& position);
    void setX(double x);
    void setY(double y);
    /// @}

    /// \name Flags
    /// The setters do nothing when the flag has that value; otherwise a key in a curve tells its observers.
    /// @{

    /// A breakdown key is a step between two anchoring keys and moves with them in proportion.
    bool isBreakdown() const noexcept { return m_box.isSet(breakdownFlag); }
    void setBreakdown(bool breakdown);

    /// Unified tangents lie on one straight line through the key: editing one turns a fixed tangent on the other side
    /// to the same angle (it keeps its weight). Tangents of the automatic types keep the angle that their type
    /// computes.
    bool isTangentsUnified() const noexcept { return m_box.isSet(unifiedFlag); }
    /// Switching on aligns at once: the in tangent takes the out tangent's angle if it is fixed, otherwise a fixed out
    /// tangent takes the in tangent's.
    void setTangentsUnified(bool unified);
    /// @}

    /// \name Relations
    /// Empty pointers where the thing does not exist. The left segment ends at this key, the right one starts here.
    /// @{
    std::shared_ptr<Segment> getLeftSegment() noexcept;
    std::shared_ptr<const Segment> getLeftSegment() const noexcept;
    std::shared_ptr<Segment> getRightSegment() noexcept;
    std::shared_ptr<const Segment> getRightSegment() const noexcept;
    std::shared_ptr<Tangent> getInTangent() noexcept;
    std::shared_ptr<const Tangent> getInTangent() const noexcept;
    std::shared_ptr<Tangent> getOutTangent() noexcept;
    std::shared_ptr<const Tangent> getOutTangent() const noexcept;
    std::shared_ptr<FCurve> getOwningCurve() noexcept;
    std::shared_ptr<const FCurve> getOwningCurve() const noexcept;
    /// @}

    /// \name Properties
    /// As PropertyMap; getProperty, sizeProperties, beginProperties and endProperties read them. A change is told to
    /// the observers of the owning curve; clearing tells of each erased key with an empty value.
    /// @{
    bool setProperty(const char* key, const char* value);
    void clearProperties();
    /// @}

private:
    friend struct Private::Block;
    friend struct Private::Raw;
    friend struct Private::Read;
    friend class Private::PropertyCarrier<Keyframe>;

    const PropertyMap& storedProperties() const noexcept { return m_box.properties(); }

    Keyframe& operator=(const Keyframe&) = delete;

    static constexpr std::uintptr_t breakdownFlag = 2;
    static constexpr std::uintptr_t unifiedFlag = 4;

    Vector2D<double> m_position;
    Private::PartBox<Private::KeyframeContents> m_box;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
