#pragma once

namespace CLI {
class App;
}

namespace fcurvetool {

/// The tool's commands. Each of these functions, in a source of its own (Command*.cpp), adds one to the command line
/// with its options and what it does. To add a command: write such a source, declare its function here, call it in
/// main.cpp.
void AddInfo(CLI::App& app);
void AddEval(CLI::App& app);
void AddSample(CLI::App& app);
void AddPlot(CLI::App& app);
void AddConvert(CLI::App& app);
void AddBake(CLI::App& app);
void AddSmooth(CLI::App& app);
void AddFit(CLI::App& app);
void AddReduce(CLI::App& app);
void AddTransform(CLI::App& app);
void AddFlip(CLI::App& app);
void AddInsert(CLI::App& app);
void AddMove(CLI::App& app);
void AddScale(CLI::App& app);
void AddDiff(CLI::App& app);
void AddExtract(CLI::App& app);
void AddDelete(CLI::App& app);
void AddMerge(CLI::App& app);
void AddRename(CLI::App& app);
void AddFormats(CLI::App& app);
void AddCompletion(CLI::App& app);
void AddManual(CLI::App& app);

} // namespace fcurvetool
