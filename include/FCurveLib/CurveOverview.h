#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/FCurveObserver.h"
#include "FCurveLib/Forward.h"

#include <memory>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// The extents of a curve's segments, which a view keeps so that it need not look at every key each time it draws. Some
/// 35 bytes a key.
///
///     CurveOverview overview(curve);
///     ViewLine(overview, view, line);                     // looks at every key
///     key.set(frame, value);
///     overview.invalidate(lowest, highest);               // from whoever knows where the curve changed
///     ViewLine(overview, view, line);                     // looks at the changed keys
///
/// It hears of nothing by itself: either its owner calls invalidate, for each curve of an EditSummary, or it is an
/// ObservedOverview. One overview belongs to one thread at a time, and so does its curve while the overview is brought
/// up to date.
class FCURVELIB_API CurveOverview {
public:
    /// A share of the curve, which is looked at when first needed. Null counts as a curve without keys.
    explicit CurveOverview(std::shared_ptr<const FCurve> curve);
    CurveOverview(const CurveOverview&) = delete;
    CurveOverview& operator=(const CurveOverview&) = delete;
    virtual ~CurveOverview();

    const std::shared_ptr<const FCurve>& getCurve() const noexcept { return m_curve; }

    /// \name What changed
    /// Costs nothing yet: the segments are looked at again when next needed. That takes as long as there are keys from
    /// the lowest to the highest frame given since, and some 300 more; and those segments, of whole neighbourhoods,
    /// that depend on far keys or on a host's code.
    /// @{

    /// Keys, tangents or interpolators from one frame to another were edited, added or removed, or moved from or to
    /// there: CurveEdit::parts, say. Nothing, where low > high. What depends on them is found: neither the neighbours'
    /// tangents that followed nor segments that read other keys need be told. NaN counts as invalidate().
    void invalidate(double low, double high) noexcept;
    /// Anything may have changed.
    void invalidate() noexcept;
    /// @}

    /// Lowest and highest value between two frames, in either order, held between the first and the last key; values
    /// that are not finite count for nothing. False where there is none. Logarithmic, but for what changed.
    bool getExtents(double x0, double x1, double& low, double& high);

private:
    friend FCURVELIB_API void ViewLine(CurveOverview& overview, const CurveView& view, ViewPolyline& out);

    const Private::SegmentSummaries& update();

    std::shared_ptr<const FCurve> m_curve;
    std::unique_ptr<Private::SegmentSummaries> m_summaries;
    double m_low; // what changed since; none where low > high
    double m_high;
};

/// An overview that subscribes to its curve. An edit of a part costs what its neighbourhood costs; curveChanged, the
/// steps of an interactive change (FCurve::setChangeType) and library-wide or quiet edits do not tell where they were,
/// so after them every key is looked at again. A host that drags many keys knows better: see invalidate.
class FCURVELIB_API ObservedOverview : public CurveOverview, public FCurveObserver {
public:
    explicit ObservedOverview(const std::shared_ptr<FCurve>& curve);
    ~ObservedOverview() override;

    void curveChanged(FCurve& curve) override;
    void tangentChanged(Tangent& tangent) override;
    void tangentPropertyChanged(Tangent& tangent, const char* key, const char* value) override;
    void keyframeChanged(Keyframe& keyframe) override;
    void keyframePropertyChanged(Keyframe& keyframe, const char* key, const char* value) override;
    void segmentChanged(Segment& segment) override;
    void segmentPropertyChanged(Segment& segment, const char* key, const char* value) override;
    void segmentAdded(FCurve& curve, Segment& segment) override;
    void segmentRemoved(FCurve& curve, Segment& segment) override;
    void curveIntrinsicChanged(FCurve& curve, FCurveObserver::CurveIntrinsicType type) override;
    void curvePropertyChanged(FCurve& curve, const char* key, const char* value) override;

private:
    void invalidateAround(const Keyframe* left, const Keyframe* right) noexcept;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
