#pragma once

#include "FCurveLib/KeyGroup.h"
#include "FCurveLib/MoveKeys.h"
#include "model/PendingChanges.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

// Where the keys of a group are to go.
struct GroupTarget {
    Vector2D<double> offset;
    Vector2D<double> pivot;
    Vector2D<double> factor{1.0, 1.0};
    bool scales = false; // or moves
    bool cuts = false;   // breakdown keys before the group's first one stay
};

// One move of a group: looks for how far it can go, then goes there. The way of each key is a straight line in a
// parameter, 0 where the key stood when the group was made and 1 where it is wanted, so two neighbours meet at one
// place on it, and the group as a whole goes as far as the first meeting allows, wherever a drag has taken it
// meanwhile. Where others have come in between it starts from where the keys are now.
class GroupPlan {
public:
    GroupPlan(KeyGroup& group, const GroupTarget& target, const MoveOptions& options);
    MoveReport run();

private:
    using Entry = KeyGroup::Entry;

    struct Spot {
        Keyframe* key;
        double from; // its place at the parameter 0
        double way;
        Entry* entry; // null for a key outside the group
        bool follows; // a breakdown key, whose way its neighbours decide
    };
    // Entries of the group with no other key between them.
    struct Run {
        std::size_t first, last; // numbers of entries
        Keyframe* before;        // null where the curve ends
        Keyframe* after;
    };
    struct Curve {
        std::shared_ptr<FCurve> curve;
        std::vector<Entry*> entries; // in order of x
        std::vector<Spot> spots;     // all that may move, in order of x, and the keys beside them
        std::vector<Run> runs;       // where keys cross
    };
    struct Move {
        Keyframe* key;
        Vector2D<double> to;
        Entry* entry;
    };

    void gather();
    bool plan(bool isFromStart);
    void snap();
    void planCurves();
    void planCurve(Curve& curve) const;
    void findRuns(Curve& curve) const;
    void limitToGrid();

    double limit() const;
    void takePart();
    bool isBlurred(const Entry& entry, double x) const;
    bool isPossible() const;
    double roomFor(const Curve& curve, const Entry& entry, double part) const;
    const Run* runOf(const Curve& curve, const Keyframe& key) const;

    double fromOf(const Entry& entry) const;
    Vector2D<double> wantedOf(const Entry& entry) const;
    double wayOf(const Entry& entry) const;
    Vector2D<double> placeOf(const Spot& spot) const;

    std::vector<Spot> passingOf(const Curve& curve) const;
    void move(Curve& curve, PendingChanges& changes);
    void cross(Curve& curve, const std::vector<Spot>& passing);
    void scaleHandles(const Entry& entry, PendingChanges& changes) const;

    KeyGroup& m_group;
    const GroupTarget m_asked;
    GroupTarget m_target; // on the grids
    bool m_isFromStart = true;
    const MoveOptions m_options;
    std::vector<Curve> m_curves;
    const Entry* m_snappedX = nullptr; // the keys that stand exactly on the grids
    const Entry* m_snappedY = nullptr;
    Vector2D<double> m_grid; // where
    double m_part = 1.0;     // of the way
    Vector2D<double> m_factor;
    MoveReport m_report;
};

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
