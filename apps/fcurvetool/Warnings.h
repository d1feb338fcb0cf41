#pragma once

#include "NamedCurve.h"

#include <string>
#include <vector>

namespace fcurvetool {

/// What the user should know although the work goes on: lines on standard error.
class Warnings {
public:
    /// \param isStrict warnings are errors
    explicit Warnings(bool isStrict) : m_isStrict(isStrict) {}

    void add(const std::string& text) { m_texts.push_back(text); }
    /// One for each expression of a curve that nobody understands, which therefore evaluates to 0.
    void addUnknownExpressions(const std::vector<NamedCurve>& curves);

    /// Prints what was added since the last call. Called before anything is written: where warnings are errors it then
    /// throws Failure.
    void settle();

private:
    bool m_isStrict;
    std::vector<std::string> m_texts;
};

} // namespace fcurvetool
