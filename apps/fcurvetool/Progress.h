#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace fcurvetool {

/// Shows what the tool is at, in one line on standard error that is erased at the end: only if standard error is a
/// terminal, and only once the work has lasted a second.
class Progress {
public:
    explicit Progress(std::string what);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    /// From 0 to 1. Without it the line tells the time that has passed.
    void set(double fraction) { m_fraction.store(fraction, std::memory_order_relaxed); }

private:
    void run();

    std::string m_what;
    std::atomic<double> m_fraction{-1.0};
    std::mutex m_mutex;
    std::condition_variable m_ended;
    bool m_isEnded = false;
    std::thread m_thread;
};

} // namespace fcurvetool
