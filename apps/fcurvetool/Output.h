#pragma once

#include <FCurveLib/SafeFileSave.h>

#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace fcurvetool {

/// Where a command writes: standard output for "-", else a file. A file comes into being, or is replaced, as a whole by
/// finish(): until then, and when anything fails, what was there stays as it was. It keeps its permissions, and a
/// symbolic link goes on leading to it. What is not a regular file (a pipe, a device) is written to as it is.
///
/// Failures throw Failure.
class Output {
public:
    explicit Output(const std::string& path);
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;
    ~Output();

    void write(std::string_view text);
    void finish();

private:
    [[noreturn]] void fail(const std::string& reason) const;

    std::string m_path;
    std::FILE* m_direct = nullptr;                            // standard output or a device; else
    std::optional<VEM_FN::FCurveLib::SafeFileSave> m_replace; // the regular file
    std::filesystem::perms m_permissions = std::filesystem::perms::unknown;
};

/// Whether both paths lead to one file that exists.
bool IsSameFile(const std::string& a, const std::string& b);

/// UsageError where the output is one of the inputs: no input is replaced unless the user says so.
void RefuseInput(const std::string& output, const std::vector<std::string>& inputs, const std::string& advice);

} // namespace fcurvetool
