#pragma once

#include <FCurveLib/FCurve.h>
#include <FCurveLib/Fitting.h>

#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace fcurvetool {

/// What the commands that leave few keys have in common.
struct FitCommandOptions {
    std::string tolerance = "1%";
    bool isWeighted = false;
    bool isBroken = false;
    VEM_FN::FCurveLib::FitOptions fit;
};

/// Adds --tolerance, --weighted, --broken, --keep-extremes, --whole-frames and --max-keys.
void AddFitOptions(CLI::App& command, FitCommandOptions& options);

/// What --tolerance says: a number in the curves' own unit, or a part of each curve's range of values.
struct ToleranceOption {
    double number;
    bool isPercent;

    double of(double lowest, double highest) const;
};
/// The options as the library takes them; UsageError where --tolerance is no tolerance.
ToleranceOption ParseFitOptions(FitCommandOptions& options);

/// Lists what was left of each curve, for people.
class FitReports {
public:
    /// Returns the warning for the user where the tolerance is not held, else nothing.
    std::string add(const VEM_FN::FCurveLib::FCurve& curve, const VEM_FN::FCurveLib::FitReport& report);

    /// To standard output, or to standard error where the curves go to standard output.
    void print(const std::string& curvesOutput) const;

private:
    struct Row {
        std::string name;
        VEM_FN::FCurveLib::FitReport report;
    };
    std::vector<Row> m_rows;
};

} // namespace fcurvetool
