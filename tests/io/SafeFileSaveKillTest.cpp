// A process that saves one document after another is killed at random moments. FCURVELIB_KILLS says how often.

#include "FCurveLib/SafeFileSave.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <new>
#include <random>
#include <string>

#include <csignal>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace VEM_FN::FCurveLib;
namespace fs = std::filesystem;

namespace {

// What the saving process tells: the number of the document that it began to save, and of the last one that it did.
struct Progress {
    std::atomic<int> begun{0};
    std::atomic<int> finished{0};
};

// Different in length and in every line from its neighbours.
std::string document(int number) {
    std::string text;
    const std::string line = "document " + std::to_string(number) + '\n';
    while (text.size() < 100000u + static_cast<unsigned>(number % 7) * 10000u) text += line;
    return text + "end\n";
}

void saveDocument(const std::string& target, int number) {
    const std::string text = document(number);
    SafeFileSave save(target.c_str());
    for (std::size_t at = 0; at < text.size(); at += 1000) {
        save.getStream()->writeData(text.data() + at, static_cast<int>(std::min<std::size_t>(1000, text.size() - at)));
    }
    save.finish();
}

[[noreturn]] void saveForEver(const std::string& target, Progress& progress, int number) {
    try {
        for (;; ++number) {
            progress.begun = number;
            saveDocument(target, number);
            progress.finished = number;
        }
    } catch (...) {
        ::_exit(1);
    }
}

} // namespace

TEST(SafeFileSaveKill, LeavesTheOldOrTheNewDocument) {
    const char* const asked = std::getenv("FCURVELIB_KILLS");
    const int kills = asked ? std::atoi(asked) : 50;
    const TempFolder folder;
    const std::string target = folder.file("target");
    writeWholeFile(target, document(0));

    // The moments lie within about two saves, however long the device takes for one.
    constexpr int kTimed = 5;
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < kTimed; ++i) saveDocument(target, 0);
    const std::chrono::duration<double, std::micro> time = std::chrono::steady_clock::now() - begin;
    std::uniform_real_distribution<double> moment(0, 500 + 2 * time.count() / kTimed);

    void* const shared = ::mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(shared, MAP_FAILED);
    auto& progress = *new (shared) Progress;
    std::mt19937 random(11);
    int inWorkingFile = 0;
    for (int kill = 0; kill < kills; ++kill) {
        const int first = progress.finished + 1;
        const pid_t saver = ::fork();
        ASSERT_NE(saver, -1);
        if (saver == 0) saveForEver(target, progress, first);
        ::usleep(static_cast<useconds_t>(moment(random)));
        ::kill(saver, SIGKILL);
        int status = 0;
        ASSERT_EQ(::waitpid(saver, &status, 0), saver);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the saver failed by itself";

        const bool there = fs::exists(target);
        const std::string found = readWholeFile(there ? target : target + ".tmp");
        const int begun = std::max<int>(progress.begun, first - 1);
        if (!there) {
            ++inWorkingFile;
            ASSERT_TRUE(found == document(begun)) << "the target is gone, and the working file is not whole";
            fs::rename(target + ".tmp", target);
        } else if (found != document(progress.finished)) {
            ASSERT_TRUE(found == document(begun)) << "neither the old nor the new document";
        }
        if (found == document(begun)) progress.finished = begun;
        fs::remove(target + ".tmp");
    }
    RecordProperty("saves", progress.finished);
    RecordProperty("foundInWorkingFile", inWorkingFile);
    EXPECT_GE(progress.finished, kills / 10) << "killed too early to see a save";
    progress.~Progress();
    ::munmap(shared, sizeof(Progress));
}
