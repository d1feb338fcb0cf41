#include "Output.h"

#include "Failure.h"
#include "Text.h"

#include <FCurveLib/Exception.h>
#include <FCurveLib/FileStream.h>

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>
#include <system_error>

namespace fcurvetool {

using namespace VEM_FN::FCurveLib;
namespace fs = std::filesystem;

namespace {

std::string SystemReason() {
    return std::generic_category().message(errno);
}

/// What a new file gets from a program that leaves it to the user's umask.
fs::perms OrdinaryPermissions() {
    const ::mode_t mask = ::umask(0);
    ::umask(mask);
    return static_cast<fs::perms>(0666U & ~mask);
}

} // namespace

Output::Output(const std::string& path) : m_path(path) {
    if (path == "-") {
        m_direct = stdout;
        return;
    }
    std::error_code ignored;
    const fs::file_status status = fs::status(path, ignored);
    if (fs::is_directory(status)) fail("it is a folder");
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        m_direct = std::fopen(path.c_str(), "wb");
        if (!m_direct) fail(SystemReason());
        return;
    }
    m_permissions = fs::exists(status) ? status.permissions() : OrdinaryPermissions();
    if (const fs::path target = fs::canonical(path, ignored); !target.empty()) m_path = target.string();
    try {
        m_replace.emplace(m_path.c_str());
    } catch (const File::FileDoesntExist&) {
        fail("there is no such folder");
    } catch (const File::AccessError&) {
        fail("no permission");
    } catch (const Exception&) {
        fail("it cannot be opened");
    }
}

Output::~Output() {
    if (m_direct && m_direct != stdout) std::fclose(m_direct);
}

void Output::write(std::string_view text) {
    if (m_direct) {
        if (std::fwrite(text.data(), 1, text.size(), m_direct) != text.size()) fail(SystemReason());
        return;
    }
    try {
        constexpr std::size_t kPiece = 1 << 20;
        for (; !text.empty(); text.remove_prefix(std::min(kPiece, text.size())))
            m_replace->getStream()->writeData(text.data(), static_cast<int>(std::min(kPiece, text.size())));
    } catch (const File::EndOfFile&) {
        fail("longer than 2 GiB, write to standard output instead");
    }
}

void Output::finish() {
    if (m_direct) {
        if (std::fflush(m_direct) != 0) fail(SystemReason());
        return;
    }
    try {
        m_replace->finish();
    } catch (const SafeFileSave::CantFinish&) {
        fail("the disk may be full");
    }
    std::error_code ignored;
    fs::permissions(m_path, m_permissions, ignored);
}

bool IsSameFile(const std::string& a, const std::string& b) {
    std::error_code ignored;
    return a != "-" && b != "-" && fs::equivalent(a, b, ignored);
}

void RefuseInput(const std::string& output, const std::vector<std::string>& inputs, const std::string& advice) {
    for (const std::string& input : inputs)
        if (IsSameFile(output, input) && fs::is_regular_file(output))
            throw UsageError(ToPrintable(output) + " is the input, too; " + advice);
}

void Output::fail(const std::string& reason) const {
    throw Failure((m_path == "-" ? "<stdout>" : ToPrintable(m_path)) + ": cannot be written: " + reason);
}

} // namespace fcurvetool
