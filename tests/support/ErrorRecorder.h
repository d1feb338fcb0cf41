#pragma once

// Writes down what a parser of expressions says is wrong.

#include "FCurveLib/FCurveLib.h"

#include <string>
#include <vector>

namespace Test {

using namespace VEM_FN::FCurveLib;

inline std::string ErrorText(const std::string& type, const std::string& message, std::size_t position,
                             const std::string& expression) {
    return type + ": " + message + " At " + std::to_string(position) + " of " + expression;
}

struct ErrorRecorder final : FallbackExpressionParser::ErrorCallback {
    void error(const FallbackExpressionParser::Error& e) const override {
        heard.push_back(ErrorText(e.type, e.message, e.position, e.expression));
    }
    mutable std::vector<std::string> heard;
};

} // namespace Test
