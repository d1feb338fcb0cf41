#include "FCurveLib/File.h"

#include "io/FileCalls.h"

#include <algorithm>
#include <cerrno>
#include <climits>

#include <fcntl.h>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::fileCalls;
using Private::Repeat;

namespace {

constexpr int kCapacity = 64 * 1024;
constexpr unsigned kKnownFlags = File::Create | File::Exclusive | File::Truncate;

[[noreturn]] void RaiseOpenError(int error) {
    switch (error) {
    case ENOENT:
        throw File::FileDoesntExist();
    case EACCES:
        throw File::AccessError();
    case EEXIST:
        throw File::FileExists();
    default:
        throw File::CantOpen();
    }
}

// Empties the file behind the descriptor. The access is what it was opened for.
void TruncateFile(int descriptor, File::Access access) {
    if (access == File::Read) throw File::AccessError();
    if (Repeat([=] { return fileCalls.changeSize(descriptor, 0); }) == 0) return;
    if (errno == EACCES || errno == EINVAL) throw File::AccessError();
    throw File::CantOpen();
}

} // namespace

const char* File::FileException::what() const noexcept {
    return "VEM_FN::FCurveLib::File::Exception";
}
const char* File::CantOpen::what() const noexcept {
    return "VEM_FN::FCurveLib::File::CantOpen";
}
const char* File::FileExists::what() const noexcept {
    return "VEM_FN::FCurveLib::File::FileExists";
}
const char* File::FileDoesntExist::what() const noexcept {
    return "VEM_FN::FCurveLib::File::FileDoesntExist";
}
const char* File::AccessError::what() const noexcept {
    return "VEM_FN::FCurveLib::File::AccessError";
}
const char* File::ReadError::what() const noexcept {
    return "VEM_FN::FCurveLib::File::ReadError";
}
const char* File::WriteError::what() const noexcept {
    return "VEM_FN::FCurveLib::File::WriteError";
}
const char* File::EndOfFile::what() const noexcept {
    return "VEM_FN::FCurveLib::File::EndOfFile";
}

File::File()
    : m_pathname("tmpXXXXXX"), m_access(ReadWrite), m_flags(Create | Exclusive), m_temporary(true),
      m_buffer(new char[kCapacity]) {
    adopt(Repeat([this] { return fileCalls.openTemporary(m_pathname.data()); }), "wb+");
}

File::File(const char* path) : File(path, ReadWrite, Create) {}

File::File(const char* path, Access access) : File(path, access, Create) {}

File::File(const char* path, Access access, unsigned flags)
    : m_pathname(path ? path : ""), m_access(access == Write || access == ReadWrite ? access : Read),
      m_flags(flags & kKnownFlags), m_buffer(new char[kCapacity]) {
    int openFlags = O_CLOEXEC | (m_access == Read ? O_RDONLY : m_access == Write ? O_WRONLY : O_RDWR);
    if (m_flags & Create) openFlags |= m_flags & Exclusive ? O_CREAT | O_EXCL : O_CREAT;
    const int descriptor = Repeat([&] { return fileCalls.openPath(m_pathname.c_str(), openFlags, S_IRUSR | S_IWUSR); });

    // Deliberate: "wb" over an open descriptor does not truncate; only the flag does.
    adopt(descriptor, m_access == Read ? "rb" : m_access == Write ? "wb" : "rb+");
}

File::~File() {
    if (m_handle) close();
    if (m_temporary) fileCalls.removePath(m_pathname.c_str());
}

// Makes the handle of what the system opened (-1: it refused). Whatever fails, nothing stays behind.
void File::adopt(int descriptor, const char* mode) {
    if (descriptor == -1) RaiseOpenError(errno);
    try {
        if (m_flags & Truncate) TruncateFile(descriptor, m_access);
        m_handle = fileCalls.wrap(descriptor, mode);
        if (!m_handle || fileCalls.dropBuffer(m_handle) != 0) RaiseOpenError(errno);
    } catch (...) {
        if (m_handle) {
            fileCalls.closeHandle(m_handle);
        } else {
            fileCalls.closeDescriptor(descriptor);
        }
        const bool madeHere = (m_flags & Create) && (m_flags & Exclusive);
        if (madeHere) fileCalls.removePath(m_pathname.c_str());
        throw;
    }
    m_seekable = fileCalls.tell(m_handle) == 0;
}

void File::raiseException() {
    throw Exception();
}

void File::setPosition(int position) {
    if (position < 0) throw Exception();
    if (m_mode == Mode::Reading && position >= m_start && position - m_start <= m_readEnd) {
        m_next = position - m_start; // within what was read ahead
        return;
    }
    if (!flush()) throw Exception();
    if (position > getSize()) throw EndOfFile();
    seek(position);
}

int File::getSize() const {
    struct stat status;
    if (fileCalls.statusOfPath(m_pathname.c_str(), &status) != 0 || status.st_size > INT_MAX) throw Exception();
    return static_cast<int>(status.st_size);
}

bool File::flush() noexcept {
    if (m_mode == Mode::Writing) {
        drain();
        if (!m_lost && Repeat([this] { return fileCalls.flush(m_handle); }) != 0) m_lost = true;
    }
    return !m_lost;
}

// Reads what the buffer does not hold.
void File::refill(char* buffer, int count) {
    if (m_access == Write) throw AccessError();
    if (count < 1) return;
    if (m_mode == Mode::Writing) {
        if (!flush()) throw Exception();
        seek(m_start + m_next); // C asks for it between writing and reading
    }
    m_mode = Mode::Reading;
    for (;;) {
        const int held = std::min(count, m_readEnd - m_next);
        if (held > 0) std::memcpy(buffer, m_buffer.get() + m_next, static_cast<std::size_t>(held));
        m_next += held;
        buffer += held;
        count -= held;
        if (count == 0) return;

        m_start += m_next;
        m_next = m_readEnd = 0;
        const int limit = INT_MAX - m_start;
        if (count >= kCapacity || !m_seekable) { // a pipe is not read ahead: that would wait for bytes nobody asked for
            const int fetched = fetch(buffer, std::min(count, limit));
            m_start += fetched;
            if (fetched < count) throw EndOfFile();
            return;
        }
        m_readEnd = fetch(m_buffer.get(), std::min(kCapacity, limit));
        if (m_readEnd == 0) throw EndOfFile();
    }
}

// Writes what the buffer has no room for.
void File::writeOut(const char* buffer, int count) {
    if (m_access == Read) throw AccessError();
    if (count < 0 || count > INT_MAX - (m_start + m_next)) throw EndOfFile();
    if (count == 0) return;
    if (m_mode == Mode::Reading) seek(m_start + m_next); // drops what was read ahead; C asks for it, too
    m_mode = Mode::Writing;
    if (count > kCapacity - m_next) drain();
    if (count < kCapacity) {
        std::memcpy(m_buffer.get() + m_next, buffer, static_cast<std::size_t>(count));
        m_next += count;
    } else {
        put(buffer, count);
        m_start += count;
    }
    m_writeEnd = std::min(kCapacity, INT_MAX - m_start);
}

// Reads until count bytes came or no more come; returns how many.
int File::fetch(char* buffer, int count) noexcept {
    int fetched = 0;
    while (fetched < count) {
        errno = 0;
        const std::size_t now = fileCalls.read(buffer + fetched, static_cast<std::size_t>(count - fetched), m_handle);
        const bool interrupted = errno == EINTR;
        fetched += static_cast<int>(now);
        if (fetched < count) std::clearerr(m_handle); // a file at its end may grow
        if (now == 0 && !interrupted) break;
    }
    return fetched;
}

// Writes until the system has taken count bytes or takes no more.
void File::put(const char* buffer, int count) noexcept {
    while (count > 0 && !m_lost) {
        errno = 0;
        const std::size_t now = fileCalls.write(buffer, static_cast<std::size_t>(count), m_handle);
        if (now == 0 && errno != EINTR) m_lost = true;
        buffer += now;
        count -= static_cast<int>(now);
    }
}

// Hands over what is held back.
void File::drain() noexcept {
    put(m_buffer.get(), m_next);
    m_start += m_next;
    m_next = 0;
    m_writeEnd = std::min(kCapacity, INT_MAX - m_start);
}

// Moves the handle. Nothing may be held back.
void File::seek(int position) {
    if (fileCalls.seek(m_handle, position) != 0) throw Exception();
    m_mode = Mode::Idle;
    m_start = position;
    m_next = m_readEnd = m_writeEnd = 0;
}

// Whether the path still names the open file, not one that took its place.
bool File::isAtPathname() const noexcept {
    struct stat named;
    struct stat open;
    return fileCalls.statusOfPath(m_pathname.c_str(), &named) == 0 && fileCalls.statusOfHandle(m_handle, &open) == 0
           && named.st_dev == open.st_dev && named.st_ino == open.st_ino;
}

// Flushes, and has the system put everything on the device. Returns whether all of that worked.
bool File::sync() noexcept {
    if (!flush()) return false;
    if (Repeat([this] { return fileCalls.sync(m_handle); }) == 0) return true;
    return errno == EINVAL || errno == ENOSYS || errno == ENOTSUP; // nothing to ask on this kind of file system
}

// Closes; the File is of no use then. Returns whether the system took every byte, at closing too.
bool File::close() noexcept {
    const bool flushed = flush();
    const bool closed = fileCalls.closeHandle(m_handle) == 0; // not repeated: the descriptor is gone in any case
    m_handle = nullptr;
    return flushed && closed;
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
