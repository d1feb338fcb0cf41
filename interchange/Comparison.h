#pragma once

// What became of curves on their way into a document and back, named and measured.

#include <FCurveLib/FCurveContainer.h>

#include "FCurveInterchange/ConversionReport.h"
#include "interchange/Resolve.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

// Finds every difference of the curves that come back, one by one, from the original ones: of values beyond 1e-9 of a
// curve's range, and of all parts. Curves find each other by name; others in their order, if none is missing. What came
// in addition (properties, say) is no loss. Linear in the number of keys.
class Comparer {
public:
    // All of them must outlive this object.
    Comparer(const FCurveContainer& originals, const Notes& notes);

    void take(const std::shared_ptr<const FCurve>& back);
    // After the last curve: adds the losses to the report, original by original. Of what came back only the properties
    // are looked at.
    void finish(const FCurveContainer& back, ConversionReport& report);

private:
    struct Original {
        const FCurve* original = nullptr;
        bool isThere = false;
        ConversionReport report;
    };
    void compare(Original& place, const FCurve& back) const;

    const FCurveContainer& m_originals;
    const Notes& m_notes;
    std::vector<Original> m_places;
    std::unordered_map<std::string, std::vector<std::size_t>> m_byName; // that have not come back yet
    std::vector<std::shared_ptr<const FCurve>> m_unknown;               // of other names
};

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
