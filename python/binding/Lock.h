#pragma once

#include <pybind11/pybind11.h>

#include <chrono>
#include <thread>

#ifdef __GLIBCXX__
#include <cxxabi.h>
#endif

namespace FCurvePython {

/// \name The interpreter's lock
/// Where a thread asks for it after the interpreter has ended, CPython ends the thread by unwinding its stack, through
/// destructors that need the lock or forbid unwinding. These let such a thread wait for the end of the process instead.
/// @{

/// Calls what takes the lock.
template<class Function>
void TakeLock(const Function& take) {
#ifdef __GLIBCXX__
    try {
        take();
    } catch (const abi::__forced_unwind&) {
        for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
    }
#else
    take();
#endif
}

/// Has the lock while it lives, in any thread.
class Locked {
public:
    Locked() {
        TakeLock([this] { m_state = PyGILState_Ensure(); });
    }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;
    ~Locked() { PyGILState_Release(m_state); }

private:
    PyGILState_STATE m_state = PyGILState_UNLOCKED;
};

/// Lets other threads have it while it lives.
class Unlocked {
public:
    Unlocked() : m_thread(PyEval_SaveThread()) {}
    Unlocked(const Unlocked&) = delete;
    Unlocked& operator=(const Unlocked&) = delete;
    ~Unlocked() {
        TakeLock([this] { PyEval_RestoreThread(m_thread); });
    }

private:
    PyThreadState* m_thread;
};
/// @}

} // namespace FCurvePython
