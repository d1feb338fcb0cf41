#include "interchange/Files.h"

#include <FCurveLib/File.h>
#include <FCurveLib/FileError.h>
#include <FCurveLib/FileStream.h>

#include <cerrno>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

std::string ReadFile(const std::string& path) {
    errno = 0;
    try {
        FileStream stream(path.c_str(), FileStream::Read, 0);
        std::string bytes(static_cast<std::size_t>(stream.getSize()), '\0');
        stream.readData(bytes.data(), static_cast<int>(bytes.size()));
        return bytes;
    } catch (const File::FileException&) {
        throw LoadError(errno != 0 ? errno : EIO, path);
    }
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
