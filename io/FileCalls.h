#pragma once

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
};

// Changed by tests only, and never while a file is in use.
extern FileCalls fileCalls;

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
