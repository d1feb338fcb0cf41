#include "FCurveLib/FileStream.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace {

File::Access ToFileAccess(FileStream::Access access) {
    switch (access) {
    case FileStream::Write:
        return File::Write;
    case FileStream::ReadWrite:
        return File::ReadWrite;
    case FileStream::Read:
        break;
    }
    return File::Read;
}

} // namespace

FileStream::FileStream() : m_file(std::make_unique<File>()) {}

FileStream::FileStream(const char* path) : m_file(std::make_unique<File>(path)) {}

FileStream::FileStream(const char* path, Access access) : m_file(std::make_unique<File>(path, ToFileAccess(access))) {}

FileStream::FileStream(const char* path, Access access, unsigned flags)
    : m_file(std::make_unique<File>(path, ToFileAccess(access), flags & (Create | Exclusive | Truncate))) {}

FileStream::~FileStream() = default;

const char* FileStream::getPathname() const noexcept {
    return m_file->getPathname();
}

FileStream::Access FileStream::getAccess() const noexcept {
    return static_cast<Access>(m_file->getAccess());
}

unsigned FileStream::getOpenFlags() const noexcept {
    return m_file->getOpenFlags();
}

void FileStream::readData(void* buffer, int count) {
    m_file->readData(buffer, count);
}

void FileStream::writeData(const void* buffer, int count) {
    m_file->writeData(buffer, count);
}

int FileStream::getPosition() const {
    return m_file->getPosition();
}

void FileStream::setPosition(int position) {
    m_file->setPosition(position);
}

int FileStream::getSize() const {
    return m_file->getSize();
}

bool FileStream::flush() noexcept {
    return m_file->flush();
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
