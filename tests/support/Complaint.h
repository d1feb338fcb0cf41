#pragma once

// What an exception of a format says, as one short text.

#include "FCurveLib/FCurveLib.h"

#include <gtest/gtest.h>

#include <string>

namespace Test {

using namespace VEM_FN::FCurveLib;

/// What reading or writing raises, without its scope, which is "XMLFormat", say: "RaggedRow 2:4" by line and column,
/// "BadAttribute 2:5 x" with the name that XML's exceptions carry, "BadValue at 53" by offset; "" for nothing. What is
/// no FormatError passes.
template<class Act>
std::string ComplaintOf(const char* scope, const Act& act) {
    try {
        act();
    } catch (const FormatError& error) {
        EXPECT_STRNE(error.message(), "");
        const std::string what = error.what();
        const std::string prefix = "VEM_FN::FCurveLib::" + std::string(scope) + "::";
        EXPECT_EQ(what.substr(0, prefix.size()), prefix);
        std::string text = what.substr(prefix.size());
        if (const auto* binary = dynamic_cast<const BinaryFormat::BinaryError*>(&error)) {
            EXPECT_EQ(error.line(), 0U);
            return text + " at " + std::to_string(binary->offset());
        }
        text += ' ' + std::to_string(error.line()) + ':' + std::to_string(error.column());
        if (const auto* xml = dynamic_cast<const XMLFormat::XMLError*>(&error)) {
            if (*xml->name()) text += std::string(" ") + xml->name();
        }
        return text;
    }
    return "";
}

} // namespace Test
