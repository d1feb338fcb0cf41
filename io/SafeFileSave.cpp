#include "FCurveLib/SafeFileSave.h"

#include "io/FileCalls.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::fileCalls;

const char* SafeFileSave::CantFinish::what() const noexcept {
    return "VEM_FN::FCurveLib::SafeFileSave::CantFinish";
}

SafeFileSave::SafeFileSave(const char* path) : m_target(path ? path : ""), m_working(m_target) {
    for (long long attempt = 1; !m_stream; ++attempt) {
        try {
            m_stream = std::make_unique<FileStream>(m_working.c_str(), FileStream::ReadWrite,
                                                    FileStream::Create | FileStream::Exclusive);
        } catch (const File::FileExists&) {
            m_working = m_target + ".tmp";
            if (attempt > 1) m_working += std::to_string(attempt);
        }
    }
}

SafeFileSave::~SafeFileSave() {
    if (!m_stream) return;
    const bool ours = m_stream->m_file->isAtPathname();
    m_stream.reset();
    if (ours) fileCalls.removePath(m_working.c_str());
}

void SafeFileSave::finish() {
    if (!m_stream) return;
    File& file = *m_stream->m_file;
    const bool onDevice = file.sync();
    const bool ours = file.isAtPathname();
    const bool closed = file.close();
    m_stream.reset();
    if (!onDevice || !closed) {
        if (ours) fileCalls.removePath(m_working.c_str()); // not whole, so of no use
        throw CantFinish();
    }
    if (m_working == m_target) return;

    // Deliberate: deleted before the rename, which alone would replace it at once, and whatever becomes of the rename.
    // Should the deletion fail, the rename decides. A directory is not deleted.
    fileCalls.removePath(m_target.c_str());
    if (fileCalls.renamePath(m_working.c_str(), m_target.c_str()) != 0) throw CantFinish();
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
