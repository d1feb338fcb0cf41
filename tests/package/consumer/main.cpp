#include "FCurveLib/Exception.h"

#include <cstdio>
#include <cstring>

// Throws a subclass of ours through the library's type, which fails where visibility or linkage is wrong.
int main() {
    struct Mine : VEM_FN::FCurveLib::Exception {};
    try {
        throw Mine();
    } catch (const VEM_FN::FCurveLib::v19::Exception& e) {
        std::puts(e.what());
        return std::strcmp(e.what(), "VEM_FN::FCurveLib::Exception") == 0 ? 0 : 1;
    }
}
