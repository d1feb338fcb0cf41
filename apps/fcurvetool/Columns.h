#pragma once

#include "NamedCurve.h"

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace fcurvetool {

/// The columns that `eval` and `sample` write: for each curve its value and, if wanted, its derivatives from the right.
struct ColumnOptions {
    bool velocity = false;
    bool acceleration = false;
};

void AddColumnOptions(CLI::App& command, ColumnOptions& options);

std::vector<std::string> ColumnNames(const std::vector<NamedCurve>& curves, const ColumnOptions& options);

/// The numbers of the columns at a frame, in shortest exact text.
void EvaluateColumns(const std::vector<NamedCurve>& curves, const ColumnOptions& options, double frame,
                     std::vector<std::string>& cells);

} // namespace fcurvetool
