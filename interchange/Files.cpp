#include "interchange/Files.h"

#include <FCurveLib/FileStream.h>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

std::string ReadFile(const std::string& path) {
    FileStream stream(path.c_str(), FileStream::Read, 0);
    std::string bytes(static_cast<std::size_t>(stream.getSize()), '\0');
    stream.readData(bytes.data(), static_cast<int>(bytes.size()));
    return bytes;
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
