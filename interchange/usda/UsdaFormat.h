#pragma once

// Reader and writer of the format "usda": layers of USD as text. docs/formats/usda.md describes the format.

#include "interchange/CurveReader.h"
#include "interchange/CurveWriter.h"

#include <string>
#include <string_view>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

class UsdaReader : public CurveReader {
public:
    UsdaReader();
    ~UsdaReader() override;

private:
    Document parse(std::string_view bytes) const override;
    bool recognises(std::string_view opening, bool isWhole) const override;
};

class UsdaWriter : public CurveWriter {
public:
    UsdaWriter();
    ~UsdaWriter() override;

private:
    std::string compose(const FCurveContainer& curves, Notes& notes) const override;
    double rateThere() const override;
};

// "usda", "USD text layer", "usda".
const FormatType& UsdaType();

namespace Usda {

// Names of custom data that hold what USD has no place for, and of curve properties that hold what we have none for.
constexpr const char* kName = "fcurve_name";              // the curve's, where the path is another
constexpr const char* kWithoutKeys = "fcurve_expression"; // of a curve without keys
constexpr const char* kBreakdown = "fcurve_breakdown";
constexpr const char* kUnified = "fcurve_unified";
constexpr const char* kLocked = "fcurve_locked";
constexpr const char* kType = "usda_type"; // of the attribute, unless double
constexpr const char* kPre = "usda_pre";
constexpr const char* kPost = "usda_post";
constexpr const char* kLoop = "usda_loop";

} // namespace Usda

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
