#pragma once

#include "FCurveLib/File.h"
#include "FCurveLib/Stream.h"

#include <memory>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// A stream over a File, which it opens and owns. Exceptions, buffering, limits and what happens when the disk is full
/// are those of File.
class FCURVELIB_API FileStream : public Stream {
public:
    /// As File::Access, one to one; any other value counts as Read.
    enum Access : int { Read = 0, Write = 1, ReadWrite = 2 };

    /// As File::OpenFlags, one to one; other bits are not passed on.
    enum OpenFlags : unsigned { Create = 1, Exclusive = 2, Truncate = 4 };

    /// \name Open and close
    /// @{

    /// A temporary file, deleted at destruction.
    FileStream();
    /// For reading and writing; made when it is missing, never emptied.
    explicit FileStream(const char* path);
    /// Made when it is missing, **for Read too**: pass flags of 0 to read a file that has to be there.
    FileStream(const char* path, Access access);
    FileStream(const char* path, Access access, unsigned flags);
    FileStream(const FileStream&) = delete;
    FileStream& operator=(const FileStream&) = delete;
    ~FileStream() override;
    /// @}

    /// \name As opened
    /// @{
    const char* getPathname() const noexcept;
    Access getAccess() const noexcept;
    unsigned getOpenFlags() const noexcept;
    /// @}

    /// \name Stream
    /// @{
    void readData(void* buffer, int count) override;
    void writeData(const void* buffer, int count) override;
    int getPosition() const override;
    void setPosition(int position) override;

    /// As File::getSize(): by path name, without the bytes that are still held back.
    int getSize() const override;

    /// As File::flush(): whether the system has taken every byte that was written.
    bool flush() noexcept;
    /// @}

private:
    friend class SafeFileSave;

    std::unique_ptr<File> m_file;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
