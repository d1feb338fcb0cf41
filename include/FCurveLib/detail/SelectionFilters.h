#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/detail/HitRecordTypes.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

/// Accepts selected parts; nothing when made without a selection.
class FCURVELIB_API SelectionFilter {
public:
    SelectionFilter() noexcept = default;
    explicit SelectionFilter(const Selection* selection) noexcept : m_selection(selection) {}

    bool operator()(const HitRecord& record) const noexcept;
    bool operator()(const ConstHitRecord& record) const noexcept;

    template<class Position>
    auto accepts(const Position& position) const noexcept -> decltype(position.getProperty(""), bool()) {
        return m_selection && isSelected(position);
    }

    /// Whether a part, or the one where an iterator stands, is selected.
    template<class Part>
    static bool isSelected(const Part& part) noexcept {
        const char* const text = part.getProperty(key);
        return text[0] == value[0] && text[1] == '\0';
    }

    static constexpr const char* key = "fc_sel";
    static constexpr const char* value = "1";

private:
    const Selection* m_selection = nullptr;
};

/// Accepts records of any of the types.
template<HitRecordTypes::Type... types>
struct TypeFilter {
    /// Of records and of iterators over them.
    template<class Record>
    bool accepts(const Record& record) const noexcept {
        return ((record.getType() == types) || ...);
    }
    template<class Record>
    bool operator()(const Record& record) const noexcept {
        return accepts(record);
    }
};

struct CurveFilter : TypeFilter<HitRecordTypes::CURVE> {};
struct SegmentFilter : TypeFilter<HitRecordTypes::SEGMENT> {};
struct KeyFilter : TypeFilter<HitRecordTypes::KEYFRAME> {};
struct TangentFilter : TypeFilter<HitRecordTypes::TANGENT, HitRecordTypes::TANGENT_UNFLAGGED> {};

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
