#pragma once

#include <stdexcept>
#include <string>

namespace fcurvetool {

/// The input cannot be used, or the output not written. The text is the line for the user, without the tool's name; the
/// tool ends with exit code 1.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The command line asks for something that makes no sense. Exit code 2.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace fcurvetool
