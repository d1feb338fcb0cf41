#include "Output.h"

#include "Failure.h"
#include "Text.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace fcurvetool {

namespace fs = std::filesystem;

Output::Output(const std::string& path) : m_path(path), m_file(nullptr) {
    if (path == "-") {
        m_file = stdout;
        return;
    }
    std::error_code ignored;
    const fs::file_status status = fs::status(path, ignored);
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        m_file = std::fopen(path.c_str(), "wb");
    } else {
        // A link stays a link: what it leads to is replaced.
        if (fs::exists(status)) m_path = fs::canonical(path, ignored).string();
        if (m_path.empty()) m_path = path;
        for (int i = 1; !m_file && (i == 1 || errno == EEXIST); ++i) {
            m_temporary = m_path + ".tmp" + (i == 1 ? "" : std::to_string(i));
            m_file = std::fopen(m_temporary.c_str(), "wbx");
        }
        if (m_file && fs::exists(status)) fs::permissions(m_temporary, status.permissions(), ignored);
    }
    if (!m_file) fail(errno);
}

Output::~Output() {
    if (!m_file || m_file == stdout) return;
    std::fclose(m_file);
    if (!m_temporary.empty()) std::remove(m_temporary.c_str());
}

void Output::write(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), m_file) != text.size()) fail(errno);
}

void Output::finish() {
    if (std::fflush(m_file) != 0) fail(errno);
    if (m_file == stdout) return;
    const int closed = std::fclose(m_file);
    const int error = errno;
    m_file = nullptr;
    if (closed != 0 || (!m_temporary.empty() && std::rename(m_temporary.c_str(), m_path.c_str()) != 0)) {
        const int reason = closed != 0 ? error : errno;
        if (!m_temporary.empty()) std::remove(m_temporary.c_str());
        fail(reason);
    }
}

void Output::fail(int error) const {
    throw Failure((m_path == "-" ? "<stdout>" : toPrintable(m_path))
                  + ": cannot be written: " + std::generic_category().message(error));
}

} // namespace fcurvetool
