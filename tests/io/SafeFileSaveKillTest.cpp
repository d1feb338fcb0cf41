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

    // The number of the document that the saving process began to save, and of the last one that it did.
    void* const shared = ::mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(shared, MAP_FAILED);
    auto* const begun = new (shared) std::atomic<int>[2]();
    std::atomic<int>& finished = begun[1];
    std::mt19937 random(11);
    // More often where the machine is too busy to finish a save now and then.
    for (int kill = 0; kill < kills || (finished < kills / 10 && kill < 10 * kills); ++kill) {
        const int before = finished;
        begun[0] = before;
        const pid_t saver = ::fork();
        ASSERT_NE(saver, -1);
        try {
            while (saver == 0) {
                ++begun[0];
                saveDocument(target, begun[0]);
                finished = begun[0].load();
            }
        } catch (...) {
            ::_exit(1);
        }
        for (int wait = 0; begun[0] == before && wait < 100000; ++wait) ::usleep(20);
        ::usleep(static_cast<useconds_t>(moment(random)));
        ::kill(saver, SIGKILL);
        int status = 0;
        ASSERT_EQ(::waitpid(saver, &status, 0), saver);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the saver failed by itself";

        if (!fs::exists(target)) {
            ASSERT_TRUE(readWholeFile(target + ".tmp") == document(begun[0])) << "target gone, working file not whole";
            fs::rename(target + ".tmp", target);
        }
        const std::string found = readWholeFile(target);
        ASSERT_TRUE(found == document(finished) || found == document(begun[0])) << "neither the old nor the new one";
        if (found == document(begun[0])) finished = begun[0].load();
        fs::remove(target + ".tmp");
    }
    EXPECT_GE(finished, kills / 10) << "killed too early to see a save";
    ::munmap(shared, 4096);
}
