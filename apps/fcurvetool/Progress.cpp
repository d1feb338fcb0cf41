#include "Progress.h"

#include <chrono>
#include <cstdio>
#include <unistd.h>
#include <utility>

namespace fcurvetool {

Progress::Progress(std::string what) : m_what(std::move(what)) {
    if (isatty(STDERR_FILENO) == 1) m_thread = std::thread(&Progress::run, this);
}

Progress::~Progress() {
    if (!m_thread.joinable()) return;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isEnded = true;
    }
    m_ended.notify_one();
    m_thread.join();
}

void Progress::run() {
    using std::chrono::seconds;
    using std::chrono::steady_clock;
    const auto start = steady_clock::now();
    const auto isEnded = [this] { return m_isEnded; };
    std::unique_lock<std::mutex> lock(m_mutex);
    if (m_ended.wait_for(lock, seconds(1), isEnded)) return;
    do {
        const double fraction = m_fraction.load(std::memory_order_relaxed);
        const auto passed = std::chrono::duration_cast<seconds>(steady_clock::now() - start).count();
        const std::string state =
            fraction < 0.0 ? std::to_string(passed) + " s" : std::to_string(static_cast<int>(fraction * 100.0)) + " %";
        std::fprintf(stderr, "\r\x1b[Kfcurvetool: %s, %s", m_what.c_str(), state.c_str());
        std::fflush(stderr);
    } while (!m_ended.wait_for(lock, std::chrono::milliseconds(200), isEnded));
    std::fputs("\r\x1b[K", stderr);
    std::fflush(stderr);
}

} // namespace fcurvetool
