#include "io/FileCalls.h"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

FileCalls fileCalls = {
    [](const char* path, int flags, mode_t permissions) { return ::open(path, flags, permissions); },
    [](char* pattern) { return ::mkostemp(pattern, O_CLOEXEC); },
    ::ftruncate,
    ::fdopen,
    ::close,
    [](std::FILE* handle) { return std::setvbuf(handle, nullptr, _IONBF, 0); },
    [](char* buffer, std::size_t count, std::FILE* handle) { return std::fread(buffer, 1, count, handle); },
    [](const char* buffer, std::size_t count, std::FILE* handle) { return std::fwrite(buffer, 1, count, handle); },
    std::fflush,
    [](std::FILE* handle, off_t position) { return ::fseeko(handle, position, SEEK_SET); },
    ::ftello,
    [](std::FILE* handle) { return ::fsync(::fileno(handle)); },
    std::fclose,
    [](const char* path, struct stat* status) { return ::stat(path, status); },
    [](std::FILE* handle, struct stat* status) { return ::fstat(::fileno(handle), status); },
    ::unlink,
    ::rename,
};

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
