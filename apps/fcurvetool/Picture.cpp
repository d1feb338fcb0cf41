#include "Picture.h"

#include "Failure.h"
#include "Files.h"
#include "Input.h"
#include "Text.h"

#include <FCurveLib/FormatFactory.h>
#include <FCurveLib/LoadFile.h>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <sstream>

namespace fcurvetool {

using namespace VEM_FN::FCurveLib;
namespace fs = std::filesystem;

namespace {

constexpr const char* kConverter = "rsvg-convert";

std::string ExtensionOf(const std::string& path) {
    return path == "-" ? "" : LowerCase(fs::path(path).extension().string());
}

bool HasConverter() {
    const char* const path = std::getenv("PATH");
    std::istringstream folders(path ? path : "");
    for (std::string folder; std::getline(folders, folder, ':');)
        if (::access((fs::path(folder) / kConverter).c_str(), X_OK) == 0) return true;
    return false;
}

bool HoldsCurves(const std::string& path) {
    std::error_code ignored;
    if (path == "-" || !fs::is_regular_file(path, ignored)) return false;
    MemoryStream bytes = LoadFile(path.c_str());
    return bytes.getSize() > 0 && FormatFactory::getReader(bytes);
}

std::string ConvertToPng(const std::string& svg) {
    const auto fail = [] { throw Failure(std::string(kConverter) + " failed"); };
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> input(std::tmpfile(), std::fclose);
    std::array<int, 2> pipe{};
    if (!input || std::fwrite(svg.data(), 1, svg.size(), input.get()) != svg.size() || std::fflush(input.get()) != 0
        || ::lseek(::fileno(input.get()), 0, SEEK_SET) != 0 || ::pipe(pipe.data()) != 0)
        fail();
    ::posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, ::fileno(input.get()), STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, pipe[1], STDOUT_FILENO);
    ::posix_spawn_file_actions_addclose(&actions, pipe[0]);
    std::string name = kConverter;
    std::string format = "--format=png";
    const std::array<char*, 3> arguments = {name.data(), format.data(), nullptr};
    ::pid_t child = -1;
    const int error = ::posix_spawnp(&child, kConverter, &actions, nullptr, arguments.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(pipe[1]);
    std::string png;
    std::array<char, 65536> piece;
    for (::ssize_t count = 0; error == 0 && (count = ::read(pipe[0], piece.data(), piece.size())) > 0;)
        png.append(piece.data(), static_cast<std::size_t>(count));
    ::close(pipe[0]);
    int status = -1;
    if (error != 0 || ::waitpid(child, &status, 0) != child || status != 0 || png.empty()) fail();
    return png;
}

} // namespace

std::string DrawPicture(const std::vector<DrawnCurve>& curves, const DrawOptions& options) {
    try {
        return DrawCurves(curves, options);
    } catch (const BadPictureSize& error) {
        throw UsageError("--size: too little room here, take at least " + ToBriefText(error.leastWidth()) + "x"
                         + ToBriefText(error.leastHeight()));
    }
}

void CheckPicture(const std::string& path, const std::vector<std::string>& curveFiles) {
    const std::string extension = ExtensionOf(path);
    if (!extension.empty() && extension != ".svg" && extension != ".png")
        throw UsageError(ToPrintable(path) + ": pictures are written as .svg or .png");
    if (extension == ".png" && !HasConverter())
        throw UsageError(ToPrintable(path) + ": writing .png takes " + kConverter
                         + ", which is not installed; write .svg");
    const bool isCurveFile = std::any_of(curveFiles.begin(), curveFiles.end(), [&](const std::string& file) {
        return path != "-" && (file == path || IsSameFile(file, path));
    });
    if (isCurveFile || HoldsCurves(path))
        throw UsageError(ToPrintable(path) + " is a file of curves; a picture would replace it");
}

void WritePicture(const std::string& svg, const std::string& path) {
    WriteFile(path, ExtensionOf(path) == ".png" ? ConvertToPng(svg) : svg);
}

} // namespace fcurvetool
