#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/HitRecord.h"

#include <cstddef>
#include <set>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// The selection of a container at one moment, to compare with, to combine, and to bring back: one step of a host's
/// undo list. It holds every part whose "fc_sel" is "1", also the tangents that the walk over a selection does not
/// show.
///
/// A snapshot keeps nothing alive: a host that wants to bring back parts of a removed curve keeps that curve itself.
///
/// Parts are found again by identity: the very key, wherever it has moved. Where the curve has been rebuilt since
/// (assignment, clear, TransformCurve: all its parts are new objects), they are found by their number in the curve. A
/// part that was merely removed is not replaced by its neighbour.
///
/// Two snapshots of one curve are compared and combined by the same rule: part by part, or, if the curve was rebuilt
/// between them, by number. A snapshot that is not being changed may be read by any number of threads.
class FCURVELIB_API SelectionSnapshot {
public:
    /// \name Make
    /// @{

    /// Nothing selected.
    SelectionSnapshot() noexcept;
    /// What is selected now. Linear in the number of the container's parts.
    explicit SelectionSnapshot(const Selection& selection);
    SelectionSnapshot(const SelectionSnapshot& other);
    SelectionSnapshot(SelectionSnapshot&& other) noexcept;
    SelectionSnapshot& operator=(const SelectionSnapshot& other);
    SelectionSnapshot& operator=(SelectionSnapshot&& other) noexcept;
    ~SelectionSnapshot();
    /// @}

    /// \name Read
    /// Parts that are gone meanwhile count, too.
    /// @{
    bool empty() const noexcept { return m_curves.empty(); }
    /// Number of parts, curves included.
    std::size_t size() const noexcept;

    /// Whether both hold the same parts.
    friend FCURVELIB_API bool operator==(const SelectionSnapshot& a, const SelectionSnapshot& b);
    friend FCURVELIB_API bool operator!=(const SelectionSnapshot& a, const SelectionSnapshot& b);
    /// @}

    /// \name Combine
    /// n log n in the number of parts.
    /// @{
    void merge(const SelectionSnapshot& other);
    void subtract(const SelectionSnapshot& other);
    /// @}

    /// \name Bring back
    /// @{

    /// Adds the snapshot's parts, as they stand today in curves of the container, to the set. Returns how many of them
    /// exist no longer, or not in this container.
    std::size_t resolve(FCurveContainer& curves, std::set<HitRecord, CompareRecord>& parts) const;

    /// Makes the selection what it was: deselects every other part of the selection's container, then selects these.
    /// Parts that stay as they are raise no notification. Returns how many parts could not be found again. Observers
    /// may edit and destroy anything meanwhile, except this snapshot's selection of parts: that is fixed beforehand.
    std::size_t restore(Selection& selection) const;
    /// @}

private:
    struct Curve;
    std::vector<Curve> m_curves; // ordered by identity, see SelectionSnapshot.cpp
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
