#include "Files.h"

#include "Failure.h"
#include "Text.h"

#include <FCurveLib/FileReplacement.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace fcurvetool {

using namespace VEM_FN::FCurveLib;
namespace fs = std::filesystem;

void Print(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0)
        throw Failure("<stdout>: cannot be written: " + std::generic_category().message(errno));
}

void WriteFile(const std::string& path, std::string_view text) {
    if (path == "-") return Print(text);
    FileReplacement file(path.c_str());
    Append(file.getStream(), text);
    file.finish();
}

std::string Describe(const LoadError& error) {
    return ToPrintable(error.path()) + ": cannot be read: " + error.text();
}

std::string Describe(const SaveError& error) {
    std::string text = ToPrintable(error.path())
                       + (error.content() == SaveError::New ? ": written, but may not outlast a loss of power: "
                                                            : ": cannot be written: ")
                       + error.text();
    if (*error.workingPath())
        text += (error.workingContent() == SaveError::New ? "; what was to be written is in " : "; a part stayed in ")
                + ToPrintable(error.workingPath());
    return text;
}

void Append(Stream& stream, std::string_view text) {
    constexpr std::size_t kPiece = 1 << 20;
    for (; !text.empty(); text.remove_prefix(std::min(kPiece, text.size())))
        stream.writeData(text.data(), static_cast<int>(std::min(kPiece, text.size())));
}

bool IsSameFile(const std::string& a, const std::string& b) {
    std::error_code ignored;
    return a != "-" && b != "-" && fs::equivalent(a, b, ignored);
}

namespace {

fs::path WholePath(const std::string& path) {
    std::error_code ignored;
    return fs::weakly_canonical(fs::absolute(path, ignored), ignored);
}

} // namespace

bool IsSamePlace(const std::string& a, const std::string& b) {
    std::error_code ignored;
    if (a == "-" || b == "-") return a == b;
    if (fs::exists(a, ignored) && !fs::is_regular_file(a, ignored)) return false; // a device takes both
    return IsSameFile(a, b) || WholePath(a) == WholePath(b);
}

void RefuseInput(const std::string& output, const std::vector<std::string>& inputs, const std::string& advice) {
    for (const std::string& input : inputs)
        if (IsSameFile(output, input) && fs::is_regular_file(output))
            throw UsageError(ToPrintable(output) + " is the input, too; " + advice);
}

} // namespace fcurvetool
