// Every call of the C library behind the files fails at its first, second, ... use, for as long as there is a next one.
// This program compiles the sources of the streams itself, in order to reach the table of those calls.

#include "FCurveLib/FileReplacement.h"
#include "FCurveLib/FileStream.h"
#include "FCurveLib/LoadFile.h"
#include "FCurveLib/SafeFileSave.h"
#include "io/FileCalls.h" // internal: calls that fail
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include <csignal>
#include <cstring>
#include <sys/wait.h>
#include <unistd.h>

using namespace VEM_FN::FCurveLib;
using Private::FileCalls;
namespace fs = std::filesystem;

namespace {

const FileCalls kReal = Private::fileCalls;

enum class Way {
    Once,  // one use fails
    Stays, // it and all later ones
    Short, // a transfer stops half-way, without an error
    Fills, // a transfer stops half-way, and all later ones fail: a disk that is full
    Kill,  // the process is killed instead of the call
};

// What fails now, and what was seen.
struct Fault {
    const char* call = nullptr; // null: any
    int use = 0;                // from 1 on
    Way way = Way::Once;
    int error = 0;

    int uses = 0;
    bool happened = false;

    bool isDue(const char* name) {
        if (call && std::strcmp(call, name) != 0) return false;
        ++uses;
        const bool due = way == Way::Stays || way == Way::Fills ? uses >= use : uses == use;
        happened |= due;
        return due;
    }
};
Fault fault;

// Stands in for one call of the table.
template<auto Member>
struct Instead;

template<class Result, class... Arguments, Result (*FileCalls::*Member)(Arguments...)>
struct Instead<Member> {
    static inline const char* name = nullptr;

    static Result call(Arguments... arguments) {
        if (!fault.isDue(name)) {
            if (std::strncmp(name, "sync", 4) == 0) return Result(); // nothing here is about the power
            return (kReal.*Member)(arguments...);
        }
        if (fault.way == Way::Kill) ::raise(SIGKILL);
        if constexpr (sizeof(Result) == sizeof(ssize_t) && sizeof...(Arguments) >= 3) {
            if (fault.way == Way::Short || (fault.way == Way::Fills && fault.uses == fault.use)) {
                return transferHalf(arguments...);
            }
        }
        // What fails to close is closed all the same.
        if (std::strncmp(name, "close", 5) == 0) (kReal.*Member)(arguments...);
        errno = fault.error;
        if constexpr (std::is_pointer_v<Result>) {
            return nullptr;
        } else {
            return static_cast<Result>(std::is_unsigned_v<Result> ? 0 : -1);
        }
    }

    template<class Buffer>
    static std::size_t transferHalf(Buffer buffer, std::size_t count, std::FILE* handle) {
        return (kReal.*Member)(buffer, (count + 1) / 2, handle);
    }
    template<class Buffer, class... At>
    static ssize_t transferHalf(int descriptor, Buffer buffer, std::size_t count, At... at) {
        return (kReal.*Member)(descriptor, buffer, (count + 1) / 2, at...);
    }
    static ssize_t transferHalf(int folder, const char* link, char* target, std::size_t size) {
        return (kReal.*Member)(folder, link, target, size); // of a link, all or nothing
    }
};

template<auto Member>
const char* instead(const char* name) {
    Instead<Member>::name = name;
    Private::fileCalls.*Member = &Instead<Member>::call;
    return name;
}

const char* const kCalls[] = {
    instead<&FileCalls::openPath>("openPath"),
    instead<&FileCalls::openTemporary>("openTemporary"),
    instead<&FileCalls::changeSize>("changeSize"),
    instead<&FileCalls::wrap>("wrap"),
    instead<&FileCalls::closeDescriptor>("closeDescriptor"),
    instead<&FileCalls::dropBuffer>("dropBuffer"),
    instead<&FileCalls::read>("read"),
    instead<&FileCalls::write>("write"),
    instead<&FileCalls::flush>("flush"),
    instead<&FileCalls::seek>("seek"),
    instead<&FileCalls::tell>("tell"),
    instead<&FileCalls::sync>("sync"),
    instead<&FileCalls::closeHandle>("closeHandle"),
    instead<&FileCalls::statusOfPath>("statusOfPath"),
    instead<&FileCalls::statusOfHandle>("statusOfHandle"),
    instead<&FileCalls::removePath>("removePath"),
    instead<&FileCalls::renamePath>("renamePath"),
    instead<&FileCalls::openIn>("openIn"),
    instead<&FileCalls::statusIn>("statusIn"),
    instead<&FileCalls::linkIn>("linkIn"),
    instead<&FileCalls::mayWriteIn>("mayWriteIn"),
    instead<&FileCalls::removeIn>("removeIn"),
    instead<&FileCalls::renameIn>("renameIn"),
    instead<&FileCalls::statusOf>("statusOf"),
    instead<&FileCalls::changeOwner>("changeOwner"),
    instead<&FileCalls::changeMode>("changeMode"),
    instead<&FileCalls::copyAccessList>("copyAccessList"),
    instead<&FileCalls::readBytes>("readBytes"),
    instead<&FileCalls::readBytesAt>("readBytesAt"),
    instead<&FileCalls::writeBytes>("writeBytes"),
    instead<&FileCalls::writeBytesAt>("writeBytesAt"),
    instead<&FileCalls::syncDescriptor>("syncDescriptor"),
};

// Interrupted, these are simply called again.
bool isRepeated(const std::string& call) {
    static const char* const repeated[] = {"openPath",   "openTemporary", "changeSize",    "read",      "write",
                                           "flush",      "sync",          "openIn",        "readBytes", "readBytesAt",
                                           "writeBytes", "writeBytesAt",  "syncDescriptor"};
    return std::find(std::begin(repeated), std::end(repeated), call) != std::end(repeated);
}

std::ptrdiff_t openDescriptors() {
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
}

// The what() of the exception that comes out; empty when none does.
std::string outcomeOf(const std::function<void()>& work) {
    try {
        work();
        return "";
    } catch (const Exception& exception) {
        std::string text = exception.what();
        return text.substr(text.find("FCurveLib::") + 11);
    }
}

class FileFaults : public testing::Test {
protected:
    TempFolder m_folder;
    std::string m_path = m_folder.file("file");
    std::string m_working = m_path + ".tmp";
    std::string m_link = m_folder.file("link");

    // Lets every call fail at every use, in every way. prepare() makes the folder, work() is what may fail,
    // judge() looks at what is left; each is done anew for each failure.
    void failEverywhere(const std::function<void()>& prepare, const std::function<void()>& work,
                        const std::function<void(const std::string& outcome)>& judge, int least = 20) {
        // No system interrupts for ever.
        const std::pair<Way, int> ways[] = {{Way::Once, ENOSPC}, {Way::Once, EACCES},  {Way::Once, EIO},
                                            {Way::Once, EINTR},  {Way::Stays, ENOSPC}, {Way::Stays, EACCES},
                                            {Way::Stays, EIO},   {Way::Short, 0},      {Way::Fills, ENOSPC}};
        int failures = 0;
        for (const char* const call : kCalls) {
            for (const auto& [way, error] : ways) {
                const bool transfers = std::strncmp(call, "read", 4) == 0 || std::strncmp(call, "write", 5) == 0;
                if ((way == Way::Short || way == Way::Fills) && !transfers) continue;
                m_call = call;
                bool again = true;
                for (int use = 1; again; ++use) {
                    SCOPED_TRACE(std::string(call) + ", use " + std::to_string(use) + ", way "
                                 + std::to_string(static_cast<int>(way)) + ", " + std::strerror(error));
                    clear();
                    prepare();
                    const std::ptrdiff_t descriptors = openDescriptors();
                    fault = Fault{call, use, way, error};
                    const std::string outcome = outcomeOf(work);
                    again = fault.happened;
                    failures += again;
                    m_error = error;
                    m_harmless = !again || way == Way::Short || (error == EINTR && isRepeated(call));
                    fault = Fault();

                    ASSERT_EQ(openDescriptors(), descriptors) << "a descriptor leaks";
                    ASSERT_TRUE(outcome.empty() || !m_harmless) << outcome;
                    judge(outcome);
                    if (HasFailure()) return;
                }
            }
        }
        EXPECT_GT(failures, least) << "the work does not use what should fail";
    }

    void clear() {
        for (const auto& entry : fs::directory_iterator(m_folder.path())) fs::remove(entry.path());
    }

    std::vector<std::string> names() const {
        std::vector<std::string> all;
        for (const auto& entry : fs::directory_iterator(m_folder.path())) {
            all.push_back(entry.path().filename().string());
        }
        return all;
    }

    void save(bool finishes = true) const;

    // What fails takes no byte away.
    bool asksStatus() const { return m_call == "statusOfPath" || m_call == "statusOfHandle"; }
    bool asksOnly() const { return m_call == "tell" || asksStatus(); }

    bool m_harmless = false; // nothing failed, or nothing that anybody may notice
    std::string m_call;      // which call failed
    int m_error = 0;         // and how

    ~FileFaults() override { fault = Fault(); }
};

// Longer than two buffers. Compared as a whole: a difference would fill the log.
const std::string kText = [] {
    std::string text;
    for (int number = 0; text.size() < 140000; ++number) text += std::to_string(number) + '\n';
    return text;
}();

void writeText(Stream& stream) {
    for (std::size_t at = 0; at < kText.size(); at += 1234) {
        stream.writeData(kText.data() + at, static_cast<int>(std::min<std::size_t>(1234, kText.size() - at)));
    }
}

void replace(const std::string& path) {
    FileReplacement file(path.c_str());
    writeText(file.getStream());
    char byte;
    file.getStream().setPosition(70000);
    file.getStream().readData(&byte, 1);
    file.finish();
}

void FileFaults::save(bool finishes) const {
    SafeFileSave save(m_path.c_str());
    writeText(*save.getStream());
    if (finishes) save.finish();
}

} // namespace

TEST_F(FileFaults, AFileReadsAndWritesOrSaysWhy) {
    std::string back;
    bool flushed = false;
    failEverywhere([this] { writeWholeFile(m_path, "what was there before"); },
                   [&] {
                       back.clear();
                       FileStream file(m_path.c_str(), FileStream::ReadWrite, FileStream::Truncate);
                       writeText(file);
                       file.setPosition(0);
                       back.resize(kText.size());
                       file.readData(back.data(), 1000);
                       for (std::size_t at = 1000; at < back.size(); at += 500) {
                           file.readData(back.data() + at,
                                         static_cast<int>(std::min<std::size_t>(500, back.size() - at)));
                       }
                       file.setPosition(7);
                       char byte;
                       file.readData(&byte, 1);
                       if (file.getPosition() != 8) throw Exception();
                       file.writeData("X", 1);
                       flushed = file.flush();
                   },
                   [&](const std::string& outcome) {
                       const std::string onDisk = readWholeFile(m_path);
                       if (outcome.empty()) {
                           std::string edited = kText;
                           edited[8] = 'X';
                           EXPECT_TRUE(back == kText);
                           EXPECT_TRUE(flushed || !m_harmless);
                           EXPECT_TRUE(onDisk == edited || (!flushed && onDisk == kText));
                       } else if (outcome == "Exception" || outcome == "File::EndOfFile") {
                           EXPECT_TRUE(onDisk == kText.substr(0, onDisk.size())) << "not an unbroken beginning";
                           EXPECT_EQ(outcome, m_call == "read" ? "File::EndOfFile" : "Exception");
                       } else { // of opening
                           EXPECT_EQ(outcome, m_error == EACCES ? "File::AccessError" : "File::CantOpen") << m_call;
                           EXPECT_TRUE(onDisk.empty() || onDisk == "what was there before");
                       }
                   });
}

TEST_F(FileFaults, ATemporaryFileGoes) {
    const fs::path before = fs::current_path();
    fs::current_path(m_folder.path());
    failEverywhere([] {},
                   [] {
                       FileStream file;
                       writeText(file);
                       file.setPosition(1000);
                       char byte;
                       file.readData(&byte, 1);
                       if (!file.flush()) throw Exception();
                   },
                   [&](const std::string&) { EXPECT_EQ(names().empty(), m_call != "removePath" || m_harmless); });
    fs::current_path(before);
}

TEST_F(FileFaults, ASaveKeepsTheOldTargetOrInstallsTheNewOne) {
    const auto prepare = [this] { writeWholeFile(m_path, "old"); };
    failEverywhere(
        prepare, [this] { save(); },
        [this](const std::string& outcome) {
            const bool there = fs::exists(m_path);
            const std::string found = readWholeFile(there ? m_path : m_working);
            if (outcome.empty()) {
                EXPECT_TRUE(m_harmless || asksOnly() || m_call == "removePath") << "unnoticed";
                EXPECT_TRUE(there && found == kText);
                EXPECT_FALSE(fs::exists(m_working));
            } else if (m_call == "renamePath") {
                EXPECT_EQ(outcome, "SafeFileSave::CantFinish");
                EXPECT_TRUE(!there && found == kText) << "the new document is in neither place";
            } else {
                EXPECT_TRUE(there && found == "old");
                EXPECT_FALSE(fs::exists(m_working));
            }
        });
    // A new target is whole or not there.
    failEverywhere([] {}, [this] { save(); },
                   [this](const std::string& outcome) {
                       EXPECT_TRUE(!outcome.empty() || m_harmless || asksOnly()) << "unnoticed";
                       EXPECT_EQ(names().empty(), !outcome.empty());
                       EXPECT_TRUE(!outcome.empty() || readWholeFile(m_path) == kText);
                   });
    // What is abandoned leaves nothing.
    failEverywhere(
        prepare, [this] { save(false); },
        [this](const std::string&) {
            EXPECT_EQ(readWholeFile(m_path), "old");
            const bool stays = asksStatus() || m_call == "removePath";
            EXPECT_EQ(fs::exists(m_working), stays && !m_harmless);
        });
}

// What a replacement says and leaves, whatever fails.
TEST_F(FileFaults, AReplacementLeavesTheOldFileOrTheNewOneAndSaysWhich) {
    for (const bool existed : {true, false}) {
        std::shared_ptr<SaveError> error;
        failEverywhere(
            [&] {
                if (existed) writeWholeFile(m_path, "old");
                fs::create_symlink("file", m_link);
                error = nullptr;
            },
            [&] {
                try {
                    replace(m_link);
                } catch (const SaveError& raised) {
                    error = std::make_shared<SaveError>(raised);
                    throw;
                }
            },
            [&](const std::string& outcome) {
                const bool there = fs::exists(m_path);
                const std::string found = there ? readWholeFile(m_path) : "";
                EXPECT_TRUE(found == kText || (existed ? found == "old" : !there)) << "neither old nor new";
                EXPECT_TRUE(fs::is_symlink(m_link));
                if (!error) {
                    EXPECT_EQ(outcome, "");
                    EXPECT_TRUE(found == kText);
                    EXPECT_FALSE(fs::exists(m_working));
                    return;
                }
                EXPECT_EQ(error->code(), m_error);
                EXPECT_TRUE(error->path() == m_path || error->path() == m_link);
                const SaveError::Content content = !there           ? SaveError::Nothing
                                                   : found == kText ? SaveError::New
                                                                    : SaveError::Old;
                if (!asksStatus() && m_call != "statusIn") {
                    EXPECT_EQ(error->content(), content);
                }
                EXPECT_EQ(error->workingPath(), fs::exists(m_working) ? m_working : "");
                if (fs::exists(m_working)) {
                    const std::string left = readWholeFile(m_working);
                    EXPECT_TRUE(error->workingContent() == SaveError::New ? left == kText
                                                                          : left == kText.substr(0, left.size()));
                }
            });
        // What is abandoned leaves nothing, where it can be found and removed.
        failEverywhere(
            [&] {
                if (existed) writeWholeFile(m_path, "old");
            },
            [this] { writeText(FileReplacement(m_path.c_str()).getStream()); },
            [&](const std::string& outcome) {
                EXPECT_EQ(fs::exists(m_path), existed);
                const bool stays = outcome.empty() && (m_call == "statusIn" || m_call == "removeIn");
                EXPECT_TRUE(!fs::exists(m_working) || stays || m_call == "writeBytesAt");
            });
    }
}

TEST_F(FileFaults, AReplacementSaysWhatFailedAndWhatIsLeft) {
    const struct {
        const char* call;
        int use;
        int error;
        const char* message; // "%" is the working file
    } rows[] = {
        {"mayWriteIn", 1, EACCES, "The file cannot be written: Permission denied. It is unchanged."},
        {"writeBytesAt", 2, ENOSPC, "The file cannot be written: No space left on device. It is unchanged."},
        {"renameIn", 1, EBUSY,
         "The file cannot be written: Device or resource busy. It is unchanged. What was to be written is in %."},
        {"syncDescriptor", 2, EIO, "The file was written, but may not outlast a loss of power: Input/output error."},
    };
    for (const auto& row : rows) {
        clear();
        writeWholeFile(m_path, "old");
        fault = Fault{row.call, row.use, Way::Once, row.error};
        std::string message;
        try {
            replace(m_path);
        } catch (const SaveError& error) {
            message = error.message();
        }
        fault = Fault();
        if (const auto place = message.find(m_working); place != message.npos)
            message.replace(place, m_working.size(), "%");
        EXPECT_EQ(message, row.message);
    }
    // It says the same again, and no file system has to have everything.
    writeWholeFile(m_path, "old");
    FileReplacement file(m_path.c_str());
    fault = Fault{"writeBytesAt", 1, Way::Once, ENOSPC};
    EXPECT_THROW(writeText(file.getStream()), SaveError);
    fault = Fault();
    for (int i = 0; i < 2; ++i) {
        EXPECT_THROW(file.getStream().writeData("x", 1), SaveError);
        EXPECT_THROW(file.finish(), SaveError);
    }
    EXPECT_EQ(names(), std::vector<std::string>{"file"});
    for (const auto& [call, error] :
         {std::pair("syncDescriptor", EINVAL), std::pair("changeMode", ENOTSUP), std::pair("changeMode", EPERM)}) {
        fault = Fault{call, 1, Way::Stays, error};
        EXPECT_EQ(outcomeOf([this] { FileReplacement(m_path.c_str()).finish(); }), "") << call;
        fault = Fault();
    }
}

// Where owner, group or access list cannot be kept, no group gets what only another one had.
TEST_F(FileFaults, PermissionsThatCannotBeKeptShrink) {
    const struct {
        const char* call;
        int use;
        mode_t before;
        mode_t after;
    } rows[] = {{"changeOwner", 99, 06751, 06751},
                {"changeOwner", 1, 06751, 0711}, // neither owner nor group
                {"changeOwner", 1, 0640, 0600},
                {"copyAccessList", 1, 0664, 0644}};
    for (const auto& row : rows) {
        clear();
        writeWholeFile(m_path, "old");
        if (::chown(m_path.c_str(), 1234, 1234) != 0) GTEST_SKIP() << "takes an administrator";
        ASSERT_EQ(::chmod(m_path.c_str(), row.before), 0);
        fault = Fault{row.call, row.use, Way::Stays, EPERM};
        EXPECT_EQ(outcomeOf([this] { FileReplacement(m_path.c_str()).finish(); }), "");
        fault = Fault();
        struct stat status {};
        ASSERT_EQ(::stat(m_path.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777U, row.after) << std::oct << row.before;
    }
}

TEST_F(FileFaults, LoadingGivesAllBytesOrRaises) {
    MemoryStream bytes;
    double progress = 0.0;
    failEverywhere([this] { writeWholeFile(m_path, kText); },
                   [&] { bytes = LoadFile(m_path.c_str(), [&](double share) { progress = share; }); },
                   [&](const std::string& outcome) {
                       if (outcome.empty()) {
                           EXPECT_EQ(progress, 1.0);
                           EXPECT_EQ(bytes.getPosition(), 0);
                           EXPECT_TRUE(std::string(bytes.getData(), static_cast<std::size_t>(bytes.getSize()))
                                       == kText);
                       } else {
                           EXPECT_EQ(outcome, "LoadError");
                       }
                   },
                   10);
}

// Kills a save in place of each of its calls, one after another.
TEST_F(FileFaults, AKilledSaveLeavesWhatTheHeaderSays) {
    for (const auto& [existed, replaces] :
         {std::pair(true, false), std::pair(false, false), std::pair(true, true), std::pair(false, true)}) {
        bool killed = true;
        int kills = 0;
        int missing = 0;
        for (int use = 1; killed; ++use) {
            clear();
            if (existed) writeWholeFile(m_path, "old");
            const pid_t saver = ::fork();
            ASSERT_NE(saver, -1);
            if (saver == 0) {
                fault = Fault{nullptr, use, Way::Kill, 0};
                replaces ? replace(m_path) : save();
                ::_exit(0);
            }
            int status = 0;
            ASSERT_EQ(::waitpid(saver, &status, 0), saver);
            killed = WIFSIGNALED(status);
            kills += killed;

            const std::string found = readWholeFile(m_path);
            if (!killed) {
                EXPECT_TRUE(found == kText);
                EXPECT_FALSE(fs::exists(m_working));
            } else if (replaces) {
                const bool there = fs::exists(m_path);
                EXPECT_TRUE(found == kText || (existed ? found == "old" : !there));
                missing += existed && !there;
            } else if (!existed) {
                EXPECT_TRUE(found == kText.substr(0, found.size()));
            } else if (fs::exists(m_path)) {
                EXPECT_EQ(found, "old");
            } else {
                ++missing;
                EXPECT_TRUE(readWholeFile(m_working) == kText);
            }
        }
        EXPECT_GE(kills, 10);
        EXPECT_EQ(missing, existed && !replaces ? 1 : 0) << "there is one moment without a target, and none here";
    }
}
