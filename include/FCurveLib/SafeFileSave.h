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
/// **The working file.** When the target is missing, the working file is the target itself. Otherwise it is the
/// target's name followed by ".tmp", or by ".tmp2", ".tmp3" and so on: the first name that no file has. It is readable
/// and writable by its owner only, and stays so as the target: permissions, owner, links and a symbolic link of the old
/// target are not carried over.
///
/// **What finish() does,** in this order: writes what the stream holds back and waits until the system has put it on
/// the device; closes the file; deletes the old target (deliberate: before the rename, also where renaming would
/// replace it at once); renames the working file. When the first two fail, the working file is deleted and the target
/// is not touched: writes that failed unnoticed never end up as the target.
///
/// **What survives which failure.** T is the target, T.tmp stands for the working file beside a T that existed.
///
///     Failure                                    T existed                              T is new
///     ----------------------------------------   ------------------------------------   ------------------
///     constructor raises                         old T                                  nothing
///     destroyed without finish()                 old T                                  nothing
///     killed before finish()                     old T, a part in T.tmp                 a part in T (!)
///     killed in finish(), before the deletion    old T, a part or all in T.tmp          a part or all in T
///     killed between deletion and rename         no T (!), all of the new in T.tmp      -
///     killed later                               new T                                  new T
///     power lost                                 as killed then or a moment before;     a part or all in T
///                                                a T.tmp that lost its T is whole
///     disk full, quota, device error             old T; CantFinish                      nothing; CantFinish
///     directory read-only                        old T; File::AccessError at once       the same, nothing
///     T read-only, directory writable            new T: the directory decides           -
///     T is a directory                           T, all of the new in T.tmp;            -
///                                                CantFinish
///     rename fails                               no T (!), all of the new in T.tmp;     -
///                                                CantFinish
///     working file deleted or moved by others    no T (!); CantFinish                   no T, unnoticed
///     another file has taken its name            that one becomes T, unnoticed          that one, unnoticed
///
/// A T.tmp that a killed save left behind is neither written to nor deleted by a later one, which takes the next name.
/// A host may offer it for recovery. Do not change the current directory between construction and the end when path is
/// relative: finish() would delete and rename what has those names in the new one.
///
/// **Two savers at once** work in files of their own. The one that finishes last is the target, whole. The delete and
/// rename of one are not atomic towards the other: T can be missing for a moment. Where the target was new, the first
/// saver's file is T itself and the second one replaces it, for good: the first one's finish() or end leaves that
/// alone.
///
/// One object must not be used by two threads at once.
class FCURVELIB_API SafeFileSave {
public:
    /// The written file could not be made the target: see the table for what is where.
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
