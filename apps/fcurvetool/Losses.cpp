#include "Losses.h"

#include "Failure.h"
#include "Files.h"
#include "Text.h"

#include <CLI/CLI.hpp>

#include <cmath>

namespace fcurvetool {

using namespace VEM_FN::FCurveLib::Interchange;

namespace {

ConversionOptions ConversionOptionsOf(const LossOptions& options) {
    ConversionOptions result;
    const auto check = [](const char* name, double number) {
        if (!(number > 0.0 && std::isfinite(number))) throw UsageError(std::string(name) + ": must be above 0");
        return number;
    };
    if (options.frameRate) result.frameRate = check("--frame-rate", *options.frameRate);
    if (options.tolerance) result.tolerance = check("--tolerance", *options.tolerance);
    for (const std::string& setting : options.settings) {
        const std::size_t equals = setting.find('=');
        if (equals == std::string::npos || setting.find('.') > equals)
            throw UsageError("--set: \"" + ToPrintable(setting) + "\" is not FORMAT.SETTING=VALUE");
        result.settings[setting.substr(0, equals)] = setting.substr(equals + 1);
    }
    if (const std::string fault = FaultOfSettings(result); !fault.empty()) throw UsageError("--set: " + fault);
    return result;
}

} // namespace

void AddLossOptions(CLI::App& command, LossOptions& options) {
    command.add_option("--report", options.report, "Write what the conversion loses to this file, as JSON")
        ->type_name("FILE");
    command.add_option("--frame-rate", options.frameRate, "Frames a second, where a format counts seconds")
        ->type_name("NUMBER");
    command
        .add_option("--tolerance", options.tolerance,
                    "How far curves may be off where they are split or fitted, as a share of their range (0.0001)")
        ->type_name("NUMBER");
    command.add_option("--set", options.settings, "A setting of one format, such as csv.shape=long; repeatable")
        ->type_name("NAME=VALUE")
        ->expected(1)
        ->take_all();
}

std::string DescribeLoss(const Loss& loss) {
    return (loss.curve.empty() ? "" : ToPrintable(loss.curve) + ": ") + ToPrintable(Describe(loss));
}

Losses::Losses(const LossOptions& options)
    : m_file(options.report), m_conversion(m_report, ConversionOptionsOf(options)) {}

void Losses::tell(const std::string& file, Warnings& warnings) const {
    for (const Loss& loss : m_report.losses()) warnings.add(file + ": " + DescribeLoss(loss));
}

void Losses::writeReport() const {
    if (m_file.empty()) return;
    WriteFile(m_file, ToJson(m_report));
}

} // namespace fcurvetool
