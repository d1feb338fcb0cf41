#pragma once

#include "FCurveLib/Exception.h"
#include "FCurveLib/Export.h"
#include "FCurveLib/FileStream.h"

#include <memory>
#include <string>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// Saves a file without leaving a half-written one in its place: the bytes go to a fresh file next to the target, and
/// finish() puts that in the target's place.
///
///     SafeFileSave save("walk.fcrvx");
///     WriteCurves(curves, *save.getStream(), "xml");
///     save.finish();                                  // without it, the target stays what it was
///
/// The working file is the target itself where that is missing. Otherwise it has the target's name followed by ".tmp",
/// or ".tmp2", ".tmp3" and so on: the first that no file has. Its owner alone may read and write it, also as the
/// target.
///
/// finish() waits until the bytes are on the device, closes the file, deletes the old target (deliberate: before the
/// rename, also where renaming would replace it at once) and renames. docs/saving.md tells what survives which
/// failure, two savers at once included. One object must not be used by two threads at once.
class FCURVELIB_API SafeFileSave {
public:
    /// The written file could not be made the target: docs/saving.md tells what is where.
    class FCURVELIB_API CantFinish : public Exception {
    public:
        const char* what() const noexcept override;
    };

    /// Opens the working file. Raises File's exceptions other than FileExists (AccessError, FileDoesntExist for a
    /// missing directory, CantOpen); nothing has been created then. A null path counts as empty.
    explicit SafeFileSave(const char* path);
    SafeFileSave(const SafeFileSave&) = delete;
    SafeFileSave& operator=(const SafeFileSave&) = delete;

    /// Without finish(): closes the working file and deletes it.
    ~SafeFileSave();

    /// The stream to write to; null once finish() was called. Disk errors while writing come out of finish().
    FileStream* getStream() noexcept { return m_stream.get(); }

    /// Puts the written file in the target's place. Raises CantFinish when not every byte reached the disk or the file
    /// could not be renamed. A second call does nothing, after a CantFinish too.
    void finish();

private:
    std::string m_target;
    std::string m_working;
    std::unique_ptr<FileStream> m_stream;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
