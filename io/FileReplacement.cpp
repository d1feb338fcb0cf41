#include "FCurveLib/FileReplacement.h"

#include "io/Descriptor.h"
#include "io/FileCalls.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <string>
#include <utility>

#include <fcntl.h>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Descriptor;
using Private::fileCalls;
using Private::Repeat;

namespace {

constexpr int kBufferSize = 64 * 1024;
constexpr int kMostLinks = 40;     // as Linux
constexpr int kMostNames = 100000; // of working files that others left

// Not an error: this kind of file has nothing to wait for, or no permissions.
bool IsUnsupported(int error) {
    return error == EINVAL || error == ENOSYS || error == ENOTSUP;
}

// At most that many bytes of a name, without cutting a character of UTF-8.
std::string Cut(const std::string& name, std::size_t size) {
    while (size > 0 && (static_cast<unsigned char>(name[size]) & 0xC0U) == 0x80U) --size;
    return name.substr(0, size);
}

} // namespace

// The file from opening to the end, and the stream to write to.
struct FileReplacement::Work final : Stream {
    explicit Work(const std::string& to);
    Work(const Work&) = delete;
    Work& operator=(const Work&) = delete;
    ~Work() override;

    void readData(void* buffer, int count) override;
    void writeData(const void* buffer, int count) override;
    int getPosition() const override { return m_start + m_held; }
    void setPosition(int position) override;
    int getSize() const override { return std::max(m_size, m_start + m_held); }

    void sync();
    void finish();

    std::string path;

private:
    enum class State { Open, Synced, Finished, Failed };

    bool isStraight() const noexcept { return m_workingName.empty(); }
    SaveError::Content before() const noexcept { return m_isAbsent ? SaveError::Nothing : SaveError::Old; }
    std::string workingPath() const { return path.substr(0, path.size() - m_name.size()) + m_workingName; }

    void locate(const std::string& to);
    void openFolder(const std::string& folder);
    void makeWorkingFile();
    void takeOverPermissions();
    void requireOpen() const;
    void flush();
    int lookForWorkingFile() const noexcept;
    bool removeWorkingFile() noexcept;
    [[noreturn]] void fail(int error);

    State m_state = State::Open;
    std::shared_ptr<const SaveError> m_error; // of a failure, to raise it again
    Descriptor m_folder;
    std::string m_name;        // in the folder
    std::string m_workingName; // likewise; empty where the file is written straight, and once it is gone
    Descriptor m_file;
    bool m_existed = false;
    bool m_isAbsent = false; // for certain
    bool m_syncsFolder = true;
    struct stat m_old {};
    struct stat m_new {};

    // The position is m_start + m_held; that many bytes wait to be written.
    std::unique_ptr<char[]> m_buffer{new char[kBufferSize]};
    int m_start = 0;
    int m_held = 0;
    int m_size = 0;
};

FileReplacement::Work::Work(const std::string& to) : path(to) {
    struct stat status {};
    const bool exists = fileCalls.statusOfPath(to.c_str(), &status) == 0;
    const int error = exists ? 0 : errno;
    m_isAbsent = error == ENOENT || error == ENOTDIR || error == ELOOP || error == ENAMETOOLONG;
    if (!exists && error != ENOENT) fail(error);
    if (exists && S_ISDIR(status.st_mode)) fail(EISDIR);
    if (exists && !S_ISREG(status.st_mode)) {
        m_file.reset(
            Repeat([&] { return fileCalls.openIn(AT_FDCWD, to.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC, 0); }));
        if (m_file.get() == -1) fail(errno);
        return;
    }
    locate(to);
    // What no name leads to cannot be replaced: a deleted file that a process still has open.
    if (exists && !m_existed) fail(ENOENT);
    m_isAbsent = !m_existed;
    if (m_existed && fileCalls.mayWriteIn(m_folder.get(), m_name.c_str()) != 0) fail(errno);
    makeWorkingFile();
}

FileReplacement::Work::~Work() {
    if (m_state != State::Finished) removeWorkingFile();
}

// Follows symbolic links to the folder and the name of a file, or of nothing.
void FileReplacement::Work::locate(const std::string& to) {
    std::string rest = to;
    std::string here; // what leads to the folder that is open
    for (int links = 0;; ++links) {
        const std::size_t slash = rest.rfind('/');
        const std::string folder = slash == std::string::npos ? "" : rest.substr(0, slash + 1);
        m_name = rest.substr(folder.size());
        if (folder[0] == '/') here.clear();
        here += folder;
        path = here + m_name;
        if (rest.empty()) fail(ENOENT);
        if (m_name.empty() || m_name == "." || m_name == "..") fail(EISDIR);
        openFolder(folder);

        m_existed = fileCalls.statusIn(m_folder.get(), m_name.c_str(), &m_old) == 0;
        if (!m_existed && errno != ENOENT) fail(errno);
        if (!m_existed || !S_ISLNK(m_old.st_mode)) break;
        m_existed = false;
        if (links == kMostLinks) fail(ELOOP);
        char target[PATH_MAX];
        const ssize_t size = fileCalls.linkIn(m_folder.get(), m_name.c_str(), target, sizeof target);
        if (size < 0) fail(errno);
        rest.assign(target, static_cast<std::size_t>(size));
    }
    if (m_existed && !S_ISREG(m_old.st_mode)) fail(S_ISDIR(m_old.st_mode) ? EISDIR : EINVAL);
}

// From the folder that is open, which is the current one at first.
void FileReplacement::Work::openFolder(const std::string& folder) {
    const int from = m_folder.get() == -1 ? AT_FDCWD : m_folder.get();
    if (from != AT_FDCWD && folder.empty()) return;
    const char* const name = folder.empty() ? "." : folder.c_str();
    int opened = Repeat([&] { return fileCalls.openIn(from, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0); });
#ifdef O_PATH
    // A folder that may be searched and not read cannot be waited for.
    m_syncsFolder = opened != -1;
    if (opened == -1 && errno == EACCES)
        opened = Repeat([&] { return fileCalls.openIn(from, name, O_PATH | O_DIRECTORY | O_CLOEXEC, 0); });
#endif
    if (opened == -1) fail(errno);
    m_folder.reset(opened);
}

void FileReplacement::Work::makeWorkingFile() {
    bool isCut = false;
    for (int attempt = 1;;) {
        const std::string suffix = attempt == 1 ? ".tmp" : ".tmp" + std::to_string(attempt);
        const bool canCut = m_name.size() > suffix.size();
        std::string name = (isCut && canCut ? Cut(m_name, m_name.size() - suffix.size()) : m_name) + suffix;
        m_file.reset(Repeat([&] {
            return fileCalls.openIn(m_folder.get(), name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC,
                                    m_existed ? S_IRUSR | S_IWUSR : 0666);
        }));
        if (m_file.get() != -1) {
            m_workingName = std::move(name);
            break;
        }
        if (errno == EEXIST && attempt < kMostNames) {
            ++attempt;
        } else if (errno == ENAMETOOLONG && !isCut && canCut) {
            isCut = true;
        } else {
            fail(errno);
        }
    }
    if (fileCalls.statusOf(m_file.get(), &m_new) == 0) return;
    const int error = errno;
    fileCalls.removeIn(m_folder.get(), m_workingName.c_str()); // nobody has had the time to put another in its place
    m_workingName.clear();
    m_file.close();
    fail(error);
}

void FileReplacement::Work::takeOverPermissions() {
    if (!m_existed) return;
    bool sameOwner = m_new.st_uid == m_old.st_uid;
    bool sameGroup = m_new.st_gid == m_old.st_gid;
    if (!sameOwner || !sameGroup) {
        const auto change = [this](uid_t owner) {
            return fileCalls.changeOwner(m_file.get(), owner, m_old.st_gid) == 0;
        };
        if (change(m_old.st_uid)) {
            sameOwner = sameGroup = true;
        } else if (!sameGroup) {
            sameGroup = change(static_cast<uid_t>(-1));
        }
    }
    const bool sameList = fileCalls.copyAccessList(path.c_str(), m_file.get()) == 0;
    mode_t mode = m_old.st_mode & static_cast<mode_t>(07777);
    if (!sameOwner) mode &= ~static_cast<mode_t>(S_ISUID);
    if (!sameGroup || !sameList) {
        mode &= ~static_cast<mode_t>(S_ISGID | S_IRWXG);
        mode |= (mode & static_cast<mode_t>(S_IRWXO)) << 3U;
    }
    if (fileCalls.changeMode(m_file.get(), mode) != 0 && errno != EPERM && !IsUnsupported(errno)) fail(errno);
}

// --- the stream ------------------------------------------------------------------------------------------------------

void FileReplacement::Work::requireOpen() const {
    if (m_state == State::Failed) throw SaveError(*m_error);
    if (m_state != State::Open) throw StreamException();
}

void FileReplacement::Work::writeData(const void* buffer, int count) {
    requireOpen();
    if (count < 0) throw StreamException();
    if (count > INT_MAX - getPosition()) fail(EFBIG);
    const char* bytes = static_cast<const char*>(buffer);
    while (count > 0) {
        const int piece = std::min(count, kBufferSize - m_held);
        std::memcpy(m_buffer.get() + m_held, bytes, static_cast<std::size_t>(piece));
        m_held += piece;
        bytes += piece;
        count -= piece;
        if (m_held == kBufferSize) flush();
    }
}

void FileReplacement::Work::flush() {
    for (int written = 0; written < m_held;) {
        const char* const from = m_buffer.get() + written;
        const auto size = static_cast<std::size_t>(m_held - written);
        const ssize_t now = Repeat([&] {
            return isStraight() ? fileCalls.writeBytes(m_file.get(), from, size)
                                : fileCalls.writeBytesAt(m_file.get(), from, size, m_start + written);
        });
        if (now < 0) fail(errno);
        if (now == 0) fail(EIO); // a device that takes nothing and does not say why
        written += static_cast<int>(now);
    }
    m_start += m_held;
    m_held = 0;
    m_size = std::max(m_size, m_start);
}

void FileReplacement::Work::readData(void* buffer, int count) {
    requireOpen();
    if (count < 0 || count > getSize() - getPosition() || (isStraight() && count > 0)) throw StreamException();
    flush();
    auto* const bytes = static_cast<char*>(buffer);
    for (int read = 0; read < count;) {
        const ssize_t now = Repeat([&] {
            return fileCalls.readBytesAt(m_file.get(), bytes + read, static_cast<std::size_t>(count - read),
                                         m_start + read);
        });
        if (now <= 0) fail(now < 0 ? errno : EIO);
        read += static_cast<int>(now);
    }
    m_start += count;
}

void FileReplacement::Work::setPosition(int position) {
    requireOpen();
    if (position == getPosition()) return;
    if (position < 0 || position > getSize() || isStraight()) throw StreamException();
    flush();
    m_start = position;
}

// --- the end ---------------------------------------------------------------------------------------------------------

void FileReplacement::Work::sync() {
    if (m_state == State::Synced || m_state == State::Finished) return;
    requireOpen();
    flush();
    if (!isStraight()) takeOverPermissions();
    if (Repeat([this] { return fileCalls.syncDescriptor(m_file.get()); }) != 0 && !IsUnsupported(errno)) fail(errno);
    m_state = State::Synced;
}

void FileReplacement::Work::finish() {
    if (m_state == State::Finished) return;
    sync();
    if (!isStraight())
        if (const int error = lookForWorkingFile(); error != 0) fail(error); // deleted or moved by somebody
    if (m_file.close() != 0 && errno != EINTR) fail(errno);
    if (isStraight()) {
        m_state = State::Finished;
        return;
    }
    if (fileCalls.renameIn(m_folder.get(), m_workingName.c_str(), m_name.c_str()) != 0) {
        const int error = errno;
        m_state = State::Finished; // it stays: it is all there is of the new file
        throw SaveError(error, path, before(), workingPath(), SaveError::New);
    }
    m_state = State::Finished;
    if (m_syncsFolder && Repeat([this] { return fileCalls.syncDescriptor(m_folder.get()); }) != 0
        && !IsUnsupported(errno))
        throw SaveError(errno, path, SaveError::New);
}

// 0 where the working file's name leads to it, else the system's error.
int FileReplacement::Work::lookForWorkingFile() const noexcept {
    struct stat named {};
    if (fileCalls.statusIn(m_folder.get(), m_workingName.c_str(), &named) != 0) return errno;
    return named.st_dev == m_new.st_dev && named.st_ino == m_new.st_ino ? 0 : ENOENT;
}

// Returns whether there is none any more.
bool FileReplacement::Work::removeWorkingFile() noexcept {
    if (isStraight()) return true;
    int error = lookForWorkingFile();
    if (error == 0 && fileCalls.removeIn(m_folder.get(), m_workingName.c_str()) != 0) error = errno;
    if (error != 0 && error != ENOENT) return false;
    m_workingName.clear();
    return true;
}

// Ends the work.
void FileReplacement::Work::fail(int error) {
    const bool isPart = m_file.get() != -1 && isStraight();
    const std::string working = isStraight() ? "" : workingPath();
    const bool isGone = removeWorkingFile();
    m_error = std::make_shared<const SaveError>(error, path, isPart ? SaveError::Part : before(), isGone ? "" : working,
                                                isGone ? SaveError::Nothing : SaveError::Part);
    m_state = State::Failed;
    throw SaveError(*m_error);
}

// --- the class -------------------------------------------------------------------------------------------------------

FileReplacement::FileReplacement(const char* path) : m_work(std::make_unique<Work>(path ? path : "")) {}
FileReplacement::~FileReplacement() = default;

const char* FileReplacement::getPath() const noexcept {
    return m_work->path.c_str();
}
Stream& FileReplacement::getStream() noexcept {
    return *m_work;
}
void FileReplacement::sync() {
    m_work->sync();
}
void FileReplacement::finish() {
    m_work->finish();
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
