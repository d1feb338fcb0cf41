#pragma once

#include "FCurveLib/Examined.h"
#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// What an editor's property panel asks of a selection: how many parts of each kind are selected, and what they have in
/// common.
///
///     if (examiner.getKeyframes().x.isEqual()) field.show(examiner.getKeyframes().x.getValue());
///
/// It examines the parts that the walk over the selection yields: those of the container's curves whose "fc_sel" is
/// "1"; among tangents, those that their segment's interpolator uses.
///
/// Answers are kept, and kept true by observing the selection, the container and its curves: whoever changes a part, by
/// whichever Selection or property, is noticed. What nobody is told of cannot be: see invalidate(). Asked from inside a
/// notification, the answer may lack the very change that is being told, if this examiner's turn is yet to come.
///
/// The examiner keeps neither selection, container, curves nor parts alive; all of them may be destroyed before or
/// after it. When the container is gone, nothing is selected. Not for several threads at a time.
class FCURVELIB_API SelectionExaminer {
public:
    /// \name Make
    /// Examines the container of the selection. Nothing is walked before the first question.
    /// @{
    explicit SelectionExaminer(Selection& selection);
    SelectionExaminer(const SelectionExaminer&) = delete;
    SelectionExaminer& operator=(const SelectionExaminer&) = delete;
    ~SelectionExaminer();
    /// @}

    /// \name Answers
    /// Numbers count as equal when they all lie within the library's tolerance, 1e-07; the value is the lowest of them.
    /// @{
    struct Curves {
        std::size_t count = 0;
        Examined<std::string> name;
        Examined<bool> visible;
        Examined<bool> editable;
        Examined<bool> locked;
        Examined<bool> velocityVisible;
        Examined<bool> accelerationVisible;
        Examined<bool> discontinuityVisible;
    };
    struct Segments {
        std::size_t count = 0;
        /// The interpolator's expression; empty for a segment without interpolator.
        Examined<std::string> expression;
    };
    struct Keyframes {
        std::size_t count = 0;
        Examined<double> x; ///< in frames
        Examined<double> y;
        Examined<bool> breakdown;
        Examined<bool> tangentsUnified;
        Examined<bool> locked; ///< the key's own "fc_lock"
    };
    struct Tangents {
        std::size_t count = 0;
        Examined<std::uint8_t> type; ///< a Tangent::Type
        Examined<double> angle;      ///< in radians, as Tangent::getAngle
        Examined<double> weight;
        Examined<bool> weighted;
        Examined<bool> weightLocked;
    };
    /// @}

    /// \name Ask
    /// The references stay valid as long as the examiner; what they refer to is brought up to date by the next
    /// question.
    ///
    /// Asking again without a change costs nothing. After a change of single parts the next question costs O(log n) per
    /// part; a curve that changed as a whole (assignment, clear, swap, notifyChanged), or in many parts, is walked
    /// again, and no other curve is.
    /// @{
    const Curves& getCurves();
    const Segments& getSegments();
    const Keyframes& getKeyframes();
    const Tangents& getTangents();
    /// @}

    /// Forgets everything: the next question walks all parts. Without it answers may be stale, nothing worse, after
    ///  - changes under a switch that turns notification off (of a curve, FCurve::notifyChanged does as well);
    ///  - changes of what has no notification: an interpolator's expression text or usesTangents();
    ///  - an exception that an observer threw out of an edit: it keeps the observers after it from hearing of it.
    void invalidate() noexcept;

private:
    class Observer;
    std::unique_ptr<Observer> m_observer;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
