#pragma once

#include "FCurveLib/Export.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// What a file says, as a sequence of calls: readers make them, writers are them, FCurveFormatInterface turns them into
/// a curve. Neither readers nor writers know curves.
///
/// The order of the calls is that of the document: container, curves, and within each curve segment, key, segment, ...,
/// segment. docs/formats/README.md has it as a grammar. Readers may leave out what their format does not say: flags,
/// tangents, properties. The library's writers take such sequences too, and the calls within a part in any order; they
/// refuse all others.
///
/// Texts are valid during the call only and never null. Editor properties (names with "fc_") that have a call of their
/// own travel by that call.
///
/// Every operation does nothing by default, and may throw: the exception ends reading or writing and passes through to
/// whoever started it.
class FCURVELIB_API FormatInterface {
public:
    FormatInterface() noexcept;
    virtual ~FormatInterface();

    /// \name Container
    /// @{
    virtual void startCurveContainer();
    virtual void finishCurveContainer();
    virtual void containerProperty(const char* key, const char* value);
    /// @}

    /// \name Curve
    /// @{

    /// Returns whether the curve is wanted (the default is true). False skips it: its other calls, finishCurve
    /// included, are not made.
    virtual bool startCurve(const char* name);
    /// Returns whether further curves of the container are wanted (the default is true). False ends reading or writing
    /// as if the container ended here.
    virtual bool finishCurve();
    virtual void curveVisible(bool visible);
    virtual void curveLocked(bool locked);
    virtual void curveShowVelocity(bool show);
    virtual void curveShowAcceleration(bool show);
    virtual void curveShowDiscontinuities(bool show);
    /// Corner and size of the displayed grid's cell.
    virtual void curveGrid(double x, double y, double width, double height);
    virtual void curveTangentScale(double scale);
    virtual void curveProperty(const char* key, const char* value);
    /// @}

    /// \name Segments
    /// @{
    virtual void startSegmentContainer();
    virtual void finishSegmentContainer();
    /// With the expression text of the segment's interpolator.
    virtual void startSegment(const char* expression);
    virtual void finishSegment();
    virtual void segmentProperty(const char* key, const char* value);
    /// @}

    /// \name Tangents
    /// @{
    virtual void startInTangent();
    virtual void finishInTangent();
    virtual void startOutTangent();
    virtual void finishOutTangent();
    /// The handle, as an offset from its key.
    virtual void tangentVector(double x, double y);
    /// A Tangent::Type.
    virtual void tangentType(unsigned char type);
    virtual void tangentWeightLocked(bool locked);
    virtual void tangentWeighted(bool weighted);
    virtual void tangentProperty(const char* key, const char* value);
    /// @}

    /// \name Keyframes
    /// @{
    virtual void startKeyframe();
    virtual void finishKeyframe();
    virtual void keyframePosition(double x, double y);
    virtual void keyframeTangentsUnified(bool unified);
    virtual void keyframeBreakdown(bool breakdown);
    virtual void keyframeLocked(bool locked);
    virtual void keyframeProperty(const char* key, const char* value);
    /// @}
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
