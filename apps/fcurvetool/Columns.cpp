#include "Columns.h"

#include "Text.h"

#include <CLI/CLI.hpp>

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

std::vector<FrameValues> ValuesOf(const std::vector<NamedCurve>& curves, std::int64_t frames) {
    std::vector<FrameValues> values;
    values.reserve(curves.size());
    for (const NamedCurve& named : curves) values.emplace_back(*named.curve, frames);
    return values;
}

void EvaluateColumns(std::vector<FrameValues>& curves, const ColumnOptions& options, double frame,
                     std::vector<std::string>& cells) {
    cells.clear();
    for (FrameValues& curve : curves) {
        cells.push_back(ToText(curve.value(frame)));
        if (options.velocity) cells.push_back(ToText(curve.velocity(frame)));
        if (options.acceleration) cells.push_back(ToText(curve.acceleration(frame)));
    }
}

} // namespace fcurvetool
