#pragma once

#include "FCurveLib/Exception.h"
#include "FCurveLib/Export.h"

#include <cstdint>
#include <memory>
#include <string>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// The system refused to read or write a file as a whole: base of LoadError and SaveError.
class FCURVELIB_API FileError : public Exception {
public:
    FileError(const FileError&) noexcept;
    FileError& operator=(const FileError&) noexcept;
    ~FileError() override;
    const char* what() const noexcept override;

    /// The system's error, as errno has it: ENOSPC, EACCES, ...
    int code() const noexcept { return m_code; }
    /// The system's words for it: "No space left on device". Never null, as all texts here.
    const char* text() const noexcept;
    /// The file. Of a symbolic link that is saved to, the one that it leads to.
    const char* path() const noexcept;
    /// Whole sentences for a user, without the path at the beginning: "The file cannot be written: No space left on
    /// device. It is unchanged."
    const char* message() const noexcept;

protected:
    FileError(int code, const std::string& path, const char* problem, const std::string& rest);

private:
    struct Texts;

    int m_code;
    std::shared_ptr<const Texts> m_texts;
};

/// A file cannot be read.
class FCURVELIB_API LoadError : public FileError {
public:
    LoadError(int code, const std::string& path);
    const char* what() const noexcept override;
};

/// A file was not saved, and which file holds what now.
class FCURVELIB_API SaveError : public FileError {
public:
    enum Content : std::uint8_t {
        Nothing, ///< there is no such file
        Old,     ///< what it was before; also where the system did not say whether there is such a file
        New,     ///< all of what was to be saved
        Part     ///< a part of that, from its beginning
    };

    /// Without a working path no working file stayed.
    SaveError(int code, const std::string& path, Content content, const std::string& workingPath = {},
              Content workingContent = Nothing);
    const char* what() const noexcept override;

    /// What path() holds. Old or Nothing as a rule. New where the file was replaced, and the system does not promise
    /// that this outlasts a loss of power. Part of a pipe or a device that took no more.
    Content content() const noexcept { return m_content; }

    /// A file beside it that could not be put in its place, or not be removed; empty where none stayed.
    const char* workingPath() const noexcept { return m_workingPath->c_str(); }
    /// What that holds: New where it could not be put in its place, so that nothing is lost; else Part.
    Content workingContent() const noexcept { return m_workingContent; }

private:
    Content m_content;
    Content m_workingContent;
    std::shared_ptr<const std::string> m_workingPath;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
