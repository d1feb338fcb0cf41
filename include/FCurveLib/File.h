#pragma once

#include "FCurveLib/Exception.h"
#include "FCurveLib/Export.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

class SafeFileSave;

/// A file of the file system, open from construction to destruction: a thin wrapper of a C stdio handle.
///
/// It is not a Stream; FileStream makes one of it.
///
/// Written bytes gather in 64 KiB and go to the system when these are full, at flush(), setPosition(), the first read
/// after them, and destruction. Interrupted calls are repeated, short ones continued; reads and writes may follow each
/// other in any order. Positions are signed 32-bit; docs/streams.md tells what longer files do.
///
/// writeData() does not raise when the system takes no more bytes, deliberate: the failure is remembered instead. From
/// then on nothing further is written, flush() returns false, and setPosition() and readData() raise the base
/// Exception. Who needs to know asks flush() at the end; SafeFileSave does.
///
/// One File must not be used by two threads at once; separate ones are independent. A null path counts as empty.
class FCURVELIB_API File {
public:
    /// What the file is opened for.
    enum Access : int { Read = 0, Write = 1, ReadWrite = 2 };

    /// How it is opened; flags combine. Other bits are ignored.
    enum OpenFlags : unsigned {
        Create = 1,    ///< made, empty, when it is missing; readable and writable by its owner only
        Exclusive = 2, ///< with Create: FileExists when it is there (a symbolic link too); nothing without Create
        Truncate = 4,  ///< emptied; without it a file opened for writing keeps its bytes until they are overwritten
    };

    /// \name Exceptions
    /// @{

    /// What the others derive from. Deliberate: its text ends in "File::Exception", not in the class's name.
    class FCURVELIB_API FileException : public Exception {
    public:
        const char* what() const noexcept override;
    };
    /// The file cannot be opened, for a reason that has no class of its own.
    class FCURVELIB_API CantOpen : public FileException {
    public:
        const char* what() const noexcept override;
    };
    /// Opened with Create and Exclusive, and there already.
    class FCURVELIB_API FileExists : public FileException {
    public:
        const char* what() const noexcept override;
    };
    /// The file, or the directory that it should be in, is missing.
    class FCURVELIB_API FileDoesntExist : public FileException {
    public:
        const char* what() const noexcept override;
    };
    /// No permission; Truncate with Read; a read or a write that the access given at opening does not include.
    class FCURVELIB_API AccessError : public FileException {
    public:
        const char* what() const noexcept override;
    };
    /// For hosts: nothing in the library raises it.
    class FCURVELIB_API ReadError : public FileException {
    public:
        const char* what() const noexcept override;
    };
    /// For hosts: nothing in the library raises it.
    class FCURVELIB_API WriteError : public FileException {
    public:
        const char* what() const noexcept override;
    };
    /// Fewer bytes than asked for; a position past the end; a write past 2^31-1 bytes or of a negative count.
    class FCURVELIB_API EndOfFile : public FileException {
    public:
        const char* what() const noexcept override;
    };
    /// @}

    /// \name Open and close
    /// A missing file or directory raises FileDoesntExist, a missing permission AccessError, a file that Exclusive
    /// forbids FileExists, all else CantOpen. A constructor that raises leaves no descriptor open and, unless Create
    /// was given without Exclusive, no new file. A directory can be opened for reading, where the system allows that;
    /// reading it raises EndOfFile.
    /// @{

    /// A new temporary file in the current directory, for reading and writing, under a name of its own ("tmp" and six
    /// characters). Destruction deletes it by that name: do not change the current directory meanwhile.
    File();
    /// For reading and writing; made when it is missing, never emptied.
    explicit File(const char* path);
    /// Made when it is missing, for Read too; never emptied.
    File(const char* path, Access access);
    /// flags combines OpenFlags. An access other than the three values counts as Read.
    /// Truncate with Read raises AccessError (after the file was opened, and with Create made).
    File(const char* path, Access access, unsigned flags);
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    /// Writes what is held back and closes. Errors are lost: ask flush() before.
    ~File();
    /// @}

    /// \name As opened
    /// @{
    const char* getPathname() const noexcept { return m_pathname.c_str(); }
    Access getAccess() const noexcept { return m_access; }
    unsigned getOpenFlags() const noexcept { return m_flags; }
    /// @}

    /// \name Position
    /// @{

    /// Bytes from the file's beginning, those held back included. Raises the base Exception when the file has no
    /// positions (a pipe, a terminal).
    int getPosition() const {
        if (!m_seekable) raiseException();
        return m_start + m_next;
    }

    /// Writes what is held back, then goes to position, at most getSize(). Raises EndOfFile past that, the base
    /// Exception for a negative position and when flushing, asking for the size or seeking fails. The position is
    /// unchanged when it raises. A position among the bytes that were read ahead is taken without asking for anything.
    void setPosition(int position);

    /// The length that the file system reports for the path name: not of the open file, should it have been renamed or
    /// replaced, and without the bytes that are held back (deliberate; setPosition() and flush() hand them over).
    /// Raises the base Exception when the system reports none, or one beyond 2^31-1.
    int getSize() const;
    /// @}

    /// \name Transfer
    /// Small ones cost a copy: no lock, no system call.
    /// @{

    /// Reads count bytes; none when count is below 1. Raises AccessError when opened for Write, whatever the count;
    /// EndOfFile when nothing more comes (the bytes that came are in buffer, and the position is after them), also for
    /// an error of the device.
    void readData(void* buffer, int count) {
        if (count > 0 && count <= m_readEnd - m_next) {
            std::memcpy(buffer, m_buffer.get() + m_next, static_cast<std::size_t>(count));
            m_next += count;
        } else {
            refill(static_cast<char*>(buffer), count);
        }
    }

    /// Writes count bytes; none when count is 0. Raises AccessError when opened for Read, whatever the count; EndOfFile
    /// when count is negative or leads past 2^31-1. Does not raise when the system refuses the bytes: see the class.
    void writeData(const void* buffer, int count) {
        if (count > 0 && count <= m_writeEnd - m_next) {
            std::memcpy(m_buffer.get() + m_next, buffer, static_cast<std::size_t>(count));
            m_next += count;
        } else {
            writeOut(static_cast<const char*>(buffer), count);
        }
    }

    /// Hands what is held back to the system. Returns whether the system has taken every byte that was ever written to
    /// this File; once false, always false. It says nothing about a crash of the system itself.
    bool flush() noexcept;
    /// @}

private:
    friend class SafeFileSave;

    enum class Mode { Idle, Reading, Writing };

    [[noreturn]] static void raiseException();
    void adopt(int descriptor, const char* mode);
    void refill(char* buffer, int count);
    void writeOut(const char* buffer, int count);
    int fetch(char* buffer, int count) noexcept;
    void put(const char* buffer, int count) noexcept;
    void drain() noexcept;
    void seek(int position);
    bool isAtPathname() const noexcept;
    bool sync() noexcept;
    bool close() noexcept;

    std::FILE* m_handle = nullptr;
    std::string m_pathname;
    Access m_access;
    unsigned m_flags;
    bool m_temporary = false;
    bool m_seekable = false;
    bool m_lost = false; // the system has refused bytes

    // The position is m_start + m_next at any time. While reading, the handle stands at m_start + m_readEnd and the
    // bytes from m_next on are read ahead; while writing it stands at m_start and the bytes up to m_next are held back.
    // The ends are 0 outside their mode, and never let the position pass 2^31-1.
    Mode m_mode = Mode::Idle;
    int m_start = 0;
    int m_next = 0;
    int m_readEnd = 0;
    int m_writeEnd = 0;
    std::unique_ptr<char[]> m_buffer;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
