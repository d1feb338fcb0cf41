#pragma once

// Where an edit changes its curves: what the summaries tell.

#include "FCurveLib/EditObserver.h"
#include "model/Raw.h"

#include <cstddef>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

class EditWatch {
public:
    // Before each change.
    void touch(Block& block, FCurve& curve, bool comesOrGoes);
    void property(Block& block, FCurve& curve); // of one of its parts
    void intrinsic(FCurve& curve);
    void whole(FCurve& curve);
    void keys(FCurve& curve); // that another order is to have
    void container() noexcept { m_step.container = true; }
    void destroyed(FCurve& curve) noexcept;

    // After the changes, while all touched blocks are still there.
    void settle();
    // What changed since the last call; adds it to the whole edit. Settles.
    EditSummary takeStep(FCurveContainer& container);
    EditSummary takeAll(FCurveContainer& container);

private:
    struct Curve {
        FCurve* curve;
        CurveEdit edit;
    };
    struct Edits {
        std::vector<Curve> curves;
        std::unordered_map<const FCurve*, std::size_t> places;
        bool container = false;

        CurveEdit& of(FCurve& curve);
        void forget(const FCurve& curve) noexcept;
        EditSummary summary(FCurveContainer& of) const;
    };

    Edits m_step, m_all;
    std::unordered_set<Block*> m_touched; // in this step
};

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
