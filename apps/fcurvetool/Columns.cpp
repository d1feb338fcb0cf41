#include "Columns.h"

#include "Text.h"

#include <CLI/CLI.hpp>
#include <FCurveLib/Evaluation.h>

namespace fcurvetool {

void AddColumnOptions(CLI::App& command, ColumnOptions& options) {
    command.add_flag("--velocity", options.velocity, "Also each curve's first derivative (value per frame)");
    command.add_flag("--acceleration", options.acceleration, "Also its second derivative");
}

std::vector<std::string> ColumnNames(const std::vector<NamedCurve>& curves, const ColumnOptions& options) {
    std::vector<std::string> names;
    for (const NamedCurve& named : curves) {
        names.push_back(named.name);
        if (options.velocity) names.push_back(named.name + " velocity");
        if (options.acceleration) names.push_back(named.name + " acceleration");
    }
    return names;
}

void EvaluateColumns(const std::vector<NamedCurve>& curves, const ColumnOptions& options, double frame,
                     std::vector<std::string>& cells) {
    namespace fc = VEM_FN::FCurveLib;
    cells.clear();
    for (const NamedCurve& named : curves) {
        const fc::FCurve& curve = *named.curve;
        cells.push_back(ToText(curve.eval(frame)));
        if (options.velocity) cells.push_back(ToText(fc::GetFirstDerivative(curve, frame)));
        if (options.acceleration) cells.push_back(ToText(fc::GetSecondDerivative(curve, frame)));
    }
}

} // namespace fcurvetool
