#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace fcurvetool {

/// Where a command writes: standard output for "-", else a file. A file comes into being, or is replaced, as a whole by
/// finish(): until then, and when anything fails, what was there stays as it was. What is not a regular file (a pipe, a
/// device) is written to as it is. Failures throw Failure.
class Output {
public:
    explicit Output(const std::string& path);
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;
    ~Output();

    void write(std::string_view text);
    void finish();

private:
    [[noreturn]] void fail(int error) const;

    std::string m_path;
    std::string m_temporary; // empty when written directly
    std::FILE* m_file;
};

} // namespace fcurvetool
