#pragma once

#include <pybind11/pybind11.h>

#include <chrono>
#include <thread>
#include <utility>

namespace FCurvePython {

/// \name The interpreter's lock
/// Where a thread asks for it after the interpreter has ended, CPython ends the thread by unwinding its stack, through
/// destructors that need the lock or forbid unwinding. Python's own code gives the lock away and asks for it again
/// between any two steps. These let such a thread wait for the end of the process instead.
/// @{

/// Calls what takes the lock, or runs Python's code, and throws nothing. What owns objects of Python stays outside.
template<class Function>
void TakeLock(const Function& take) {
    // deliberate: a destructor, as a handler of the unwinding ends the process where another exception is being handled
    struct Parking {
        bool isUnwinding = true;
        ~Parking() {
            while (isUnwinding) std::this_thread::sleep_for(std::chrono::hours(1));
        }
    } parking;
    take();
    parking.isUnwinding = false;
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

/// Calls a callable with these arguments, which become objects of Python; what it raises is thrown. Needs the lock.
template<class... Arguments>
pybind11::object CallPython(pybind11::handle function, Arguments&&... arguments) {
    const pybind11::tuple packed = pybind11::make_tuple(std::forward<Arguments>(arguments)...);
    PyObject* result = nullptr;
    TakeLock([&] { result = PyObject_CallObject(function.ptr(), packed.ptr()); });
    if (!result) throw pybind11::error_already_set();
    return pybind11::reinterpret_steal<pybind11::object>(result);
}
/// @}

} // namespace FCurvePython
