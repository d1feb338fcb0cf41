#pragma once

#include "FCurveLib/FCurve.h"
#include "FCurveLib/detail/ObserverSet.h"

#include <array>
#include <cstddef>
#include <memory>
#include <unordered_set>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

// Collects what one edit changes in the parts of a curve: the model is completed first, then the observers are told.
// They may do anything to the curve meanwhile: parts that have left it by then are not told of.
class PendingChanges {
public:
    explicit PendingChanges(FCurve* curve);
    PendingChanges(const PendingChanges&) = delete;
    PendingChanges& operator=(const PendingChanges&) = delete;

    void moved(Keyframe& key);
    void handleChanged(Tangent& tangent);
    void notify();

private:
    struct Change {
        std::shared_ptr<Keyframe> key;
        std::shared_ptr<Tangent> tangent;
    };
    void add(Change change);

    std::shared_ptr<FCurve> m_curve; // empty when nobody listens: then nothing is collected
    ObserverSet<FCurveObserver>* m_silent = nullptr;
    std::array<Change, 8> m_few; // the usual drag of one key needs no allocation
    std::vector<Change> m_more;
    std::unordered_set<const Tangent*> m_tangents; // in m_more
    std::size_t m_count = 0;
};

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
