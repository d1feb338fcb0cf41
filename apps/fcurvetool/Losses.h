#pragma once

#include "Warnings.h"

#include <FCurveInterchange/Conversion.h>

#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace fcurvetool {

struct LossOptions {
    std::string report; ///< a file for it; empty for none
    std::optional<double> frameRate;
    std::optional<double> tolerance;
    std::vector<std::string> settings; ///< NAME=VALUE
};

void AddLossOptions(CLI::App& command, LossOptions& options);

/// One line, with the curve's name.
std::string DescribeLoss(const VEM_FN::FCurveLib::Interchange::Loss& loss);

/// What a conversion loses, from the moment this exists on: in reading and in writing.
class Losses {
public:
    /// UsageError where the options make no sense.
    explicit Losses(const LossOptions& options);

    /// A warning for each loss in reading the file: to be called between reading and writing.
    void tell(const std::string& file, Warnings& warnings) const;
    /// As JSON, where a file was named.
    void writeReport() const;

private:
    std::string m_file;
    VEM_FN::FCurveLib::Interchange::ConversionReport m_report;
    VEM_FN::FCurveLib::Interchange::Conversion m_conversion;
};

} // namespace fcurvetool
