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

/// A tangent: the handle at one end of a segment, as an offset (x in frames, y in the curve's unit) from its key.
///
///     key o----> out tangent, x >= 0          in tangent, x <= 0 <----o key
///
/// A tangent belongs to a segment: the out tangent stands at the segment's left key, the in tangent at its right key.
/// Only Bezier-shaped interpolators that use tangents look at it. Its type decides whether the handle stays as set or
/// is recomputed whenever a key nearby changes.
///
/// A new tangent is Fixed, unweighted, unlocked and flat: (1, 0) or (-1, 0) until its segment has both keys.
class FCURVELIB_API Tangent : public SharedFromThis<Tangent>, public Private::PropertyCarrier<Tangent> {
public:
    /// P and N are the keys before and after the tangent's own key. Other numbers are no types.
    enum Type : std::uint8_t {
        Fixed = 0,  ///< as set, within the limits of an unweighted handle
        Flat = 1,   ///< horizontal
        Linear = 2, ///< straight at the segment's other key
        Smooth = 3, ///< parallel to the chord from P to N; Linear at the first and last key
        /// As Smooth, but where the segment lacks its other key the handle continues the straight line from the only
        /// neighbour, so that the curve goes on in that direction outside its keys.
        SmoothContinued = 4,
        /// Smooth, but flat when P's or N's value is within 0.05 of the handle's own y. Deliberate: the handle's offset
        /// is compared, not the key's value, so the result depends on the present handle and may alternate while a key
        /// is dragged. Plateau is steady.
        Clamped = 5,
        /// Smooth, but flat at a key that is not between its neighbours in value, and flat where the handle would rise
        /// above or fall below both keys of its segment.
        Plateau = 6
    };

    /// \name Make
    /// Curves make the tangents of their segments; a tangent made here is not its segment's own and never turns
    /// another.
    /// @{

    /// An out tangent on no segment.
    Tangent() noexcept;
    /// A tangent that names the given segment (weakly) as its owner.
    Tangent(std::shared_ptr<Segment> owner, bool isIn);
    Tangent(const Tangent&) = delete;
    ~Tangent();

    /// As the constructor, with a registered shared owner.
    static std::shared_ptr<Tangent> create(std::shared_ptr<Segment> owner, bool isIn);

    /// Takes handle, type, weight flags and properties as they are, without recomputing; owner and side stay. From a
    /// tangent of the other side the handle is taken through the key, so that the slope stays. Tells the owning curve's
    /// observers of whatever changed.
    Tangent& operator=(const Tangent& other);
    /// @}

    /// \name Read
    /// @{
    const Vector2D<double>& get() const noexcept { return m_handle; }
    double getX() const noexcept { return m_handle.x; }
    double getY() const noexcept { return m_handle.y; }
    /// In radians, atan2(y, |x|), negated for an in tangent: the two tangents on one straight line through a key report
    /// the same angle.
    double getAngle() const noexcept;
    /// The handle's length.
    double getWeight() const noexcept;
    std::uint8_t getType() const noexcept { return m_type; }
    bool isInTangent() const noexcept { return m_isIn; }
    bool isWeighted() const noexcept { return m_weighted; }
    bool isWeightLocked() const noexcept { return m_weightLocked; }
    /// @}

    /// \name Edit
    /// The setters ignore non-finite arguments and unknown types. They propose a handle, which then
    ///  - keeps the direction of an automatic type (set the type to Fixed to shape by hand); a flat one takes the
    ///    proposed length if it is weighted, until it is recomputed: then it is a third again;
    ///  - keeps its length if the tangent is weighted and weight locked;
    ///  - is held to a third of its segment's span in x, keeping its slope, if it is unweighted or of another type than
    ///    Fixed and Flat; a vertical one is stored with the slope 5729577.948511148 (89.99999 degrees);
    ///  - turns a fixed tangent on the other side of a unified key to the same angle, with that tangent's own weight.
    /// A tangent whose segment lacks a key keeps the handle that was set; only a vertical one loses its height when its
    /// key moves, having no x to rise along. A handle that differs from the stored one by no more than 1e-07 in x and
    /// in y is not stored (docs/editing.md: very small values). Each handle that changed is told to the owning curve's
    /// observers.
    /// @{

    /// A handle never points across its key: a positive x of an in tangent, or a negative x of an out tangent, becomes
    /// 0.
    void set(double x, double y);
    void set(const Vector2D<double>& handle);
    void setX(double x);
    void setY(double y);
    /// Keeps the weight (a weight near zero becomes 1). Angles that point across the key are turned by half a turn.
    void setAngle(double radians);
    /// Keeps the direction. A weight of 0 or less becomes 1e-05, so that the handle keeps a direction; a handle of no
    /// length becomes flat. Changes nothing while the tangent is weighted and its weight locked.
    void setWeight(double weight);
    /// Recomputes the handle. Fixed keeps the present handle; at a unified key it turns to the angle of the tangent on
    /// the other side and keeps its weight.
    void setType(std::uint8_t type);
    /// Switching on keeps the handle; switching off holds it to the limits.
    void setWeighted(bool weighted);
    void setWeightLocked(bool locked);
    /// @}

    /// \name Relations
    /// Empty pointers where the thing does not exist.
    /// @{
    std::shared_ptr<Segment> getOwningSegment() noexcept;
    std::shared_ptr<const Segment> getOwningSegment() const noexcept;
    /// The segment's right key for an in tangent, its left key for an out tangent.
    std::shared_ptr<Keyframe> getOwningKeyframe() noexcept;
    std::shared_ptr<const Keyframe> getOwningKeyframe() const noexcept;
    std::shared_ptr<FCurve> getOwningCurve() noexcept;
    std::shared_ptr<const FCurve> getOwningCurve() const noexcept;
    /// The other tangent at the same key.
    std::shared_ptr<Tangent> getOppositeTangent() noexcept;
    std::shared_ptr<const Tangent> getOppositeTangent() const noexcept;
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
    friend class Private::PropertyCarrier<Tangent>;

    const PropertyMap& storedProperties() const noexcept { return m_box.properties(); }

    void propose(double x, double y);
    void notifyIntrinsic(std::uint32_t type);

    Private::PartBox<Private::TangentContents> m_box;
    std::uint8_t m_type = Fixed;
    bool m_weightLocked = false;
    bool m_weighted = false;
    bool m_isIn = false;
    Vector2D<double> m_handle;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
