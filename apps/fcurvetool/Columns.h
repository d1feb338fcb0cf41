#pragma once

#include "FrameValues.h"
#include "NamedCurve.h"

#include <cstdint>
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

/// The curves as EvaluateColumns wants them, for so many frames.
std::vector<FrameValues> ValuesOf(const std::vector<NamedCurve>& curves, std::int64_t frames);

/// The numbers of the columns at a frame, in shortest exact text.
void EvaluateColumns(std::vector<FrameValues>& curves, const ColumnOptions& options, double frame,
                     std::vector<std::string>& cells);

} // namespace fcurvetool
