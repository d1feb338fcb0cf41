#pragma once

#include "NamedCurve.h"

#include <FCurveLib/FCurveContainer.h>
#include <FCurveLib/FormatType.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace fcurvetool {

/// What the commands have in common: files, their format, which of their curves.
struct InputOptions {
    std::vector<std::string> files;
    std::string format;              ///< empty: recognised by content
    std::vector<std::string> curves; ///< names, roles, numbers from 1, or patterns with * and ?; empty: all
    std::string frameColumn;         ///< of .chan files: auto, yes, no; empty: not said
    std::optional<double> fps;       ///< of .chan files whose first column holds seconds
    bool isStrict = false;           ///< warnings are errors
};

/// Adds --format, --frame-column, --fps and --strict.
void AddReadOptions(CLI::App& command, InputOptions& options);
/// Adds --curve.
void AddCurveOption(CLI::App& command, InputOptions& options);

/// What a file holds.
struct Document {
    std::string name; ///< for messages; printable
    VEM_FN::FCurveLib::FormatType format;
    std::shared_ptr<VEM_FN::FCurveLib::FCurveContainer> curves;
};

/// The message for the exception of the library that is being handled, with the name of the file in front.
std::string DescribeException(const std::string& name);

/// Reads a file, or standard input for "-", as the options say. Failure says file, line and column of what is wrong.
Document ReadDocument(const std::string& path, const InputOptions& options);

/// The curve's name, printable, and after it the role that a channel file gives it: "chan0 (tx)". Empty where the
/// curve has neither.
std::string NameOf(const VEM_FN::FCurveLib::FCurve& curve);

/// Picks the curves of documents, in the order of the documents if --curve was not given, else in the order of --curve.
/// No curve comes twice, and no two have the same name: of several files the curves' names start with the file's, and
/// further curves of one name get numbers. Failure where a --curve fits none.
std::vector<NamedCurve> ChooseCurves(const std::vector<Document>& documents, const InputOptions& options);

/// Reads the files and picks their curves.
std::vector<NamedCurve> ReadCurves(const InputOptions& options);

/// What a --curve means, as indices: the curves of that name or role; else the one of that number, from 1; else those
/// that fit the pattern.
std::vector<std::size_t> FindCurves(const std::vector<NamedCurve>& curves, const std::string& wanted);

/// The file's name without folders and extension.
std::string Stem(const std::string& path);

} // namespace fcurvetool
