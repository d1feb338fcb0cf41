#include "io/FileCalls.h"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>
#ifdef __linux__
#include <sys/xattr.h>
#endif

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

namespace {

// Gives an open file the access list of another one, and none where that has none: without the list, the permissions of
// a file that has one would mean more than they did. -1 where the list stays behind.
int CopyAccessList([[maybe_unused]] const char* from, [[maybe_unused]] int to) {
#ifdef __linux__
    static constexpr char kName[] = "system.posix_acl_access";
    char list[4096]; // 8 bytes an entry
    const ssize_t size = ::getxattr(from, kName, list, sizeof list);
    if (size >= 0) return ::fsetxattr(to, kName, list, static_cast<std::size_t>(size), 0);
    if (errno != ENODATA && errno != ENOTSUP) return -1;
    return ::fremovexattr(to, kName) == 0 || errno == ENODATA || errno == ENOTSUP ? 0 : -1;
#else
    return 0;
#endif
}

} // namespace

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
    [](int folder, const char* path, int flags, mode_t permissions) {
        return ::openat(folder, path, flags, permissions);
    },
    [](int folder, const char* name, struct stat* status) {
        return ::fstatat(folder, name, status, AT_SYMLINK_NOFOLLOW);
    },
    ::readlinkat,
    [](int folder, const char* name) { return ::faccessat(folder, name, W_OK, AT_EACCESS); },
    [](int folder, const char* name) { return ::unlinkat(folder, name, 0); },
    [](int folder, const char* from, const char* to) { return ::renameat(folder, from, folder, to); },
    ::fstat,
    ::fchown,
    ::fchmod,
    CopyAccessList,
    ::read,
    ::pread,
    ::write,
    ::pwrite,
    ::fsync,
};

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
