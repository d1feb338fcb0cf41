#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/FileError.h"
#include "FCurveLib/Stream.h"

#include <memory>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// Writes a file so that its path leads to the old file or to the new one, each whole, at every moment and after every
/// failure: what SaveCurves saves through, for documents of a host's own.
///
///     FileReplacement file("walk.json");
///     file.getStream().writeData(text.data(), size);
///     file.finish();                                  // without it, the old file stays
///
/// The bytes go to a working file beside the path, which finish() puts on the device and renames over the old file.
/// Permissions are kept, owner and group where the system allows it; of a symbolic link the file that it leads to is
/// replaced, and one that may not be written is not. Pipes and devices are written straight, in order. docs/saving.md
/// tells what is where after which failure.
///
/// Opening a pipe waits for its reader; SIGPIPE is the host's business. The current directory may change meanwhile. One
/// object must not be used by two threads at once; of two replacements of one file, the last to finish is the file.
class FCURVELIB_API FileReplacement {
public:
    /// Opens the working file. Raises SaveError, and nothing has been made then. A null path counts as empty.
    explicit FileReplacement(const char* path);
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;
    /// Without finish(): deletes the working file.
    ~FileReplacement();

    /// The file that is replaced, links followed, as the errors name it.
    const char* getPath() const noexcept;

    /// Until sync() or finish(). It raises SaveError when the system takes no more bytes, and when they would be more
    /// than 2^31-1; the working file is gone then, and everything here raises the same again. What a stream cannot do
    /// (a position past the end, going back in a pipe) raises StreamException and changes nothing.
    Stream& getStream() noexcept;

    /// Writes what is held back and waits until the device has it. finish() does it, too: for those who have something
    /// to do between that and the replacement. Raises SaveError.
    void sync();
    /// Puts the new file in the place of the old one. Raises SaveError. A second call does nothing.
    void finish();

private:
    struct Work;

    std::unique_ptr<Work> m_work;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
