#include "FCurveLib/LoadFile.h"

#include "io/Descriptor.h"
#include "io/FileCalls.h"

#include <algorithm>
#include <climits>
#include <vector>

#include <fcntl.h>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Descriptor;
using Private::fileCalls;
using Private::Repeat;

MemoryStream LoadFile(const char* path, const std::function<void(double)>& progress) {
    const std::string name = path ? path : "";
    const Descriptor file(Repeat([&] { return fileCalls.openIn(AT_FDCWD, name.c_str(), O_RDONLY | O_CLOEXEC, 0); }));
    struct stat status {};
    if (file.get() == -1 || fileCalls.statusOf(file.get(), &status) != 0) throw LoadError(errno, name);
    const bool isSizeKnown = S_ISREG(status.st_mode) && status.st_size > 0;

    constexpr std::size_t kPiece = std::size_t{1} << 20U;
    std::vector<char> piece(kPiece);
    MemoryStream bytes;
    for (;;) {
        const ssize_t count = Repeat([&] { return fileCalls.readBytes(file.get(), piece.data(), piece.size()); });
        if (count < 0) throw LoadError(errno, name);
        if (count == 0) break;
        if (count > INT_MAX - bytes.getSize()) throw LoadError(EFBIG, name);
        bytes.writeData(piece.data(), static_cast<int>(count));
        if (progress)
            progress(isSizeKnown
                         ? std::min(1.0, static_cast<double>(bytes.getSize()) / static_cast<double>(status.st_size))
                         : -1.0);
    }
    bytes.setPosition(0);
    return bytes;
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
