#pragma once

// What observers are told when a recorded state was brought back: what the setters would have told.

#include "FCurveLib/FCurveContainer.h"
#include "model/Raw.h"

#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

class SelectionState;

class EditChanges {
public:
    // Everything in the curve is another: that tells all.
    void replaced(FCurve& curve);
    void added(FCurve& curve, const std::shared_ptr<Block>& block);
    void removed(FCurve& curve, const std::shared_ptr<Block>& block);
    // The parts of a block that had that shape.
    void changed(FCurve& curve, const std::shared_ptr<Block>& block, const BlockShape& before);
    // The key's place is null for properties of the curve.
    void property(FCurve& curve, std::shared_ptr<Block> block, Recorder::Carrier carrier, const std::string& key,
                  const std::string& before);
    void renamed(FCurve& curve);
    void container() noexcept { m_container = true; }

    // To the observers of curves, container and the given selections.
    void tell(FCurveContainer& container, const std::vector<std::weak_ptr<SelectionState>>& selections) const;

private:
    struct BlockChange {
        std::shared_ptr<FCurve> curve;
        std::shared_ptr<Block> block;
        unsigned what; // bits
    };
    struct PropertyChange {
        std::shared_ptr<FCurve> curve;
        std::shared_ptr<Block> block;
        Recorder::Carrier carrier;
        std::string key;
        std::string before;
    };

    bool isReplaced(const FCurve& curve) const noexcept { return m_replaced.count(&curve) > 0; }
    void tellBlocks(unsigned what) const;

    std::vector<BlockChange> m_blocks;
    std::vector<PropertyChange> m_properties;
    std::vector<std::shared_ptr<FCurve>> m_whole;
    std::unordered_set<const FCurve*> m_replaced;
    std::vector<std::shared_ptr<FCurve>> m_renamed;
    bool m_container = false;
};

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
