#pragma once

#include <cerrno>
#include <cstddef>
#include <cstdio>

#include <sys/stat.h>
#include <sys/types.h>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

// Every call of the C library that the files make: the one place to port, and the seam where tests let them fail.
// Results and errno are those of the calls that are named beside each.
struct FileCalls {
    int (*openPath)(const char* path, int flags, mode_t permissions);        // open
    int (*openTemporary)(char* pattern);                                     // mkostemp
    int (*changeSize)(int descriptor, off_t size);                           // ftruncate
    std::FILE* (*wrap)(int descriptor, const char* mode);                    // fdopen
    int (*closeDescriptor)(int descriptor);                                  // close
    int (*dropBuffer)(std::FILE* handle);                                    // setvbuf, unbuffered
    std::size_t (*read)(char* buffer, std::size_t count, std::FILE*);        // fread
    std::size_t (*write)(const char* buffer, std::size_t count, std::FILE*); // fwrite
    int (*flush)(std::FILE* handle);                                         // fflush
    int (*seek)(std::FILE* handle, off_t position);                          // fseeko, from the start
    off_t (*tell)(std::FILE* handle);                                        // ftello
    int (*sync)(std::FILE* handle);                                          // fsync
    int (*closeHandle)(std::FILE* handle);                                   // fclose
    int (*statusOfPath)(const char* path, struct stat* status);              // stat
    int (*statusOfHandle)(std::FILE* handle, struct stat* status);           // fstat
    int (*removePath)(const char* path);                                     // unlink
    int (*renamePath)(const char* from, const char* to);                     // rename

    // In a folder that is open, by descriptors. What the system reads and writes may be less than what was asked for.
    int (*openIn)(int folder, const char* path, int flags, mode_t permissions);       // openat
    int (*statusIn)(int folder, const char* name, struct stat* status);               // fstatat, not of a link's target
    ssize_t (*linkIn)(int folder, const char* name, char* target, std::size_t size);  // readlinkat
    int (*mayWriteIn)(int folder, const char* name);                                  // faccessat
    int (*removeIn)(int folder, const char* name);                                    // unlinkat
    int (*renameIn)(int folder, const char* from, const char* to);                    // renameat
    int (*statusOf)(int descriptor, struct stat* status);                             // fstat
    int (*changeOwner)(int descriptor, uid_t owner, gid_t group);                     // fchown
    int (*changeMode)(int descriptor, mode_t mode);                                   // fchmod
    int (*copyAccessList)(const char* from, int to);                                  // see FileCalls.cpp
    ssize_t (*readBytes)(int descriptor, void* bytes, std::size_t count);             // read
    ssize_t (*readBytesAt)(int descriptor, void* bytes, std::size_t count, off_t at); // pread
    ssize_t (*writeBytes)(int descriptor, const void* bytes, std::size_t count);      // write
    ssize_t (*writeBytesAt)(int descriptor, const void* bytes, std::size_t count, off_t at); // pwrite
    int (*syncDescriptor)(int descriptor);                                                   // fsync
};

// Calls until no signal interrupts it.
template<class Call>
auto Repeat(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR) result = call();
    return result;
}

// Changed by tests only, and never while a file is in use.
extern FileCalls fileCalls;

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
