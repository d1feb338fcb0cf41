#include "FCurveLib/FileError.h"

#include <system_error>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

struct FileError::Texts {
    std::string path;
    std::string text;
    std::string message;
};

FileError::FileError(int code, const std::string& path, const char* problem, const std::string& rest) : m_code(code) {
    std::string text = std::generic_category().message(code);
    std::string message = problem + (": " + text) + '.' + rest;
    m_texts = std::make_shared<const Texts>(Texts{path, std::move(text), std::move(message)});
}
FileError::FileError(const FileError&) noexcept = default;
FileError& FileError::operator=(const FileError&) noexcept = default;
FileError::~FileError() = default;

const char* FileError::what() const noexcept {
    return "VEM_FN::FCurveLib::FileError";
}
const char* FileError::text() const noexcept {
    return m_texts->text.c_str();
}
const char* FileError::path() const noexcept {
    return m_texts->path.c_str();
}
const char* FileError::message() const noexcept {
    return m_texts->message.c_str();
}

LoadError::LoadError(int code, const std::string& path) : FileError(code, path, "The file cannot be read", {}) {}
const char* LoadError::what() const noexcept {
    return "VEM_FN::FCurveLib::LoadError";
}

namespace {

const char* ProblemOf(SaveError::Content content) {
    return content == SaveError::New ? "The file was written, but may not outlast a loss of power"
                                     : "The file cannot be written";
}

std::string WhereItIs(SaveError::Content content, const std::string& workingPath, SaveError::Content workingContent) {
    std::string text;
    if (content == SaveError::Old) text += " It is unchanged.";
    if (content == SaveError::Part) text += " A part was written.";
    if (workingPath.empty()) return text;
    return text + (workingContent == SaveError::New ? " What was to be written is in " : " A part stayed in ")
           + workingPath + '.';
}

} // namespace

SaveError::SaveError(int code, const std::string& path, Content content, const std::string& workingPath,
                     Content workingContent)
    : FileError(code, path, ProblemOf(content), WhereItIs(content, workingPath, workingContent)), m_content(content),
      m_workingContent(workingContent), m_workingPath(std::make_shared<const std::string>(workingPath)) {}
const char* SaveError::what() const noexcept {
    return "VEM_FN::FCurveLib::SaveError";
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
