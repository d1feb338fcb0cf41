#pragma once

#include <unistd.h>

// Gives up root's right to every file for as long as it lives, where the tests run as root.
class NotRoot {
public:
    NotRoot() : m_wasRoot(::geteuid() == 0) {
        if (m_wasRoot && ::seteuid(65534) != 0) m_wasRoot = false;
    }
    NotRoot(const NotRoot&) = delete;
    NotRoot& operator=(const NotRoot&) = delete;
    ~NotRoot() {
        if (m_wasRoot && ::seteuid(0) != 0) ::_exit(99);
    }

    // False where the system does not let root go: every permission is granted then.
    bool permissionsAreAsked() const { return ::geteuid() != 0; }

private:
    bool m_wasRoot;
};
