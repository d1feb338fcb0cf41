#pragma once

#include "FCurveLib/TrackedObserver.h"

#include <cstdint>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// Hears of every edit of the curves it is subscribed to (FCurve::subscribe, FCurve::subscribeGlobal).
///
/// Each edit calls the finest operation that fits. The defaults carry it upward: a property or intrinsic change of a
/// part calls the part's own changed operation, that calls curveChanged of the owning curve, if there is one. So an
/// observer that overrides curveChanged alone hears of everything, exactly once per change; one that overrides a finer
/// operation and still wants the coarser calls invokes the base implementation. A property operation carries the key
/// and its new value, which is empty where the property was erased.
///
/// Calls are synchronous, on the thread that edits. From inside a call an observer may edit, subscribe, unsubscribe and
/// destroy observers, curves and containers; what is notified stays alive until the delivery ends. An exception that
/// leaves an observer passes through the setter to the caller; the edit itself is complete.
class FCURVELIB_API FCurveObserver : public TrackedObserver {
public:
    enum CurveIntrinsicType : std::uint32_t { CurveName = 0 };
    enum KeyframeIntrinsicType : std::uint32_t {
        KeyframePosition = 0,
        KeyframeTangentsUnified = 1,
        KeyframeBreakdown = 2
    };
    enum SegmentIntrinsicType : std::uint32_t { SegmentInterpolator = 0 };
    enum TangentIntrinsicType : std::uint32_t {
        TangentHandle = 0,
        TangentType = 1,
        TangentWeighted = 2,
        TangentWeightLocked = 3
    };

    FCurveObserver() noexcept;
    FCurveObserver(const FCurveObserver&) noexcept;
    FCurveObserver& operator=(const FCurveObserver&) noexcept;
    ~FCurveObserver() override;

    /// The curve changed in a way that no finer operation tells: assignment, clear, swap, FCurve::notifyChanged.
    virtual void curveChanged(FCurve& curve);

    /// \name Steps of an interactive change, as announced by FCurve::setChangeType
    /// Default: curveChanged.
    /// @{
    virtual void beginValueChange(FCurve& curve);
    virtual void intermediateValueChange(FCurve& curve);
    virtual void endValueChange(FCurve& curve);
    /// @}

    /// \name Tangents
    /// @{
    virtual void tangentIntrinsicChanged(Tangent& tangent, FCurveObserver::TangentIntrinsicType type);
    virtual void tangentPropertyChanged(Tangent& tangent, const char* key, const char* value);
    virtual void tangentChanged(Tangent& tangent);
    /// @}

    /// \name Keyframes
    /// @{
    virtual void keyframeIntrinsicChanged(Keyframe& keyframe, FCurveObserver::KeyframeIntrinsicType type);
    virtual void keyframePropertyChanged(Keyframe& keyframe, const char* key, const char* value);
    virtual void keyframeChanged(Keyframe& keyframe);
    /// @}

    /// \name Segments
    /// A removed segment has left the curve when segmentRemoved is called; its left key is the key that went with it.
    /// @{
    virtual void segmentIntrinsicChanged(Segment& segment, FCurveObserver::SegmentIntrinsicType type);
    virtual void segmentPropertyChanged(Segment& segment, const char* key, const char* value);
    virtual void segmentChanged(Segment& segment);
    virtual void segmentAdded(FCurve& curve, Segment& segment);
    virtual void segmentRemoved(FCurve& curve, Segment& segment);
    /// @}

    /// \name The curve itself
    /// @{
    virtual void curveIntrinsicChanged(FCurve& curve, FCurveObserver::CurveIntrinsicType type);
    virtual void curvePropertyChanged(FCurve& curve, const char* key, const char* value);
    /// @}
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
