#pragma once

#include "FCurveInterchange/ConversionReport.h"
#include "FCurveInterchange/Export.h"

#include <cstddef>
#include <map>
#include <string>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

/// What a reader or writer cannot know from the file or the curves.
struct ConversionOptions {
    /// Frames a second, of the curves. Where a document that is read, or the property "frame_rate" of a container that
    /// is written, states another rate, frames are counted anew, so that they stay at their seconds. 0: what the
    /// document says, or the container's property; 24 where neither does.
    double frameRate = 0.0;
    /// How far a curve may be off where it is split or fitted, as a share of its range of values.
    double tolerance = 1e-4;
    /// Of one format alone, by "format.setting": docs/formats/ names them. Unknown ones, and values that a setting
    /// does not know, have no effect; FaultOfSettings finds them.
    std::map<std::string, std::string> settings;
    /// Bytes of a document. Readers of this library hold it in memory and refuse a longer one before they read it,
    /// writers before the first byte, so that what is written opens again. FormatLimits bound what stands in it.
    std::size_t longest = std::size_t{1} << 29U;

    /// Empty where it is not set.
    std::string setting(const char* name) const {
        const auto found = settings.find(name);
        return found == settings.end() ? std::string() : found->second;
    }
};

/// What is wrong with the settings: a name that no format of this library knows, or a value that a setting does not
/// take, with those that there are. Empty where nothing is. For hosts whose users type them.
FCURVEINTERCHANGE_API std::string FaultOfSettings(const ConversionOptions& options);

/// Hands options to the readers and writers of this library, and collects what they lose, while it lives, in its own
/// thread:
///
///     ConversionReport report;
///     {
///         Conversion conversion(report);
///         ReadCurves(input, *curves);
///         WriteCurves(*curves, output, "csv");
///     }
///
/// Conversions nest. A writer without a report does not look for losses, which saves the time of reading what it wrote.
class FCURVEINTERCHANGE_API Conversion {
public:
    /// The report must outlive this object; it is added to.
    explicit Conversion(ConversionReport& report, ConversionOptions options = {});
    explicit Conversion(ConversionOptions options);
    Conversion(const Conversion&) = delete;
    Conversion& operator=(const Conversion&) = delete;
    ~Conversion();

    /// \name In force in this thread
    /// @{

    /// The innermost conversion's; the defaults without one.
    static const ConversionOptions& options() noexcept;
    /// Null where nobody wants one.
    static ConversionReport* report() noexcept;
    /// @}

private:
    ConversionOptions m_options;
    ConversionReport* m_report;
    Conversion* m_outer;
};

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
