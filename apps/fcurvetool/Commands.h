#pragma once

namespace CLI {
class App;
}

namespace fcurvetool {

/// The tool's commands. Each of these functions, in a source of its own (Command*.cpp), adds one to the command line
/// with its options and what it does. To add a command: write such a source, declare its function here, call it in
/// main.cpp.
void addInfo(CLI::App& app);
void addEval(CLI::App& app);
void addSample(CLI::App& app);
void addPlot(CLI::App& app);
void addConvert(CLI::App& app);
void addBake(CLI::App& app);
void addSmooth(CLI::App& app);
void addFit(CLI::App& app);
void addReduce(CLI::App& app);
void addTransform(CLI::App& app);
void addFlip(CLI::App& app);
void addInsert(CLI::App& app);
void addMove(CLI::App& app);
void addScale(CLI::App& app);
void addDiff(CLI::App& app);
void addExtract(CLI::App& app);
void addDelete(CLI::App& app);
void addMerge(CLI::App& app);
void addRename(CLI::App& app);
void addFormats(CLI::App& app);
void addCompletion(CLI::App& app);
void addManual(CLI::App& app);

} // namespace fcurvetool
